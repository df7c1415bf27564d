#include "gui/printing.h"

#include <memory>

#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinterInfo>
#include <QTextDocument>

#include "core/app/messages.h"
#include "gui/plot_view.h"

namespace quarvel {

bool preparePrinter(QPrinter& printer, QWidget* parent) {
  if (QPrinterInfo::availablePrinters().isEmpty()) {
    const QString pdf = QFileDialog::getSaveFileName(parent, "Print to PDF file", QString(),
                                                     "PDF Files (*.pdf);;" + QString(msg::kAllFilesFilter));
    if (pdf.isEmpty()) return false;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(pdf);
    return true;
  }
  QPrintDialog dialog(&printer, parent);
  return dialog.exec() == QDialog::Accepted;
}

void printReport(QPrinter& printer, PlotView& plot, const QTextDocument& notes) {
  QCPPainter painter(&printer);
  const QRectF page = printer.pageRect(QPrinter::DevicePixel);
  // The plot keeps its on-screen proportions, scaled to the page width.
  const double scale = page.width() / std::max(1, plot.width());
  const double plotHeight = std::min(plot.height() * scale, page.height() * 0.55);
  painter.save();
  painter.scale(scale, scale);
  plot.toPainter(&painter, plot.width(), static_cast<int>(plotHeight / scale));
  painter.restore();

  std::unique_ptr<QTextDocument> text(notes.clone());
  text->setDefaultFont(notes.defaultFont());
  const double textScale = printer.resolution() / 96.0;  // notes are laid out in screen points
  const QSizeF textPage(page.width() / textScale, page.height() / textScale);
  text->setPageSize(textPage);
  double top = (plotHeight + page.height() * 0.03) / textScale;  // first page: below the plot
  double offset = 0.0;
  const double total = text->size().height();
  while (offset < total) {
    const double room = textPage.height() - top;
    painter.save();
    painter.scale(textScale, textScale);
    painter.translate(0, top - offset);
    text->drawContents(&painter, QRectF(0, offset, textPage.width(), room));
    painter.restore();
    offset += room;
    top = 0.0;
    if (offset < total) printer.newPage();
  }
}

}  // namespace quarvel
