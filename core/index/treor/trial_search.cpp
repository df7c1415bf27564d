#include "core/index/treor/trial_search.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "core/common/parallel_for.h"
#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/niggli_reduction.h"
#include "core/index/lattice/normal_equations.h"

namespace quarvel {

namespace {

// The reciprocal sub-lattice spanned by the columns of a lower-triangular integer matrix (a
// Hermite normal form): hkl lies on it when the triangular system solves in whole numbers.
class SubLattice {
 public:
  explicit SubLattice(const Mat3& h) {
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j <= i; ++j) m_[i][j] = static_cast<int>(std::lround(h(i, j)));
  }
  bool contains(const std::array<int, 3>& hkl) const {
    std::array<int, 3> x{};
    for (int i = 0; i < 3; ++i) {
      int rest = hkl[i];
      for (int j = 0; j < i; ++j) rest -= m_[i][j] * x[j];
      if (rest % m_[i][i] != 0) return false;
      x[i] = rest / m_[i][i];
    }
    return true;
  }

 private:
  std::array<std::array<int, 3>, 3> m_{};
};

int indexSum(const std::array<int, 3>& hkl) { return std::abs(hkl[0]) + std::abs(hkl[1]) + std::abs(hkl[2]); }

// Gaussian elimination with partial pivoting on an n×n system (n ≤ 6); false when singular.
bool solveSmall(int n, std::array<std::array<double, 7>, 6> m, MetricParameters& p) {
  double scale = 0;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) scale = std::max(scale, std::abs(m[i][j]));
  if (scale == 0) return false;
  for (int col = 0; col < n; ++col) {
    int pivot = col;
    for (int r = col + 1; r < n; ++r)
      if (std::abs(m[r][col]) > std::abs(m[pivot][col])) pivot = r;
    if (std::abs(m[pivot][col]) < 1e-9 * scale) return false;
    std::swap(m[pivot], m[col]);
    for (int r = col + 1; r < n; ++r) {
      const double f = m[r][col] / m[col][col];
      if (f == 0) continue;
      for (int c = col; c <= n; ++c) m[r][c] -= f * m[col][c];
    }
  }
  for (int r = n - 1; r >= 0; --r) {
    double s = m[r][n];
    for (int c = r + 1; c < n; ++c) s -= m[r][c] * p[c];
    p[r] = s / m[r][r];
  }
  return true;
}

// A cell seen before in this stage, whatever the order of its axes: the sorted magnitudes of
// the six coefficients, quantised on a log scale.
std::uint64_t cellKey(const ReciprocalMetric& m) {
  std::array<double, 6> v{std::abs(m.A), std::abs(m.B), std::abs(m.C), std::abs(m.D), std::abs(m.E), std::abs(m.F)};
  std::sort(v.begin(), v.end());
  std::uint64_t key = 1469598103934665603ULL;
  for (double x : v) {
    const long bucket = x < 1e-12 ? -1 : std::lround(std::log(x) * 1000.0);
    key = (key ^ static_cast<std::uint64_t>(bucket)) * 1099511628211ULL;
  }
  return key;
}

double coefficient(const ReciprocalMetric& m, int i) {
  switch (i) {
    case 0: return m.A;
    case 1: return m.B;
    case 2: return m.C;
    case 3: return m.D;
    case 4: return m.E;
    default: return m.F;
  }
}

void setCoefficient(ReciprocalMetric& m, int i, double v) {
  switch (i) {
    case 0: m.A = v; break;
    case 1: m.B = v; break;
    case 2: m.C = v; break;
    case 3: m.D = v; break;
    case 4: m.E = v; break;
    default: m.F = v; break;
  }
}

// The six products h², k², l², kl, hl, hk that multiply A..F.
std::array<double, 6> products(const std::array<int, 3>& hkl) {
  const double h = hkl[0], k = hkl[1], l = hkl[2];
  return {h * h, k * k, l * l, k * l, h * l, h * k};
}

}  // namespace

std::vector<LabelRow> labelTable(CrystalSystem system, int maxIndex, int maxSum) {
  std::vector<std::array<int, 3>> indices;
  // Non-negative indices first, so that a row's representative is the plainest one.
  auto order = [maxIndex] {
    std::vector<int> v;
    for (int i = 0; i <= maxIndex; ++i) v.push_back(i);
    for (int i = 1; i <= maxIndex; ++i) v.push_back(-i);
    return v;
  }();
  for (int h : order)
    for (int k : order)
      for (int l : order)
        if ((h || k || l) && std::abs(h) + std::abs(k) + std::abs(l) <= maxSum) indices.push_back({h, k, l});
  std::stable_sort(indices.begin(), indices.end(),
                   [](const auto& a, const auto& b) { return indexSum(a) < indexSum(b); });
  std::vector<LabelRow> rows;
  std::map<MetricParameters, bool> seen;
  for (const auto& hkl : indices) {
    const MetricParameters x = designRow(system, hkl[0], hkl[1], hkl[2]);
    if (seen.emplace(x, true).second) rows.push_back({x, hkl});
  }
  return rows;
}

TrialSearch::TrialSearch(const TrialProblem& problem, std::function<bool()> interrupted)
    : problem_(problem), interrupted_(std::move(interrupted)) {}

void TrialSearch::beginStage(double maxVolume, int printThreshold) {
  maxVolume_ = maxVolume;
  printThreshold_ = printThreshold;
  seen_.clear();
}

bool TrialSearch::poll() {
  if (!stopped_ && (solved_ & 0xFFF) == 0 && interrupted_ && interrupted_()) stopped_ = true;
  return !stopped_;
}

bool TrialSearch::keepGoing() {
  if (!stopped_ && interrupted_ && interrupted_()) stopped_ = true;
  return !stopped_;
}

std::vector<LabelRow> TrialSearch::filterLabels(CrystalSystem system, const std::vector<LabelRow>& labels,
                                                double q) const {
  // Every index is bounded by edge·√q (the projection of the reciprocal vector on the axis);
  // in the orthogonal systems every squared coefficient is at least 1/edge², which bounds the
  // row sum as well.
  const double edgeReach = problem_.maxEdge * std::sqrt(q) * (1 + 1e-6);
  const double sumReach = q * problem_.maxEdge * problem_.maxEdge * (1 + 1e-6);
  std::vector<LabelRow> out;
  for (const LabelRow& row : labels) {
    const auto& hkl = row.hkl;
    if (std::max({std::abs(hkl[0]), std::abs(hkl[1]), std::abs(hkl[2])}) > edgeReach) continue;
    double weighted = 0;
    switch (system) {
      case CrystalSystem::Cubic:
      case CrystalSystem::Tetragonal:
      case CrystalSystem::Orthorhombic: weighted = row.x[0] + row.x[1] + row.x[2]; break;
      case CrystalSystem::Hexagonal: weighted = 4.0 / 3.0 * row.x[0] + row.x[1]; break;
      default: break;
    }
    if (weighted > sumReach) continue;
    out.push_back(row);
  }
  return out;
}

int TrialSearch::indexedTestLines(const ReciprocalMetric& metric, int required, const std::vector<int>& solved) const {
  const int n = std::min<int>(problem_.testLines, static_cast<int>(problem_.q.size()));
  const int allowedMisses = n - required;
  int misses = 0;
  const NearestLineFinder lines(metric, Centring::P);
  // The lines the trial was solved from are indexed by construction.
  for (int i = 0; i < n; ++i) {
    if (std::find(solved.begin(), solved.end(), i) != solved.end()) continue;
    if (!lines.hasLine(problem_.q[i], windowOf(i)) && ++misses > allowedMisses)
      return n - misses;
  }
  return n - misses;
}

std::vector<int> TrialSearch::unindexedTestLines(const ReciprocalMetric& metric, int count, bool beyondTestLines,
                                                 Centring centring) const {
  std::vector<int> out;
  const int n = beyondTestLines ? static_cast<int>(problem_.q.size())
                                : std::min<int>(problem_.testLines, static_cast<int>(problem_.q.size()));
  const NearestLineFinder lines(metric, centring);
  for (int i = 0; i < n && static_cast<int>(out.size()) < count; ++i)
    if (!lines.hasLine(problem_.q[i], windowOf(i))) out.push_back(i);
  return out;
}

bool TrialSearch::indexesLines(const ReciprocalMetric& metric, const std::vector<int>& lines, int allowedMisses) const {
  const NearestLineFinder calculated(metric, Centring::P);
  int misses = 0;
  for (const int i : lines)
    if (!calculated.hasLine(problem_.q[i], windowOf(i)) && ++misses > allowedMisses) return false;
  return true;
}

std::optional<std::uint64_t> TrialSearch::admissibleKey(const Trial& trial) const {
  const ReciprocalMetric& m = trial.metric;
  if (!isPositiveDefinite(m)) return std::nullopt;
  const auto cell = cellFromMetric(m);
  if (!cell) return std::nullopt;
  for (double edge : {cell->a, cell->b, cell->c})
    if (edge < problem_.minEdge || edge > problem_.maxEdge) return std::nullopt;
  const double volume = cellVolume(*cell);
  if (volume < problem_.minVolume || volume > maxVolume_) return std::nullopt;
  if (std::max(cell->beta, 180.0 - cell->beta) > problem_.maxBeta) return std::nullopt;
  if (problem_.density.active() && !densityFit(volume, problem_.density).within) return std::nullopt;
  return cellKey(m);
}

bool TrialSearch::indexesTestLines(Trial& trial) const {
  trial.iq = indexedTestLines(trial.metric, printThreshold_, trial.lines);
  if (trial.iq < printThreshold_) return false;
  if (!problem_.fitWindow.empty() && !refitOnTestLines(trial)) return false;
  if (trial.iq >= problem_.iqRequired) examinePassingTrial(trial);
  return true;
}

void TrialSearch::examinePassingTrial(Trial& trial) const {
  if (problem_.maxCalculatedLines > 0) {
    std::vector<double> values;
    const double qLast = problem_.q[static_cast<std::size_t>(problem_.testLines - 1)];
    trial.crowded = moreDistinctLinesThan(trial.metric, qLast, problem_.maxCalculatedLines, values);
  }
  // Once per passing trial: a fifth of a monoclinic run.
  if (!trial.crowded && trial.system == CrystalSystem::Monoclinic && !subLatticeForms_.empty())
    trial.finerLattice = finestSubLattice(trial);
}

bool TrialSearch::admit(Trial& trial) {
  const auto key = admissibleKey(trial);
  if (!key || !seen_.insert(*key).second) return false;
  return indexesTestLines(trial);
}

bool TrialSearch::refitOnTestLines(Trial& trial) const {
  const int n = std::min<int>(problem_.testLines, static_cast<int>(problem_.q.size()));
  const int m = freeParameterCount(trial.system);
  std::vector<MetricParameters> rows;
  std::vector<int> used;
  // The test lines, and the lines the trial was solved from when they lie beyond (a zone's third
  // axis may first show there, and without that line the fit would not know it).
  std::vector<int> fitted;
  for (int i = 0; i < n; ++i) fitted.push_back(i);
  for (const int line : trial.lines)
    if (line >= n && line < static_cast<int>(problem_.q.size())) fitted.push_back(line);
  const NearestLineFinder trialLines(trial.metric, Centring::P);
  for (const int i : fitted)
    if (const auto near = trialLines.nearest(problem_.q[i], windowOf(i))) {
      rows.push_back(designRow(trial.system, near->h, near->k, near->l));
      used.push_back(i);
    }
  // Least squares in 2θ: weights 1/slope²; the zero column is the slope itself.
  auto fit = [&](bool withZero) -> std::optional<std::vector<double>> {
    const int unknowns = m + (withZero ? 1 : 0);
    if (static_cast<int>(used.size()) <= unknowns) return std::nullopt;
    NormalEquations equations(unknowns);
    std::vector<double> row(static_cast<std::size_t>(unknowns));
    for (std::size_t j = 0; j < used.size(); ++j) {
      const double slope = problem_.slope[used[j]];
      std::copy_n(rows[j].begin(), m, row.begin());
      if (withZero) row[m] = slope;
      equations.add(row, problem_.q[used[j]], 1.0 / (slope * slope));
    }
    auto solution = equations.solve();
    if (!solution) return std::nullopt;
    if (!withZero) solution->p.push_back(0.0);
    return solution->p;
  };
  auto p = fit(true);
  if (p && std::abs((*p)[m]) > problem_.zeroBound) p = fit(false);
  if (!p) return false;
  const ReciprocalMetric metric = metricFromParameters(trial.system, std::span<const double>(p->data(), m));
  if (!isPositiveDefinite(metric)) return false;
  const double zero = (*p)[m];
  // Most trials fail here; the count stops as soon as too many lines are missed.
  int indexed = 0, misses = 0;
  const NearestLineFinder fittedLines(metric, Centring::P);
  for (int i = 0; i < n; ++i) {
    if (fittedLines.hasLine(problem_.q[i] - zero * problem_.slope[i], problem_.fitWindow[i])) ++indexed;
    else if (++misses > n - printThreshold_) return false;
  }
  if (indexed < printThreshold_) return false;
  trial.metric = metric;
  trial.parameters = parametersFromMetric(trial.system, metric);
  trial.iq = indexed;
  trial.zero = zero;
  return true;
}

std::optional<ReciprocalMetric> TrialSearch::finestSubLattice(const Trial& trial) const {
  if (problem_.fitWindow.empty()) return std::nullopt;
  const int n = static_cast<int>(problem_.q.size());
  const int tests = std::min(problem_.testLines, n);
  std::vector<double> corrected(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) corrected[i] = problem_.q[i] - trial.zero * problem_.slope[i];
  // A finer cell has a coarser reciprocal lattice, whose points are among the trial's: it indexes
  // a test line when one of the trial's reflections within the line's window lies on it. Those
  // reflections are gathered once per trial (each reflection finds its windows by bisection;
  // nothing else is kept or sorted), and each of the sub-lattices is then a matter of
  // whole-number tests.
  const auto size = static_cast<std::size_t>(tests);
  std::vector<double> lo(size), hi(size), highestSoFar(size), lowestFrom(size);
  for (int i = 0; i < tests; ++i) {
    lo[i] = corrected[i] - problem_.fitWindow[i];
    hi[i] = corrected[i] + problem_.fitWindow[i];
  }
  // The windows widen with angle and overlap, so their ends need not ascend: the windows that
  // can hold q start at the first whose highest end so far reaches it and stop before the first
  // from which every low end lies above it.
  for (int i = 0; i < tests; ++i) highestSoFar[i] = i == 0 ? hi[0] : std::max(highestSoFar[i - 1], hi[i]);
  for (int i = tests - 1; i >= 0; --i) lowestFrom[i] = i == tests - 1 ? lo[i] : std::min(lowestFrom[i + 1], lo[i]);
  std::vector<std::vector<std::array<int, 3>>> within(size);
  forEachReflection(trial.metric, highestSoFar.back(), false, [&](int h, int k, int l, double q) {
    for (auto i = std::lower_bound(highestSoFar.begin(), highestSoFar.end(), q) - highestSoFar.begin();
         i < tests && lowestFrom[i] <= q; ++i)
      if (lo[i] <= q && q <= hi[i]) within[i].push_back({h, k, l});
  });
  // As many test lines as the trial indexes, abandoned at the first extra miss.
  const auto allowedMisses = std::count_if(within.begin(), within.end(), [](const auto& c) { return c.empty(); });
  auto indexesAsMany = [&](const SubLattice& sub) {
    long misses = 0;
    for (const auto& candidates : within)
      if (std::none_of(candidates.begin(), candidates.end(), [&](const auto& hkl) { return sub.contains(hkl); }) &&
          ++misses > allowedMisses)
        return false;
    return true;
  };
  // And as many of the lines beyond them: when the test lines nearly all lie in one zone they say
  // little about the axis out of it, and a finer lattice with that axis cut to a fraction indexes
  // them as well (the h0l zone of a short-b cell took every b from 2.0 Å up: cells smaller than
  // the true one, which took the refinements meant for it).
  auto missesBeyond = [&](const ReciprocalMetric& metric) {
    const NearestLineFinder lines(metric, Centring::P);
    int misses = 0;
    for (int i = tests; i < n; ++i) misses += lines.hasLine(corrected[i], problem_.fitWindow[i]) ? 0 : 1;
    return misses;
  };
  // One more miss is allowed there: the trial was fitted to the test lines, and beyond them a
  // line it indexes by an extra reflection of the super-cell can lie just outside the window of
  // the finer lattice's own reflection (the primitive cell of a 2.94 × 7.42 × 13.8 Å C cell with
  // a 0.05° zero error was lost so).
  constexpr int kExtraMissesBeyond = 1;
  std::optional<int> trialMissesBeyond;
  const Mat3 g = trial.metric.tensor();
  std::optional<ReciprocalMetric> finest;
  for (const std::vector<Mat3>& forms : subLatticeForms_)
    for (const Mat3& h : forms) {
      if (!indexesAsMany(SubLattice(h))) continue;
      const ReciprocalMetric finer = ReciprocalMetric::fromTensor(transpose(h) * g * h);
      if (!trialMissesBeyond) trialMissesBeyond = missesBeyond(trial.metric);
      if (missesBeyond(finer) > *trialMissesBeyond + kExtraMissesBeyond || !withinLowerLimits(finer)) continue;
      finest = finer;
      break;  // one per index; a finer one may follow
    }
  return finest;
}

void TrialSearch::setFinerLatticeIndex(int maxIndex) {
  subLatticeForms_.clear();
  for (int index = 2; index <= maxIndex; ++index) subLatticeForms_.push_back(hermiteNormalForms(index));
}

bool TrialSearch::withinLowerLimits(const ReciprocalMetric& metric) const {
  const auto cell = cellFromMetric(metric);
  if (!cell || cellVolume(*cell) < problem_.minVolume) return false;
  const NiggliReduction reduced = niggliReduce(*cell, Centring::P, kClassificationTolerance);
  return std::min({reduced.cell.a, reduced.cell.b, reduced.cell.c}) >= problem_.minEdge;
}

void TrialSearch::searchBaseSet(CrystalSystem system, const std::vector<int>& baseLines,
                                const std::vector<LabelRow>& labels, const TrialSink& sink) {
  std::vector<std::vector<LabelRow>> rows;
  for (int line : baseLines) rows.push_back(filterLabels(system, labels, problem_.q[line]));
  searchRows(system, baseLines, rows, sink);
}

namespace {

// A trial that passed the geometric checks: its key in the cells seen, and the trial itself when
// it also indexes the test lines.
struct TrialOutcome {
  std::uint64_t key;
  std::optional<Trial> trial;
};

// The first piece that meets each cell, shared by the threads. A cell is tested by the first
// piece to claim it; a piece before it in the search order claims it again (the later piece's
// test is then wasted), so that the earliest piece that meets a cell always tests it.
class PieceClaims {
 public:
  // True when `piece` is to test the cell: no piece at or before it has claimed it.
  bool claim(std::uint64_t key, std::size_t piece) {
    Shard& shard = shards_[key % shards_.size()];
    const std::lock_guard lock(shard.mutex);
    auto [it, inserted] = shard.first.try_emplace(key, piece);
    if (inserted) return true;
    if (it->second <= piece) return false;
    it->second = piece;
    return true;
  }

 private:
  struct Shard {
    std::mutex mutex;
    std::unordered_map<std::uint64_t, std::size_t> first;
  };
  std::array<Shard, 16> shards_;
};

// A change of axes that maps the rows of a system's label table onto rows of the same table and
// gives the same cell with its axes renamed: the squared indices permuted, and the sign of the
// monoclinic cross term hl changed (β and 180° − β).
struct RowSymmetry {
  std::array<int, 3> axes;
  double crossSign;
  MetricParameters apply(const MetricParameters& x) const {
    return {x[static_cast<std::size_t>(axes[0])], x[static_cast<std::size_t>(axes[1])], x[static_cast<std::size_t>(axes[2])],
            crossSign * x[3], x[4], x[5]};
  }
};

// The changes of axes other than none: orthorhombic a, b, c in any order; monoclinic a and c
// exchanged, β turned into its supplement, or both.
std::vector<RowSymmetry> rowSymmetries(CrystalSystem system) {
  switch (system) {
    case CrystalSystem::Orthorhombic:
      return {{{0, 2, 1}, 1}, {{1, 0, 2}, 1}, {{1, 2, 0}, 1}, {{2, 0, 1}, 1}, {{2, 1, 0}, 1}};
    case CrystalSystem::Monoclinic: return {{{2, 1, 0}, 1}, {{0, 1, 2}, -1}, {{2, 1, 0}, -1}};
    default: return {};
  }
}

}  // namespace

void TrialSearch::walkRows(CrystalSystem system, const std::vector<int>& baseLines,
                           const std::vector<std::vector<LabelRow>>& rowsPerLine, std::span<const std::size_t> fixed,
                           const TrialOffer& leaf) const {
  const int n = freeParameterCount(system);
  std::vector<const LabelRow*> chosen(n, nullptr);
  // With every coefficient positive a row that is at least another in every component gives the
  // larger q, so a lower base line cannot carry it: the order of the lines prunes assignments.
  const bool ordered = system == CrystalSystem::Cubic || system == CrystalSystem::Tetragonal ||
                       system == CrystalSystem::Hexagonal || system == CrystalSystem::Orthorhombic;
  auto dominates = [n](const MetricParameters& x, const MetricParameters& y) {
    for (int c = 0; c < n; ++c)
      if (x[c] < y[c]) return false;
    return true;
  };
  // Each row is reduced against the rows above it as it is placed (Gaussian elimination spread
  // over the depths, pivoting on the largest remaining column of the row), so a leaf costs one
  // back-substitution, and a row that the rows above already span prunes its whole subtree.
  std::array<std::array<double, 7>, 6> reduced{};
  std::array<int, 6> pivot{};
  std::array<bool, 6> pivotUsed{};
  // An assignment and the one with the axes renamed give one cell, which the stage tests once:
  // only the assignment whose rows come first in lexicographic order among its renamings is
  // solved (the first line then has its index on the last axis it can: 001 rather than 100). A
  // partial assignment that a renaming already puts in front of is cut off with its subtree.
  const std::vector<RowSymmetry> symmetries = orbitPruning_ ? rowSymmetries(system) : std::vector<RowSymmetry>{};
  auto renamingComesFirst = [&](int depth) {
    for (const RowSymmetry& g : symmetries)
      for (int d = 0; d <= depth; ++d) {
        const MetricParameters& x = chosen[static_cast<std::size_t>(d)]->x;
        const MetricParameters y = g.apply(x);
        const auto order = std::lexicographical_compare_three_way(y.begin(), y.begin() + n, x.begin(), x.begin() + n);
        if (order < 0) return true;
        if (order > 0) break;
      }
    return false;
  };
  bool going = true;
  // One trial is filled in at every leaf (its vectors keep their storage; the leaf copies what
  // it keeps).
  Trial trial;
  trial.system = system;
  trial.lines = baseLines;
  trial.hkl.resize(static_cast<std::size_t>(n));
  auto place = [&](auto& self, int depth) -> void {
    if (depth == n) {
      for (int e = n - 1; e >= 0; --e) {
        double rhs = reduced[e][n];
        for (int f = e + 1; f < n; ++f) rhs -= reduced[e][pivot[f]] * trial.parameters[pivot[f]];
        trial.parameters[pivot[e]] = rhs / reduced[e][pivot[e]];
      }
      for (int i = 0; i < n; ++i)
        if ((system != CrystalSystem::Triclinic && system != CrystalSystem::Monoclinic) || i < 3)
          if (trial.parameters[i] <= 0) return;
      trial.metric = metricFromParameters(system, std::span<const double>(trial.parameters.data(), n));
      for (int i = 0; i < n; ++i) trial.hkl[static_cast<std::size_t>(i)] = chosen[static_cast<std::size_t>(i)]->hkl;
      trial.iq = 0;
      trial.zero = 0;
      going = leaf(trial);
      return;
    }
    const double q = problem_.q[baseLines[depth]];
    const auto& rows = rowsPerLine[depth];
    const bool isFixed = depth < static_cast<int>(fixed.size());
    const std::size_t from = isFixed ? fixed[depth] : 0, to = isFixed ? fixed[depth] + 1 : rows.size();
    for (std::size_t r = from; r < to && going; ++r) {
      const LabelRow& row = rows[r];
      bool excluded = false;
      for (int d = 0; d < depth; ++d)
        excluded = excluded || (ordered && problem_.q[baseLines[d]] < q && dominates(chosen[d]->x, row.x));
      if (excluded) continue;
      auto& v = reduced[depth];
      double scale = 0;
      for (int c = 0; c < n; ++c) {
        v[c] = row.x[c];
        scale = std::max(scale, std::abs(v[c]));
      }
      v[n] = q;
      for (int e = 0; e < depth; ++e) {
        const double f = v[pivot[e]] / reduced[e][pivot[e]];
        if (f == 0) continue;
        for (int c = 0; c <= n; ++c) v[c] -= f * reduced[e][c];
        v[pivot[e]] = 0;
      }
      int best = -1;
      for (int c = 0; c < n; ++c)
        if (!pivotUsed[c] && (best < 0 || std::abs(v[c]) > std::abs(v[best]))) best = c;
      if (best < 0 || std::abs(v[best]) < 1e-9 * scale) continue;  // dependent on the rows above
      chosen[depth] = &row;
      if (renamingComesFirst(depth)) continue;
      pivot[depth] = best;
      pivotUsed[best] = true;
      self(self, depth + 1);
      pivotUsed[best] = false;
    }
  };
  place(place, 0);
}

void TrialSearch::searchRows(CrystalSystem system, const std::vector<int>& baseLines,
                             const std::vector<std::vector<LabelRow>>& rowsPerLine, const TrialSink& sink) {
  const int n = freeParameterCount(system);
  if (static_cast<int>(baseLines.size()) != n || static_cast<int>(rowsPerLine.size()) != n) return;
  // The pieces are the rows of the first base line (of the first two when there are three or more).
  const int fixedDepth = n >= 3 ? 2 : 1;
  const std::size_t secondRows = fixedDepth == 2 ? rowsPerLine[1].size() : 1;
  long expected = 1;  // assignments at most, counted until there are enough to share out
  for (const auto& rows : rowsPerLine)
    if (expected < kTrialsWorthSharing) expected *= static_cast<long>(rows.size());
  searchPieces(
      rowsPerLine[0].size() * secondRows,
      [&](std::size_t piece, const TrialOffer& offer) {
        const std::array<std::size_t, 2> fixed{piece / secondRows, piece % secondRows};
        walkRows(system, baseLines, rowsPerLine, std::span<const std::size_t>(fixed.data(), static_cast<std::size_t>(fixedDepth)), offer);
      },
      sink, expected >= kTrialsWorthSharing);
}

void TrialSearch::searchPieces(std::size_t pieces, const PieceSearch& search, const TrialSink& sink, bool share) {
  if (stopped_ || pieces == 0) return;
  // The pieces are searched on every core, each trial checked and tested where it is solved.
  // The trials are then handed on piece by piece in the order of a search on one core, each cell
  // the first time it is met, so the result does not depend on the number of cores.
  std::vector<std::vector<TrialOutcome>> outcomes(pieces);
  PieceClaims claims;
  const int threads = workers_ != nullptr && share ? workers_->threads() : 1;
  std::vector<long> offered(static_cast<std::size_t>(threads), 0);
  std::atomic<bool> stop{false};
  const WorkerPool::Body body = [&](std::size_t piece, int thread) {
    long& count = offered[static_cast<std::size_t>(thread)];
    // Only the calling thread asks the user, every few thousand trials (a piece counts as many).
    auto tick = [&](long units) {
      const long before = count;
      count += units;
      if (thread == 0 && before / 4096 != count / 4096 && interrupted_ && interrupted_()) stop = true;
      return !stop;
    };
    const TrialOffer offer = [&](const Trial& solved) {
      if (!tick(1)) return false;
      const auto key = admissibleKey(solved);
      if (!key || seen_.contains(*key) || !claims.claim(*key, piece)) return true;
      TrialOutcome outcome{*key, solved};
      if (!indexesTestLines(*outcome.trial)) outcome.trial.reset();
      outcomes[piece].push_back(std::move(outcome));
      return true;
    };
    if (tick(64)) search(piece, offer);
  };
  if (workers_ != nullptr) {
    workers_->run(pieces, threads, body);
  } else {
    for (std::size_t piece = 0; piece < pieces; ++piece) body(piece, 0);
  }
  for (const long count : offered) solved_ += count;
  if (stop) stopped_ = true;
  for (auto& piece : outcomes)
    for (TrialOutcome& outcome : piece)
      if (seen_.insert(outcome.key).second && outcome.trial) sink(*outcome.trial);
}

void TrialSearch::solveCompletions(CrystalSystem system, const ReciprocalMetric& known, const std::vector<int>& unknown,
                                   const std::vector<int>& lines,
                                   const std::vector<std::vector<std::array<int, 3>>>& rowsPerLine,
                                   const TrialOffer& offer, const std::vector<double>* qOverride) const {
  const int n = static_cast<int>(unknown.size());
  if (static_cast<int>(lines.size()) != n) return;
  std::array<std::array<double, 7>, 6> matrix{};
  std::vector<std::array<int, 3>> chosen(n);
  bool going = true;
  std::function<void(int)> place = [&](int depth) {
    if (depth == n) {
      MetricParameters p{};
      if (!solveSmall(n, matrix, p)) return;
      Trial trial;
      trial.system = system;
      trial.metric = known;
      for (int i = 0; i < n; ++i) setCoefficient(trial.metric, unknown[i], p[i]);
      trial.parameters = parametersFromMetric(system, trial.metric);
      trial.lines = lines;
      trial.hkl = chosen;
      going = offer(trial);
      return;
    }
    const double q = qOverride ? (*qOverride)[depth] : problem_.q[lines[depth]];
    for (const auto& hkl : rowsPerLine[depth]) {
      if (!going) return;
      const auto x = products(hkl);
      double knownPart = 0;
      for (int c = 0; c < 6; ++c)
        if (std::find(unknown.begin(), unknown.end(), c) == unknown.end()) knownPart += x[c] * coefficient(known, c);
      for (int c = 0; c < n; ++c) matrix[depth][c] = x[unknown[c]];
      matrix[depth][n] = q - knownPart;
      chosen[depth] = hkl;
      place(depth + 1);
    }
  };
  place(0);
}

void TrialSearch::completeMetric(CrystalSystem system, const ReciprocalMetric& known, const std::vector<int>& unknown,
                                 const std::vector<int>& lines,
                                 const std::vector<std::vector<std::array<int, 3>>>& rowsPerLine, const TrialSink& sink,
                                 const std::vector<double>* qOverride, bool admitTrial) {
  if (stopped_) return;
  solveCompletions(
      system, known, unknown, lines, rowsPerLine,
      [&](const Trial& solved) {
        ++solved_;
        if (!poll()) return false;
        if (!admitTrial) {
          for (const int c : unknown)
            if (c < 3 && coefficient(solved.metric, c) <= 0) return true;
          sink(solved);
          return true;
        }
        Trial trial = solved;
        if (admit(trial)) sink(trial);
        return true;
      },
      qOverride);
}

}  // namespace quarvel
