#include "core/process/modify_operations.h"

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include "core/app/messages.h"
#include "core/app/session.h"
#include "core/process/chebyshev_fit.h"
#include "core/process/convert.h"
#include "core/process/corrections.h"
#include "core/process/intensity_operations.h"
#include "core/process/smoothing.h"
#include "core/process/truncate.h"
#include "core/process/zero_shift.h"

namespace quarvel {
namespace {

PatternSlot& currentSlot(Session& s) { return s.store().slot(s.store().selection.currentSlot); }

std::vector<float> gridOf(const PatternSlot& slot) {
  std::vector<float> x(static_cast<std::size_t>(slot.count));
  for (int i = 0; i < slot.count; ++i) x[static_cast<std::size_t>(i)] = slot.x(i);
  return x;
}

void writeChebyshevNotes(Session& s, int order, const ChebyshevFitResult& fit) {
  s.note(fmt::format("Chebyshev fit of order {}", order));
  s.note(fmt::format("Cycle {:3d}   Rp = {:8.3f}   Rwp = {:8.3f}   GOF = {:8.3f}   npar = {:3d}", 1, fit.rp,
                     fit.rwp, fit.gof, fit.npar));
}

void storeBackground(Session& s, const PatternSlot& pattern, const std::vector<float>& curve) {
  PatternSlot& background = s.store().slot(kSlotBackground);
  background.start = pattern.start;
  background.step = pattern.step;
  background.count = pattern.count;
  background.end = pattern.end;
  background.wavelength = pattern.wavelength;
  std::copy(curve.begin(), curve.end(), background.y.begin());
}

}  // namespace

namespace modify {

Operation zeroShift() {
  Operation op;
  op.apply = [](Session& s) {
    zeroShiftSlots(s.store(), s.process.zeroShift, s.process.maintainOriginalSteps);
    s.rebuildAxisTable();
  };
  return op;
}

Operation truncate() {
  Operation op;
  op.apply = [](Session& s) {
    truncateSlots(s.store(), s.process.truncateLower, s.process.truncateUpper);
    s.rebuildAxisTable();
  };
  return op;
}

Operation excludedRegions() {
  Operation op;
  op.apply = [](Session& s) {
    zeroExcludedPoints(s.store(), s.store().selection.currentSlot, s.process.excludedRegions);
  };
  return op;
}

Operation addPolynomial() {
  Operation op;
  op.hasEffect = [](Session& s) { return !isZeroPolynomial(s.process.polynomial); };
  op.apply = [](Session& s) { quarvel::addPolynomial(currentSlot(s), s.process.polynomial); };
  return op;
}

Operation scale() {
  Operation op;
  op.apply = [](Session& s) { scaleIntensities(currentSlot(s), s.process.scaleFactor); };
  return op;
}

Operation smooth() {
  Operation op;
  op.hasEffect = [](Session& s) { return s.process.smoothingFactor >= 2; };
  op.apply = [](Session& s) {
    PatternSlot& slot = currentSlot(s);
    movingAverage(gridOf(slot), slot.data(), s.process.smoothingFactor);
  };
  return op;
}

Operation savitzkyGolay() {
  Operation op;
  op.apply = [](Session& s) { quarvel::savitzkyGolay(currentSlot(s).data(), s.process.savitzkyGolayWindow); };
  return op;
}

Operation chebyshevFit() {
  // The fit runs before the undo copy is kept, so that a singular system leaves the store and
  // the previous undo copy as they were.
  auto result = std::make_shared<std::optional<ChebyshevFitResult>>();
  Operation op;
  op.hasEffect = [result](Session& s) {
    s.process.chebyshevOrder = clampChebyshevOrder(s.process.chebyshevOrder);
    *result = fitChebyshev(currentSlot(s), s.process.chebyshevOrder, s.process.excludedRegions);
    if (!*result) s.message(msg::kError, msg::kMatrixInversionError);
    return result->has_value();
  };
  op.apply = [result](Session& s) {
    const ChebyshevFitResult& fit = **result;
    storeBackground(s, currentSlot(s), fit.curve);
    writeChebyshevNotes(s, s.process.chebyshevOrder, fit);
    s.setBackgroundMenus();
    s.setPlotMode(PlotMode::PatternAndBackground);
  };
  return op;
}

Operation convert() {
  Operation op;
  op.hasEffect = [](Session& s) {
    const ConvertSettings& c = s.process.convert;
    return currentSlot(s).count >= 2 && convertGridCount(c.start, c.stop, c.step) > 0 && c.oldWavelength > 0.0f &&
           c.newWavelength > 0.0f;
  };
  op.apply = [](Session& s) {
    PatternSlot& slot = currentSlot(s);
    const float before = slot.wavelength;
    if (!convertPattern(slot, s.process.convert)) return;
    // The pattern now belongs to the new wavelength; keep the α2 line in proportion.
    if (s.store().selection.currentSlot == kSlotPattern) {
      WavelengthSetting& w = s.store().wavelength;
      if (before > 0.0f) w.alpha2 *= slot.wavelength / before;
      w.alpha1 = slot.wavelength;
    }
    s.rebuildAxisTable();
  };
  return op;
}

Operation lpCorrections() {
  Operation op;
  op.apply = [](Session& s) {
    PatternSlot& slot = currentSlot(s);
    lpCorrect(slot.data(), slot.start, slot.step, s.process.lpChoice);
  };
  return op;
}

}  // namespace modify

bool applyZeroShift(Session& s, float shift, bool maintainSteps) {
  s.process.zeroShift = shift;
  s.process.maintainOriginalSteps = maintainSteps;
  return runOperation(s, modify::zeroShift());
}

bool applyTruncate(Session& s, float lower, float upper) {
  s.process.truncateLower = lower;
  s.process.truncateUpper = upper;
  return runOperation(s, modify::truncate());
}

bool applyExcludedRegions(Session& s, std::vector<ExcludedRegion> regions) {
  if (regions.size() > kMaxExcludedRegions) regions.resize(kMaxExcludedRegions);
  s.process.excludedRegions = std::move(regions);
  return runOperation(s, modify::excludedRegions());
}

bool applyAddPolynomial(Session& s, const std::array<float, 6>& coefficients) {
  s.process.polynomial = coefficients;
  return runOperation(s, modify::addPolynomial());
}

bool applyScale(Session& s, double factor) {
  s.process.scaleFactor = factor;
  return runOperation(s, modify::scale());
}

bool applySmooth(Session& s, int factor) {
  s.process.smoothingFactor = factor;
  return runOperation(s, modify::smooth());
}

bool applySavitzkyGolay(Session& s, int window) {
  s.process.savitzkyGolayWindow = window;
  return runOperation(s, modify::savitzkyGolay());
}

bool applyChebyshevFit(Session& s, int order) {
  s.process.chebyshevOrder = order;
  return runOperation(s, modify::chebyshevFit());
}

bool applyConvert(Session& s, const ConvertSettings& grid) {
  s.process.convert = grid;
  s.process.convert.used = true;
  return runOperation(s, modify::convert());
}

bool applyLpCorrections(Session& s, int choice) {
  s.process.lpChoice = choice;
  return runOperation(s, modify::lpCorrections());
}

bool applyAutoDivergence(Session& s, bool reverse) {
  Operation op;
  op.apply = [reverse](Session& session) {
    PatternSlot& slot = currentSlot(session);
    autoDivergenceCorrect(slot.data(), slot.start, slot.step, reverse);
  };
  return runOperation(s, op);
}

bool applyFlatPlate(Session& s, float inclination, float muThickness) {
  s.process.inclination = inclination;
  s.process.muThickness = muThickness;
  // Unlike the other operations the copy is kept even in a script and before the values are
  // checked, so Undo after a void correction still restores the state before the command.
  s.keepUndoCopy();
  PatternSlot& slot = currentSlot(s);
  if (!flatPlateCorrect(slot.data(), slot.start, slot.step, inclination, muThickness)) return false;
  if (!s.flags.scriptRunning) s.refreshView();
  return true;
}

bool applyEditedIntensities(Session& s, std::span<const float> intensities) {
  Operation op;
  op.apply = [intensities](Session& session) {
    PatternSlot& slot = currentSlot(session);
    const std::size_t n = std::min(intensities.size(), static_cast<std::size_t>(slot.count));
    std::copy_n(intensities.begin(), n, slot.y.begin());
  };
  return runOperation(s, op);
}

}  // namespace quarvel
