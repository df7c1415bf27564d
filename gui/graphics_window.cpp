#include "gui/graphics_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileDialog>
#include <QMessageBox>
#include <QVBoxLayout>

#include "core/app/messages.h"
#include "gui/text_limits.h"

namespace quarvel {

GraphicsWindow::GraphicsWindow(QWidget* parent)
    : QWidget(parent), plot_(new PlotView(this)), status_(new QStatusBar(this)),
      position_(new QLabel(this)), intensity_(new QLabel(this)) {
  setWindowTitle(msg::kGraphicsTitle);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(plot_, 1);
  layout->addWidget(status_);
  status_->setSizeGripEnabled(false);
  position_->setMinimumWidth(200);
  status_->addWidget(position_);
  status_->addWidget(intensity_, 1);
  clearCursor();
  // Right click: the whole pattern again, or the plot saved as a picture.
  plot_->setContextMenuPolicy(Qt::ActionsContextMenu);
  auto* full = new QAction("Full Pattern", plot_);
  connect(full, &QAction::triggered, plot_, &PlotView::showFullRange);
  auto* save = new QAction("Save Graphics As...", plot_);
  connect(save, &QAction::triggered, this, &GraphicsWindow::saveImageAs);
  plot_->addActions({full, save});
  connect(plot_, &PlotView::cursorMoved, this, &GraphicsWindow::showCursor);
  connect(plot_, &PlotView::cursorLeft, this, &GraphicsWindow::clearCursor);
}

QString GraphicsWindow::unitName(int xUnit) {
  switch (xUnit) {
    case 2: return "d-value";
    case 3: return "Q-value";
    default: return msg::kStatusTwoTheta;
  }
}

void GraphicsWindow::showScene(const PlotScene& scene, bool resetView) {
  plot_->showScene(scene, resetView);
  clearCursor();
}

void GraphicsWindow::showCursor(double x, double intensity) {
  const int decimals = plot_->scene().xUnit == 1 ? 3 : 4;
  position_->setText(unitName(plot_->scene().xUnit) + ": " + QString::number(x, 'f', decimals));
  intensity_->setText(QString(msg::kStatusIntensity) + ": " + QString::number(intensity, 'f', 1));
}

void GraphicsWindow::clearCursor() {
  position_->setText(unitName(plot_->scene().xUnit) + ":");
  intensity_->setText(QString(msg::kStatusIntensity) + ":");
}

void GraphicsWindow::saveImageAs() {
  const QString filters = QString(msg::kBitmapFilter) + ";;PNG Files (*.png);;PDF Files (*.pdf);;" +
                          msg::kAllFilesFilter;
  QFileDialog dialog(this, "Save Graphics As", QString(), filters);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix("bmp");
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
  const QString path = dialog.selectedFiles().front();
  if (!plot_->saveImage(path)) {
    QMessageBox::warning(this, msg::kProgramTitle, cutTo79(QString(msg::kCannotCreateFile) + " " + path));
  }
}

void GraphicsWindow::closeEvent(QCloseEvent* event) {
  if (plot_->scene().empty()) {
    event->accept();
    return;
  }
  const auto answer = QMessageBox::warning(
      this, msg::kProgramTitle, cutTo79(QString(msg::kSaveChangesTo) + " " + windowTitle()),
      QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
  if (answer == QMessageBox::Cancel) {
    event->ignore();
    return;
  }
  if (answer == QMessageBox::Yes) saveImageAs();
  event->accept();
}

}  // namespace quarvel
