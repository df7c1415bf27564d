#include "gui/notes_window.h"

#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QFontDatabase>
#include <QMessageBox>
#include <QPrinter>
#include <QSaveFile>

#include "core/app/messages.h"
#include "gui/printing.h"
#include "gui/text_limits.h"

namespace quarvel {

NotesWindow::NotesWindow(QWidget* parent) : QPlainTextEdit(parent) {
  setWindowTitle(msg::kNotesTitle);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));  // reports are column-aligned
  setLineWrapMode(QPlainTextEdit::NoWrap);
  connect(this, &QPlainTextEdit::textChanged, this, &NotesWindow::contentChanged);
}

void NotesWindow::appendLine(const QString& line) {
  appendPlainText(line);
  document()->setModified(true);
}

bool NotesWindow::save() { return fileName_.isEmpty() ? saveAs() : saveTo(fileName_); }

bool NotesWindow::saveAs() {
  QFileDialog dialog(this, "Save notes as", fileName_,
                     QString(msg::kNotesFilter) + ";;" + msg::kAllFilesFilter);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix("txt");
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
  return saveTo(dialog.selectedFiles().front());
}

bool NotesWindow::saveTo(const QString& path) {
  // The old file is replaced only once the new text is completely written.
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
    QMessageBox::warning(this, msg::kProgramTitle, msg::kCannotCreateFile);
    return false;
  }
  const QByteArray text = toPlainText().toUtf8() + '\n';
  if (file.write(text) != text.size() || !file.commit()) {
    QMessageBox::warning(this, msg::kProgramTitle, msg::kWriteError);
    return false;
  }
  fileName_ = path;
  document()->setModified(false);
  return true;
}

void NotesWindow::print() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(msg::kNotesJobName);
  if (preparePrinter(printer, this)) document()->print(&printer);
}

bool NotesWindow::maybeSave() {
  if (!document()->isModified()) return true;
  const auto answer = QMessageBox::warning(
      this, msg::kProgramTitle, cutTo79(QString(msg::kSaveChangesTo) + " " + windowTitle()),
      QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
  if (answer == QMessageBox::Cancel) return false;
  if (answer == QMessageBox::Yes) return save();
  return true;
}

void NotesWindow::closeEvent(QCloseEvent* event) {
  if (!maybeSave()) {
    event->ignore();
    return;
  }
  // A closed notes window starts empty when results arrive again.
  clear();
  document()->setModified(false);
  event->accept();
}

}  // namespace quarvel
