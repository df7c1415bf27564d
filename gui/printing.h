// Printing of the notes and of the report (plot and notes): the system's printer when there is
// one, otherwise a PDF file the user names.
#pragma once

#include <QPrinter>

class QTextDocument;
class QWidget;

namespace quarvel {

class PlotView;

// Lets the user choose a printer, or a PDF file when no printer exists. False when cancelled.
bool preparePrinter(QPrinter& printer, QWidget* parent);

// The plot across the top of the first page, the notes text below it and on further pages.
void printReport(QPrinter& printer, PlotView& plot, const QTextDocument& notes);

}  // namespace quarvel
