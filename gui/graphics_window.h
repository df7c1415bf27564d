// The "QUARVEL Graphics" child: the plot and a status bar that shows where the cursor is, in the
// current x unit and in intensity.
#pragma once

#include <QLabel>
#include <QStatusBar>
#include <QWidget>

#include "gui/plot_view.h"

namespace quarvel {

class GraphicsWindow : public QWidget {
  Q_OBJECT

 public:
  explicit GraphicsWindow(QWidget* parent = nullptr);

  PlotView& plot() { return *plot_; }
  void showScene(const PlotScene& scene, bool resetView);

  // Texts of the two status panes, e.g. "Twotheta: 27.415" and "Intensity: 1520.3".
  QString positionText() const { return position_->text(); }
  QString intensityText() const { return intensity_->text(); }

  // Name of the x quantity in the status bar for x unit 1 (2θ), 2 (d) or 3 (Q).
  static QString unitName(int xUnit);

  // Asks for a file name and saves the plot as BMP (or PNG, JPG, PDF by extension).
  void saveImageAs();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void showCursor(double x, double intensity);
  void clearCursor();

  PlotView* plot_;
  QStatusBar* status_;
  QLabel* position_;
  QLabel* intensity_;
};

}  // namespace quarvel
