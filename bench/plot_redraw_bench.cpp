// Redrawing the pattern plot with a full slot of 20000 points, on Qt's offscreen platform: the
// replot after a zoom (same data) and the whole refresh after a command (new scene, then replot).
#include <benchmark/benchmark.h>

#include <cmath>

#include <QApplication>

#include "gui/plot_view.h"

namespace {

quarvel::PlotScene fullSlotScene(bool logarithmic) {
  quarvel::PlotScene scene;
  scene.logarithmic = logarithmic;
  scene.xLabel = "2θ (°)";
  quarvel::PlotCurve curve;
  for (int i = 0; i < 20000; ++i) {
    const double x = 5.0 + 0.004 * i;
    curve.x.push_back(x);
    curve.y.push_back(200.0 + 5000.0 * std::exp(-std::pow(std::fmod(x, 7.0) - 3.5, 2) / 0.01) + (i % 13));
  }
  scene.curves.push_back(curve);
  for (int p = 1; p < 12; ++p) scene.peakMarkers.push_back(p * 7.0 - 3.5);
  return scene;
}

void prepare(quarvel::PlotView& plot) {
  plot.resize(1100, 500);
  plot.show();
  QCoreApplication::processEvents();
}

void BM_ReplotAfterZoom(benchmark::State& state) {
  quarvel::PlotView plot;
  prepare(plot);
  plot.showScene(fullSlotScene(state.range(0) != 0), true);
  for (auto _ : state) {
    plot.xAxis->setRange(5.0, 85.0);
    plot.replot(QCustomPlot::rpImmediateRefresh);
  }
}
BENCHMARK(BM_ReplotAfterZoom)->Arg(0)->Arg(1)->ArgName("log")->Unit(benchmark::kMillisecond);

void BM_RefreshWithNewScene(benchmark::State& state) {
  quarvel::PlotView plot;
  prepare(plot);
  const quarvel::PlotScene scene = fullSlotScene(false);
  for (auto _ : state) {
    plot.showScene(scene, true);
    plot.replot(QCustomPlot::rpImmediateRefresh);
  }
}
BENCHMARK(BM_RefreshWithNewScene)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
