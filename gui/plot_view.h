// The plot engine: one QCustomPlot that draws a PlotScene as the core computed it (curves in
// the current x unit, peak markers, reflection tick marks, excluded regions, grids, linear or
// logarithmic intensities) and reports where the mouse is in plot coordinates.
#pragma once

#include <vector>

#include <QString>

#include <qcustomplot.h>

#include "core/app/plot_scene.h"

namespace quarvel {

// The axis ranges that show every point of a scene: x from the first to the last point, y from
// zero (or the lowest value) to a little above the highest; on a logarithmic axis from the
// smallest positive value. NaN gaps are ignored.
struct PlotRanges {
  QCPRange x;
  QCPRange y;
};
PlotRanges fullRangeOf(const PlotScene& scene);

class PlotView : public QCustomPlot {
  Q_OBJECT

 public:
  explicit PlotView(QWidget* parent = nullptr);

  // Draws `scene` with one replot. With `resetView` the axes show all data again; otherwise
  // the current zoom is kept (a grid toggle must not lose the user's zoom).
  void showScene(const PlotScene& scene, bool resetView);
  // Axes back to the whole of the data (F1 "Full Pattern", double click).
  void showFullRange();

  // Positions (in the current x unit) the user is marking, drawn as orange strokes until cleared.
  void setPickMarks(std::vector<double> xs);

  // Saves the plot as an image; the format follows the extension (bmp, png, jpg, pdf).
  bool saveImage(const QString& path);

  const PlotScene& scene() const { return scene_; }
  // Plot coordinates of a widget position (x in the current unit, y intensity).
  QPointF coordinatesAt(const QPointF& pixel) const;

 signals:
  void cursorMoved(double x, double intensity);
  void cursorLeft();
  // A left click without dragging, in plot coordinates.
  void clicked(double x, double intensity);

 protected:
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  void setUpAxes();
  void drawCurves();
  void drawMarkers();
  void drawExcludedSpans();
  void applyScaleAndGrids();
  QCPGraph* markerGraph(const QColor& color, double sizePx);

  PlotScene scene_;
  std::vector<double> pickMarks_;
  QPoint pressedAt_;
  QCPAxis* markerAxis_ = nullptr;  // hidden axis 0..1 that places markers independent of zoom
  QSharedPointer<QCPAxisTicker> linearTicker_;
  QSharedPointer<QCPAxisTickerLog> logTicker_;
};

}  // namespace quarvel
