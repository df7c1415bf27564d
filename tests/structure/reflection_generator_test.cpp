#include <gtest/gtest.h>

#include <map>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/units.h"
#include "core/structure/reflection_generator.h"

namespace quarvel {
namespace {

TEST(ReflectionGenerator, SiliconFirstLinesAndMultiplicities) {
  const auto r = generateReflections({5.4309, 5.4309, 5.4309, 90, 90, 90}, 16, Centring::F, {1.5406, 0.0, 90.0});
  // Lattice-centring absences only: 200 and 222 (diamond-glide absences) are still listed.
  const std::vector<std::tuple<int, int, int, int>> expected{{1, 1, 1, 8}, {2, 0, 0, 6}, {2, 2, 0, 12},
                                                             {3, 1, 1, 24}, {2, 2, 2, 8}, {4, 0, 0, 6}};
  ASSERT_GE(r.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const auto [h, k, l, m] = expected[i];
    EXPECT_EQ(std::tie(r[i].h, r[i].k, r[i].l, r[i].multiplicity), std::tie(h, k, l, m)) << i;
  }
  EXPECT_NEAR(r[0].twoTheta, 28.442, 0.002);
  EXPECT_NEAR(r[2].twoTheta, 47.302, 0.002);
}

TEST(ReflectionGenerator, EveryLaueClassPartitionsTheSphere) {
  // Cells that obey each class's constraints; the multiplicities of the representatives must add
  // up to every reflection in the range, and no representative may be equivalent to another.
  const std::map<int, CellParameters> cells{
      {1, {5.1, 6.2, 7.3, 81, 95, 103}}, {2, {5.1, 6.2, 7.3, 97, 90, 90}},  {3, {5.1, 6.2, 7.3, 90, 104, 90}},
      {4, {5.1, 6.2, 7.3, 90, 90, 112}}, {5, {5.1, 6.2, 7.3, 90, 90, 90}},  {6, {5.1, 5.1, 7.3, 90, 90, 90}},
      {7, {5.1, 5.1, 7.3, 90, 90, 90}},  {8, {5.1, 5.1, 7.3, 90, 90, 120}}, {9, {5.1, 5.1, 5.1, 70, 70, 70}},
      {10, {5.1, 5.1, 7.3, 90, 90, 120}}, {11, {5.1, 5.1, 7.3, 90, 90, 120}}, {12, {5.1, 5.1, 5.1, 70, 70, 70}},
      {13, {5.1, 5.1, 7.3, 90, 90, 120}}, {14, {5.1, 5.1, 7.3, 90, 90, 120}}, {15, {5.1, 5.1, 5.1, 90, 90, 90}},
      {16, {5.1, 5.1, 5.1, 90, 90, 90}}};
  const int orders[] = {2, 4, 4, 4, 8, 8, 16, 6, 6, 12, 12, 12, 12, 24, 24, 48};
  for (const auto& [laue, cell] : cells) {
    SCOPED_TRACE(laueClassName(laue));
    EXPECT_EQ(static_cast<int>(laueOperations(laue).size()), orders[laue - 1]);
    const ReflectionRange range{1.5406, 0.0, 100.0};
    const auto r = generateReflections(cell, laue, Centring::P, range);
    const double qMax = qFromTwoTheta(100.0, 1.5406);
    // calculatedLines holds one of each ± pair.
    const auto all = calculatedLines(metricFromCell(cell), Centring::P, qMax);
    int total = 0;
    for (const GeneratedReflection& g : r) {
      total += g.multiplicity;
      EXPECT_EQ(equivalenceClass({g.h, g.k, g.l}, laue).representative, (Hkl{g.h, g.k, g.l}));
      for (const auto& op : laueOperations(laue)) {  // every equivalent has the same q
        const Hkl e{op[0][0] * g.h + op[0][1] * g.k + op[0][2] * g.l, op[1][0] * g.h + op[1][1] * g.k + op[1][2] * g.l,
                    op[2][0] * g.h + op[2][1] * g.k + op[2][2] * g.l};
        ASSERT_NEAR(metricFromCell(cell).q(e[0], e[1], e[2]), g.q, 1e-12);
      }
    }
    EXPECT_EQ(total, 2 * static_cast<int>(all.size()));
  }
}

TEST(ReflectionGenerator, RangeEndsCentringAndConstraints) {
  const CellParameters cubic{4, 4, 4, 90, 90, 90};
  const double at200 = twoThetaFromQ(4.0 / 16, 1.5406);
  const auto kept = generateReflections(cubic, 15, Centring::P, {1.5406, 0.0, at200});
  ASSERT_FALSE(kept.empty());
  EXPECT_EQ(std::tie(kept.back().h, kept.back().k, kept.back().l), std::make_tuple(2, 0, 0));  // exactly at the limit
  EXPECT_EQ(generateReflections(cubic, 15, Centring::P, {1.5406, at200, 180.0}).front().h, 2);

  // R on rhombohedral axes is primitive; on hexagonal axes it keeps −h+k+l = 3n only.
  const CellParameters rhombo{5.128, 5.128, 5.128, 55.28, 55.28, 55.28};
  EXPECT_EQ(generateReflections(rhombo, 12, Centring::R, {1.5406, 0, 90}).size(),
            generateReflections(rhombo, 12, Centring::P, {1.5406, 0, 90}).size());
  for (const auto& g : generateReflections({4.7592, 4.7592, 12.9946, 90, 90, 120}, 8, Centring::R, {1.5406, 0, 90}))
    EXPECT_EQ(((-g.h + g.k + g.l) % 3 + 3) % 3, 0);

  // The class's constraints win over the cell given: 4/mmm takes b = a and right angles.
  const auto constrained = generateReflections({4, 7, 5, 80, 80, 80}, 7, Centring::P, {1.5406, 0, 60});
  const auto tetragonal = generateReflections({4, 4, 5, 90, 90, 90}, 7, Centring::P, {1.5406, 0, 60});
  ASSERT_EQ(constrained.size(), tetragonal.size());
  EXPECT_DOUBLE_EQ(constrained[3].twoTheta, tetragonal[3].twoTheta);
}

TEST(ReflectionGenerator, HalvesTheRangeWhenTooManyReflections) {
  // A 60 Å cubic cell has about 7·10⁵ reflections to 90°: the range shrinks until ≤ 99999.
  const auto r = generateReflections({60, 60, 60, 90, 90, 90}, 1, Centring::P, {1.5406, 0, 90});
  ASSERT_FALSE(r.empty());
  int total = 0;
  for (const auto& g : r) total += g.multiplicity;
  EXPECT_LE(total, kMaxGeneratedReflections);
  EXPECT_GT(total, kMaxGeneratedReflections / 8);
  EXPECT_LT(r.back().twoTheta, 90.0);
}

}  // namespace
}  // namespace quarvel
