#include "core/index/ito/ito_zones.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

#include "core/index/lattice/normal_equations.h"

namespace quarvel {
namespace {

constexpr int kMaxOrder = 3;          // m, n of the zone points tried against a line
constexpr int kMinZoneLines = 5;      // a zone indexing fewer of the first 20 lines is noise
constexpr double kRectangular = 0.08;  // the third constant that marks a given rectangular zone
// Two lines are taken as orders m and n of one row when q2/q1 is (m/n)² with n at most 2 and m at
// most 9: with larger orders the error of the first line, times m²/n², lets any pair pass.
constexpr int kRowOrderDenominator = 2;
constexpr int kMaxRowOrder = 9;
constexpr int kZoneRefinementCycles = 2;
// A zone whose points catch a random line more often than this (wide line tolerances at short
// wavelengths, fine zones) is refined onto chance lines as readily as onto its own: not refined.
constexpr double kMaxRefinedLineChance = 0.15;

struct ZonePoint {
  int h, k;
  double q;
};

// Zone points (one of each ± pair) up to qMax.
std::vector<ZonePoint> zonePoints(const ItoZone& zone, double qMax) {
  std::vector<ZonePoint> points;
  const double det = 4.0 * zone.qa * zone.qb - zone.r * zone.r;
  if (det <= 0.0) return points;
  const int hMax = static_cast<int>(std::sqrt(qMax * 4.0 * zone.qb / det)) + 1;
  const int kMax = static_cast<int>(std::sqrt(qMax * 4.0 * zone.qa / det)) + 1;
  for (int h = 0; h <= hMax; ++h)
    for (int k = -kMax; k <= kMax; ++k) {
      if (h == 0 && k <= 0) continue;
      const double q = zone.q(h, k);
      if (q <= qMax) points.push_back({h, k, q});
    }
  return points;
}

// The point nearest to q within tol, if any.
const ZonePoint* nearestPoint(const std::vector<ZonePoint>& points, double q, double tol) {
  const ZonePoint* best = nullptr;
  for (const auto& p : points)
    if (std::abs(p.q - q) <= tol && (!best || std::abs(p.q - q) < std::abs(best->q - q))) best = &p;
  return best;
}

bool sameZone(const ItoZone& a, const ItoZone& b, double tol) {
  return std::abs(a.qa - b.qa) <= tol && std::abs(a.qb - b.qb) <= tol && std::abs(std::abs(a.r) - std::abs(b.r)) <= tol;
}

// Reliability: the lines a zone explains beyond those its points would catch by chance. Ranking
// on the lines explained alone puts the finest zones first (they index anything), ranking on the
// quality figure alone the coarse zones that explain five lines exactly.
bool better(const ItoZone& a, const ItoZone& b) {
  if (a.excess != b.excess) return a.excess > b.excess;
  return a.quality > b.quality;
}

// A zone with many more points than lines it explains is too fine to mean anything: it would
// index any line list.
constexpr int kMaxPointsPerLine = 3;

// The shortest row of a real zone is no shorter than a quarter of the first line (the first line
// is at most its second order).
bool plausible(const ItoZone& zone, const ItoLines& lines, double tol2) { return zone.qa >= lines.q.front() / 4.0 - tol2; }

// A basis whose indexed points all have h even (k even, h+k even) spans a lattice twice as fine
// as the one the lines need: take the coarser basis.
bool reformulateCentred(ItoZone& zone, const ItoLines& lines) {
  const int n = lines.indexingCount();
  const auto points = zonePoints(zone, lines.q[static_cast<std::size_t>(n - 1)] + lines.tolerance[static_cast<std::size_t>(n - 1)]);
  bool hEven = true, kEven = true, sumEven = true;
  int used = 0;
  for (int i = 0; i < n; ++i) {
    const auto* p = nearestPoint(points, lines.q[static_cast<std::size_t>(i)], lines.tolerance[static_cast<std::size_t>(i)]);
    if (!p) continue;
    ++used;
    hEven = hEven && p->h % 2 == 0;
    kEven = kEven && p->k % 2 == 0;
    sumEven = sumEven && (p->h + p->k) % 2 == 0;
  }
  if (used < kMinZoneLines || !(hEven || kEven || sumEven)) return false;
  if (hEven) {
    zone.qa *= 4.0;
    zone.r *= 2.0;
  } else if (kEven) {
    zone.qb *= 4.0;
    zone.r *= 2.0;
  } else {
    const double qa = zone.qa + zone.qb + zone.r, qb = zone.qa + zone.qb - zone.r;
    zone.r = 2.0 * (zone.qa - zone.qb);
    zone.qa = qa;
    zone.qb = qb;
  }
  reduceZone(zone);
  return true;
}

// The chance that one of a zone's points falls within the tolerance of a random line.
double lineChance(const ItoZone& zone, const ItoLines& lines) {
  return zone.points * 2.0 * lines.meanTolerance / lines.q[static_cast<std::size_t>(lines.indexingCount() - 1)];
}

// Least squares of qa, qb and r on the lines among the first 20 the zone indexes, weighted by their
// tolerances. A zone built from one line and the orders of another carries the error of those lines
// times the square of the order: with the error of a line at 4° 2θ the eighth order of its row
// already misses its line.
bool refineZoneConstants(ItoZone& zone, const ItoLines& lines) {
  const int n = lines.indexingCount();
  const auto points = zonePoints(zone, lines.q[static_cast<std::size_t>(n - 1)] + lines.tolerance[static_cast<std::size_t>(n - 1)]);
  NormalEquations equations(3);
  int used = 0;
  for (int i = 0; i < n; ++i) {
    const double q = lines.q[static_cast<std::size_t>(i)], tol = lines.tolerance[static_cast<std::size_t>(i)];
    const auto* p = nearestPoint(points, q, tol);
    if (!p) continue;
    const double row[3] = {static_cast<double>(p->h * p->h), static_cast<double>(p->k * p->k), static_cast<double>(p->h * p->k)};
    equations.add(row, q, 1.0 / (tol * tol));
    ++used;
  }
  if (used < kMinZoneLines) return false;
  // lines on one or two rows only do not fix all three constants
  const auto solution = equations.solve();
  if (!solution) return false;
  const std::vector<double>& x = solution->p;
  if (!(x[0] > 0.0 && x[1] > 0.0 && 4.0 * x[0] * x[1] > x[2] * x[2])) return false;
  zone.qa = x[0];
  zone.qb = x[1];
  zone.r = x[2];
  reduceZone(zone);
  return true;
}

std::size_t distinctCount(const std::vector<ZonePoint>& points, double qMax) {
  std::vector<double> values;
  for (const auto& p : points)
    if (p.q <= qMax) values.push_back(p.q);
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end(), [](double a, double b) { return b - a < 1e-6 * b; }), values.end());
  return values.size();
}

// −log10 of the chance that `trials` lines, each caught with probability p, give `hits` or more.
double surprise(int hits, int trials, double p) {
  if (hits <= 0) return 0.0;
  if (p >= 1.0) return 0.0;
  if (p <= 0.0) return 99.0;
  double tail = 0.0;
  for (int k = hits; k <= trials; ++k)
    tail += std::exp(std::lgamma(trials + 1.0) - std::lgamma(k + 1.0) - std::lgamma(trials - k + 1.0) + k * std::log(p) +
                     (trials - k) * std::log1p(-p));
  return tail > 0.0 ? -std::log10(tail) : 99.0;
}

struct RValue {
  double r, tol;
  int line;
};

// Zones from one pair of base values: clusters of R = (q_k − m²qa − n²qb)/(mn) supported by at
// least two different lines.
void zonesFromPair(double qa, double qb, int line1, int line2, const ItoLines& lines, double tol2,
                   std::vector<ItoZone>& out) {
  const int n = lines.indexingCount();
  const double rMax = 2.0 * std::sqrt(qa * qb);
  std::vector<RValue> values;
  for (int k = 0; k < n; ++k) {
    if (k + 1 == line1 || k + 1 == line2) continue;
    for (int m = 1; m <= kMaxOrder; ++m)
      for (int nn = 1; nn <= kMaxOrder; ++nn) {
        const double mn = m * nn;
        const double r = (lines.q[static_cast<std::size_t>(k)] - m * m * qa - nn * nn * qb) / mn;
        const double tol = tol2 / mn;
        if (std::abs(r) <= rMax + tol) values.push_back({std::abs(r), tol, k});
      }
  }
  std::sort(values.begin(), values.end(), [](const RValue& a, const RValue& b) { return a.r < b.r; });
  // A rectangular zone is always tried: the mean of a cluster near R = 0 is pulled off zero by
  // the chance values beside it, and rectangular zones are the common ones.
  ItoZone rectangular;
  rectangular.qa = qa;
  rectangular.qb = qb;
  rectangular.baseLine1 = line1;
  rectangular.baseLine2 = line2;
  out.push_back(rectangular);
  for (std::size_t i = 0; i < values.size(); ++i) {
    std::set<int> support;
    double weighted = 0.0, weights = 0.0;
    for (std::size_t j = 0; j < values.size(); ++j) {
      if (std::abs(values[j].r - values[i].r) > values[i].tol + values[j].tol) continue;
      support.insert(values[j].line);
      const double w = 1.0 / (values[j].tol * values[j].tol);
      weighted += w * values[j].r;
      weights += w;
    }
    if (support.size() < 2) continue;
    ItoZone zone;
    zone.qa = qa;
    zone.qb = qb;
    zone.r = weighted / weights;
    if (zone.r <= tol2) zone.r = 0.0;  // rectangular
    if (zone.r >= rMax) continue;      // flat: the two rows are parallel
    zone.baseLine1 = line1;
    zone.baseLine2 = line2;
    out.push_back(zone);
  }
}

ItoZone givenZone(const ItoZoneCard& card) {
  ItoZone zone;
  zone.qa = card.values[0];
  zone.qb = card.values[1];
  zone.r = std::abs(card.values[2] - kRectangular) < 1e-9 ? 0.0 : card.values[2];
  zone.given = true;
  return zone;
}

}  // namespace

bool onSameRow(const ItoLines& lines, int i, int j) {
  const double qi = lines.q[static_cast<std::size_t>(i)], qj = lines.q[static_cast<std::size_t>(j)];
  const double ti = lines.tolerance[static_cast<std::size_t>(i)], tj = lines.tolerance[static_cast<std::size_t>(j)];
  for (int n = 1; n <= kRowOrderDenominator; ++n) {
    const int m = static_cast<int>(std::lround(std::sqrt(qj * n * n / qi)));
    if (m > n && m <= kMaxRowOrder && std::gcd(m, n) == 1 && std::abs(qj * n * n - m * m * qi) <= n * n * tj + m * m * ti) return true;
  }
  return false;
}

void reduceZone(ItoZone& zone) {
  for (int step = 0; step < 100; ++step) {
    if (zone.qa > zone.qb) std::swap(zone.qa, zone.qb);
    if (std::abs(zone.r) <= zone.qa + 1e-9) break;
    // b ← b − t·a with t the nearest integer to r/(2qa)
    const double t = std::round(zone.r / (2.0 * zone.qa));
    zone.qb = zone.qb - t * zone.r + t * t * zone.qa;
    zone.r = zone.r - 2.0 * t * zone.qa;
  }
  if (zone.qa > zone.qb) std::swap(zone.qa, zone.qb);
  zone.r = std::abs(zone.r);
}

void evaluateZone(ItoZone& zone, const ItoLines& lines) {
  const int n = lines.indexingCount();
  zone.indexed = 0;
  zone.quality = 0.0;
  if (n == 0) return;
  const auto points = zonePoints(zone, lines.q[static_cast<std::size_t>(n - 1)] + lines.tolerance[static_cast<std::size_t>(n - 1)]);
  double sumError = 0.0, qMax = 0.0;
  for (int i = 0; i < n; ++i) {
    const double q = lines.q[static_cast<std::size_t>(i)];
    const auto* p = nearestPoint(points, q, lines.tolerance[static_cast<std::size_t>(i)]);
    if (!p) continue;
    ++zone.indexed;
    sumError += std::abs(p->q - q);
    qMax = q;
  }
  if (zone.indexed == 0) return;
  const std::size_t distinct = distinctCount(points, qMax * 1.003);
  // exact data would make the figure infinite: errors below a tenth of the tolerance count as that
  const double mean = std::max(sumError / zone.indexed, 0.1 * lines.meanTolerance);
  zone.points = static_cast<int>(distinctCount(points, lines.q[static_cast<std::size_t>(n - 1)]));
  zone.quality = qMax / (2.0 * mean * static_cast<double>(std::max<std::size_t>(distinct, 1)));
  // a line falls within its tolerance of some point with the chance points × 2·tolerance / q(n);
  // the two lines the zone was built from are indexed by construction and do not count
  const double chance = std::min(1.0, zone.points * 2.0 * lines.meanTolerance / lines.q[static_cast<std::size_t>(n - 1)]);
  zone.excess = surprise(std::max(zone.indexed - 2, 0), std::max(n - 2, 0), chance);
}

ZoneSearch findZones(const ItoLines& lines, const ItoParameters& parameters, const std::vector<ItoZoneCard>& own) {
  ZoneSearch search;
  std::vector<ItoZone> candidates;
  const int nq1 = std::min(parameters.nq1, lines.indexingCount());
  const int nq2 = std::min(parameters.nq2, lines.indexingCount());
  for (int i = 0; i < nq1; ++i) {
    // Line i with itself and the lines after it up to the nq2-th. A line on the row of line i
    // spans no zone with it: the next line takes its place, so that first lines that are all
    // orders of one short row (a long axis) still meet the lines off that row.
    int partners = 0;
    for (int j = i; j < lines.indexingCount() && partners < nq2 - i; ++j) {
      if (j != i && onSameRow(lines, i, j)) continue;
      ++partners;
      const double qi = lines.q[static_cast<std::size_t>(i)], qj = lines.q[static_cast<std::size_t>(j)];
      zonesFromPair(qi, qj, i + 1, j + 1, lines, parameters.tol2, candidates);
      // the first line of a pair may itself be a second order (a 200-type line)
      zonesFromPair(qi / 4.0, qj, i + 1, j + 1, lines, parameters.tol2, candidates);
    }
  }
  // own line pairs are searched like the automatic ones, own zones enter the table directly
  for (const auto& card : own) {
    if (card.count == 2) zonesFromPair(card.values[0], card.values[1], 0, 0, lines, parameters.tol2, candidates);
  }
  std::vector<ItoZone> distinct;
  for (const auto& card : own) {
    if (card.count < 3) continue;
    ItoZone zone = givenZone(card);
    reduceZone(zone);
    evaluateZone(zone, lines);
    distinct.push_back(zone);
  }
  for (auto zone : candidates) {
    reduceZone(zone);
    if (!plausible(zone, lines, parameters.tol2)) continue;
    evaluateZone(zone, lines);
    if (zone.indexed < kMinZoneLines || zone.points > kMaxPointsPerLine * zone.indexed) continue;
    for (int cycle = 0; cycle < kZoneRefinementCycles && lineChance(zone, lines) <= kMaxRefinedLineChance; ++cycle) {
      ItoZone refined = zone;
      if (!refineZoneConstants(refined, lines)) break;
      evaluateZone(refined, lines);
      if (refined.indexed < zone.indexed || refined.points > kMaxPointsPerLine * refined.indexed) break;
      zone = refined;
    }
    if (reformulateCentred(zone, lines)) {
      zone.reformulated = true;
      evaluateZone(zone, lines);
    }
    auto same = std::find_if(distinct.begin(), distinct.end(),
                             [&](const ItoZone& z) { return sameZone(z, zone, parameters.tol2); });
    if (same == distinct.end()) {
      distinct.push_back(zone);
    } else if (better(zone, *same)) {
      *same = zone;
    }
  }
  std::sort(distinct.begin(), distinct.end(), better);
  if (static_cast<int>(distinct.size()) > kItoZoneStorage) {
    search.storageFull = true;
    distinct.resize(kItoZoneStorage);
  }
  for (const auto& z : distinct) search.reformulated += z.reformulated ? 1 : 0;
  search.zones = std::move(distinct);
  return search;
}

}  // namespace quarvel
