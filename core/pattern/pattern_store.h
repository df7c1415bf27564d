// The one store of powder patterns for a session: nine slots on an equidistant 2θ grid model, a
// single-level undo copy of all nine, the derived axis table (2θ, d, Q per point), the shared
// wavelength setting and the descriptive texts of the loaded pattern. All storage is allocated
// once when the store is made and never again.
//
// Point numbering: intensities are stored 0-based. Point i (0 <= i < count) lies at
// 2θ = start + i * step. The descriptions of the operations count points from 1; their point j
// is index j - 1 here.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "core/common/zeroed_allocator.h"

namespace quarvel {

inline constexpr int kMaxPoints = 20000;
inline constexpr int kSlotCount = 9;

// Fixed roles of the slots (1-based, as users and scripts name them).
enum SlotIndex : int {
  kSlotPattern = 1,      // the current pattern; Modify operations act on it
  kSlotBackground = 2,   // background pattern
  kSlotAsLoaded = 3,     // copy of the pattern as loaded; the difference after a subtraction
  kSlotCalculated = 4,   // calculated or fitted profile
  kSlotMultiple1 = 5,    // multiple patterns "Pattern 1" .. "Pattern 4" are slots 5..8
  kSlotStaging = 9,
};

struct PatternSlot {
  float start = 0.0f;       // 2θ of the first point, degrees
  float step = 0.0f;        // 2θ increment, degrees
  float end = 0.0f;         // 2θ of the last point = start + (count - 1) * step
  float wavelength = 0.0f;  // α1 wavelength, Å
  int count = 0;            // valid points; 0 = empty
  // Display limits of the derived axes, set by rebuildAxisTable.
  float dAtLast = 0.0f, dAtFirst = 0.0f, qAtFirst = 0.0f, qAtLast = 0.0f;
  // kMaxPoints intensities; only [0, count) are meaningful.
  std::vector<float, ZeroedAllocator<float>> y;

  PatternSlot() : y(kMaxPoints) {}  // value-initialised: the allocator's zeros, nothing written

  float x(int i) const { return start + static_cast<float>(i) * step; }
  std::span<float> data() { return {y.data(), static_cast<std::size_t>(count)}; }
  std::span<const float> data() const { return {y.data(), static_cast<std::size_t>(count)}; }
  void recomputeEnd() { end = start + static_cast<float>(count - 1) * step; }
  // Grid, wavelength, count and the first `count` intensities of `other`.
  void copyFrom(const PatternSlot& other);
  // Count 0, intensities zeroed.
  void clear();

 private:
  int written_ = 0;  // furthest point count this slot has held; beyond it y is still zero
};

struct AxisPoint {
  float twoTheta = 0.0f;
  float d = 0.0f;
  float q = 0.0f;
};

struct WavelengthSetting {
  float alpha1 = 1.5406f;
  float alpha2 = 1.54433f;
  float ratio = 0.0f;  // α2/α1 intensity ratio
};

// Descriptive texts of the current pattern, blanked by resetWorkingState.
struct PatternInfo {
  std::string loadedPath;
  std::string savedPath;
  std::string title;
  std::string diffractometer;
  std::string date;
  std::string time;
  std::array<std::string, 16> comments;

  void clear() { *this = PatternInfo(); }
};

enum class PlotMode : int { Pattern = 1, Background = 2, Difference = 3, Calculated = 4, PatternAndBackground = 5 };
enum class XAxisUnit : int { TwoTheta = 1, D = 2, Q = 3 };
enum class YAxisScale : int { Linear = 1, Logarithmic = 2 };

struct Selection {
  int currentSlot = kSlotPattern;
  PlotMode plotMode = PlotMode::Pattern;
  XAxisUnit xAxisUnit = XAxisUnit::TwoTheta;
  YAxisScale yAxisScale = YAxisScale::Linear;
  int fileFormatCode = 1;
  float zeroCorrection = 0.0f;  // added to every 2θ when the axis table is built
};

class PatternStore {
 public:
  PatternStore();
  PatternStore(const PatternStore&) = delete;
  PatternStore& operator=(const PatternStore&) = delete;

  // Slots by their 1-based index (1..9).
  PatternSlot& slot(int index);
  const PatternSlot& slot(int index) const;
  PatternSlot& pattern() { return slot(kSlotPattern); }
  const PatternSlot& pattern() const { return slot(kSlotPattern); }

  // Single-level undo of all nine slots.
  void keepUndoCopy();
  // Copies the slots back; false (nothing done) when no copy is available. The caller (the
  // session) resets the working state and refreshes.
  bool restoreUndoCopy();
  bool undoAvailable() const { return undoAvailable_; }
  void discardUndoCopy() { undoAvailable_ = false; }

  // Recomputes 2θ, d and Q per point of slot 1 (and of the open multiple patterns) and the
  // display limits of slots 1 and 3.
  void rebuildAxisTable();
  std::span<const AxisPoint> axisTable() const {
    return {axis_.data(), static_cast<std::size_t>(slot(kSlotPattern).count)};
  }
  // Axis table of multiple pattern m (1..4).
  std::span<const AxisPoint> multipleAxisTable(int m) const;

  // After a reader filled slot 1: copies it into slot 3 (the as-loaded copy).
  void copyPatternToAsLoaded() { slot(kSlotAsLoaded).copyFrom(slot(kSlotPattern)); }

  WavelengthSetting wavelength;
  PatternInfo info;
  Selection selection;
  int multipleCount = 0;  // number of open multiple patterns (0..4)

 private:
  std::array<PatternSlot, kSlotCount> slots_;
  std::array<PatternSlot, kSlotCount> undo_;
  bool undoAvailable_ = false;
  std::vector<AxisPoint, ZeroedAllocator<AxisPoint>> axis_;                    // kMaxPoints
  std::array<std::vector<AxisPoint, ZeroedAllocator<AxisPoint>>, 4> multipleAxis_;  // kMaxPoints each
};

// 2θ (degrees) -> d (Å) and Q = 2π/d, as the axis table computes them. d is infinite or not a
// number at 2θ = 0, and Q is then 0.
AxisPoint axisPointAt(float twoTheta, float wavelength);

}  // namespace quarvel
