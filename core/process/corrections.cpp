#include "core/process/corrections.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace quarvel {
namespace {

constexpr float kDegreesPerRadian = 57.29578f;

float radians(float degrees) { return degrees / kDegreesPerRadian; }

float twoThetaAt(float start, float step, std::size_t i) { return static_cast<float>(i) * step + start; }

float halfPolarisation(float twoTheta) {
  const float c = std::cos(radians(twoTheta));
  return 0.5f + 0.5f * c * c;
}

// sin θ' and sin θ'·sin 2θ' with 2θ' clamped to at least 0.5°.
float lorentzSinTheta(float twoTheta) { return std::sin(radians(std::max(twoTheta, 0.5f) / 2.0f)); }
float lorentzSinThetaSin2Theta(float twoTheta) {
  const float clamped = std::max(twoTheta, 0.5f);
  return std::sin(radians(clamped / 2.0f)) * std::sin(radians(clamped));
}
// cos(2θ'' - 45°) with 2θ'' clamped to at most 120°.
float monochromatorCos(float twoTheta) { return std::cos(radians(std::min(twoTheta, 120.0f) - 45.0f)); }

}  // namespace

float lpCorrected(float y, float twoTheta, int choice) {
  switch (choice) {
    case 1: return y * halfPolarisation(twoTheta);
    case 2: return y / halfPolarisation(twoTheta);
    case 3: return y * lorentzSinTheta(twoTheta);
    case 4: return y / lorentzSinTheta(twoTheta);
    case 5: return y * lorentzSinThetaSin2Theta(twoTheta);
    case 6: return y / lorentzSinThetaSin2Theta(twoTheta);
    case 7: return y * monochromatorCos(twoTheta);
    case 8: return y / monochromatorCos(twoTheta);
    default: return y;
  }
}

void lpCorrect(std::span<float> y, float start, float step, int choice) {
  for (std::size_t i = 0; i < y.size(); ++i) y[i] = lpCorrected(y[i], twoThetaAt(start, step, i), choice);
}

float autoDivergenceFactor(float twoTheta) {
  return std::sin(twoTheta * 0.5f * 0.0153201f + 0.1947787f) - 0.19355f;
}

void autoDivergenceCorrect(std::span<float> y, float start, float step, bool reverse) {
  for (std::size_t i = 0; i < y.size(); ++i) {
    const float g = autoDivergenceFactor(twoThetaAt(start, step, i));
    y[i] = reverse ? y[i] * g : y[i] / g;
  }
}

bool flatPlateCorrect(std::span<float> y, float start, float step, float inclination, float muThickness) {
  if (muThickness <= 0.0f) return false;
  const float c0 = std::cos(radians(inclination));
  if (c0 <= 0.0f) return false;
  const float e0 = std::exp(-muThickness / c0);

  std::vector<std::optional<float>> f(y.size());
  std::optional<std::size_t> normalisationPoint;
  for (std::size_t j = 0; j < y.size(); ++j) {
    const float twoTheta = twoThetaAt(start, step, j);
    if (std::fabs(twoTheta - inclination) < step) normalisationPoint = j;
    const float c = std::cos(radians(twoTheta - inclination));
    if (c <= 0.0f) continue;
    if (std::fabs(twoTheta - 2.0f * inclination) > step || j < 1) {
      f[j] = (1.0f - c0 / c) / (std::exp(-muThickness / c) - e0);
    } else {
      f[j] = f[j - 1];
    }
  }
  float norm = 1.0f;
  if (normalisationPoint && f[*normalisationPoint] && std::isfinite(*f[*normalisationPoint]) &&
      *f[*normalisationPoint] != 0.0f) {
    norm = *f[*normalisationPoint];
  }
  for (std::size_t j = 0; j < y.size(); ++j) {
    if (!f[j] || !std::isfinite(*f[j])) continue;
    y[j] *= *f[j] / norm;
  }
  return true;
}

}  // namespace quarvel
