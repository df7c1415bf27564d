#include "core/structure/laue_class.h"

#include <algorithm>

namespace quarvel {

namespace {

using Op = std::array<Hkl, 3>;  // rows: h' = row0 · (h, k, l), ...

Hkl applyOp(const Op& op, const Hkl& v) {
  Hkl r{};
  for (std::size_t i = 0; i < 3; ++i) r[i] = op[i][0] * v[0] + op[i][1] * v[1] + op[i][2] * v[2];
  return r;
}

Op compose(const Op& x, const Op& y) {
  Op r{};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) r[i][j] = x[i][0] * y[0][j] + x[i][1] * y[1][j] + x[i][2] * y[2][j];
  return r;
}

constexpr Op kInversion{{{-1, 0, 0}, {0, -1, 0}, {0, 0, -1}}};
constexpr Op kTwofoldA{{{1, 0, 0}, {0, -1, 0}, {0, 0, -1}}};
constexpr Op kTwofoldB{{{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}}};
constexpr Op kTwofoldC{{{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}};
constexpr Op kFourfoldC{{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}};          // (−k, h, l)
constexpr Op kThreefoldHex{{{0, 1, 0}, {-1, -1, 0}, {0, 0, 1}}};      // (k, −h−k, l)
constexpr Op kThreefoldBody{{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}};       // (l, h, k)
constexpr Op kTwofoldHexA{{{1, 0, 0}, {-1, -1, 0}, {0, 0, -1}}};      // (h, −h−k, −l): 2 along a
constexpr Op kTwofoldHexDiagonal{{{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}};  // (k, h, −l)
constexpr Op kTwofoldBodyDiagonal{{{0, -1, 0}, {-1, 0, 0}, {0, 0, -1}}};  // (−k, −h, −l)

std::vector<Op> generators(int laueClass) {
  switch (laueClass) {
    case 1: return {};
    case 2: return {kTwofoldA};
    case 3: return {kTwofoldB};
    case 4: return {kTwofoldC};
    case 5: return {kTwofoldA, kTwofoldB};
    case 6: return {kFourfoldC};
    case 7: return {kFourfoldC, kTwofoldA};
    case 8: return {kThreefoldHex};
    case 9: return {kThreefoldBody};
    case 10: return {kThreefoldHex, kTwofoldHexA};
    case 11: return {kThreefoldHex, kTwofoldHexDiagonal};
    case 12: return {kThreefoldBody, kTwofoldBodyDiagonal};
    case 13: return {kThreefoldHex, kTwofoldC};
    case 14: return {kThreefoldHex, kTwofoldC, kTwofoldHexDiagonal};
    case 15: return {kTwofoldA, kTwofoldB, kThreefoldBody};
    case 16: return {kFourfoldC, kTwofoldA, kThreefoldBody};
    default: return {};
  }
}

std::vector<Op> closeGroup(int laueClass) {
  std::vector<Op> group{Op{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, kInversion};
  for (const Op& g : generators(laueClass)) group.push_back(g);
  for (std::size_t i = 0; i < group.size(); ++i)
    for (std::size_t j = 0; j <= i; ++j)
      for (const Op& product : {compose(group[i], group[j]), compose(group[j], group[i])})
        if (std::find(group.begin(), group.end(), product) == group.end()) group.push_back(product);
  return group;
}

constexpr std::string_view kNames[kLaueClassCount] = {"1bar", "2/m-a", "2/m-b", "2/m-c", "mmm", "4/m",
                                                      "4/mmm", "3barH", "3barR", "3m1H", "31mH", "3mR",
                                                      "6/m", "6/mmm", "m3", "m3m"};

}  // namespace

bool isValidLaueClass(int laueClass) { return laueClass >= 1 && laueClass <= kLaueClassCount; }

std::string_view laueClassName(int laueClass) {
  return isValidLaueClass(laueClass) ? kNames[laueClass - 1] : std::string_view{};
}

CrystalSystem laueClassSystem(int laueClass) {
  switch (laueClass) {
    case 2: return CrystalSystem::MonoclinicA;
    case 3: return CrystalSystem::Monoclinic;
    case 4: return CrystalSystem::MonoclinicC;
    case 5: return CrystalSystem::Orthorhombic;
    case 6:
    case 7: return CrystalSystem::Tetragonal;
    case 8:
    case 10:
    case 11:
    case 13:
    case 14: return CrystalSystem::Hexagonal;
    case 9:
    case 12: return CrystalSystem::Rhombohedral;
    case 15:
    case 16: return CrystalSystem::Cubic;
    default: return CrystalSystem::Triclinic;
  }
}

CellParameters applyLaueConstraints(const CellParameters& cell, int laueClass) {
  return constrainCell(laueClassSystem(laueClass), cell);
}

const std::vector<std::array<Hkl, 3>>& laueOperations(int laueClass) {
  static const std::array<std::vector<Op>, kLaueClassCount> groups = [] {
    std::array<std::vector<Op>, kLaueClassCount> all;
    for (int n = 1; n <= kLaueClassCount; ++n) all[static_cast<std::size_t>(n - 1)] = closeGroup(n);
    return all;
  }();
  return groups[static_cast<std::size_t>(isValidLaueClass(laueClass) ? laueClass - 1 : 0)];
}

EquivalenceClass equivalenceClass(const Hkl& hkl, int laueClass) {
  const auto& ops = laueOperations(laueClass);
  std::array<Hkl, 48> members{};
  std::size_t count = 0;
  for (const Op& op : ops) {
    const Hkl image = applyOp(op, hkl);
    if (std::find(members.begin(), members.begin() + static_cast<std::ptrdiff_t>(count), image) ==
        members.begin() + static_cast<std::ptrdiff_t>(count))
      members[count++] = image;
  }
  return {*std::max_element(members.begin(), members.begin() + static_cast<std::ptrdiff_t>(count)),
          static_cast<int>(count)};
}

}  // namespace quarvel
