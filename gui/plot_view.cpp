#include "gui/plot_view.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QFileInfo>

namespace quarvel {
namespace {

QColor colorOf(CurveRole role, int index) {
  switch (role) {
    case CurveRole::Pattern: return QColor(0, 0, 160);
    case CurveRole::Background: return QColor(200, 0, 0);
    case CurveRole::Difference: return QColor(0, 130, 0);
    case CurveRole::Calculated: return QColor(220, 0, 0);
    case CurveRole::Multiple: break;
  }
  static const QColor kMultiple[] = {QColor(0, 140, 140), QColor(160, 0, 160), QColor(170, 110, 0),
                                     QColor(90, 90, 90)};
  return kMultiple[index % 4];
}

// A vertical stroke drawn at each marker; QCustomPlot scales custom scatter paths by size/6.
QCPScatterStyle tickStyle(const QColor& color, double sizePx) {
  QPainterPath path;
  path.moveTo(0, -3);
  path.lineTo(0, 3);
  QCPScatterStyle style(path, QPen(color, 1.2), Qt::NoBrush, sizePx);
  return style;
}

QCPRange padded(double low, double high, bool logarithmic) {
  if (logarithmic) {
    if (!(high > low)) high = low * 10.0;
    return QCPRange(low / 1.5, high * 1.5);
  }
  if (!(high > low)) return QCPRange(low - 1.0, high + 1.0);
  return QCPRange(low, high + 0.05 * (high - low));
}

}  // namespace

PlotRanges fullRangeOf(const PlotScene& scene) {
  double xLow = std::numeric_limits<double>::infinity(), xHigh = -xLow;
  double yLow = xLow, yHigh = -xLow;
  for (const PlotCurve& c : scene.curves) {
    if (c.x.empty()) continue;
    xLow = std::min(xLow, c.x.front());
    xHigh = std::max(xHigh, c.x.back());
    for (double y : c.y) {
      if (std::isnan(y) || (scene.logarithmic && y <= 0.0)) continue;
      yLow = std::min(yLow, y);
      yHigh = std::max(yHigh, y);
    }
  }
  PlotRanges r;
  if (!(xHigh >= xLow)) {  // no data: a neutral frame
    r.x = QCPRange(0.0, 1.0);
    r.y = scene.logarithmic ? QCPRange(1.0, 10.0) : QCPRange(0.0, 1.0);
    return r;
  }
  r.x = xHigh > xLow ? QCPRange(xLow, xHigh) : QCPRange(xLow - 0.5, xHigh + 0.5);
  if (!(yHigh >= yLow)) {
    r.y = scene.logarithmic ? QCPRange(1.0, 10.0) : QCPRange(0.0, 1.0);
  } else if (scene.logarithmic) {
    r.y = padded(yLow, yHigh, true);
  } else {
    // Intensities start at zero unless the data go below it (a difference curve).
    r.y = padded(std::min(0.0, yLow), yHigh, false);
  }
  // Peak markers get a strip of their own above the curves, reflection tick marks one below.
  if (!scene.peakMarkers.empty()) {
    r.y.upper = scene.logarithmic ? r.y.upper * std::pow(r.y.upper / r.y.lower, 0.1)
                                  : r.y.upper + 0.1 * r.y.size();
  }
  if (!scene.reflectionMarkers.empty()) {
    r.y.lower = scene.logarithmic ? r.y.lower / std::pow(r.y.upper / r.y.lower, 0.08)
                                  : r.y.lower - 0.08 * r.y.size();
  }
  return r;
}

PlotView::PlotView(QWidget* parent) : QCustomPlot(parent) {
  setLocale(QLocale(QLocale::English, QLocale::UnitedStates));  // decimal points on the axes
  setPlottingHint(QCP::phFastPolylines, true);
  setAntialiasedElements(QCP::aeNone);
  setMouseTracking(true);
  setInteractions(QCP::iRangeZoom);
  setSelectionRectMode(QCP::srmZoom);  // drag a rectangle with the left button to zoom
  selectionRect()->setPen(QPen(QColor(60, 60, 60), 1, Qt::DashLine));
  selectionRect()->setBrush(QColor(100, 100, 200, 40));
  setUpAxes();
  legend->setFont(QFont(font().family(), 9));
  legend->setBrush(QColor(255, 255, 255, 220));
  axisRect()->insetLayout()->setInsetAlignment(0, Qt::AlignTop | Qt::AlignRight);
  // Below the strip of peak markers along the top.
  axisRect()->insetLayout()->setAutoMargins(QCP::msNone);
  axisRect()->insetLayout()->setMargins(QMargins(10, 30, 10, 10));
}

void PlotView::setUpAxes() {
  axisRect()->setupFullAxesBox(true);
  linearTicker_ = xAxis->ticker();
  logTicker_.reset(new QCPAxisTickerLog);
  yAxis->setLabel("Intensity");
  yAxis->setNumberFormat("gb");
  xAxis->grid()->setPen(QPen(QColor(200, 200, 200), 0, Qt::DotLine));
  yAxis->grid()->setPen(QPen(QColor(200, 200, 200), 0, Qt::DotLine));
  // Markers live on their own hidden 0..1 axis so they stay in place while the user zooms.
  markerAxis_ = axisRect()->addAxis(QCPAxis::atRight);
  markerAxis_->setVisible(false);
  markerAxis_->setRange(0.0, 1.0);
  axisRect()->setRangeZoomAxes(xAxis, yAxis);
  axisRect()->setRangeDragAxes(xAxis, yAxis);
}

void PlotView::showScene(const PlotScene& scene, bool resetView) {
  const bool unitChanged = scene.xUnit != scene_.xUnit || scene.logarithmic != scene_.logarithmic;
  scene_ = scene;
  clearGraphs();
  clearItems();
  drawCurves();
  drawMarkers();
  drawExcludedSpans();
  applyScaleAndGrids();
  if (resetView || unitChanged) {
    showFullRange();
  } else {
    replot(rpQueuedReplot);
  }
}

void PlotView::drawCurves() {
  // With more than one curve a legend names them.
  legend->setVisible(scene_.curves.size() > 1);
  int multiple = 0;
  for (const PlotCurve& curve : scene_.curves) {
    QCPGraph* graph = addGraph(xAxis, yAxis);
    graph->setName(QString::fromStdString(curve.name));
    const int index = curve.role == CurveRole::Multiple ? multiple++ : 0;
    graph->setPen(QPen(colorOf(curve.role, index), 1.0));
    graph->setData(QVector<double>(curve.x.begin(), curve.x.end()),
                   QVector<double>(curve.y.begin(), curve.y.end()), true);  // x is ascending
  }
}

QCPGraph* PlotView::markerGraph(const QColor& color, double sizePx) {
  QCPGraph* graph = addGraph(xAxis, markerAxis_);
  graph->setLineStyle(QCPGraph::lsNone);
  graph->setScatterStyle(tickStyle(color, sizePx));
  graph->removeFromLegend();
  return graph;
}

void PlotView::drawMarkers() {
  auto fill = [](QCPGraph* graph, const std::vector<double>& xs, double height) {
    QVector<double> x(xs.begin(), xs.end());
    std::sort(x.begin(), x.end());
    graph->setData(x, QVector<double>(x.size(), height), true);
  };
  if (!scene_.peakMarkers.empty()) {
    QCPGraph* peaks = markerGraph(QColor(0, 150, 0), 16.0);
    peaks->setName("Peaks");
    fill(peaks, scene_.peakMarkers, 0.95);
  }
  if (!pickMarks_.empty()) {
    QCPGraph* picks = markerGraph(QColor(230, 120, 0), 24.0);
    fill(picks, pickMarks_, 0.90);
  }
  if (!scene_.reflectionMarkers.empty()) {
    QCPGraph* ticks = markerGraph(QColor(200, 0, 200), 10.0);
    ticks->setName("Reflections");
    fill(ticks, scene_.reflectionMarkers, 0.035);
  }
}

void PlotView::drawExcludedSpans() {
  for (const auto& [low, high] : scene_.excludedSpans) {
    auto* rect = new QCPItemRect(this);
    rect->setClipToAxisRect(true);
    rect->topLeft->setAxes(xAxis, yAxis);
    rect->bottomRight->setAxes(xAxis, yAxis);
    rect->topLeft->setTypeX(QCPItemPosition::ptPlotCoords);
    rect->topLeft->setTypeY(QCPItemPosition::ptAxisRectRatio);
    rect->bottomRight->setTypeX(QCPItemPosition::ptPlotCoords);
    rect->bottomRight->setTypeY(QCPItemPosition::ptAxisRectRatio);
    rect->topLeft->setCoords(low, 0.0);
    rect->bottomRight->setCoords(high, 1.0);
    rect->setPen(Qt::NoPen);
    rect->setBrush(QColor(128, 128, 128, 50));
    rect->setLayer("background");
  }
}

void PlotView::applyScaleAndGrids() {
  xAxis->setLabel(QString::fromStdString(scene_.xLabel));
  yAxis->setLabel(QString::fromStdString(scene_.yLabel));
  const auto scale = scene_.logarithmic ? QCPAxis::stLogarithmic : QCPAxis::stLinear;
  for (QCPAxis* axis : {yAxis, yAxis2}) {
    axis->setScaleType(scale);
    axis->setTicker(scene_.logarithmic ? QSharedPointer<QCPAxisTicker>(logTicker_) : linearTicker_);
  }
  xAxis->grid()->setVisible(scene_.xGrid);
  yAxis->grid()->setVisible(scene_.yGrid);
}

void PlotView::showFullRange() {
  const PlotRanges r = fullRangeOf(scene_);
  xAxis->setRange(r.x);
  yAxis->setRange(r.y);
  replot(rpQueuedReplot);
}

bool PlotView::saveImage(const QString& path) {
  const QString ext = QFileInfo(path).suffix().toLower();
  if (ext == "pdf") return savePdf(path);
  if (ext == "png") return savePng(path);
  if (ext == "jpg" || ext == "jpeg") return saveJpg(path);
  return saveBmp(path);
}

QPointF PlotView::coordinatesAt(const QPointF& pixel) const {
  return {xAxis->pixelToCoord(pixel.x()), yAxis->pixelToCoord(pixel.y())};
}

void PlotView::mouseMoveEvent(QMouseEvent* event) {
  QCustomPlot::mouseMoveEvent(event);
  if (axisRect()->rect().contains(event->position().toPoint())) {
    const QPointF c = coordinatesAt(event->position());
    emit cursorMoved(c.x(), c.y());
  } else {
    emit cursorLeft();
  }
}

void PlotView::setPickMarks(std::vector<double> xs) {
  pickMarks_ = std::move(xs);
  showScene(PlotScene(scene_), false);
}

void PlotView::mousePressEvent(QMouseEvent* event) {
  pressedAt_ = event->position().toPoint();
  QCustomPlot::mousePressEvent(event);
}

void PlotView::mouseReleaseEvent(QMouseEvent* event) {
  QCustomPlot::mouseReleaseEvent(event);
  const QPoint at = event->position().toPoint();
  if (event->button() == Qt::LeftButton && (at - pressedAt_).manhattanLength() < 4 &&
      axisRect()->rect().contains(at)) {
    const QPointF c = coordinatesAt(event->position());
    emit clicked(c.x(), c.y());
  }
}

void PlotView::mouseDoubleClickEvent(QMouseEvent* event) {
  QCustomPlot::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton) showFullRange();
}

void PlotView::leaveEvent(QEvent* event) {
  QCustomPlot::leaveEvent(event);
  emit cursorLeft();
}

}  // namespace quarvel
