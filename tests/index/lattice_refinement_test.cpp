#include <gtest/gtest.h>

#include <cmath>

#include "core/index/lattice/common_factor.h"
#include "core/index/lattice/metric_refinement.h"
#include "core/index/lattice/synthetic_lines.h"
#include "core/index/lattice/units.h"

namespace quarvel {
namespace {

MetricRefinementOptions optionsFor(CrystalSystem system, bool zero) {
  MetricRefinementOptions o;
  o.system = system;
  o.refineZero = zero;
  o.toleranceTwoTheta = 0.06;
  return o;
}

// A start cell off by a few tenths of a per cent, as a trial solution would be.
ReciprocalMetric perturbedStart(const CellParameters& cell) {
  CellParameters start = cell;
  start.a *= 1.002;
  start.b *= 0.998;
  start.c *= 1.001;
  start.beta += 0.05;
  return metricFromCell(start);
}

TEST(LatticeRefinement, RecoversAMonoclinicCellAndZeroShiftFromExactLines) {
  const CellParameters truth{9.1896, 12.4755, 6.2427, 90, 106.927, 90};
  SyntheticLineOptions lines;
  lines.maxLines = 30;
  lines.zero = 0.05;
  const auto observed = syntheticLines(truth, Centring::P, lines);

  const MetricRefinement r = refineMetric(observed, perturbedStart(truth), optionsFor(CrystalSystem::Monoclinic, true));
  ASSERT_TRUE(r.solved);
  EXPECT_TRUE(r.converged);
  EXPECT_EQ(r.indexedLines, 30);
  EXPECT_NEAR(r.zero, 0.05, 0.002);
  EXPECT_NEAR(r.cell.a, truth.a, 1e-4);
  EXPECT_NEAR(r.cell.b, truth.b, 1e-4);
  EXPECT_NEAR(r.cell.c, truth.c, 1e-4);
  EXPECT_NEAR(r.cell.beta, truth.beta, 1e-3);
  EXPECT_DOUBLE_EQ(r.cell.alpha, 90.0);

  // Without the zero column the same lines leave a biased cell and a worse residual.
  const MetricRefinement fixedZero = refineMetric(observed, perturbedStart(truth), optionsFor(CrystalSystem::Monoclinic, false));
  ASSERT_TRUE(fixedZero.solved);
  EXPECT_GT(fixedZero.weightedResidual, 100.0 * r.weightedResidual + 1e-12);
}

TEST(LatticeRefinement, NoisyLinesGiveTheTruthWithinTheStandardDeviations) {
  const CellParameters truth{8.754, 9.000, 6.910, 102.38, 98.68, 98.92};
  int within = 0, total = 0;
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    SyntheticLineOptions lines;
    lines.maxLines = 35;
    lines.noise = 0.01;
    lines.zero = -0.03;
    lines.seed = seed;
    const auto observed = syntheticLines(truth, Centring::P, lines);
    MetricRefinementOptions o = optionsFor(CrystalSystem::Triclinic, true);
    const MetricRefinement r = refineMetric(observed, metricFromCell(truth), o);
    ASSERT_TRUE(r.solved);
    ASSERT_TRUE(r.esdsAvailable);
    for (const auto& [value, sigma, expected] :
         {std::tuple{r.cell.a, r.cellSigmas.a, truth.a}, {r.cell.b, r.cellSigmas.b, truth.b},
          {r.cell.c, r.cellSigmas.c, truth.c}, {r.cell.alpha, r.cellSigmas.alpha, truth.alpha},
          {r.cell.gamma, r.cellSigmas.gamma, truth.gamma}, {r.zero, r.zeroSigma, -0.03}}) {
      EXPECT_GT(sigma, 0.0);
      ++total;
      within += std::abs(value - expected) <= 3.0 * sigma;
    }
  }
  // Three standard deviations hold for about 99.7 % of honest estimates.
  EXPECT_GE(within, total - 2);
}

TEST(LatticeRefinement, AnInsignificantZeroIsDroppedForTheRefinementWithoutIt) {
  // Noisy lines without a zero error: the zero refines to nothing within its limit and the result
  // is exactly the refinement without a zero. A real zero of 0.05° stays.
  const CellParameters truth{9.1896, 12.4755, 6.2427, 90, 106.927, 90};
  for (const double zero : {0.0, 0.05}) {
    SyntheticLineOptions lines;
    lines.maxLines = 30;
    lines.noise = 0.01;
    lines.zero = zero;
    const auto observed = syntheticLines(truth, Centring::P, lines);
    MetricRefinementOptions o = optionsFor(CrystalSystem::Monoclinic, true);
    const MetricRefinement kept = refineMetric(observed, perturbedStart(truth), o);
    o.zeroSignificance = 3.0;
    const MetricRefinement judged = refineMetric(observed, perturbedStart(truth), o);
    ASSERT_TRUE(kept.solved && judged.solved);
    const bool significant = std::abs(kept.zero) > 3.0 * kept.zeroSigma;
    EXPECT_EQ(significant, zero > 0.0);
    EXPECT_EQ(judged.zeroDropped, !significant);
    if (significant) {
      EXPECT_EQ(judged.zero, kept.zero);
      continue;
    }
    EXPECT_DOUBLE_EQ(judged.droppedZeroSigma, kept.zeroSigma);
    const MetricRefinement without = refineMetric(observed, perturbedStart(truth), optionsFor(CrystalSystem::Monoclinic, false));
    EXPECT_EQ(judged.zero, 0.0);
    EXPECT_EQ(judged.cycles, without.cycles);
    EXPECT_EQ(judged.converged, without.converged);
    for (std::size_t i = 0; i < judged.parameters.size(); ++i) {
      EXPECT_EQ(judged.parameters[i], without.parameters[i]);
      EXPECT_EQ(judged.parameterSigmas[i], without.parameterSigmas[i]);
    }
  }
}

TEST(LatticeRefinement, ReportsASingularDesignAndTooFewLines) {
  // Only h00 lines: the tetragonal c term is not determined by them.
  const CellParameters cell{4.0, 4.0, 6.3, 90, 90, 90};
  const ReciprocalMetric m = metricFromCell(cell);
  std::vector<double> h00;
  for (int h = 1; h <= 3; ++h) h00.push_back(twoThetaFromQ(m.q(h, 0, 0), 1.5406));
  MetricRefinementOptions narrow = optionsFor(CrystalSystem::Tetragonal, false);
  narrow.toleranceTwoTheta = 0.01;
  const MetricRefinement singular = refineMetric(h00, m, narrow);
  EXPECT_FALSE(singular.solved);
  EXPECT_TRUE(singular.singular);

  const std::vector<double> one{twoThetaFromQ(m.q(1, 0, 0), 1.5406)};
  const MetricRefinement few = refineMetric(one, m, optionsFor(CrystalSystem::Orthorhombic, false));
  EXPECT_FALSE(few.solved);
}

TEST(LatticeRefinement, DoubledAxisAndPrimitiveDescriptionsShowCommonFactors) {
  // Lines of a body-centred cell indexed with the primitive description of its conventional
  // cell, and of a cell indexed on a doubled c axis.
  const CellParameters cell{5.0, 6.0, 7.0, 90, 90, 90};
  const auto bodyCentred = syntheticLines(cell, Centring::I, {});
  MetricRefinementOptions o = optionsFor(CrystalSystem::Orthorhombic, false);
  const MetricRefinement asPrimitive = refineMetric(bodyCentred, metricFromCell(cell), o);
  ASSERT_TRUE(asPrimitive.solved);
  const auto found = commonIndexConditions(asPrimitive.lines);
  EXPECT_EQ(found, (std::vector<std::string_view>{"h+k+l = 2n"}));

  CellParameters doubled = cell;
  doubled.c *= 2;
  const MetricRefinement onDoubled = refineMetric(syntheticLines(cell, Centring::P, {}), metricFromCell(doubled), o);
  ASSERT_TRUE(onDoubled.solved);
  EXPECT_EQ(commonIndexConditions(onDoubled.lines), (std::vector<std::string_view>{"l = 2n"}));
  // The true cell on its own lines shows none.
  EXPECT_TRUE(commonIndexConditions(refineMetric(syntheticLines(cell, Centring::P, {}), metricFromCell(cell), o).lines).empty());
}

}  // namespace
}  // namespace quarvel
