// Dialogs of the basic pattern operations: Zero shift, Truncate, Add Polynomial, Scale, Smooth,
// Savitzky-Golay, Chebyshev fit and Convert. Each dialog opens with the remembered values and
// stores the confirmed ones; the work is in modify_operations.cpp.
#include <string>
#include <vector>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/session.h"
#include "core/process/chebyshev_fit.h"
#include "core/process/modify_commands.h"
#include "core/process/modify_operations.h"
#include "core/process/process_messages.h"
#include "core/process/smoothing.h"

namespace quarvel {
namespace {

float numberOr(const DialogModel& d, const char* key, float fallback) {
  return static_cast<float>(d.number(key, fallback));
}

int integerOr(const DialogModel& d, const char* key, int fallback) {
  const auto v = d.number(key);
  if (!v || !(*v > -1.0e9 && *v < 1.0e9)) return fallback;
  return static_cast<int>(*v);
}

const PatternSlot& currentSlot(const Session& s) { return s.store().slot(s.store().selection.currentSlot); }

bool askZeroShift(Session& s) {
  ProcessSettings& p = s.process;
  DialogModel d(msg::kZeroShiftTitle, 108, 81);
  d.edit("shift", msg::kZeroShiftEdit, p.zeroShift).checkBox("maintain", msg::kMaintainSteps, p.maintainOriginalSteps).okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.zeroShift = numberOr(d, "shift", p.zeroShift);
  p.maintainOriginalSteps = d.checked("maintain");
  return true;
}

bool askTruncate(Session& s) {
  ProcessSettings& p = s.process;
  // Before the first use the limits of the pattern itself are offered.
  const bool neverUsed = p.truncateLower == 0.0f && p.truncateUpper == 0.0f;
  const float lower = neverUsed ? currentSlot(s).start : p.truncateLower;
  const float upper = neverUsed ? currentSlot(s).end : p.truncateUpper;
  DialogModel d(msg::kTruncateTitle, 138, 78);
  d.edit("lower", "Lower", lower, msg::kTruncateGroup).edit("upper", "Upper", upper, msg::kTruncateGroup).okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.truncateLower = numberOr(d, "lower", lower);
  p.truncateUpper = numberOr(d, "upper", upper);
  return true;
}

constexpr const char* kCoefficientNames[] = {"A0", "A1", "A2", "A3", "A4", "A5"};

bool askPolynomial(Session& s) {
  ProcessSettings& p = s.process;
  DialogModel d(msg::kAddPolynomialTitle, 92, 141);
  for (std::size_t k = 0; k < p.polynomial.size(); ++k) d.edit(kCoefficientNames[k], kCoefficientNames[k], p.polynomial[k]);
  d.okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  for (std::size_t k = 0; k < p.polynomial.size(); ++k) p.polynomial[k] = numberOr(d, kCoefficientNames[k], p.polynomial[k]);
  return true;
}

bool askScale(Session& s) {
  ProcessSettings& p = s.process;
  DialogModel d(msg::kScaleTitle, 108, 81);
  d.edit("factor", msg::kScaleEdit, formatEditNumber(p.scaleFactor)).okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.scaleFactor = d.number("factor", p.scaleFactor);
  return true;
}

bool askSmooth(Session& s) {
  ProcessSettings& p = s.process;
  p.smoothingFactor = 3;  // the dialog always offers the mildest smoothing
  DialogModel d(msg::kSmoothTitle, 108, 81);
  d.edit("factor", msg::kSmoothEdit, std::to_string(p.smoothingFactor)).okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.smoothingFactor = integerOr(d, "factor", p.smoothingFactor);
  return true;
}

int windowIndex(int window) {
  if (window < kSavitzkyGolayMinWindow || window > kSavitzkyGolayMaxWindow || window % 2 == 0) return 10;
  return (window - kSavitzkyGolayMinWindow) / 2;
}

bool askSavitzkyGolay(Session& s) {
  ProcessSettings& p = s.process;
  DialogModel d(msg::kSavitzkyGolayTitle, 127, 119);
  d.radio("window", msg::kWindowSizeGroup,
          {"  5", "  7", "  9", "11", "13", "15", "17", "19", "21", "23", "25"}, windowIndex(p.savitzkyGolayWindow))
      .okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.savitzkyGolayWindow = kSavitzkyGolayMinWindow + 2 * d.selected("window");
  return true;
}

bool askChebyshev(Session& s) {
  ProcessSettings& p = s.process;
  p.chebyshevOrder = 3;
  DialogModel d(msg::kChebyshevTitle, 108, 81);
  d.edit("order", msg::kChebyshevEdit, std::to_string(p.chebyshevOrder)).okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.chebyshevOrder = clampChebyshevOrder(integerOr(d, "order", p.chebyshevOrder));
  return true;
}

bool askConvert(Session& s) {
  ConvertSettings& c = s.process.convert;
  if (!c.used) {
    const PatternSlot& slot = currentSlot(s);
    c.start = slot.start;
    c.stop = slot.end;
    c.step = slot.step;
    c.oldWavelength = slot.wavelength > 0.0f ? slot.wavelength : s.store().wavelength.alpha1;
    c.newWavelength = c.oldWavelength;
  }
  DialogModel d(msg::kConvertTitle, 122, 136);
  d.edit("start", "Start", c.start).label(msg::kDegrees)
      .edit("stop", "Stop", c.stop).label(msg::kDegrees)
      .edit("step", "Step", c.step).label(msg::kDegrees)
      .edit("old", "Original Wavelength", c.oldWavelength)
      .edit("new", "New Wavelength", c.newWavelength)
      .okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  c.start = numberOr(d, "start", c.start);
  c.stop = numberOr(d, "stop", c.stop);
  c.step = numberOr(d, "step", c.step);
  c.oldWavelength = numberOr(d, "old", c.oldWavelength);
  c.newWavelength = numberOr(d, "new", c.newWavelength);
  c.used = true;
  return true;
}

void withDialog(CommandDispatcher& d, int id, Operation (*operation)(), bool (*ask)(Session&)) {
  d.on(id, [operation, ask](Session& s) {
    Operation op = operation();
    op.askUser = ask;
    runOperation(s, op);
  });
}

}  // namespace

void registerBasicModifyCommands(CommandDispatcher& d) {
  withDialog(d, cmd::kZeroShift, modify::zeroShift, askZeroShift);
  withDialog(d, cmd::kTruncate, modify::truncate, askTruncate);
  withDialog(d, cmd::kAddPolynomial, modify::addPolynomial, askPolynomial);
  withDialog(d, cmd::kScale, modify::scale, askScale);
  withDialog(d, cmd::kSmooth, modify::smooth, askSmooth);
  withDialog(d, cmd::kSavitzkyGolay, modify::savitzkyGolay, askSavitzkyGolay);
  withDialog(d, cmd::kChebyshevFit, modify::chebyshevFit, askChebyshev);
  withDialog(d, cmd::kConvert, modify::convert, askConvert);
}

void registerModifyCommands(CommandDispatcher& d) {
  registerBasicModifyCommands(d);
  registerCorrectionCommands(d);
  registerExcludedRegionsCommand(d);
  registerEditPatternCommand(d);
}

}  // namespace quarvel
