#include "core/process/smoothing.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace quarvel {
namespace {

// One array of the moving average, in place. `averageEnds` is false for the 2θ array of paired
// data, whose end points keep their values. Every value is the sum of the original values of
// its window, added in order, without a copy of the whole array.
void smoothArray(std::span<float> v, int n, bool averageEnds) {
  const int count = static_cast<int>(v.size());
  if (n < 2 || count == 0) return;
  const int h = (n - 1) / 2;
  auto at = [&](int oneBased) { return v[static_cast<std::size_t>(oneBased - 1)]; };

  // The growing end windows, from the originals, written once the interior is done.
  std::vector<std::pair<int, float>> ends;
  if (averageEnds) {
    ends.reserve(2 * static_cast<std::size_t>(h));
    for (int k = 1; k <= h; ++k) {
      // Windows are cut at the other end of a pattern shorter than the window.
      const int lastFromStart = std::min(h + k, count);
      float sum = 0.0f;
      for (int j = 1; j <= lastFromStart; ++j) sum += at(j);
      ends.emplace_back(std::min(k, count), sum / static_cast<float>(lastFromStart));

      const int firstFromEnd = std::max(count + 1 - h - k, 1);
      sum = 0.0f;
      for (int j = count; j >= firstFromEnd; --j) sum += at(j);
      ends.emplace_back(std::max(count + 1 - k, 1), sum / static_cast<float>(count + 1 - firstFromEnd));
    }
  }

  // Interior windows, summed straight from the array: the value of point k is written back only
  // once no later window reaches k (k < i - h), so every sum still sees the originals.
  const int first = n / 2 + 1, last = count - h;
  if (first <= last) {
    const int lag = h + 1;
    std::vector<float> pending(static_cast<std::size_t>(lag) + 1);  // results not yet written, by k mod (lag + 1)
    auto held = [&](int k) -> float& { return pending[static_cast<std::size_t>(k % (lag + 1))]; };
    const float width = static_cast<float>(n);
    for (int i = first; i <= last; ++i) {
      float sum = 0.0f;
      for (int j = i - h; j <= i + h; ++j) sum += at(j);
      held(i) = sum / width;
      if (i - lag >= first) v[static_cast<std::size_t>(i - lag - 1)] = held(i - lag);
    }
    for (int k = std::max(first, last - lag + 1); k <= last; ++k) v[static_cast<std::size_t>(k - 1)] = held(k);
  }
  for (const auto& [oneBased, value] : ends) v[static_cast<std::size_t>(oneBased - 1)] = value;
}

// Published quadratic/cubic smoothing weights, c(0) .. c(h) of each window (symmetric).
constexpr std::array<int, 3> kSg5{17, 12, -3};
constexpr std::array<int, 4> kSg7{7, 6, 3, -2};
constexpr std::array<int, 5> kSg9{59, 54, 39, 14, -21};
constexpr std::array<int, 6> kSg11{89, 84, 69, 44, 9, -36};
constexpr std::array<int, 7> kSg13{25, 24, 21, 16, 9, 0, -11};
constexpr std::array<int, 8> kSg15{167, 162, 147, 122, 87, 42, -13, -78};
constexpr std::array<int, 9> kSg17{43, 42, 39, 34, 27, 18, 7, -6, -21};
constexpr std::array<int, 10> kSg19{269, 264, 249, 224, 189, 144, 89, 24, -51, -136};
constexpr std::array<int, 11> kSg21{329, 324, 309, 284, 249, 204, 149, 84, 9, -76, -171};
constexpr std::array<int, 12> kSg23{79, 78, 75, 70, 63, 54, 43, 30, 15, -2, -21, -42};
constexpr std::array<int, 13> kSg25{467, 462, 447, 422, 387, 342, 287, 222, 147, 62, -33, -138, -253};

template <std::size_t H>
constexpr std::array<int, 2 * H - 1> fullWindow(const std::array<int, H>& half) {
  std::array<int, 2 * H - 1> w{};
  for (std::size_t j = 0; j < H; ++j) {
    w[H - 1 + j] = half[j];
    w[H - 1 - j] = half[j];
  }
  return w;
}

constexpr auto kW5 = fullWindow(kSg5);
constexpr auto kW7 = fullWindow(kSg7);
constexpr auto kW9 = fullWindow(kSg9);
constexpr auto kW11 = fullWindow(kSg11);
constexpr auto kW13 = fullWindow(kSg13);
constexpr auto kW15 = fullWindow(kSg15);
constexpr auto kW17 = fullWindow(kSg17);
constexpr auto kW19 = fullWindow(kSg19);
constexpr auto kW21 = fullWindow(kSg21);
constexpr auto kW23 = fullWindow(kSg23);
constexpr auto kW25 = fullWindow(kSg25);

}  // namespace

void movingAverage(std::span<const float> /*x*/, std::span<float> y, int n) {
  smoothArray(y, n, true);
}

void movingAveragePairs(std::span<float> x, std::span<float> y, int n) {
  smoothArray(x, n, false);
  smoothArray(y, n, true);
}

SavitzkyGolaySet savitzkyGolaySet(int window) {
  switch (window) {
    case 5: return {5, kW5, 35};
    case 7: return {7, kW7, 21};
    case 9: return {9, kW9, 231};
    case 11: return {11, kW11, 429};
    case 13: return {13, kW13, 143};
    case 15: return {15, kW15, 1105};
    case 17: return {17, kW17, 323};
    case 19: return {19, kW19, 2261};
    case 21: return {21, kW21, 3059};
    case 23: return {23, kW23, 8059};
    default: return {25, kW25, 5175};
  }
}

void savitzkyGolay(std::span<float> y, int window) {
  const SavitzkyGolaySet set = savitzkyGolaySet(window);
  const std::size_t n = y.size();
  const std::size_t h = static_cast<std::size_t>(set.window - 1) / 2;
  if (n < static_cast<std::size_t>(set.window)) return;
  std::vector<float> out(n);
  const float divisor = static_cast<float>(set.divisor);
  for (std::size_t i = h; i + h < n; ++i) {
    float sum = 0.0f;
    const float* w = &y[i - h];
    for (std::size_t j = 0; j < set.weights.size(); ++j) sum += static_cast<float>(set.weights[j]) * w[j];
    out[i] = sum / divisor;
  }
  for (std::size_t i = 0; i < h; ++i) {
    out[i] = out[h];
    out[n - 1 - i] = out[n - 1 - h];
  }
  std::copy(out.begin(), out.end(), y.begin());
}

}  // namespace quarvel
