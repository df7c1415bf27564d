#include "gui/demo_pattern.h"

#include <cmath>
#include <cstdint>

#include "core/app/session.h"

namespace quarvel {
namespace {

struct Reflection {
  float twoTheta;
  float height;
  float fwhm;
};

// Positions of a cubic phase with a = 5.431 Å at Cu Kα1 and of a few lines of a second phase,
// with made-up heights and widths.
constexpr Reflection kReflections[] = {
    {14.80f, 1400.0f, 0.30f}, {21.05f, 2300.0f, 0.30f}, {28.44f, 9000.0f, 0.28f},
    {33.15f, 1700.0f, 0.32f}, {38.90f, 600.0f, 0.34f},  {47.30f, 5200.0f, 0.32f},
    {51.60f, 900.0f, 0.36f},  {56.12f, 3000.0f, 0.36f}, {62.40f, 450.0f, 0.40f},
    {69.13f, 800.0f, 0.42f},  {76.38f, 1200.0f, 0.45f},
};

// Deterministic counting noise, so the demo looks the same every time.
float noise(std::uint32_t& state) {
  state = state * 1664525u + 1013904223u;
  return static_cast<float>(state >> 8) / 16777216.0f - 0.5f;
}

}  // namespace

void loadDemoPattern(Session& session) {
  PatternStore& store = session.store();
  session.resetWorkingState();
  PatternSlot& slot = store.pattern();
  slot.start = 5.0f;
  slot.step = 0.02f;
  slot.count = 3751;
  slot.wavelength = store.wavelength.alpha1;
  slot.recomputeEnd();
  std::uint32_t state = 12345u;
  for (int i = 0; i < slot.count; ++i) {
    const float x = slot.x(i);
    float y = 150.0f + 900.0f * std::exp(-x / 9.0f);
    for (const Reflection& r : kReflections) {
      const float sigma = r.fwhm / 2.3548f;
      y += r.height * std::exp(-0.5f * (x - r.twoTheta) * (x - r.twoTheta) / (sigma * sigma));
    }
    y += 2.0f * std::sqrt(y) * noise(state);
    slot.y[static_cast<std::size_t>(i)] = y;
  }
  store.copyPatternToAsLoaded();
  store.info.title = "Synthetic demo pattern";
  session.peaks.clear();
  session.indexing.reflectionMarkers.clear();
  for (const Reflection& r : kReflections) {
    session.peaks.peaks.push_back(Peak{r.twoTheta, r.height, r.fwhm});
    session.indexing.reflectionMarkers.push_back(r.twoTheta);
  }
  session.note("Synthetic demo pattern: 3751 points from 5.00 to 80.00 degrees 2theta, step 0.02");
  session.note("11 peaks marked; reflection tick marks below the pattern");
  session.rebuildAxisTable();
  session.setPatternMenus(true);
  session.refreshView();
}

}  // namespace quarvel
