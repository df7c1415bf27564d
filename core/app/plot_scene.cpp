#include "core/app/plot_scene.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/app/session.h"

namespace quarvel {
namespace {

double wavelengthOf(const Session& s, const PatternSlot& slot) {
  return slot.wavelength > 0.0f ? slot.wavelength : s.store().wavelength.alpha1;
}

PlotCurve curveOf(const Session& s, int slotIndex, CurveRole role, std::string name) {
  const PatternSlot& slot = s.store().slot(slotIndex);
  const Selection& sel = s.store().selection;
  const int unit = static_cast<int>(sel.xAxisUnit);
  const bool logarithmic = sel.yAxisScale == YAxisScale::Logarithmic;
  const double lambda = wavelengthOf(s, slot);
  PlotCurve curve;
  curve.role = role;
  curve.name = std::move(name);
  curve.x.reserve(static_cast<std::size_t>(slot.count));
  curve.y.reserve(static_cast<std::size_t>(slot.count));
  for (int i = 0; i < slot.count; ++i) {
    const double x = toXUnit(slot.x(i) + sel.zeroCorrection, unit, lambda);
    if (!std::isfinite(x)) continue;  // d at 2θ = 0
    double y = slot.y[static_cast<std::size_t>(i)];
    if (logarithmic && !(y > 0.0)) y = std::numeric_limits<double>::quiet_NaN();
    curve.x.push_back(x);
    curve.y.push_back(y);
  }
  // d decreases with 2θ: keep x ascending for the plot.
  if (curve.x.size() > 1 && curve.x.front() > curve.x.back()) {
    std::reverse(curve.x.begin(), curve.x.end());
    std::reverse(curve.y.begin(), curve.y.end());
  }
  return curve;
}

void addIfFilled(PlotScene& scene, const Session& s, int slot, CurveRole role, std::string name) {
  if (s.store().slot(slot).count > 0) scene.curves.push_back(curveOf(s, slot, role, std::move(name)));
}

}  // namespace

double toXUnit(double twoTheta, int unit, double wavelength) {
  if (unit == 1) return twoTheta;
  const double theta = twoTheta * 0.5 / 57.29578;
  const double d = wavelength * 0.5 / std::sin(theta);
  if (unit == 2) return (std::isfinite(d) && d > 0.0) ? d : std::numeric_limits<double>::infinity();
  return (std::isfinite(d) && d > 0.0) ? 6.283185 / d : 0.0;
}

double twoThetaAtPlotX(const Session& s, double x) {
  const Selection& sel = s.store().selection;
  const double lambda = wavelengthOf(s, s.store().pattern());
  double twoTheta = x;
  if (sel.xAxisUnit != XAxisUnit::TwoTheta) {
    const double d = sel.xAxisUnit == XAxisUnit::D ? x : 6.283185 / x;
    twoTheta = 2.0 * std::asin(std::clamp(lambda / (2.0 * d), -1.0, 1.0)) * 57.29578;
  }
  return twoTheta - sel.zeroCorrection;
}

PlotScene buildPlotScene(const Session& s) {
  PlotScene scene;
  const Selection& sel = s.store().selection;
  scene.xUnit = static_cast<int>(sel.xAxisUnit);
  scene.logarithmic = sel.yAxisScale == YAxisScale::Logarithmic;
  scene.xGrid = s.flags.xGrid;
  scene.yGrid = s.flags.yGrid;
  scene.xLabel = scene.xUnit == 1 ? "2θ (°)" : scene.xUnit == 2 ? "d (Å)" : "Q (1/Å)";

  switch (sel.plotMode) {
    case PlotMode::Pattern:
      addIfFilled(scene, s, kSlotPattern, CurveRole::Pattern, "Pattern");
      for (int m = 1; m <= s.store().multipleCount; ++m)
        addIfFilled(scene, s, kSlotMultiple1 + m - 1, CurveRole::Multiple, "Pattern " + std::to_string(m));
      break;
    case PlotMode::Background:
      addIfFilled(scene, s, kSlotBackground, CurveRole::Background, "Background");
      break;
    case PlotMode::Difference:
      addIfFilled(scene, s, kSlotAsLoaded, CurveRole::Difference, "Difference");
      break;
    case PlotMode::Calculated:
      addIfFilled(scene, s, kSlotPattern, CurveRole::Pattern, "Pattern");
      addIfFilled(scene, s, kSlotCalculated, CurveRole::Calculated, "Calculated");
      break;
    case PlotMode::PatternAndBackground:
      addIfFilled(scene, s, kSlotPattern, CurveRole::Pattern, "Pattern");
      addIfFilled(scene, s, kSlotBackground, CurveRole::Background, "Background");
      break;
  }

  const double lambda = wavelengthOf(s, s.store().pattern());
  auto convert = [&](double twoTheta) { return toXUnit(twoTheta + sel.zeroCorrection, scene.xUnit, lambda); };
  for (const Peak& p : s.peaks.peaks) scene.peakMarkers.push_back(convert(p.position));
  for (float t : s.indexing.reflectionMarkers) scene.reflectionMarkers.push_back(convert(t));
  for (const ExcludedRegion& r : s.process.excludedRegions) {
    double a = convert(r.low), b = convert(r.high);
    if (a > b) std::swap(a, b);
    scene.excludedSpans.emplace_back(a, b);
  }
  return scene;
}

}  // namespace quarvel
