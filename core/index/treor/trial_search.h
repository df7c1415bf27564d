// The trial machinery of the trial-and-error engine: label tables (distinct rows of the
// quadratic form per crystal system), the per-line label filter, the n×n trial solves over a
// base-line set, admissibility of the trial cell and the count of test lines it indexes.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "core/common/parallel_for.h"
#include "core/index/lattice/cell_density.h"
#include "core/index/lattice/centring.h"
#include "core/index/lattice/crystal_system.h"
#include "core/index/lattice/reciprocal_metric.h"

namespace quarvel {

// One distinct design row of a crystal system and the smallest indices that give it.
struct LabelRow {
  MetricParameters x{};
  std::array<int, 3> hkl{};
};

// Rows with every |index| ≤ maxIndex and |h|+|k|+|l| ≤ maxSum, small indices first.
std::vector<LabelRow> labelTable(CrystalSystem system, int maxIndex, int maxSum);

// Everything a trial needs to know about the observed lines, in q = 1/d² (Å⁻²).
struct TrialProblem {
  std::vector<double> q;  // ascending
  int testLines = 15;     // the first lines of q
  int iqRequired = 14;
  double tolerance = 0;   // q window of the trial phase
  // Window of each line (q) when a test line is judged: the trial window widened by what the
  // angular errors of the base lines and of the line itself make of the trial cell's q.
  // Empty: `tolerance` for every line, and no refit.
  std::vector<double> window;
  // A trial that indexes enough test lines within `window` is fitted, with a zero of 2θ, to the
  // lines it indexed and judged again within `fitWindow`: the base lines' errors are then shared
  // by all the lines instead of carried by the trial cell.
  std::vector<double> fitWindow;
  std::vector<double> slope;  // dq/d(2θ) of each line, per radian
  double zeroBound = 0;       // radians: a larger fitted zero is held at 0
  double maxEdge = 25.0, minEdge = 2.0;
  double minVolume = 20.0;
  double maxBeta = 125.0;
  DensityLimits density;  // with a molar weight and a density, cells that hold no whole Z are out
  // A trial that reaches IQ among more calculated lines than this (up to the last test line)
  // indexes almost anything: it is marked crowded. 0: no limit.
  int maxCalculatedLines = 0;
};

struct Trial {
  CrystalSystem system = CrystalSystem::Cubic;
  ReciprocalMetric metric;
  MetricParameters parameters{};   // the free coefficients of the system
  std::vector<int> lines;          // observed lines (0-based) the solve used
  std::vector<std::array<int, 3>> hkl;  // indices given to them
  int iq = 0;                      // test lines indexed
  double zero = 0;                 // radians of 2θ, fitted with the cell to its test lines
  // A monoclinic trial that reaches IQ: the finest direct cell (coarsest reciprocal sub-lattice)
  // that indexes as many test lines and all but one more of the lines beyond them, when the
  // search looks for one and finds one.
  std::optional<ReciprocalMetric> finerLattice;
  bool crowded = false;  // reaches IQ among more calculated lines than the problem allows
};

// Receives every new admissible trial that reaches the print threshold.
using TrialSink = std::function<void(const Trial&)>;
// Receives each trial a search solves, before any check; false stops the search.
using TrialOffer = std::function<bool(const Trial&)>;
// One piece of a search that is shared out: offers the trials of piece `piece`.
using PieceSearch = std::function<void(std::size_t piece, const TrialOffer& offer)>;

class TrialSearch {
 public:
  TrialSearch(const TrialProblem& problem, std::function<bool()> interrupted);

  // Starts a new stage: its volume limit and an empty set of cells already seen.
  void beginStage(double maxVolume, int printThreshold);
  void setMaxVolume(double maxVolume) { maxVolume_ = maxVolume; }
  // New values of the observed lines (the same lines with another zero correction).
  void setObservedLines(const TrialProblem& lines) {
    problem_.q = lines.q;
    problem_.window = lines.window;
    problem_.fitWindow = lines.fitWindow;
    problem_.slope = lines.slope;
  }

  // Every assignment of rows to the base lines (one row list per line, after the per-line
  // filter) solved for the system's free coefficients.
  void searchBaseSet(CrystalSystem system, const std::vector<int>& baseLines, const std::vector<LabelRow>& labels,
                     const TrialSink& sink);
  // The same with a caller-chosen row list per line (forced indices of some lines).
  void searchRows(CrystalSystem system, const std::vector<int>& baseLines,
                  const std::vector<std::vector<LabelRow>>& rowsPerLine, const TrialSink& sink);

  // Independent searches (pieces) run on every core when `share` says they are worth it: each
  // offers its trials, which are admitted and handed to `sink` piece by piece in order, exactly
  // as if the pieces had run one after the other on one core.
  void searchPieces(std::size_t pieces, const PieceSearch& search, const TrialSink& sink, bool share = true);

  // Completes a partly known metric: `known` fixes some coefficients; the remaining ones
  // (`unknown`, indices into A..F) are solved from `lines` (or the values `qOverride`), each
  // given indices from `rowsPerLine`. Without `admitTrial` the result is a 2D zone handed on
  // unchecked apart from positive squared coefficients.
  void completeMetric(CrystalSystem system, const ReciprocalMetric& known, const std::vector<int>& unknown,
                      const std::vector<int>& lines, const std::vector<std::vector<std::array<int, 3>>>& rowsPerLine,
                      const TrialSink& sink, const std::vector<double>* qOverride = nullptr,
                      bool admitTrial = true);
  // The same solutions offered unchecked, for a piece of a shared search.
  void solveCompletions(CrystalSystem system, const ReciprocalMetric& known, const std::vector<int>& unknown,
                        const std::vector<int>& lines, const std::vector<std::vector<std::array<int, 3>>>& rowsPerLine,
                        const TrialOffer& offer, const std::vector<double>* qOverride = nullptr) const;

  // Test lines indexed by a metric within the trial window (stops early once IQ is out of reach);
  // `solved` are lines the metric was solved from.
  int indexedTestLines(const ReciprocalMetric& metric, int required, const std::vector<int>& solved = {}) const;
  // First test lines (0-based) that the metric leaves unindexed; with `beyondTestLines` the
  // search goes on through every trial line. `centring` restricts the reflections.
  std::vector<int> unindexedTestLines(const ReciprocalMetric& metric, int count, bool beyondTestLines = false,
                                      Centring centring = Centring::P) const;

  // Whether the metric indexes the given trial lines (0-based) within the trial window, but for
  // `allowedMisses` of them.
  bool indexesLines(const ReciprocalMetric& metric, const std::vector<int>& lines, int allowedMisses) const;

  // The coarsest reciprocal sub-lattice of the trial (a direct cell finer by index 2 up to the
  // finer-lattice index) that indexes as many test lines and all but one more of the lines beyond
  // them, when there is one: a trial that took the base lines with multiplied indices describes
  // a super-cell of the lattice.
  std::optional<ReciprocalMetric> finestSubLattice(const Trial& trial) const;
  // Whether the lattice's shortest vector and volume keep the lower limits of every trial: a
  // finer lattice of a cell whose first lines all lie in one zone can index them as well with an
  // axis of a fraction of an ångström.
  bool withinLowerLimits(const ReciprocalMetric& metric) const;
  // Monoclinic trials that reach IQ, not crowded, get their `finerLattice` up to this index (0:
  // not looked for). A triclinic trial is refined as it is, and its refined cell is replaced
  // by a finer one there.
  void setFinerLatticeIndex(int maxIndex);
  // The Hermite normal forms of index 2 up to that index, one list per index, worked out once.
  const std::vector<std::vector<Mat3>>& subLatticeForms() const { return subLatticeForms_; }

  // Labels a line of value q can carry with admissible parameters.
  std::vector<LabelRow> filterLabels(CrystalSystem system, const std::vector<LabelRow>& labels, double q) const;

  // Asks the user's interruption flag now (the trials ask it every few thousand solutions);
  // false once interrupted.
  bool keepGoing();

  long trialsSolved() const { return solved_; }
  bool stopped() const { return stopped_; }
  const TrialProblem& problem() const { return problem_; }

  // Accepts the trial when admissible and not yet seen in this stage; fills iq.
  bool admit(Trial& trial);

  // The threads that share out the searches (none: the calling thread alone). The trials handed
  // on are the same, in the same order, for any number.
  void setWorkers(WorkerPool* workers) { workers_ = workers; }
  // Off: every assignment of rows is solved, also those that only rename the axes of another
  // (the same cells are admitted, more slowly; for tests).
  void setOrbitPruning(bool on) { orbitPruning_ = on; }

  // The trial's cell within the edge, volume, β and density limits: its key (the same lattice
  // met again has the same one); none when outside them.
  std::optional<std::uint64_t> admissibleKey(const Trial& trial) const;

 private:
  // A base-line set with fewer assignments than this is searched on the calling thread alone.
  // The helpers are kept waiting in a pool, so a set of the two-parameter stages (a few thousand
  // assignments, five zero corrections each) is already worth sharing.
  static constexpr long kTrialsWorthSharing = 1000;

  // Counts the test lines the trial indexes (fills iq) and refits it; true when it passes.
  bool indexesTestLines(Trial& trial) const;
  // What the engine asks of each trial that reaches IQ (crowded, finer lattice), worked out on
  // the core that tested it rather than when the trials are handed on one by one.
  void examinePassingTrial(Trial& trial) const;
  // Every assignment of rows to the base lines, depth first; the first depths may be held to
  // one row each (`fixed`). `leaf` gets each solved trial and returns false to stop.
  void walkRows(CrystalSystem system, const std::vector<int>& baseLines,
                const std::vector<std::vector<LabelRow>>& rowsPerLine, std::span<const std::size_t> fixed,
                const TrialOffer& leaf) const;
  bool poll();
  bool refitOnTestLines(Trial& trial) const;
  double windowOf(int line) const {
    return line < static_cast<int>(problem_.window.size()) ? problem_.window[line] : problem_.tolerance;
  }

  TrialProblem problem_;
  std::function<bool()> interrupted_;
  double maxVolume_ = 0;
  int printThreshold_ = 0;
  std::unordered_set<std::uint64_t> seen_;
  WorkerPool* workers_ = nullptr;
  bool orbitPruning_ = true;
  std::vector<std::vector<Mat3>> subLatticeForms_;  // the Hermite normal forms of index 2, 3, ...
  long solved_ = 0;
  bool stopped_ = false;
};

}  // namespace quarvel
