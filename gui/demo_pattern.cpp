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

// Positions of a cubic phase with a = 5.431 Å at Cu Kα1, with made-up heights.
constexpr Reflection kReflections[] = {
    {28.44f, 9000.0f, 0.12f}, {47.30f, 5200.0f, 0.14f}, {56.12f, 3000.0f, 0.15f},
    {69.13f, 800.0f, 0.18f},  {76.38f, 1200.0f, 0.20f},
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
  session.rebuildAxisTable();
  session.setPatternMenus(true);
  session.refreshView();
}

}  // namespace quarvel
