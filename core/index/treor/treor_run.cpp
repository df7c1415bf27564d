#include "core/index/treor/treor_run.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <optional>

#include "core/app/shell.h"
#include "core/common/numbers.h"
#include "core/common/ordered_work.h"
#include "core/common/parallel_for.h"
#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/line_assignment.h"
#include "core/index/lattice/lattice_symmetry.h"
#include "core/index/lattice/units.h"
#include "core/index/treor/cell_report.h"

namespace quarvel {

namespace {

constexpr double kReferenceWavelength = 1.5406;
constexpr int kMaxTrialLines = 25;  // lines used in trials and refinement
// Refinements in one zero correction of a stage, smallest cells first. The low-symmetry passes
// queue hundreds to thousands of trials, many of them small cells that index the test lines by
// chance, and a large true cell (a monoclinic C cell of 2750 Å³) came after the first 60. In the
// higher systems a larger budget only reaches more large wrong cells that end the search (KS).
constexpr int kMaxRefinementsPerPass = 60;
constexpr int kMaxLowSymmetryRefinementsPerPass = 150;
// Monoclinic and triclinic cells are checked for finer lattices up to this index.
constexpr int kMaxSubCellIndex = 6;
// Trial cells with more calculated lines than this many times the test lines are not refined
// (centred lattices seen as primitive need up to four times, rhombohedral ones three).
constexpr int kCalculatedLinesFactor = 8;

using BaseSets = std::vector<std::vector<int>>;

// The (020) search solves the h0l zone from triples among the smallest zone values.
constexpr std::size_t kZoneValues = 5;
constexpr int kZoneValueLines = 16;  // the first lines the (020)-search reads h0l values from
const BaseSets kZoneTriples{{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}, {0, 1, 4},
                            {0, 2, 4}, {1, 2, 4}, {0, 3, 4}, {1, 3, 4}, {2, 3, 4}};

double qFromGiven(double value, int choice, double wavelength) {
  switch (choice) {
    case 0: return qFromSinSquaredTheta(value, wavelength);
    case 1: return value;
    case 2: return qFromTwoTheta(2.0 * value, wavelength);
    case 4: return value > 0 ? qFromD(value) : 0.0;
    default: return qFromTwoTheta(value, wavelength);
  }
}

// The windows are sin²θ values calibrated for Cu Kα. They have to hold the angular errors of a
// line (noise, a zero error), and an error δ in 2θ moves sin²θ by ½ sin 2θ δ ≈ sin θ δ: at the
// same d, sin θ and so the sin²θ error grow in proportion to λ. The default windows are therefore
// scaled by λ/λ(Cu), which keeps their width in 2θ at a given d. (Scaling by the square of that
// ratio would keep the width in d instead and leave short-wavelength windows far narrower than
// the angular errors.) A value the user chose is taken as it is.
double effectiveWindow(double value, double defaultValue, double wavelength) {
  if (value != defaultValue || (wavelength > 1.3 && wavelength < 1.8)) return value;
  return value * wavelength / kReferenceWavelength;
}

// Zero corrections of 2θ (degrees) the stages try in turn while they accept no cell whose refined
// zero agrees with the correction: a zero error of a few hundredths of a degree is a relative
// error of up to 1 % in q at the low-angle base lines, which the trial cell carries to every
// test line far beyond the trial window. The refinement takes up what remains (within
// kRefinedZeroBound), so the steps need only bring the base lines close.
constexpr double kZeroCorrections[] = {0.0, 0.05, -0.05, 0.10, -0.10};
// An accepted cell whose refined zero stays within this of the correction tried ends the tries.
constexpr double kZeroSettled = 0.025;
// An accepted cell with M20 this many times MERIT ends the run when KS or THS say so. At twice
// MERIT a wrong monoclinic cell at M20 25 of an F-centred orthorhombic pattern ended the run
// before the triclinic stage, whose reduced cells reach the F cell's primitive lattice.
constexpr double kConvincingMerit = 2.5;
constexpr double kConvincingLinesFactor = 2.5;
// A convincing cell fits its lines within this many times the closest fit of any accepted cell.
constexpr double kConvincingFit = 4.0;
// Mean misfits below this fraction of the 20th line's q count as exact in that comparison.
constexpr double kExactFit = 1e-5;
// Angular error (degrees 2θ) of the lines that the trial windows allow for at the default D1.
constexpr double kTrialAngularError = 0.02;

std::string keywordLine(const std::string& name, const std::string& value) { return " " + name + value; }

class TreorRunner {
 public:
  TreorRunner(const TreorInput& input, Shell* shell, int threads)
      : input_(input), k_(input.keywords), shell_(shell), pool_(threads) {}

  TreorResult run() {
    header();
    prepareLines();
    echoLines();
    if (lines_.q.size() < 3) {
      out(" TOO FEW LINES FOR INDEXING");
      ending();
      return finish();
    }
    prepareProblem();
    echoParameters();
    TrialSearch search(problem_, [this] { return shell_ && shell_->interruptRequested(); });
    search.setWorkers(&pool_);
    search.setFinerLatticeIndex(kMaxSubCellIndex);
    search_ = &search;
    const bool allSystems = k_.vol < 0;
    // Progress is the share of the run a stage usually takes when every stage runs.
    runStage("CUBIC", CrystalSystem::Cubic, 0.0, 0.01, [this] { cubic(); });
    // Tetragonal and hexagonal lattices have the same two parameters: a tetragonal cell does not
    // make the hexagonal test redundant (a large tetragonal cell can index a small hexagonal
    // cell's lines convincingly), so KS is asked only after both.
    if (!stop(k_.ks, convincingMerit(true))) {
      runStage("TETRAGONAL", CrystalSystem::Tetragonal, 0.01, 0.02,
               [this] { twoParameter(CrystalSystem::Tetragonal, "TETRAGONAL"); });
      runStage("HEXAGONAL", CrystalSystem::Hexagonal, 0.02, 0.03,
               [this] { twoParameter(CrystalSystem::Hexagonal, "HEXAGONAL"); });
    }
    if (!stop(k_.ks, convincingMerit()))
      runStage("ORTHORHOMBIC", CrystalSystem::Orthorhombic, 0.03, 0.1, [this] { orthorhombic(); });
    if (allSystems && !stop(k_.ks, convincingMerit()))
      runStage("MONOCLINIC", CrystalSystem::Monoclinic, 0.1, 0.4, [this] { monoclinic(); });
    if (allSystems && !stop(k_.ths, convincingMerit()))
      runStage("TRICLINIC", CrystalSystem::Triclinic, 0.4, 1.0, [this] { triclinic(); });
    result_.interrupted = search.stopped();
    if (result_.interrupted) out(" CALCULATIONS INTERRUPTED BY THE USER");
    summary();
    ending();
    return finish();
  }

 private:
  struct PendingTrial {
    Trial trial;
    std::string family;
  };

  void out(std::string line) { result_.report.push_back(std::move(line)); }

  TreorResult finish() {
    if (shell_) shell_->progress(1.0, "TREOR90");
    return std::move(result_);
  }

  // KS and THS end the run after a stage that accepted a convincing cell (`merit`: the best M20
  // of the cells that count as convincing). A cell just above MERIT may be a large cell of a
  // higher system that reaches MERIT on lines a small cell of a lower system indexes far better;
  // the next stages then run and the ranking decides.
  bool stop(int switchValue, double merit) const { return switchValue != 0 && merit >= kConvincingMerit * k_.merit; }

  // A convincing cell also indexes every refined line but NIX: a wrong cell of a higher system
  // (a large orthorhombic cell of a monoclinic pattern, a hexagonal cell of a monoclinic pattern
  // whose first lines lie in one zone) reaches M20 30-60 on the first 20 lines and then misses
  // lines beyond them. No cell is convincing with more than 2.5 calculated lines per line seen
  // among the first 20: a tetragonal cell 24 times the volume of a 2.66 × 12.26 × 2.89 Å
  // monoclinic cell indexed all its lines (M20 33) among five times as many calculated ones, and
  // a hexagonal cell of 19.31 × 3.21 Å every line of an I-centred 8.36 × 9.66 × 3.21 Å cell
  // (a = b√3/2) with 51 calculated lines for 20; the alumina patterns of the case files (an R
  // lattice with a glide) have 43 for 20.
  // A convincing cubic cell ends the search before the two-parameter stages only when its lines
  // do not obey a body-centred lattice and it predicts at most twice the lines seen. A large
  // cubic cell indexes every line of a tetragonal cell whose c²/a² is near a whole number
  // (c/a = √21 to 0.1 % reached M20 47 with 56 calculated lines for 20), while a true cubic
  // lattice leaves few of its lines unseen; and rhombohedral lattices come close to body-centred
  // cubic super-cells (a 6.76 × 6.54 Å hexagonal R cell was indexed by a 10.69 Å cubic I cell at
  // M20 57, a 16.3 × 2.50 Å one by an 11.54 Å cubic I cell), which the hexagonal stage tells
  // apart. The two-parameter stages then take 10-80 ms more.
  // A cell of a lower metric symmetry than the stage (a finer lattice that replaced an
  // orthorhombic super-cell) ends nothing: the stages of its own system are still to run. (A
  // triclinic finer lattice of a wrong orthorhombic cell reached M20 27 and ended the search
  // before the monoclinic stage, which finds the 5.82 × 2.63 × 8.29 Å cell at M20 77.)
  void noteConvincing(const TreorCell& stored, const RefinedTrial& refined) {
    if (freeParameterCount(stored.metricSystem) > freeParameterCount(stageSystem_)) return;
    const int refinedLines = std::min<int>(lines_.refineLines, static_cast<int>(lines_.q.size()));
    if (refinedLines - refined.refinement.indexedLines > k_.nix) return;
    if (refined.figure.calculated > kConvincingLinesFactor * refined.figure.lines) return;
    const bool sparseCubic = stored.system == CrystalSystem::Cubic && stored.centring != Centring::I &&
                             refined.figure.calculated <= 2 * refined.figure.lines;
    convincing_.push_back({stored.m20, stored.meanDiscrepancy, sparseCubic});
  }

  // The best M20 of the convincing cells (the cubic ones that leave few lines unseen, if asked)
  // whose lines fit about as closely as the lines allow: the closest fit of any accepted cell
  // bounds the errors of the lines. A cell that fits its lines several times worse forces them:
  // an orthorhombic cell of 8.42 × 20.54 × 3.54 Å indexed every line of a monoclinic
  // 4.81 × 20.54 × 3.74 Å pattern at M20 123 with a mean misfit of 1.8e-5, while a cell accepted
  // in the same stage fitted the first 20 lines exactly; the monoclinic stage finds the cell.
  double convincingMerit(bool sparseCubicOnly = false) const {
    // Misfits below a hundred-thousandth of the 20th line's q (0.0002° at 30° 2θ, finer than any
    // measured line) count as exact: noise-free lines fit several exact cells to rounding.
    const double q20 = lines_.q[std::min<std::size_t>(lines_.q.size(), 20) - 1];
    double closestFit = std::numeric_limits<double>::infinity();
    for (const TreorCell& c : result_.cells)
      if (c.accepted) closestFit = std::min(closestFit, std::max(c.meanDiscrepancy, kExactFit * q20));
    double merit = 0;
    for (const Convincing& c : convincing_)
      if ((c.sparseCubic || !sparseCubicOnly) && c.meanDiscrepancy <= kConvincingFit * closestFit)
        merit = std::max(merit, c.m20);
    return merit;
  }

  void header() {
    out(" ");
    out("          *******************************************************");
    out("          *   TREOR90  TRIAL-AND-ERROR INDEXING OF POWDER DATA   *");
    out("          *        OPTIMIZED CODE - VERSION JANUARY 1990         *");
    out("          *******************************************************");
    out(" ");
    out(" " + input_.title);
    out(" ");
  }

  void prepareLines() {
    const double lambda = k_.wave > 0 ? k_.wave : 1.54056;
    struct Raw {
      double q, given;
    };
    std::vector<Raw> raw;
    for (double v : input_.values) {
      const double q = qFromGiven(v, k_.choice, lambda);
      if (q > 0 && std::isfinite(q)) raw.push_back({q, v});
    }
    std::stable_sort(raw.begin(), raw.end(), [](const Raw& a, const Raw& b) { return a.q < b.q; });
    lines_.wavelength = lambda;
    for (const Raw& r : raw) {
      lines_.q.push_back(r.q);
      lines_.given.push_back(r.given);
      lines_.twoTheta.push_back(twoThetaFromQ(r.q, lambda));
    }
    lines_.refineLines = kMaxTrialLines;
    const double d2 = effectiveWindow(k_.d2, 0.0004, lambda);
    lines_.refineTolerance = qFromSinSquaredTheta(d2, lambda);
  }

  void echoLines() {
    out("   NO.    GIVEN     SIN2TH      2THETA       D        ");
    const double lambda = lines_.wavelength;
    int below = 0;
    for (std::size_t i = 0; i < lines_.q.size(); ++i) {
      const double sst = sinSquaredTheta(lines_.q[i], lambda);
      if (sst < 0.327) ++below;
      out(formatI(static_cast<long>(i + 1), 6) + formatF(lines_.given[i], 10, 4) + formatF(sst, 11, 6) +
          formatF(lines_.twoTheta[i], 11, 3) + formatF(dFromQ(lines_.q[i]), 10, 5));
    }
    out(" ");
    out(" NUMBER OF LINES WITH SIN2TH LESS THAN 0.327 =" + formatI(below, 4));
    flagHigherOrders();
  }

  // A line among the first seven that is the 2nd to 4th order of an earlier one says little
  // new about the cell and would waste base-line sets.
  void flagHigherOrders() {
    const int n = std::min<int>(7, static_cast<int>(lines_.q.size()));
    flagged_.assign(lines_.q.size(), false);
    const double tol = qFromSinSquaredTheta(effectiveWindow(k_.d1, 0.0002, lines_.wavelength), lines_.wavelength);
    if (k_.idiv == 0) return;
    bool adjusted = false;
    for (int j = 1; j < n; ++j)
      for (int i = 0; i < j && !flagged_[j]; ++i)
        for (int order = 2; order <= 4; ++order) {
          if (flagged_[i] || std::abs(lines_.q[j] - order * order * lines_.q[i]) > tol) continue;
          flagged_[j] = true;
          out(" LINE" + formatI(j + 1, 3) + " IS ORDER" + formatI(order, 2) + " OF LINE" + formatI(i + 1, 3) +
              " AND SHOULD NOT BE INCLUDED IN THE TREOR");
          out(" BASE LINE SETS. IT WILL BE SKIPPED IN THE TRIAL PHASE.");
          // The higher order is measured at a higher angle with a smaller relative error.
          lines_.q[i] = 0.5 * (lines_.q[i] + lines_.q[j] / (order * order));
          adjusted = true;
          break;
        }
    if (adjusted) {
      out(" THE 7 FIRST LINES ADJUSTED BY THEIR HIGHER ORDERS");
      out(" (LINES DELETED FROM THE BASE LINE SETS ARE STILL USED IN THE REFINEMNETS)");
    }
  }

  void prepareProblem() {
    const double lambda = lines_.wavelength;
    problem_.q.assign(lines_.q.begin(), lines_.q.begin() + std::min<std::size_t>(kMaxTrialLines, lines_.q.size()));
    int tests = std::min<int>(std::max(k_.testLines, 3), static_cast<int>(problem_.q.size()));
    if (k_.ssqtl > 0) {
      int within = 0;
      while (within < tests && sinSquaredTheta(problem_.q[within], lambda) <= k_.ssqtl) ++within;
      tests = std::max(within, std::min(tests, 8));
    }
    problem_.testLines = tests;
    problem_.iqRequired = k_.iq > 0 ? std::min(k_.iq, tests) : tests - 1;
    problem_.maxCalculatedLines = kCalculatedLinesFactor * (tests + 1);
    printIq_ = k_.printIq > 0 ? k_.printIq : problem_.iqRequired;
    problem_.tolerance = qFromSinSquaredTheta(effectiveWindow(k_.d1, 0.0002, lambda), lambda);
    problem_.maxEdge = k_.cem > 0 ? k_.cem : 25.0;
    problem_.maxBeta = k_.maxBeta;
    problem_.density = {k_.molw, k_.dens, k_.edens};
    for (int i = 0; i < static_cast<int>(problem_.q.size()); ++i)
      if (!flagged_[i]) base_.push_back(i);
    if (k_.select > 0 && k_.select <= static_cast<int>(problem_.q.size())) selected_ = k_.select - 1;
    observed_ = lines_;
  }

  // The corrections are tried until the best cell accepted in the stage has refined a zero that
  // one of them agrees with: the trials have then seen the lines with their zero error taken off.
  // Only a zero the lines determine counts (one whose significance limit lies within the
  // agreement asked for): with a large cell whose lines all lie at low angles the zero and the
  // edges are nearly one parameter, the zero refines to nothing within a few hundredths of a
  // degree, and the cell takes up the zero error (edges 0.2-0.4 % short at a 0.05° zero). The
  // other corrections are then tried, and M20 ranks the cells they give. (Letting any other
  // correction that lies outside the zero's own significance limit count as ruled out ended the
  // tries on the zero of a wrong super-cell at M20 20, determined to 0.02°.) The best cell
  // decides, not any: a wrong cell just above MERIT refines some zero of its own (a triclinic
  // cell at M20 14 refined none on a pattern 0.05° off and ended the tries before the monoclinic
  // cell was reached, while cells at M20 41 had refined 0.06°).
  void noteAcceptedZero(const TreorCell& cell) {
    if (kSignificantZero * cell.zeroSigma > kZeroSettled) return;
    if (!bestAcceptedZero_ || cell.m20 > bestAcceptedZero_->m20) bestAcceptedZero_ = {cell.m20, cell.zero};
  }

  // The corrections are tried in their order (the lines as given first) until the zero is
  // settled, the correction nearest the best cell's refined zero first (a pattern 0.05° low was
  // otherwise searched at +0.05° before −0.05°, a third of its monoclinic time).
  std::vector<double>::const_iterator nextZeroCorrection(const std::vector<double>& untried) const {
    if (!bestAcceptedZero_) return untried.begin();
    return std::min_element(untried.begin(), untried.end(), [&](double x, double y) {
      return std::abs(bestAcceptedZero_->zero - x) < std::abs(bestAcceptedZero_->zero - y);
    });
  }

  bool zeroSettled(const std::vector<double>& tried) const {
    return bestAcceptedZero_ && std::any_of(tried.begin(), tried.end(), [&](double zero) {
             return std::abs(bestAcceptedZero_->zero - zero) <= kZeroSettled;
           });
  }

  // The lines with a zero correction taken off their angles, for the trials and the refinement.
  void useZeroCorrection(double zero) {
    lines_ = observed_;
    lines_.correction = zero;
    if (zero != 0) {
      lines_.q = zeroCorrectedQ(observed_, zero);
      for (double& t : lines_.twoTheta) t -= zero;
    }
    problem_.q.assign(lines_.q.begin(), lines_.q.begin() + static_cast<std::ptrdiff_t>(problem_.q.size()));
    setTrialWindows(problem_);
    search_->setObservedLines(problem_);
  }

  // A trial cell solved exactly from base lines carries their errors: an angular error δ of a
  // base line at θ is a relative error of about δ·cot θ in its q, which the cell passes on to a
  // test line as that relative error of the test line's q, largest for the lowest line. The test
  // line's own error adds ½ sin 2θ δ in sin²θ. The search window is D1 plus both for the angular
  // error D1 stands for (kTrialAngularError at the default D1), so that noise and what is left of
  // a zero error after the zero corrections stay inside it at every angle. A trial that passes is
  // fitted to its test lines with a zero, and then only the line's own error widens D1.
  void setTrialWindows(TrialProblem& p) const {
    const double lambda = lines_.wavelength;
    const double delta = kTrialAngularError * kDegree * (k_.d1 / 0.0002);
    p.window.clear(), p.fitWindow.clear(), p.slope.clear();
    for (const double q : p.q) p.slope.push_back(qSlopePerRadian(twoThetaFromQ(q, lambda), lambda));
    const double relativeBase = p.slope.front() / p.q.front();
    for (std::size_t i = 0; i < p.q.size(); ++i) {
      p.window.push_back(p.tolerance + delta * (p.slope[i] + relativeBase * p.q[i]));
      p.fitWindow.push_back(p.tolerance + delta * p.slope[i]);
    }
    p.zeroBound = kRefinedZeroBound * kDegree;
  }

  void echoParameters() {
    out(" ");
    out(" STOP LIMITS");
    out(keywordLine("MAX CELL VOLUME=", formatF(std::abs(k_.vol), 10, 1)));
    out(keywordLine("MAX CELL EDGE=", formatF(problem_.maxEdge, 8, 2)));
    out(keywordLine("MAX NUMBER OF UNINDEXED LINES IN FIGURE OF MERIT TEST=", formatI(k_.nix, 3)));
    out(keywordLine("FIGURE OF MERIT REQUIRED=", formatF(k_.merit, 6, 1)));
    out(" ");
    out(keywordLine("WAVE=", formatF(lines_.wavelength, 9, 5)));
    out(keywordLine("CHOICE=", formatI(k_.choice, 2)));
    out(keywordLine("D1=", formatF(k_.d1, 9, 5)) + keywordLine("D2=", formatF(k_.d2, 9, 5)));
    out(keywordLine("EFFECTIVE D1=", formatF(sinSquaredTheta(problem_.tolerance, lines_.wavelength), 9, 6)) +
        keywordLine("EFFECTIVE D2=", formatF(sinSquaredTheta(lines_.refineTolerance, lines_.wavelength), 9, 6)));
    out(keywordLine("SSQTL=", formatF(k_.ssqtl, 8, 4)));
    out(keywordLine("MOLAR WEIGHT=", formatF(k_.molw, 9, 2)) + keywordLine("DENSITY=", formatF(k_.dens, 7, 3)) +
        keywordLine("MAX. DENSITY DEVIATION=", formatF(k_.edens, 7, 3)));
    out(keywordLine("NUMBER OF TEST LINES=", formatI(problem_.testLines, 3)));
    out(keywordLine("IQ REQUIRED=", formatI(problem_.iqRequired, 3)));
    out(keywordLine("SELECTED BASE LINES=", formatI(k_.select, 3)));
    out(keywordLine("PRINT ALL TRIALS WITH IQ GE", formatI(printIq_, 3)));
    out(keywordLine("KS=", formatI(k_.ks, 2)) + keywordLine("THS=", formatI(k_.ths, 2)));
  }

  template <typename Stage>
  void runStage(const std::string& name, CrystalSystem system, double from, double to, Stage stage) {
    if (!search_->keepGoing()) return;
    stageName_ = name + " TEST";
    stageSystem_ = system;
    stageFrom_ = from;
    stageTo_ = to;
    if (shell_) shell_->progress(from, stageName_);
    out(" ");
    out(" ** " + name + " TEST");
    refinedInPass_ = 0;
    passesInStage_ = 0;
    volumeLimit_ = std::abs(k_.vol);
    out(" MAX. VOLUME=" + formatF(volumeLimit_, 10, 1));
    bestAcceptedZero_.reset();
    std::vector<double> untried(std::begin(kZeroCorrections), std::end(kZeroCorrections));
    std::vector<double> tried;
    while (!untried.empty()) {
      if (zeroSettled(tried) || !search_->keepGoing()) break;
      const auto next = nextZeroCorrection(untried);
      const double zero = *next;
      untried.erase(next);
      passIndex_ = static_cast<int>(tried.size());
      tried.push_back(zero);
      if (zero != 0) {
        out(" ");
        out(" ZERO CORRECTION OF THE LINES =" + formatF(zero, 7, 3) + " DEG 2THETA");
      }
      useZeroCorrection(zero);
      refinedInPass_ = 0;
      search_->beginStage(volumeLimit_, printIq_);
      stage();
      refinePending();
    }
    useZeroCorrection(0.0);
  }

  // Before base-line set `index` of `count` in the current stage: reports progress and asks
  // whether the user interrupted; false to stop.
  bool nextSet(std::size_t index, std::size_t count) {
    // Each zero correction is a share of the stage.
    constexpr double passes = std::size(kZeroCorrections);
    const double done = (passIndex_ + static_cast<double>(index) / static_cast<double>(count)) / passes;
    if (shell_) shell_->progress(stageFrom_ + (stageTo_ - stageFrom_) * done, stageName_);
    return search_->keepGoing();
  }

  // Base-line numbers count the lines left for the trials; SELECT forces one line into every set.
  std::vector<int> baseLines(const std::vector<int>& set) const {
    std::vector<int> out;
    for (int number : set) {
      if (number - 1 >= static_cast<int>(base_.size())) return {};
      out.push_back(base_[number - 1]);
    }
    if (selected_ >= 0 && std::find(out.begin(), out.end(), selected_) == out.end()) out.back() = selected_;
    std::sort(out.begin(), out.end());
    if (std::adjacent_find(out.begin(), out.end()) != out.end()) return {};
    return out;
  }

  std::string setText(const std::vector<int>& lines) const {
    std::string text;
    for (int line : lines) text += formatI(line + 1, 3);
    return text;
  }

  TrialSink sinkFor(const std::string& family, const char* constantsName) {
    return [this, family, constantsName](const Trial& trial) { onTrial(trial, family, constantsName); };
  }

  void onTrial(const Trial& trial, const std::string& family, const char* constantsName) {
    std::string line = " K=" + formatI(trial.iq, 3) + " " + constantsName;
    const int n = freeParameterCount(trial.system);
    const double lambda = lines_.wavelength;
    for (int i = 0; i < std::min(n, 4); ++i) line += formatF(sinSquaredTheta(trial.parameters[i], lambda), 11, 7);
    if (trial.system != CrystalSystem::Triclinic) out(line);
    if (trial.iq < problem_.iqRequired) return;
    ++passesInStage_;
    ++familyCounts_[family];
    if (trial.crowded) return;
    // The monoclinic search meets super-cells along no single axis (a monoclinic cell of three or
    // five times the volume); they are queued as the finer lattice too, so that the ordering by
    // volume below does not put them last.
    // The trial itself stays queued: weak lines of the larger cell may be real.
    if (trial.finerLattice) {
      Trial finer = trial;
      finer.system = CrystalSystem::Triclinic;
      finer.metric = *trial.finerLattice;
      finer.parameters = parametersFromMetric(CrystalSystem::Triclinic, finer.metric);
      finer.finerLattice.reset();
      pending_.push_back({finer, family});
    }
    pending_.push_back({trial, family});
  }

  // The trials of a pass that reached IQ, refined smallest cell first: a large cell indexes many
  // lines by chance, and of two cells that index the same lines the smaller one is the better
  // description, so the refinements the stage allows go to the small cells.
  // The refinements are independent until they are reported: they are refined on every core and
  // reported in order as each is ready, and the report decides what counts against the budget (a
  // lattice refined before does not), so the work thrown away when the budget runs out is the
  // few refinements begun ahead.
  void refinePending() {
    std::stable_sort(pending_.begin(), pending_.end(), [](const PendingTrial& x, const PendingTrial& y) {
      return cellVolume(x.trial.metric) < cellVolume(y.trial.metric);
    });
    if (!search_->keepGoing()) {
      pending_.clear();
      return;
    }
    std::vector<Refined> refined(pending_.size());
    const auto ahead = static_cast<std::size_t>(2 * pool_.threads());
    auto refine = [&](std::size_t i, int thread) {
      // Only the calling thread may ask whether the user interrupted.
      if (thread == 0 && !search_->keepGoing()) return false;
      refined[i] = refineCandidate(pending_[i]);
      return true;
    };
    auto reportInOrder = [&](std::size_t i) {
      const PendingTrial& p = pending_[i];
      const bool lowSymmetry = p.trial.system == CrystalSystem::Monoclinic || p.trial.system == CrystalSystem::Triclinic;
      const int budget = lowSymmetry ? kMaxLowSymmetryRefinementsPerPass : kMaxRefinementsPerPass;
      if (refinedInPass_ >= budget) return false;
      report(std::move(refined[i]), p.trial.metric, p.family);
      return true;
    };
    workInOrder(pool_, pending_.size(), ahead, refine, reportInOrder);
    pending_.clear();
  }

  // A trial that took the first lines for higher orders of one axis describes a super-cell: its
  // lines are indexed as well, but among twice the calculated lines, so M20 is about halved. The
  // cell with that axis halved is refined too and kept when it is clearly better (an impurity
  // line that only the super-cell indexed may drop out, within NIX).
  struct Refined {
    CrystalSystem system = CrystalSystem::Triclinic;
    ReciprocalMetric start;
    RefinedTrial result;
  };
  Refined smallestCell(CrystalSystem system, Refined current) const {
    std::vector<std::vector<int>> axisSets{{0}, {1}, {2}};
    if (system == CrystalSystem::Cubic) axisSets = {{0, 1, 2}};
    if (system == CrystalSystem::Tetragonal || system == CrystalSystem::Hexagonal) axisSets = {{0, 1}, {2}};
    // The lines corrected by the current cell's zero, worked out again only when the cell changes.
    int allowed = std::max(current.result.figure.unindexed, k_.nix);
    std::vector<double> q = firstLinesCorrected(current.result.refinement.zero);
    for (bool improved = true; improved;) {
      improved = false;
      for (const auto& axes : axisSets) {
        ReciprocalMetric m = current.result.refinement.metric;
        for (int axis : axes) halveAxis(m, axis);
        // The halved cell keeps the lines of even index along the axis at the same places; when
        // the others leave too many lines unindexed, refining it cannot pay. (One line more is
        // allowed: the refinement moves the lines a little.)
        if (!indexesFirstLines(m, q, allowed + 1) || !search_->withinLowerLimits(m)) continue;
        RefinedTrial halved = refineTrial(lines_, system, m);
        if (!halved.solved || halved.figure.unindexed > allowed || halved.figure.m < 1.5 * current.result.figure.m)
          continue;
        current = {system, m, halved};
        improved = true;
        allowed = std::max(current.result.figure.unindexed, k_.nix);
        q = firstLinesCorrected(current.result.refinement.zero);
      }
    }
    if (current.result.figure.unindexed > k_.nix) return current;
    if (system == CrystalSystem::Monoclinic || system == CrystalSystem::Triclinic) return finestSubCell(current);
    if (system == CrystalSystem::Orthorhombic) return obliqueSubCell(current);
    return current;
  }

  // A nearly rectangular cell can be a super-cell of an oblique lattice (three times a monoclinic
  // cell) that reaches a convincing M20 and ends the search before the lower systems run. The
  // finer lattice replaces it when its metric symmetry is monoclinic or triclinic and it raises
  // the M20 of the cell's best centring by half: the primitive lattice of a centred cell keeps
  // the centred cell's symmetry, and a centred cell is reported as it is.
  Refined obliqueSubCell(const Refined& current) const {
    const Refined finer = finestSubCell(current);
    if (finer.system == current.system) return current;
    RefinedTrial centred = current.result;
    countCentredLattice(current.system, centred);
    if (finer.result.figure.m < 1.5 * centred.figure.m) return current;
    const auto cell = cellFromMetric(finer.result.refinement.metric);
    if (!cell) return current;
    const CrystalSystem symmetry = latticeSymmetry(*cell, Centring::P).system;
    return symmetry == CrystalSystem::Monoclinic || symmetry == CrystalSystem::Triclinic ? finer : current;
  }

  // The low-symmetry searches also meet super-cells along no single axis (a monoclinic cell of
  // three or five times the volume). Every lattice finer by index 2 to 6 is refined without
  // constraints; the best one that raises M20 by half and stays within NIX replaces the cell.
  // A finer lattice keeps only some of the cell's lines, so most are ruled out by counting the
  // first lines they leave unindexed before any refinement.
  Refined finestSubCell(Refined current) const {
    const Mat3 g = current.result.refinement.metric.tensor();
    const int allowed = std::max(current.result.figure.unindexed, k_.nix);
    const std::vector<double> q = firstLinesCorrected(current.result.refinement.zero);
    Refined best = current;
    for (const std::vector<Mat3>& forms : search_->subLatticeForms())
      for (const Mat3& h : forms) {
        const ReciprocalMetric m = ReciprocalMetric::fromTensor(transpose(h) * g * h);
        if (!indexesFirstLines(m, q, allowed) || !search_->withinLowerLimits(m)) continue;
        Refined sub{CrystalSystem::Triclinic, m, refineTrial(lines_, CrystalSystem::Triclinic, m)};
        if (!sub.result.solved) continue;
        if (current.system == CrystalSystem::Monoclinic) sub = withMonoclinicConstraints(sub);
        if (sub.result.figure.unindexed > std::max(current.result.figure.unindexed, k_.nix) ||
            sub.result.figure.m < 1.5 * best.result.figure.m)
          continue;
        best = sub;
      }
    return best;
  }

  // A finer lattice of a monoclinic trial is refined without constraints. When its metric is
  // monoclinic, the lines the near-monoclinic triclinic cell splits count twice among the
  // calculated lines and halve its M20 (a 2.75 × 19.13 × 4.17 Å cell reached 660 where monoclinic
  // super-cells of twice its volume reached 1054, and it ranked eighth); it is refined again as
  // the monoclinic cell its metric makes.
  Refined withMonoclinicConstraints(const Refined& finer) const {
    const auto cell = cellFromMetric(finer.result.refinement.metric);
    if (!cell) return finer;
    const LatticeSymmetry symmetry = latticeSymmetry(*cell, Centring::P);
    if (symmetry.system != CrystalSystem::Monoclinic || symmetry.centring != Centring::P) return finer;
    const ReciprocalMetric start = metricFromCell(symmetry.conventional);
    const RefinedTrial refined = refineTrial(lines_, CrystalSystem::Monoclinic, start);
    if (!refined.solved || refined.figure.unindexed > finer.result.figure.unindexed) return finer;
    return {CrystalSystem::Monoclinic, start, refined};
  }

  // The first 20 lines with a zero taken off their angles.
  std::vector<double> firstLinesCorrected(double zero) const {
    std::vector<double> q = zeroCorrectedQ(lines_, zero);
    q.resize(std::min<std::size_t>(20, q.size()));
    return q;
  }

  // Whether a metric leaves at most `allowed` of the lines `q` unindexed within the refinement
  // window: the test before a refinement that only pays if so.
  bool indexesFirstLines(const ReciprocalMetric& m, const std::vector<double>& q, int allowed) const {
    int misses = 0;
    const NearestLineFinder calculated(m, Centring::P);
    for (const double value : q)
      if (!calculated.hasLine(value, lines_.refineTolerance) && ++misses > allowed) return false;
    return true;
  }

  // Halving the direct axis doubles its reciprocal axis: the index along it goes in as 2h.
  static void halveAxis(ReciprocalMetric& m, int axis) {
    switch (axis) {
      case 0: m.A *= 4, m.E *= 2, m.F *= 2; break;
      case 1: m.B *= 4, m.D *= 2, m.F *= 2; break;
      default: m.C *= 4, m.D *= 2, m.E *= 2; break;
    }
  }

  // A trial of the monoclinic stage may have been replaced by its finer lattice, a triclinic
  // trial; its refined cell is taken back to monoclinic constraints where its metric allows.
  Refined refineCandidate(const PendingTrial& pending) const {
    const Trial& trial = pending.trial;
    Refined best{trial.system, trial.metric, refineTrial(lines_, trial.system, trial.metric)};
    if (!best.result.solved) return best;
    if (best.system == CrystalSystem::Triclinic && pending.family.starts_with("MONOCLINIC"))
      best = withMonoclinicConstraints(best);
    return smallestCell(best.system, best);
  }

  // Prints and stores a refined cell unless its lattice was refined before; false then.
  bool report(Refined best, const ReciprocalMetric& trialMetric, const std::string& family) {
    const RefinedTrial& refined = best.result;
    const ReciprocalMetric metric = refined.solved ? refined.refinement.metric : trialMetric;
    const auto cell = cellFromMetric(metric);
    if (!cell) return false;
    // A lattice already refined in this run is not printed again; met again with another zero
    // correction, an accepted one still tells the stage that the zero is settled. The comparison
    // allows for refinement noise relative to the whole metric, so with one long axis two cells
    // whose short edges differ by half a percent count as one: a refinement that fits clearly
    // better than the one kept (fewer unindexed lines, or twice the M20) is reported all the
    // same. (A C cell of 4.44 × 3.95 × 21.6 Å refined from its trial to M20 in the millions
    // with the impurity alone unindexed, and was dropped as the lattice of a 4.41 × 3.97 Å
    // refinement that had left three lines unindexed at M20 487.)
    if (const TreorCell* known = knownLattice(*cell); known && !fitsClearlyBetter(refined.figure, *known)) {
      if (known->accepted) noteAcceptedZero(*known);
      return false;
    }
    ++refinedInPass_;
    const Centring centring = countCentredLattice(best.system, best.result);
    printRefinement(result_.report, lines_, best.system, &best.start, refined, centring);
    TreorCell stored{best.system, family, *cell, centring, cellVolume(*cell), refined.figure.m, refined.figure.unindexed, false};
    stored.zero = lines_.correction + refined.refinement.zero;
    stored.zeroSigma = refined.zeroSigma;
    stored.meanDiscrepancy = refined.figure.meanDiscrepancy;
    stored.accepted = stored.m20 >= k_.merit && stored.unindexed <= k_.nix;
    // A refined cell (a halved axis, a finer lattice) may no longer hold a whole Z.
    if (stored.accepted && problem_.density.active() && !densityFit(stored.volume, problem_.density).within) {
      stored.accepted = false;
      out(densityLine(stored.volume) + " OUTSIDE THE LIMITS: NOT ACCEPTED");
    }
    if (stored.accepted) {
      accept(best.system, metric, stored);
      noteAcceptedZero(stored);
      stored.metricSystem = latticeSymmetry(stored.cell, Centring::P).system;
      noteConvincing(stored, refined);
      // The cycles of the acceptance can settle on a lattice accepted before (trials of several
      // lattices that meet in one well-fitting cell); listed again it would crowd out the others.
      if (knownLattice(stored.cell, true) != nullptr) return true;
    }
    result_.cells.push_back(stored);
    reducedCells_.push_back(reducedLattice(stored.cell));
    return true;
  }

  static bool fitsClearlyBetter(const DeWolffFigure& figure, const TreorCell& known) {
    return figure.unindexed < known.unindexed || (figure.unindexed == known.unindexed && figure.m >= 2.0 * known.m20);
  }

  static Mat3 reducedLattice(const CellParameters& cell) {
    return niggliReduce(cell, Centring::P, kClassificationTolerance).metric;
  }

  // The cell refined before (accepted, if asked) whose lattice is that of `cell`; the reduced
  // metrics of the cells are kept, as a run compares each new cell with hundreds of them.
  const TreorCell* knownLattice(const CellParameters& cell, bool acceptedOnly = false) const {
    const Mat3 reduced = reducedLattice(cell);
    for (std::size_t i = 0; i < result_.cells.size(); ++i)
      if ((!acceptedOnly || result_.cells[i].accepted) && sameReducedLattice(reducedCells_[i], reduced))
        return &result_.cells[i];
    return nullptr;
  }

  void accept(CrystalSystem system, const ReciprocalMetric& metric, TreorCell& stored) {
    ++accepted_;
    out(" ");
    out(" ***** YOU HAVE GOT AN INTERESTING RESULT !!! *****");
    out(" THE REFINEMENT OF THE CELL WILL NOW BE REPEATED");
    out(" THREE CYCLES MORE. --- GOOD LUCK !");
    RefinedTrial again = refineTrial(lines_, system, metric, 3);
    const double primitiveMerit = again.figure.m;  // the symmetry tests compare primitive cells
    const Centring centring = countCentredLattice(system, again);
    printRefinement(result_.report, lines_, system, nullptr, again, centring);
    stored.centring = centring;
    if (again.solved) {
      if (const auto cell = cellFromMetric(again.refinement.metric)) {
        stored.cell = *cell;
        stored.volume = cellVolume(*cell);
        stored.m20 = again.figure.m;
        stored.unindexed = again.figure.unindexed;
        stored.meanDiscrepancy = again.figure.meanDiscrepancy;
        stored.zero = lines_.correction + again.refinement.zero;
        stored.zeroSigma = again.zeroSigma;
      }
    }
    noteAllLinesFigure(stored, again.solved ? again.refinement.metric : metric, again.solved ? again.refinement.zero : 0.0);
    printCellAnalysis(result_.report, lines_, stored.cell, again.solved ? primitiveMerit : stored.m20);
    if (problem_.density.active()) out(densityLine(stored.volume));
  }

  void noteAllLinesFigure(TreorCell& stored, const ReciprocalMetric& metric, double zero) const {
    const std::vector<double> q = zeroCorrectedQ(lines_, zero);
    const std::vector<double> tolerance(q.size(), lines_.refineTolerance);
    FigureOfMeritOptions allLines;
    allLines.lines = static_cast<int>(q.size());
    const DeWolffFigure figure = deWolffFigure(q, tolerance, metric, stored.centring, allLines);
    stored.allLinesMerit = figure.m;
    stored.allLinesUnindexed = figure.unindexed;
  }

  // The density the measured one comes nearest to for a whole number of formula units.
  std::string densityLine(double volume) const {
    const DensityFit fit = densityFit(volume, problem_.density);
    return " CALCULATED DENSITY =" + formatF(fit.density, 8, 3) + " G/CM**3 FOR Z =" + formatI(fit.z, 4);
  }

  // A cell whose lines obey a lattice centring is judged by the M20 of the centred lattice: the
  // primitive cell counts three (F) or one (I, C) extra calculated lines for each real one, so a
  // large centred cell would fail MERIT. Returns the centring (P when none).
  Centring countCentredLattice(CrystalSystem system, RefinedTrial& refined) const {
    if (!refined.solved) return Centring::P;
    const MetricRefinement& r = refined.refinement;
    const Centring centring = latticeCentring(system, r.metric, refined.figure.unindexed, r.zero);
    if (centring != Centring::P) {
      std::vector<double> q = zeroCorrectedQ(lines_, r.zero);
      q.resize(std::min<std::size_t>(20, q.size()));
      const std::vector<double> tolerance(q.size(), lines_.refineTolerance);
      refined.figure = deWolffFigure(q, tolerance, r.metric, centring);
    }
    return centring;
  }

  // The centring whose absences the lines obey: the one with the best M20 that would itself be
  // accepted (an impurity line that a primitive reflection happened to index may drop out, within
  // NIX). A true centring removes half the calculated lines
  // (F three quarters, R two thirds; fewer in the cubic system, where many forms coincide) and
  // so raises M20 by 1.6 to 4; a pseudo-centring that a few lines break gains much less.
  // The centring must also hold for the lines past the first 20, all but one more than the
  // primitive cell leaves (a noisy line that only a primitive reflection happens to reach): when
  // the first 20 all lie in one zone (hk0 with h + k even) they obey I as well as C, and only the
  // later hkl lines tell which.
  Centring latticeCentring(CrystalSystem system, const ReciprocalMetric& metric, int unindexed, double zero) const {
    std::vector<Centring> options{Centring::I, Centring::F, Centring::A, Centring::B, Centring::C};
    if (system == CrystalSystem::Hexagonal) options = {Centring::R};
    const std::vector<double> all = zeroCorrectedQ(lines_, zero);
    const std::vector<double> allTolerance(all.size(), lines_.refineTolerance);
    const std::span<const double> q(all.data(), std::min<std::size_t>(20, all.size()));
    const std::span<const double> tolerance(allTolerance.data(), q.size());
    auto unindexedOfAll = [&](Centring c) {
      const auto assigned = assignLines(all, allTolerance, metric, c);
      return static_cast<int>(std::count_if(assigned.begin(), assigned.end(), [](const LineAssignment& a) { return !a.indexed; }));
    };
    // Every reported cell comes here, so all the lines are assigned only for a centring that the
    // first 20 lines could make the best (or F, which the base centrings defer to).
    std::optional<int> allowedOfAll;
    auto holdsForAllLines = [&](Centring c) {
      if (!allowedOfAll) allowedOfAll = std::max(unindexedOfAll(Centring::P), k_.nix) + 1;
      return unindexedOfAll(c) <= *allowedOfAll;
    };
    Centring best = Centring::P;
    DeWolffFigure bestFigure = deWolffFigure(q, tolerance, metric, Centring::P);
    std::optional<DeWolffFigure> faceCentred;
    for (Centring c : options) {
      const DeWolffFigure f = deWolffFigure(q, tolerance, metric, c);
      const bool better = f.m > bestFigure.m * 1.5;
      if (f.unindexed > std::max(unindexed, k_.nix) || (!better && c != Centring::F) || !holdsForAllLines(c)) continue;
      if (c == Centring::F) faceCentred = f;
      if (better) {
        best = c;
        bestFigure = f;
      }
    }
    // The F reflections are those that obey all three base centrings. When the lines judged to
    // obey A, B or C also all obey F, the lattice is F even if its M20 is lower: without noise
    // M20 is ruled by the one line with the largest misfit (an impurity that some A reflection
    // happens to lie nearer than any F one), and so says nothing about the centring.
    const bool baseCentred = best == Centring::A || best == Centring::B || best == Centring::C;
    if (baseCentred && faceCentred && faceCentred->unindexed <= bestFigure.unindexed) best = Centring::F;
    return best;
  }

  // Stages ---------------------------------------------------------------------------------

  void cubic() {
    const auto labels = labelTable(CrystalSystem::Cubic, 6, 12);
    const BaseSets sets{{1}, {2}, {3}};
    for (std::size_t i = 0; i < sets.size(); ++i) {
      if (!nextSet(i, sets.size())) break;
      const auto& set = sets[i];
      const auto lines = baseLines(set);
      if (lines.empty()) continue;
      search_->searchBaseSet(CrystalSystem::Cubic, lines, labels, sinkFor("CUBIC", "X="));
    }
  }

  void twoParameter(CrystalSystem system, const std::string& family) {
    const auto labels = labelTable(system, 5, 8);
    // The pairs among the first four base lines: an impurity among the first three, or a long
    // axis whose 00l lines come first beyond the orders the echo flags, leaves no good pair
    // among the first three.
    searchBaseSets(system, labels, {{1, 2}, {1, 3}, {2, 3}, {1, 4}, {2, 4}, {3, 4}}, family, "XY=");
    axialDominantZone(system, family);
  }

  // Each base-line set in turn (progress and interruption between sets), echoed and searched.
  template <class Labels>
  void searchBaseSets(CrystalSystem system, const Labels& labels, const BaseSets& sets, const std::string& family,
                      const char* key) {
    for (std::size_t i = 0; i < sets.size(); ++i) {
      if (!nextSet(i, sets.size())) break;
      const auto lines = baseLines(sets[i]);
      if (lines.empty()) continue;
      out(" BASE LINES:" + setText(lines));
      search_->searchBaseSet(system, lines, labels, sinkFor(family, key));
    }
  }

  void orthorhombic() {
    const auto labels = labelTable(CrystalSystem::Orthorhombic, 3, 5);
    searchBaseSets(CrystalSystem::Orthorhombic, labels,
                   {{1, 2, 3}, {1, 2, 4}, {1, 2, 5}, {1, 3, 4}, {2, 3, 4}, {1, 2, 6}}, "ORTHORHOMBIC", "XYZ=");
    out(" ");
    out(" ORTHOROMBIC DOMINANT ZONE TEST");
    orthorhombicDominantZone();
  }

  // A short c axis puts the first lines in the hk0 zone: solve the rectangular zone from two
  // lines, then take the first line it leaves unindexed as hk1 or hk2.
  void orthorhombicDominantZone() {
    std::vector<std::array<int, 3>> third;
    for (int h = 0; h <= 2; ++h)
      for (int k = 0; k <= 2; ++k)
        for (int l = 1; l <= 2; ++l) third.push_back({h, k, l});
    const auto zones = rectangularZones(CrystalSystem::Orthorhombic, 2);
    completeZones(CrystalSystem::Orthorhombic, zones, {2}, third, "ORTHORHOMBIC", "XYZ=");
    // Two short axes in a centred face and a long one put the first lines in the 00l and hhl
    // rows of the zone through the face diagonal (an F cell of 3.15 × 2.90 × 22.0 Å: 200 and
    // 020 come after the twelfth line), where no base-line set is regular. Each zone is taken,
    // either way round (the zones come in both orders, each line taken along either axis), as
    // that diagonal zone and split as the C face of a cell. The first base lines can all be 00l
    // orders (the fourth order of a zero-shifted pattern escapes the echo's flag) or an impurity:
    // the pairs with the fourth to sixth base lines count too.
    std::vector<ReciprocalMetric> diagonalZones;
    for (const ReciprocalMetric& z : zones) diagonalZones.push_back({z.A, 0, z.B, 0, 0, 0});
    for (const ReciprocalMetric& z :
         rectangularZones(CrystalSystem::Orthorhombic, 2, {{1, 4}, {2, 4}, {3, 4}, {1, 5}, {2, 5}, {1, 6}, {2, 6}}))
      diagonalZones.push_back({z.A, 0, z.B, 0, 0, 0});
    completeCentredZones(CrystalSystem::Orthorhombic, diagonalZones, "ORTHORHOMBIC", "XYZ=");
  }

  // Rectangular zones (the two axes other than `missingAxis`, no cross term) solved from each
  // pair of the first three base lines, taken with orthorhombic indices 0 along that axis.
  std::vector<ReciprocalMetric> rectangularZones(CrystalSystem system, int missingAxis,
                                                 const BaseSets& pairs = {{1, 2}, {1, 3}, {2, 3}}) {
    std::vector<LabelRow> zoneLabels;
    for (const LabelRow& row : labelTable(CrystalSystem::Orthorhombic, 4, 6))
      if (row.hkl[static_cast<std::size_t>(missingAxis)] == 0) zoneLabels.push_back(row);
    std::vector<int> zoneAxes;
    for (int axis = 0; axis < 3; ++axis)
      if (axis != missingAxis) zoneAxes.push_back(axis);
    std::vector<ReciprocalMetric> zones;
    for (const auto& set : pairs) {
      const auto lines = baseLines(set);
      if (lines.empty()) continue;
      std::vector<std::vector<std::array<int, 3>>> rows(2);
      for (int i = 0; i < 2; ++i)
        for (const LabelRow& row : search_->filterLabels(CrystalSystem::Orthorhombic, zoneLabels, problem_.q[lines[i]]))
          rows[i].push_back(row.hkl);
      addZones(zones, system, ReciprocalMetric{}, zoneAxes, lines, rows);
    }
    return zones;
  }

  // The zones (two-dimensional trials) solved from `lines`, unchecked but for positive squared
  // coefficients, after those found before.
  void addZones(std::vector<ReciprocalMetric>& zones, CrystalSystem system, const ReciprocalMetric& known,
                const std::vector<int>& unknown, const std::vector<int>& lines,
                const std::vector<std::vector<std::array<int, 3>>>& rows) {
    search_->completeMetric(system, known, unknown, lines, rows, [&](const Trial& zone) { zones.push_back(zone.metric); },
                            nullptr, false);
  }

  // Each zone completed (completeZone) on every core; its trials reach the report in the order
  // of the zones.
  void completeZones(CrystalSystem system, const std::vector<ReciprocalMetric>& zones, const std::vector<int>& unknown,
                     const std::vector<std::array<int, 3>>& hkl, const std::string& family, const char* name) {
    search_->searchPieces(
        zones.size(), [&](std::size_t i, const TrialOffer& offer) { completeZone(system, zones[i], unknown, hkl, offer); },
        sinkFor(family, name));
  }

  // The zone metric is accepted as a 2D trial when it indexes the first lines; its first
  // unindexed lines fix the remaining coefficients. A single missing coefficient is tried on each
  // of the first three lines the zone leaves out, as one of them may be an impurity. A zone of two
  // long axes can index enough test lines on its own, and then any third axis passes the test
  // lines: the lines it leaves out are then looked for beyond the test lines. (Not in the
  // monoclinic stage, where the extra trials lost the cell of a synchrotron pattern of cimetidine.)
  // Two missing coefficients (a third axis and its angle) are tried on each pair of those three
  // lines, always looking beyond the test lines; as the test lines then pass almost any
  // completion, a completed trial must index every line but NIX.
  void completeZone(CrystalSystem system, const ReciprocalMetric& zone, const std::vector<int>& unknown,
                    const std::vector<std::array<int, 3>>& hkl, const TrialOffer& offer) const {
    constexpr int kLinesTried = 3;
    const bool oneUnknown = unknown.size() == 1, twoUnknowns = unknown.size() == 2;
    const int wanted = oneUnknown || twoUnknowns ? kLinesTried : static_cast<int>(unknown.size());
    const bool lookBeyond = (oneUnknown && system != CrystalSystem::Monoclinic) || twoUnknowns;
    const auto missing = linesZoneLeavesOut(zone, unknown, wanted, lookBeyond);
    if (missing.empty()) return;
    std::vector<std::vector<std::array<int, 3>>> rows(unknown.size(), hkl);
    if (oneUnknown) {
      for (const int line : missing) search_->solveCompletions(system, zone, unknown, {line}, rows, offer);
    } else if (twoUnknowns) {
      // The lines of the zone stay indexed: only those it leaves out need testing.
      const std::vector<int> outside =
          search_->unindexedTestLines(zoneOnly(zone, unknown), static_cast<int>(problem_.q.size()), true);
      // Inadmissible completions are left out before the line test: a nearly singular one (an
      // edge far beyond the limit) sends the test through millions of indices.
      const TrialOffer indexingEveryLine = [&](const Trial& trial) {
        return !search_->admissibleKey(trial) || !search_->indexesLines(trial.metric, outside, k_.nix) ||
               offer(trial);
      };
      for (std::size_t i = 0; i < missing.size(); ++i)
        for (std::size_t j = i + 1; j < missing.size(); ++j)
          search_->solveCompletions(system, zone, unknown, {missing[i], missing[j]}, rows, indexingEveryLine);
    } else {
      search_->solveCompletions(system, zone, unknown, missing, rows, offer);
    }
  }

  // The first `wanted` test lines the zone leaves unindexed, or none when the zone is no trial:
  // outside the edge limit, or leaving out too many of the first lines. With `lookBeyond`, a zone
  // that indexes IQ test lines alone is followed past the test lines. Zone trials are admitted
  // before they are complete; too few indexed lines means the zone is wrong. One early miss may
  // be an impurity (as line 2 it would otherwise end the test): the zone must then index a longer
  // run of lines before its next miss.
  std::vector<int> linesZoneLeavesOut(const ReciprocalMetric& zone, const std::vector<int>& unknown, int wanted,
                                      bool lookBeyond) const {
    if (!withinEdgeLimit(zone, unknown)) return {};
    const ReciprocalMetric alone = zoneOnly(zone, unknown);
    const bool beyond = lookBeyond && search_->indexedTestLines(alone, problem_.iqRequired) >= problem_.iqRequired;
    auto missing = search_->unindexedTestLines(alone, wanted, beyond);
    if (missing.size() < unknown.size()) return {};
    const int leading = static_cast<int>(unknown.size()) + 1;
    const bool leadingLinesIndexed = missing.front() >= leading;
    const bool indexesPastOneImpurity = missing.size() >= 2 && missing[1] - 1 >= leading + 1;
    if (!leadingLinesIndexed && !indexesPastOneImpurity) return {};
    return missing;
  }

  // The zone alone (its missing axes set far) must make a cell within the edge limit: a zone
  // solved from the orders of one line can be nearly singular, and the line tests of such a zone
  // run through millions of indices (a minute per zone for a 2.9 × 3.3 × 24.3 Å C cell whose
  // first ten lines are 00l).
  bool withinEdgeLimit(const ReciprocalMetric& zone, const std::vector<int>& unknown) const {
    const auto cell = cellFromMetric(zoneOnly(zone, unknown));
    return cell && std::max({cell->a, cell->b, cell->c}) <= problem_.maxEdge;
  }

  // The zone's metric with the squared coefficients it lacks set so large that no line outside
  // the zone reaches the test lines (left at zero they would make no lattice to count lines of).
  ReciprocalMetric zoneOnly(ReciprocalMetric zone, const std::vector<int>& unknown) const {
    const double far = 100.0 * problem_.q[problem_.testLines - 1];
    for (const int c : unknown) {
      if (c == 0) zone.A = far;
      if (c == 1) zone.B = far;
      if (c == 2) zone.C = far;
    }
    return zone;
  }

  // A long a axis (short c) puts the first lines in the hk0 zone, where no pair of them fixes C:
  // A from one of the first two base lines as (100), (110), (200) or (210), then C from one of the
  // first test lines that zone leaves unindexed, taken as hk1 or hk2.
  void axialDominantZone(CrystalSystem system, const std::string& family) {
    std::vector<std::array<int, 3>> layer;
    for (int h = 0; h <= 2; ++h)
      for (int k = 0; k <= h; ++k)
        for (int l = 1; l <= 2; ++l) layer.push_back({h, k, l});
    std::vector<ReciprocalMetric> zones;
    for (const int b : {1, 2}) {
      const auto line = baseLines({b});
      if (line.empty()) continue;
      for (const auto& [h, k] : {std::pair{1, 0}, {1, 1}, {2, 0}, {2, 1}}) {
        const double form = designRow(system, h, k, 0)[0];
        const std::array<double, 2> p{problem_.q[line[0]] / form, 0.0};
        zones.push_back(metricFromParameters(system, p));
      }
    }
    completeZones(system, zones, {2}, layer, family, "XY=");
  }

  void monoclinic() {
    out(" MAX BETA ALLOWED=" + formatF(problem_.maxBeta, 7, 1));
    out(" ");
    out(" (020)-SEARCH");
    monoclinic020();
    const auto labels = labelTable(CrystalSystem::Monoclinic, 3, 4);
    BaseSets sets{{1, 2, 3, 4}, {1, 2, 3, 5}, {1, 2, 4, 5}};
    if (k_.monoset)
      for (const auto& extra : BaseSets{{1, 3, 4, 5}, {1, 2, 3, 6}, {2, 3, 4, 5}, {1, 2, 3, 7}}) sets.push_back(extra);
    out(" ");
    out(" MONOCLINIC DOMINANT ZONE TEST");
    monoclinicDominantZone();
    out(" ");
    out(" MONOCLINIC GENERAL TESTS");
    for (std::size_t i = 0; i < sets.size(); ++i) {
      if (!nextSet(i, sets.size())) break;
      const auto& set = sets[i];
      const auto lines = baseLines(set);
      if (lines.empty()) continue;
      out(" BASE LINES:" + setText(lines));
      search_->searchBaseSet(CrystalSystem::Monoclinic, lines, labels, sinkFor("MONOCLINIC GENERAL", "XYZU="));
      lowerVolumeLimit("NEW MONOCLINIC VOLUME LIMIT=");
    }
    // The rectangular zone of a short axis is searched only when no convincing cell has been
    // found by now: where the zone is dense, tens of thousands of its completions pass the test
    // lines; searched in every run it added a third to the monoclinic time and doubled some runs
    // that are solved without it.
    refinePending();
    if (stop(k_.ks, convincingMerit())) return;
    refinedInPass_ = 0;
    out(" ");
    out(" MONOCLINIC DOMINANT ZONE TEST");
    monoclinicRectangularZone();
  }

  // Once b* is known every line splits into an h0l part and k²B; the h0l zone is then solved
  // from the smallest reduced values.
  void monoclinic020() {
    const int n = std::min<int>(kZoneValueLines, static_cast<int>(problem_.q.size()));
    std::vector<std::array<int, 3>> zoneHkl;
    for (int h = 0; h <= 3; ++h)
      for (int l = -3; l <= 3; ++l)
        if ((h || l) && !(h == 0 && l < 0) && std::abs(h) + std::abs(l) <= 4) zoneHkl.push_back({h, 0, l});
    // One piece per base line taken as 010 or 020, searched on every core.
    const int bases = std::min<int>(5, static_cast<int>(base_.size()));
    const std::vector<std::vector<std::array<int, 3>>> rows(3, zoneHkl);
    auto search = [&](std::size_t piece, const TrialOffer& offer) {
      const int b = static_cast<int>(piece) / 2, k0 = static_cast<int>(piece) % 2 + 1;
      const double B = problem_.q[base_[b]] / (k0 * k0);
      if (!supportsB(B)) return;
      const std::vector<ZoneValue> reduced = zoneValues(B, n);
      if (reduced.size() < 3) return;
      ReciprocalMetric known;
      known.B = B;
      for (const auto& triple : kZoneTriples) {
        if (triple.back() >= static_cast<int>(reduced.size())) continue;
        std::vector<double> values;
        std::vector<int> lines;
        for (int t : triple) {
          values.push_back(reduced[t].q);
          lines.push_back(reduced[t].line);
        }
        search_->solveCompletions(CrystalSystem::Monoclinic, known, {0, 2, 4}, lines, rows, offer, &values);
      }
    };
    search_->searchPieces(static_cast<std::size_t>(2 * std::max(bases, 0)), search, sinkFor("MONOCLINIC (020)", "XYZU="));
  }

  // B is a real axis parameter when several pairs of lines differ by (k'² − k²)B.
  bool supportsB(double B) const {
    int pairs = 0;
    const int n = std::min<int>(15, static_cast<int>(problem_.q.size()));
    for (int i = 0; i < n; ++i)
      for (int j = i + 1; j < n; ++j)
        for (double f : {1.0, 3.0, 4.0, 5.0, 8.0})
          if (std::abs(problem_.q[j] - problem_.q[i] - f * B) <= problem_.tolerance) ++pairs;
    return pairs >= 2;
  }

  // A candidate h0l value and the first line that gave it. The line goes with the trial: the fit
  // on the test lines needs it when it lies beyond them (a short a and c put 100 and 10-1 past
  // the first fifteen lines of a long b axis, and the angle term would be left unfixed).
  struct ZoneValue {
    double q = 0;
    int line = 0;
  };

  // Candidate h0l values once B is known: the first lines themselves, and q − k²B where another
  // line confirms it. A difference that no other line repeats is mostly a line of another k
  // minus the wrong multiple of B, and would crowd the few smallest values the zone is solved from.
  // So would the orders 0k0 of B itself and the lines of a series h0l + k²B already taken: a long
  // b axis puts four or five such lines first, which left no room for the zone's own values.
  std::vector<ZoneValue> zoneValues(double B, int n) const {
    const double tolerance = problem_.tolerance;
    auto isOrderOfB = [&](double r) {
      const double k = std::round(std::sqrt(r / B));
      return k >= 1 && std::abs(r - k * k * B) <= tolerance;
    };
    std::vector<ZoneValue> candidates;
    for (int j = 0; j < n; ++j)
      for (int kk = 0; kk <= 2; ++kk) {
        const double r = problem_.q[j] - kk * kk * B;
        if (r > tolerance && !isOrderOfB(r)) candidates.push_back({r, j});
      }
    std::sort(candidates.begin(), candidates.end(), [](const ZoneValue& x, const ZoneValue& y) { return x.q < y.q; });
    std::vector<ZoneValue> values;
    for (std::size_t i = 0; i < candidates.size();) {
      const double value = candidates[i].q;
      int line = candidates[i].line;
      std::size_t end = i + 1;
      for (; end < candidates.size() && candidates[end].q - value < tolerance; ++end)
        line = std::min(line, candidates[end].line);
      const bool observed = std::any_of(problem_.q.begin(), problem_.q.begin() + n,
                                        [&](double q) { return std::abs(q - value) < tolerance; });
      const bool laterInSeries = std::any_of(values.begin(), values.end(),
                                             [&](const ZoneValue& v) { return isOrderOfB(value - v.q); });
      if ((observed || end - i >= 2) && !laterInSeries) values.push_back({value, line});
      i = end;
    }
    if (values.size() > kZoneValues) values.resize(kZoneValues);
    return values;
  }

  void monoclinicDominantZone() {
    // Short b: the first lines are h0l; B comes from the first line the zone leaves out.
    std::vector<LabelRow> zoneLabels;
    for (const LabelRow& row : labelTable(CrystalSystem::Monoclinic, 3, 4))
      if (row.hkl[1] == 0) zoneLabels.push_back(row);
    std::vector<std::array<int, 3>> withK;
    for (int h = -2; h <= 2; ++h)
      for (int l = -2; l <= 2; ++l) withK.push_back({h, 1, l});
    std::vector<ReciprocalMetric> zones;
    for (const auto& set : BaseSets{{1, 2, 3}, {1, 2, 4}, {1, 3, 4}}) {
      const auto lines = baseLines(set);
      if (lines.empty()) continue;
      std::vector<std::vector<std::array<int, 3>>> rows(3);
      for (int i = 0; i < 3; ++i)
        for (const LabelRow& row : search_->filterLabels(CrystalSystem::Monoclinic, zoneLabels, problem_.q[lines[i]]))
          rows[i].push_back(row.hkl);
      addZones(zones, CrystalSystem::Monoclinic, ReciprocalMetric{}, {0, 2, 4}, lines, rows);
    }
    completeZones(CrystalSystem::Monoclinic, zones, {1}, withK, "MONOCLINIC DOMINANT ZONE", "XYZU=");
    completeCentredZones(CrystalSystem::Monoclinic, zones, "MONOCLINIC DOMINANT ZONE", "XYZU=");
  }

  // A short a (or c: the same lattice with its axes named the other way) puts the first lines in
  // the rectangular 0kl zone, and a cell of two long axes has few lines outside it among the first
  // twenty. B and C come from two of the first lines, A and the angle term E from two of the first
  // three lines the zone leaves out (beyond the test lines), taken as hkl with h = 1 or 2. (A
  // 16.5 × 19.6 × 4.69 Å cell, β 116°, was otherwise met only as orthorhombic cells of its zone.)
  void monoclinicRectangularZone() {
    std::vector<std::array<int, 3>> withH;
    for (int h = 1; h <= 2; ++h)
      for (int k = 0; k <= 2; ++k)
        for (int l = -2; l <= 2; ++l) withH.push_back({h, k, l});
    completeZones(CrystalSystem::Monoclinic, rectangularZones(CrystalSystem::Monoclinic, 0), {0, 4}, withH,
                  "MONOCLINIC DOMINANT ZONE", "XYZU=");
  }

  // A small C-centred cell puts its first lines in the hhl zone (001, 110, 11l): solved as an
  // h0l zone it gives S = A + B in place of A, and C and E as they are, while nothing tells B
  // from A before a line with h ≠ k (020 and 200 are lines 9 to 23 of a cell of 42-60 Å³
  // primitive). Each of the first lines the zone leaves out (past the test lines when it indexes
  // them alone), taken as 0kl or h0l with k, h = 2, splits S: q = h²A + k²(S − A) + l²C + hlE.
  // The zone indexes most test lines alone, so nearly any split passes them: the C lattice of a
  // split must index every trial line but NIX. (Orthorhombic zones have E = 0, and their l runs
  // further: the third axis is the long one.)
  void completeCentredZones(CrystalSystem system, const std::vector<ReciprocalMetric>& zones,
                            const std::string& family, const char* name) {
    const bool orthorhombic = system == CrystalSystem::Orthorhombic;
    std::vector<std::array<int, 3>> split;
    for (const auto& [h, k] : {std::pair{0, 2}, {2, 0}})
      for (int l = orthorhombic ? 0 : -2; l <= (orthorhombic ? 4 : 2); ++l) split.push_back({h, k, l});
    search_->searchPieces(
        zones.size(),
        [&](std::size_t i, const TrialOffer& offer) {
          const ReciprocalMetric& zone = zones[i];
          const auto missing = linesZoneLeavesOut(zone, {1}, 3, true);
          for (const int line : missing)
            for (const auto& hkl : split) {
              const double h = hkl[0], k = hkl[1], l = hkl[2];
              const double a = (problem_.q[line] - k * k * zone.A - l * l * zone.C - h * l * zone.E) / (h * h - k * k);
              if (a <= 0 || a >= zone.A) continue;
              Trial trial;
              trial.system = system;
              trial.metric = ReciprocalMetric{a, zone.A - a, zone.C, 0, zone.E, 0};
              trial.parameters = parametersFromMetric(trial.system, trial.metric);
              trial.lines = {line};
              trial.hkl = {hkl};
              if (!search_->admissibleKey(trial)) continue;
              const auto unindexed = search_->unindexedTestLines(trial.metric, k_.nix + 1, true, Centring::C);
              if (static_cast<int>(unindexed.size()) > k_.nix) continue;
              if (!offer(trial)) return;
            }
        },
        sinkFor(family, name));
  }

  // After a base-line set whose trials passed the IQ test more than kPassesBeforeLowerLimit
  // times since the last change, the stage goes on with a fifth less volume: a set that many
  // large cells pass would spend the later sets on more of them. A pattern of a large cell passes
  // fifty trials in its first set, so at 50 the monoclinic limit fell below C-centred cells of
  // 2500-3000 Å³ before the later sets ran. At 200, over the benchmark's monoclinic and triclinic
  // problems (7 seeds, 126 problems): four more found, one fewer, in the same time.
  static constexpr int kPassesBeforeLowerLimit = 200;
  void lowerVolumeLimit(const std::string& text) {
    if (passesInStage_ <= kPassesBeforeLowerLimit) return;
    volumeLimit_ *= 0.8;
    search_->setMaxVolume(volumeLimit_);
    passesInStage_ = 0;
    out(" " + text + formatF(volumeLimit_, 10, 1));
  }

  void triclinic() {
    out(" ");
    const auto labels = labelTable(CrystalSystem::Triclinic, 2, 2);
    // The first line is taken as (100) and the second gets non-negative indices.
    std::vector<LabelRow> first{{designRow(CrystalSystem::Triclinic, 1, 0, 0), {1, 0, 0}}};
    std::vector<LabelRow> second;
    for (const LabelRow& row : labels)
      if (row.hkl[0] >= 0 && row.hkl[1] >= 0 && row.hkl[2] >= 0) second.push_back(row);
    const BaseSets sets{{1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 7}, {1, 2, 3, 4, 5, 8},
                        {1, 2, 3, 4, 6, 7}, {1, 2, 3, 4, 6, 8}, {1, 2, 3, 5, 6, 8},
                        {1, 2, 3, 5, 6, 7}, {1, 2, 3, 5, 7, 8}, {1, 2, 3, 4, 5, 9}};
    for (std::size_t i = 0; i < sets.size(); ++i) {
      if (!nextSet(i, sets.size())) break;
      const auto& set = sets[i];
      if (search_->stopped()) break;
      const auto lines = baseLines(set);
      if (lines.empty()) continue;
      std::vector<std::vector<LabelRow>> rows{first,
                                              search_->filterLabels(CrystalSystem::Triclinic, second, problem_.q[lines[1]])};
      for (std::size_t j = 2; j < lines.size(); ++j)
        rows.push_back(search_->filterLabels(CrystalSystem::Triclinic, labels, problem_.q[lines[j]]));
      out(" BASE LINES:" + setText(lines));
      search_->searchRows(CrystalSystem::Triclinic, lines, rows, sinkFor("TRICLINIC", "XYZU="));
      lowerVolumeLimit("NEW TRICLINIC VOLUME LIMIT=");
    }
    out(" ");
    out(" TRICLINIC DOMINANT ZONE TEST");
    triclinicDominantZone();
  }

  // An oblique hk0 zone from three lines, then C, D, E from the first three lines it misses,
  // taken as hk1.
  void triclinicDominantZone() {
    std::vector<std::array<int, 3>> zoneHkl, layer;
    for (int h = 0; h <= 2; ++h)
      for (int k = -2; k <= 2; ++k)
        if ((h || k) && !(h == 0 && k < 0)) zoneHkl.push_back({h, k, 0});
    for (int h = -1; h <= 1; ++h)
      for (int k = -1; k <= 1; ++k) layer.push_back({h, k, 1});
    const auto lines = baseLines({1, 2, 3});
    if (lines.empty()) return;
    std::vector<std::vector<std::array<int, 3>>> rows(3, zoneHkl);
    rows[0] = {{1, 0, 0}};
    std::vector<ReciprocalMetric> zones;
    addZones(zones, CrystalSystem::Triclinic, ReciprocalMetric{}, {0, 1, 5}, lines, rows);
    completeZones(CrystalSystem::Triclinic, zones, {2, 3, 4}, layer, "TRICLINIC", "XYZU=");
  }

  // End ------------------------------------------------------------------------------------

  void summary() {
    out(" ");
    const std::string iq = formatI(problem_.iqRequired, 3);
    for (const auto& [family, text] : std::vector<std::pair<std::string, std::string>>{
             {"CUBIC", "IN CUBIC TESTS"},
             {"TETRAGONAL", "IN TETRAGONAL TESTS"},
             {"HEXAGONAL", "IN HEXAGONAL TESTS"},
             {"ORTHORHOMBIC", "IN ORTHORHOMBIC TESTS"},
             {"MONOCLINIC (020)", "IN MONOCLINIC (020)-TESTS"},
             {"MONOCLINIC DOMINANT ZONE", "IN MONOCLINIC DOMINANT ZONE TESTS"},
             {"MONOCLINIC GENERAL", "IN MONOCLINIC GENERAL TESTS"},
             {"TRICLINIC", "IN TRICLINIC TESTS"}})
      out(" NUMBER OF CELLS WITH" + iq + " OR MORE INDEXABLE LINES " + text + " =" + formatI(familyCounts_[family], 6));
    out(" ");
    out(" END OF INDEXING CALCULATIONS");
  }

  void ending() {
    out(" ");
    if (accepted_ > 0) {
      out(" THIS MAY BE THE SOLUTION !!!");
      out(" TO CHECK THE SOLUTION SET KS=0 (AND THS=0) TO CONTINUE WITH THE LOWER SYMMETRIES,");
      out(" DECREASE NIX OR INCREASE MERIT.");
      rankAccepted();
    } else {
      out(" NO SOLUTION ACCEPTED.....THINK!");
    }
  }

  // The accepted cells best first; written without the cell layout of the refinement blocks so
  // that the solution reader takes each cell once per refinement only.
  void rankAccepted() {
    out(" ");
    out(" ACCEPTED CELLS, BEST FIRST (M20, A THIRD LESS PER EXTRA FREE PARAMETER OF THE LATTICE):");
    // M20 has room for the millions that noise-free lines reach.
    for (const TreorCell* c : rankedAcceptedCells(result_.cells)) {
      std::string line = " ";
      line += padRight(toUpper(crystalSystemName(c->metricSystem)), 14);
      for (const double edge : {c->cell.a, c->cell.b, c->cell.c}) line += formatF(edge, 10, 5);
      for (const double angle : {c->cell.alpha, c->cell.beta, c->cell.gamma}) line += formatF(angle, 9, 3);
      line += formatF(c->volume, 10, 2);
      line += "  M20=";
      line += formatF(c->m20, 10, 1);
      out(std::move(line));
    }
  }

  const TreorInput& input_;
  const TreorKeywords& k_;
  Shell* shell_;
  WorkerPool pool_;
  TreorResult result_;
  ObservedLines lines_;
  ObservedLines observed_;  // the lines as measured (first ones adjusted by their higher orders)
  std::vector<bool> flagged_;
  std::vector<int> base_;  // lines (0-based) available to the base-line sets
  int selected_ = -1;
  TrialProblem problem_;
  int printIq_ = 0;
  TrialSearch* search_ = nullptr;
  double volumeLimit_ = 0;
  std::string stageName_;
  CrystalSystem stageSystem_ = CrystalSystem::Cubic;
  double stageFrom_ = 0, stageTo_ = 0;  // progress at the start and the end of the stage
  int refinedInPass_ = 0, passesInStage_ = 0, accepted_ = 0;
  struct Convincing {
    double m20 = 0, meanDiscrepancy = 0;
    bool sparseCubic = false;  // a cubic cell not body-centred that leaves few lines unseen
  };
  std::vector<Convincing> convincing_;
  struct AcceptedZero {
    double m20 = 0, zero = 0;
  };
  // The best cell accepted in this stage with a zero the lines determine, and that zero.
  std::optional<AcceptedZero> bestAcceptedZero_;
  int passIndex_ = 0;                       // the zero correction the stage is at
  std::map<std::string, int> familyCounts_;
  std::vector<PendingTrial> pending_;  // trials of the current pass waiting for refinement
  std::vector<Mat3> reducedCells_;     // the reduced metric of each of result_.cells
};

}  // namespace

TreorResult runTreor(const TreorInput& input, Shell* shell, int threads) {
  return TreorRunner(input, shell, threads > 0 ? threads : hardwareThreads()).run();
}

std::vector<const TreorCell*> rankedAcceptedCells(const std::vector<TreorCell>& cells) {
  std::vector<const TreorCell*> accepted;
  for (const TreorCell& c : cells)
    if (c.accepted) accepted.push_back(&c);
  auto weighted = [](const TreorCell* c) {
    const int missedPast20 = std::max(0, c->allLinesUnindexed - c->unindexed - 1);
    return c->m20 / std::pow(kMeritPerParameter, freeParameterCount(c->metricSystem) - 1 + missedPast20);
  };
  std::stable_sort(accepted.begin(), accepted.end(),
                   [&](const TreorCell* x, const TreorCell* y) { return weighted(x) > weighted(y); });
  // Weighted M20s within 15 % of the best of their run are a tie: M20 is the inverse of a mean of
  // 20 misfits, which with noise spreads by about that much. All the lines decide: fewer of them
  // unindexed, then the better figure over them (a super-cell that indexes the same lines counts
  // more calculated ones), then the smaller cell (noise-free figures reach their ceiling). When
  // the first 20 lines lie in one zone, cells that differ only in the axis the zone leaves out
  // index them equally well, and only the lines past the 20th tell them apart.
  constexpr double kTie = 0.15;
  for (auto first = accepted.begin(); first != accepted.end();) {
    auto last = std::find_if(first, accepted.end(),
                             [&](const TreorCell* c) { return weighted(c) < (1.0 - kTie) * weighted(*first); });
    std::stable_sort(first, last, [](const TreorCell* x, const TreorCell* y) {
      if (x->allLinesUnindexed != y->allLinesUnindexed) return x->allLinesUnindexed < y->allLinesUnindexed;
      if (x->allLinesMerit != y->allLinesMerit) return x->allLinesMerit > y->allLinesMerit;
      return x->volume < y->volume;
    });
    first = last;
  }
  return accepted;
}

std::vector<std::string> invalidCardReport(const std::string& badCard) {
  return {" ", " " + badCard, " **ERROR** PROGRAM CONTROL CARD INVALID.", " PROBABLY MISSING COMMA OR DELIMITER KEYWORD",
          " OR UNIDENTIFIED KEYWORD."};
}

}  // namespace quarvel
