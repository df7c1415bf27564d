#include "core/index/treor/trial_search.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/normal_equations.h"

namespace quarvel {

namespace {

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

std::vector<int> TrialSearch::unindexedTestLines(const ReciprocalMetric& metric, int count, bool beyondTestLines) const {
  std::vector<int> out;
  const int n = beyondTestLines ? static_cast<int>(problem_.q.size())
                                : std::min<int>(problem_.testLines, static_cast<int>(problem_.q.size()));
  const NearestLineFinder lines(metric, Centring::P);
  for (int i = 0; i < n && static_cast<int>(out.size()) < count; ++i)
    if (!lines.hasLine(problem_.q[i], windowOf(i))) out.push_back(i);
  return out;
}

bool TrialSearch::admit(Trial& trial) {
  const ReciprocalMetric& m = trial.metric;
  if (!isPositiveDefinite(m)) return false;
  const auto cell = cellFromMetric(m);
  if (!cell) return false;
  for (double edge : {cell->a, cell->b, cell->c})
    if (edge < problem_.minEdge || edge > problem_.maxEdge) return false;
  const double volume = cellVolume(*cell);
  if (volume < problem_.minVolume || volume > maxVolume_) return false;
  if (std::max(cell->beta, 180.0 - cell->beta) > problem_.maxBeta) return false;
  if (!seen_.insert(cellKey(m)).second) return false;
  trial.iq = indexedTestLines(m, printThreshold_, trial.lines);
  if (trial.iq < printThreshold_) return false;
  return problem_.fitWindow.empty() || refitOnTestLines(trial);
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

Trial TrialSearch::finestSubLattice(const Trial& trial, int maxIndex) const {
  if (problem_.fitWindow.empty()) return trial;
  const int n = std::min<int>(problem_.testLines, static_cast<int>(problem_.q.size()));
  // As many test lines as the trial indexes, abandoned at the first extra miss.
  auto indexesAsMany = [&](const ReciprocalMetric& m) {
    int misses = 0;
    const NearestLineFinder lines(m, Centring::P);
    for (int i = 0; i < n; ++i)
      if (!lines.hasLine(problem_.q[i] - trial.zero * problem_.slope[i], problem_.fitWindow[i]) &&
          ++misses > n - trial.iq)
        return false;
    return true;
  };
  const Mat3 g = trial.metric.tensor();
  Trial best = trial;
  for (int index = 2; index <= maxIndex; ++index)
    for (const Mat3& h : hermiteNormalForms(index)) {
      const ReciprocalMetric m = ReciprocalMetric::fromTensor(transpose(h) * g * h);
      if (!indexesAsMany(m)) continue;
      best.system = CrystalSystem::Triclinic;
      best.metric = m;
      best.parameters = parametersFromMetric(CrystalSystem::Triclinic, m);
      break;  // one per index; a finer one may follow
    }
  return best;
}

void TrialSearch::searchBaseSet(CrystalSystem system, const std::vector<int>& baseLines,
                                const std::vector<LabelRow>& labels, const TrialSink& sink) {
  std::vector<std::vector<LabelRow>> rows;
  for (int line : baseLines) rows.push_back(filterLabels(system, labels, problem_.q[line]));
  searchRows(system, baseLines, rows, sink);
}

void TrialSearch::searchRows(CrystalSystem system, const std::vector<int>& baseLines,
                             const std::vector<std::vector<LabelRow>>& rowsPerLine, const TrialSink& sink) {
  const int n = freeParameterCount(system);
  if (static_cast<int>(baseLines.size()) != n) return;
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
  auto place = [&](auto& self, int depth) -> void {
    if (stopped_) return;
    if (depth == n) {
      ++solved_;
      if (!poll()) return;
      Trial trial;
      trial.system = system;
      for (int e = n - 1; e >= 0; --e) {
        double rhs = reduced[e][n];
        for (int f = e + 1; f < n; ++f) rhs -= reduced[e][pivot[f]] * trial.parameters[pivot[f]];
        trial.parameters[pivot[e]] = rhs / reduced[e][pivot[e]];
      }
      for (int i = 0; i < n; ++i)
        if ((system != CrystalSystem::Triclinic && system != CrystalSystem::Monoclinic) || i < 3)
          if (trial.parameters[i] <= 0) return;
      trial.metric = metricFromParameters(system, std::span<const double>(trial.parameters.data(), n));
      trial.lines = baseLines;
      for (const LabelRow* r : chosen) trial.hkl.push_back(r->hkl);
      if (admit(trial)) sink(trial);
      return;
    }
    const double q = problem_.q[baseLines[depth]];
    for (const LabelRow& row : rowsPerLine[depth]) {
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
      pivot[depth] = best;
      pivotUsed[best] = true;
      chosen[depth] = &row;
      self(self, depth + 1);
      pivotUsed[best] = false;
    }
  };
  place(place, 0);
}

void TrialSearch::completeMetric(CrystalSystem system, const ReciprocalMetric& known, const std::vector<int>& unknown,
                                 const std::vector<int>& lines,
                                 const std::vector<std::vector<std::array<int, 3>>>& rowsPerLine, const TrialSink& sink,
                                 const std::vector<double>* qOverride, bool admitTrial) {
  const int n = static_cast<int>(unknown.size());
  if (static_cast<int>(lines.size()) != n) return;
  std::array<std::array<double, 7>, 6> matrix{};
  std::vector<std::array<int, 3>> chosen(n);
  std::function<void(int)> place = [&](int depth) {
    if (stopped_) return;
    if (depth == n) {
      ++solved_;
      if (!poll()) return;
      MetricParameters p{};
      if (!solveSmall(n, matrix, p)) return;
      Trial trial;
      trial.system = system;
      trial.metric = known;
      for (int i = 0; i < n; ++i) setCoefficient(trial.metric, unknown[i], p[i]);
      trial.parameters = parametersFromMetric(system, trial.metric);
      trial.lines = lines;
      trial.hkl = chosen;
      if (!admitTrial) {
        for (int i = 0; i < n; ++i)
          if (unknown[i] < 3 && p[i] <= 0) return;
        sink(trial);
        return;
      }
      if (admit(trial)) sink(trial);
      return;
    }
    const double q = qOverride ? (*qOverride)[depth] : problem_.q[lines[depth]];
    for (const auto& hkl : rowsPerLine[depth]) {
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

}  // namespace quarvel
