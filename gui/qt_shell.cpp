#include "gui/qt_shell.h"

#include <QFileDialog>
#include <QMessageBox>

#include "core/app/messages.h"
#include "core/app/session.h"
#include "gui/dialog_view.h"
#include "gui/main_window.h"
#include "gui/menu_binding.h"
#include "gui/text_limits.h"

namespace quarvel {
namespace {

QString qs(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

}  // namespace

QString fileDialogFilters(const FileRequest& request) {
  QStringList filters;
  for (const std::string& f : request.filters) filters << QString::fromStdString(f);
  filters << msg::kAllFilesFilter;
  return filters.join(";;");
}

void QtShell::showMessage(std::string_view title, std::string_view text) {
  QMessageBox box(QMessageBox::Warning, cutTo79(title), cutTo79(text), QMessageBox::Ok, &window_);
  box.exec();
}

bool QtShell::askYesNo(std::string_view title, std::string_view text) {
  QMessageBox box(QMessageBox::Question, cutTo79(title), cutTo79(text), QMessageBox::Yes | QMessageBox::No,
                  &window_);
  box.setDefaultButton(QMessageBox::Yes);
  return box.exec() == QMessageBox::Yes;
}

std::optional<std::string> QtShell::chooseFile(const FileRequest& request) {
  const QString folder = window_.session() != nullptr
                             ? QString::fromStdString(window_.session()->workingDirectory().string())
                             : QString();
  QFileDialog dialog(&window_, QString::fromStdString(request.title), folder, fileDialogFilters(request));
  dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(request.save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  if (!request.defaultExtension.empty()) dialog.setDefaultSuffix(QString::fromStdString(request.defaultExtension));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().front().toStdString();
}

int QtShell::runDialog(DialogModel& dialog) {
  DialogView view(dialog, *this, &window_);
  // A dialog that takes positions from the plot leaves the plot usable while it is open.
  return view.picksFromPlot() ? window_.runPickingDialog(view) : view.exec();
}

void QtShell::menuChanged(const MenuItem& item) {
  if (MenuBinding* menus = window_.menus()) menus->apply(item);
}

void QtShell::repaintPlot(bool resetView) { window_.repaintPlot(resetView); }

void QtShell::windowCommand(int id) { window_.windowCommand(id); }

void QtShell::appendNotes(std::string_view line) { window_.appendNotes(qs(line)); }

void QtShell::openTextViewer(const std::string& path) { window_.openTextViewer(QString::fromStdString(path)); }

bool QtShell::interruptRequested() { return window_.takeInterrupt(); }

void QtShell::printReport(std::string_view title, const std::vector<std::string>& lines) {
  QStringList text{qs(title), QString()};
  for (const std::string& line : lines) text << QString::fromStdString(line);
  window_.printText(qs(title), text.join('\n'));
}

void QtShell::progress(double fraction, std::string_view text) { window_.showProgress(fraction, qs(text)); }

}  // namespace quarvel
