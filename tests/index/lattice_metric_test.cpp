#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/crystal_system.h"
#include "core/index/lattice/figures_of_merit.h"
#include "core/index/lattice/line_assignment.h"
#include "core/index/lattice/units.h"

namespace quarvel {
namespace {

struct SystemCase {
  CrystalSystem system;
  CellParameters cell;
};

const SystemCase kCells[] = {
    {CrystalSystem::Cubic, {5.4309, 5.4309, 5.4309, 90, 90, 90}},
    {CrystalSystem::Tetragonal, {4.5939, 4.5939, 2.9589, 90, 90, 90}},
    {CrystalSystem::Hexagonal, {4.7592, 4.7592, 12.9946, 90, 90, 120}},
    {CrystalSystem::Rhombohedral, {5.128, 5.128, 5.128, 55.28, 55.28, 55.28}},
    {CrystalSystem::Orthorhombic, {10.027, 11.0284, 3.4202, 90, 90, 90}},
    {CrystalSystem::Monoclinic, {9.1896, 12.4755, 6.2427, 90, 106.927, 90}},
    {CrystalSystem::Triclinic, {8.754, 9.000, 6.910, 102.38, 98.68, 98.92}},
};

TEST(LatticeMetric, CellMetricRoundTripAndDirectSpacingsForEverySystem) {
  for (const SystemCase& c : kCells) {
    SCOPED_TRACE(std::string(crystalSystemName(c.system)));
    const ReciprocalMetric metric = metricFromCell(c.cell);
    // The free coefficients carry the whole form: tied entries come back as they were.
    const ReciprocalMetric tied = metricFromParameters(c.system, parametersFromMetric(c.system, metric));
    for (const auto& [x, y] : {std::pair{tied.A, metric.A}, {tied.B, metric.B}, {tied.C, metric.C},
                               {tied.D, metric.D}, {tied.E, metric.E}, {tied.F, metric.F}})
      EXPECT_NEAR(x, y, 1e-12);
    const auto back = cellFromMetric(tied);
    ASSERT_TRUE(back);
    EXPECT_NEAR(back->a, c.cell.a, 1e-9);
    EXPECT_NEAR(back->c, c.cell.c, 1e-9);
    EXPECT_NEAR(back->beta, c.cell.beta, 1e-9);
    EXPECT_NEAR(back->gamma, c.cell.gamma, 1e-9);
    EXPECT_NEAR(cellVolume(metric), cellVolume(c.cell), 1e-8);
    // The quadratic form and the direct-space 1/d formula of the profile code agree.
    for (const auto& [h, k, l] : {std::tuple{1, 0, 0}, {1, 1, 1}, {2, -1, 3}, {-3, 2, 1}})
      EXPECT_NEAR(std::sqrt(metric.q(h, k, l)), reciprocalLength(h, k, l, c.cell), 1e-6);
  }
  // Corundum on hexagonal axes: V = a²c sin 120°.
  EXPECT_NEAR(cellVolume(kCells[2].cell), 4.7592 * 4.7592 * 12.9946 * std::sqrt(3.0) / 2.0, 1e-9);
}

TEST(LatticeMetric, RejectsFormsThatAreNotPositiveDefinite) {
  EXPECT_TRUE(isPositiveDefinite(ReciprocalMetric{0.1, 0.1, 0.1, 0, 0, 0}));
  EXPECT_FALSE(isPositiveDefinite(ReciprocalMetric{0.1, 0.1, -0.1, 0, 0, 0}));
  EXPECT_FALSE(isPositiveDefinite(ReciprocalMetric{0.1, 0.1, 0.1, 0, 0, 0.25}));  // |F| > 2√(AB)
  EXPECT_FALSE(cellFromMetric(ReciprocalMetric{0.1, 0.1, 0.1, 0.2, 0.2, 0.2}));
}

TEST(LatticeUnits, ConversionsMatchTheHandTable) {
  const double lambda = 1.5406;
  const double q20 = qFromTwoTheta(20.0, lambda);
  EXPECT_NEAR(dFromQ(q20), 4.436, 1e-3);
  EXPECT_NEAR(qUnitsFromQ(q20), 508.2, 0.1);
  EXPECT_NEAR(twoThetaFromQ(q20, lambda), 20.0, 1e-10);
  EXPECT_NEAR(qFromSinSquaredTheta(sinSquaredThetaFromQ(q20, lambda), lambda), q20, 1e-15);
  // ITO's 0.06° at 20° is about 3 q-units; TREOR's sin²θ window 0.0002 is 0.132° at 10°.
  EXPECT_NEAR(qUnitsFromQ(qToleranceFromTwoTheta(20.0, 0.06, lambda)), 3.02, 0.01);
  EXPECT_NEAR(0.0002 / (0.5 * std::sin(10.0 * kDegree)) / kDegree, 0.132, 1e-3);
  EXPECT_TRUE(std::isnan(twoThetaFromQ(2.0, lambda)));  // d = 0.71 Å < λ/2 is out of reach
}

TEST(LatticeLines, CountsAbsencesAndMergesExactDegeneracies) {
  // Primitive cubic a = 4 Å to d = 1 Å: N = h²+k²+l² ≤ 16 misses 7 and 15, and 9 (300 and
  // 221, 15 reflections in the half space) is one value.
  const ReciprocalMetric cubic = metricFromCell({4, 4, 4, 90, 90, 90});
  const auto lines = calculatedLines(cubic, Centring::P, 1.0);
  EXPECT_EQ(countDistinct(lines, 1.0), 14);
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const CalculatedLine& c) { return std::abs(c.q - 9.0 / 16) < 1e-12; }), 15);
  // F keeps unmixed parity (111, 200, 220, 311, 222, 400), I the even sums 2 ... 16.
  EXPECT_EQ(countDistinct(calculatedLines(cubic, Centring::F, 1.0), 1.0), 6);
  EXPECT_EQ(countDistinct(calculatedLines(cubic, Centring::I, 1.0), 1.0), 8);
  for (const CalculatedLine& c : calculatedLines(metricFromCell(kCells[2].cell), Centring::R, 0.5))
    EXPECT_EQ(((-c.h + c.k + c.l) % 3 + 3) % 3, 0);
}

TEST(LatticeLines, SolvingForTheLastIndexAgreesWithTheFullList) {
  // Triclinic and monoclinic forms, primitive and centred, and forms whose cross terms are exactly
  // zero (the mirrored rows are skipped there): the list-free test must find the same nearest
  // line as a search of the full list.
  auto exactForm = [](const SystemCase& c) {
    return metricFromParameters(c.system, parametersFromMetric(c.system, metricFromCell(c.cell)));
  };
  // The tetragonal, hexagonal and cubic forms with P are searched by layers, the rest along the
  // two shorter edges (the long c of a swapped cell too).
  const CellParameters longA{21.3, 4.1, 6.7, 90, 90, 90};
  for (const auto& [m, centring] :
       {std::pair{metricFromCell(kCells[6].cell), Centring::P}, {metricFromCell(kCells[6].cell), Centring::I},
        {metricFromCell(kCells[5].cell), Centring::C}, {exactForm(kCells[5]), Centring::P},
        {exactForm(kCells[4]), Centring::P}, {exactForm(kCells[1]), Centring::I}, {exactForm(kCells[2]), Centring::P},
        {exactForm(kCells[2]), Centring::R}, {exactForm(kCells[1]), Centring::P}, {exactForm(kCells[0]), Centring::P},
        {metricFromCell(longA), Centring::P}, {metricFromCell(longA), Centring::A}, {exactForm(kCells[4]), Centring::C},
        {exactForm({CrystalSystem::Orthorhombic, longA}), Centring::I}}) {
    const auto lines = calculatedLines(m, centring, 0.3);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anyQ(0.01, 0.28);
    for (int trial = 0; trial < 300; ++trial) {
      const double q = anyQ(random), tol = 2e-4;
      double best = tol;
      bool expected = false;
      for (const CalculatedLine& c : lines) {
        if (std::abs(c.q - q) <= best) best = std::abs(c.q - q), expected = true;
      }
      const NearestLineFinder finder(m, centring);
      const auto found = finder.nearest(q, tol);
      ASSERT_EQ(found.has_value(), expected) << q;
      EXPECT_EQ(finder.hasLine(q, tol), expected) << q;
      if (found) {
        EXPECT_NEAR(std::abs(found->q - q), best, 1e-15);
        EXPECT_NEAR(m.q(found->h, found->k, found->l), found->q, 1e-14);  // the indices give the value
        EXPECT_TRUE(isAllowedReflection(centring, found->h, found->k, found->l));
      }
    }
    // Assigning without a list gives every observed line the same value as with one.
    std::vector<double> observed, tolerance;
    for (int i = 0; i < 40; ++i) observed.push_back(anyQ(random)), tolerance.push_back(3e-4);
    const auto listed = assignLines(observed, tolerance, lines);
    const auto solved = assignLines(observed, tolerance, m, centring);
    for (std::size_t i = 0; i < observed.size(); ++i) {
      ASSERT_EQ(listed[i].indexed, solved[i].indexed);
      EXPECT_NEAR(listed[i].qCalc, solved[i].qCalc, 1e-15);
    }
  }
}

TEST(LatticeLines, CountingDistinctValuesWithoutAListAgreesWithTheList) {
  std::vector<double> scratch;
  for (const SystemCase& c : kCells) {
    // Tied coefficients exactly as a trial of the system has them (mirror rows are skipped there).
    const ReciprocalMetric m = metricFromParameters(c.system, parametersFromMetric(c.system, metricFromCell(c.cell)));
    for (const double qMax : {0.05, 0.2, 0.5}) {
      const int distinct = countDistinct(calculatedLines(m, Centring::P, qMax), qMax);
      for (const int limit : {distinct - 1, distinct, distinct + 1})
        EXPECT_EQ(moreDistinctLinesThan(m, qMax, limit, scratch), distinct > limit)
            << crystalSystemName(c.system) << " " << qMax << " " << limit;
    }
  }
}

TEST(LatticeFigures, M20IsLargeOnExactLinesAndFallsWithNoise) {
  const CellParameters cell = kCells[5].cell;
  const ReciprocalMetric m = metricFromCell(cell);
  const double lambda = 1.5406;
  auto figureWithNoise = [&](double sigma) {
    std::mt19937 random(3);
    std::normal_distribution<double> noise(0.0, sigma);
    std::vector<double> q, tol;
    for (const double value : distinctValues(calculatedLines(m, Centring::P, 0.2))) {
      const double t = twoThetaFromQ(value, lambda) + (sigma > 0 ? noise(random) : 0.0);
      q.push_back(qFromTwoTheta(t, lambda));
      tol.push_back(qToleranceFromTwoTheta(t, 0.05, lambda));
      if (q.size() == 25) break;
    }
    std::sort(q.begin(), q.end());
    return deWolffFigure(q, tol, m, Centring::P);
  };
  const DeWolffFigure exact = figureWithNoise(0.0);
  EXPECT_EQ(exact.lines, 20);
  EXPECT_EQ(exact.unindexed, 0);
  EXPECT_EQ(exact.calculated, 20);  // the 20th observed line is the 20th distinct value
  EXPECT_GT(exact.m, 1e4);
  const double low = figureWithNoise(0.005).m, high = figureWithNoise(0.02).m;
  EXPECT_GT(low, high);
  EXPECT_GT(high, 5.0);
  EXPECT_LT(low, 1000.0);
}

TEST(LatticeFigures, HandWorkedM20AndSmithSnyder) {
  // Cubic P a = 4: lines N = 1, 2, 3 observed with misfits of 0.001, -0.002 and 0 in q
  // (q = N/16); the fourth distinct value (N = 4) lies above the count limit.
  const ReciprocalMetric m = metricFromCell({4, 4, 4, 90, 90, 90});
  const std::vector<double> q{1.0 / 16 + 0.001, 2.0 / 16 - 0.002, 3.0 / 16};
  const std::vector<double> tol(3, 0.005);
  const DeWolffFigure f = deWolffFigure(q, tol, m, Centring::P);
  EXPECT_EQ(f.calculated, 3);
  EXPECT_NEAR(f.meanDiscrepancy, 0.001, 1e-12);
  EXPECT_NEAR(f.m, (3.0 / 16) / (2 * 0.001 * 3), 1e-9);
  // The zone method counts up to 1.003 q(last): 0.188 still excludes N = 4 (0.25).
  EXPECT_EQ(deWolffFigure(q, tol, m, Centring::P, {20, 1.003, false}).calculated, 3);

  // F_N: 2θ of N = 1, 2, 3 off by 0.01, 0.02, 0.03°: F_3 = 3 / (0.02 · 3) = 50.
  const double lambda = 1.5406;
  const std::vector<double> t{twoThetaFromQ(1.0 / 16, lambda) + 0.01, twoThetaFromQ(2.0 / 16, lambda) - 0.02,
                              twoThetaFromQ(3.0 / 16, lambda) + 0.03};
  const SmithSnyderFigure fn = smithSnyderFigure(t, 0.05, m, Centring::P, lambda);
  EXPECT_EQ(fn.possible, 3);
  EXPECT_NEAR(fn.meanDeltaTwoTheta, 0.02, 1e-9);
  EXPECT_NEAR(fn.f, 50.0, 1e-6);
}

}  // namespace
}  // namespace quarvel
