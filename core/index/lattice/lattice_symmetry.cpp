#include "core/index/lattice/lattice_symmetry.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "core/index/lattice/units.h"

namespace quarvel {

namespace {

using IntVec = std::array<int, 3>;

constexpr double kPerpendicularCosine = 0.05;  // |cos| below this: axes taken as perpendicular

// Rows with indices in −range..range, primitive (gcd 1), one of each ± pair.
std::vector<IntVec> primitiveRows(int range) {
  std::vector<IntVec> rows;
  for (int u = -range; u <= range; ++u)
    for (int v = -range; v <= range; ++v)
      for (int w = -range; w <= range; ++w) {
        if (std::gcd(std::gcd(std::abs(u), std::abs(v)), std::abs(w)) != 1) continue;
        const int first = u != 0 ? u : (v != 0 ? v : w);
        if (first > 0) rows.push_back({u, v, w});
      }
  return rows;
}

Vec3 toVec(const IntVec& v) { return {double(v[0]), double(v[1]), double(v[2])}; }

// Cartesian basis (columns a, b, c) with BᵀB = G.
Mat3 cartesianBasis(const Mat3& g) {
  const double a = std::sqrt(g(0, 0)), b = std::sqrt(g(1, 1));
  const double bx = g(0, 1) / a, by = std::sqrt(std::max(b * b - bx * bx, 0.0));
  const double cx = g(0, 2) / a, cy = (g(1, 2) - bx * cx) / by;
  const double cz = std::sqrt(std::max(g(2, 2) - cx * cx - cy * cy, 0.0));
  return Mat3::fromColumns({a, 0, 0}, {bx, by, 0}, {cx, cy, cz});
}

double cosine(const Vec3& x, const Vec3& y) { return dot(x, y) / (norm(x) * norm(y)); }

struct Axis {
  TwofoldAxis row;
  Vec3 t;  // Cartesian vector of the direct row
};

std::vector<Axis> findTwofoldAxes(const Mat3& basis, double maxDeviation) {
  const Mat3 reciprocalBasis = transpose(inverse(basis));
  const auto rows = primitiveRows(2);
  std::vector<Axis> axes;
  for (const IntVec& uvw : rows) {
    const Vec3 t = basis * toVec(uvw);
    std::optional<Axis> best;
    for (const IntVec& hkl : rows) {
      const int product = std::abs(uvw[0] * hkl[0] + uvw[1] * hkl[1] + uvw[2] * hkl[2]);
      if (product != 1 && product != 2) continue;
      const Vec3 n = reciprocalBasis * toVec(hkl);
      const double deviation = std::atan2(norm(cross(t, n)), std::abs(dot(t, n))) / kDegree;
      if (deviation <= maxDeviation && (!best || deviation < best->row.deviation))
        best = Axis{{uvw, hkl, deviation}, t};
    }
    if (best) axes.push_back(*best);
  }
  std::sort(axes.begin(), axes.end(), [](const Axis& x, const Axis& y) { return x.row.deviation < y.row.deviation; });
  return axes;
}

bool validAxisCount(std::size_t n) { return n == 0 || n == 1 || n == 3 || n == 5 || n == 7 || n == 9; }

bool perpendicular(const Axis& x, const Axis& y) { return std::abs(cosine(x.t, y.t)) < kPerpendicularCosine; }

int perpendicularPartners(const std::vector<Axis>& axes, std::size_t i) {
  int n = 0;
  for (std::size_t j = 0; j < axes.size(); ++j)
    if (j != i && perpendicular(axes[i], axes[j])) ++n;
  return n;
}

// The conventional basis as integer columns in the reduced basis.
Mat3 columnsOf(const IntVec& x, const IntVec& y, const IntVec& z) { return Mat3::fromColumns(toVec(x), toVec(y), toVec(z)); }

IntVec negated(const IntVec& v) { return {-v[0], -v[1], -v[2]}; }

double absDet(const Mat3& m) { return std::abs(determinant(m)); }

// Right-handed: flips the third column when the determinant is negative.
Mat3 rightHanded(Mat3 m) {
  if (determinant(m) < 0)
    for (int i = 0; i < 3; ++i) m(i, 2) = -m(i, 2);
  return m;
}

// The shortest lattice vector in the reduced basis parallel to a Cartesian direction.
std::optional<IntVec> latticeRowAlong(const Mat3& basis, const Vec3& direction) {
  std::optional<IntVec> best;
  double bestLength = 0;
  for (const IntVec& uvw : primitiveRows(6)) {
    const Vec3 t = basis * toVec(uvw);
    if (std::abs(std::abs(cosine(t, direction)) - 1.0) > 1e-4) continue;
    if (!best || norm(t) < bestLength) best = uvw, bestLength = norm(t);
  }
  return best;
}

// Lattice points of the conventional cell as fractional translations (the centring vectors).
std::vector<Vec3> centringTranslations(const Mat3& transform) {
  const Mat3 inv = inverse(transform);
  const int n = static_cast<int>(std::lround(absDet(transform)));
  std::vector<Vec3> points;
  auto frac = [](double x) {
    double f = x - std::floor(x);
    return f > 1.0 - 1e-6 ? 0.0 : f;
  };
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      for (int k = 0; k < n; ++k) {
        const Vec3 p = inv * Vec3{double(i), double(j), double(k)};
        const Vec3 f{frac(p[0]), frac(p[1]), frac(p[2])};
        const bool known = std::any_of(points.begin(), points.end(), [&](const Vec3& q) {
          return std::abs(q[0] - f[0]) + std::abs(q[1] - f[1]) + std::abs(q[2] - f[2]) < 1e-6;
        });
        if (!known) points.push_back(f);
      }
  return points;
}

bool hasTranslation(const std::vector<Vec3>& points, const Vec3& v) {
  return std::any_of(points.begin(), points.end(), [&](const Vec3& q) {
    return std::abs(q[0] - v[0]) + std::abs(q[1] - v[1]) + std::abs(q[2] - v[2]) < 1e-6;
  });
}

Centring centringOf(const Mat3& transform) {
  const auto points = centringTranslations(transform);
  switch (points.size()) {
    case 1: return Centring::P;
    case 3: return Centring::R;
    case 4: return Centring::F;
    default: break;
  }
  if (hasTranslation(points, {0, 0.5, 0.5})) return Centring::A;
  if (hasTranslation(points, {0.5, 0, 0.5})) return Centring::B;
  if (hasTranslation(points, {0.5, 0.5, 0})) return Centring::C;
  return Centring::I;
}

Mat3 cubicBasis(const std::vector<Axis>& axes) {
  std::vector<IntVec> fourfold;
  for (std::size_t i = 0; i < axes.size(); ++i)
    if (perpendicularPartners(axes, i) == 4) fourfold.push_back(axes[i].row.direct);
  if (fourfold.size() != 3) return Mat3::identity();
  return rightHanded(columnsOf(fourfold[0], fourfold[1], fourfold[2]));
}

// Tetragonal and hexagonal: the principal axis is perpendicular to all others; a and b are the
// pair of the others at 90° (tetragonal) or 120° (hexagonal) that spans the smallest cell.
Mat3 principalAxisBasis(const std::vector<Axis>& axes, double pairCosine) {
  std::optional<std::size_t> principal;
  for (std::size_t i = 0; i < axes.size(); ++i)
    if (perpendicularPartners(axes, i) == static_cast<int>(axes.size()) - 1) principal = i;
  if (!principal) return Mat3::identity();
  std::optional<Mat3> best;
  for (std::size_t i = 0; i < axes.size(); ++i)
    for (std::size_t j = 0; j < axes.size(); ++j) {
      if (i == *principal || j == *principal || i == j) continue;
      IntVec second = axes[j].row.direct;
      double c = cosine(axes[i].t, axes[j].t);
      if (std::abs(std::abs(c) - std::abs(pairCosine)) > kPerpendicularCosine) continue;
      if (pairCosine < 0 && c > 0) second = negated(second);
      const Mat3 m = rightHanded(columnsOf(axes[i].row.direct, second, axes[*principal].row.direct));
      if (!best || absDet(m) < absDet(*best) - 0.5) best = m;
    }
  return best ? *best : Mat3::identity();
}

Mat3 rhombohedralBasis(const Mat3& basis, const std::vector<Axis>& axes) {
  IntVec a = axes[0].row.direct, b = axes[1].row.direct;
  if (cosine(axes[0].t, axes[1].t) > 0) b = negated(b);  // 120° between a and b
  const auto c = latticeRowAlong(basis, cross(axes[0].t, axes[1].t));
  if (!c) return Mat3::identity();
  Mat3 m = rightHanded(columnsOf(a, b, *c));
  // Obverse setting: centring at (2/3, 1/3, 1/3); the reverse one becomes obverse under a, b → −a, −b.
  if (!hasTranslation(centringTranslations(m), {2.0 / 3, 1.0 / 3, 1.0 / 3}))
    for (int i = 0; i < 3; ++i) m(i, 0) = -m(i, 0), m(i, 1) = -m(i, 1);
  return m;
}

Mat3 orthorhombicBasis(const Mat3& basis, std::vector<Axis> axes) {
  // a < b < c for P, I and F; C keeps a < b below.
  std::sort(axes.begin(), axes.end(), [](const Axis& x, const Axis& y) { return norm(x.t) < norm(y.t); });
  Mat3 m = rightHanded(columnsOf(axes[0].row.direct, axes[1].row.direct, axes[2].row.direct));
  // A and B centring are relabelled to C by a cyclic change of axes.
  const Centring c = centringOf(m);
  const Vec3 x = m.column(0), y = m.column(1), z = m.column(2);
  if (c == Centring::A) m = Mat3::fromColumns(y, z, x);
  if (c == Centring::B) m = Mat3::fromColumns(z, x, y);
  if (norm(basis * m.column(0)) > norm(basis * m.column(1))) {
    const Vec3 a = m.column(0), b = m.column(1), cc = m.column(2);
    m = Mat3::fromColumns(b, a, {-cc[0], -cc[1], -cc[2]});
  }
  return m;
}

Mat3 monoclinicBasis(const Mat3& basis, const Axis& axis) {
  // The two shortest independent lattice rows perpendicular to the twofold axis, Gauss reduced.
  std::vector<std::pair<double, IntVec>> plane;
  for (const IntVec& uvw : primitiveRows(3)) {
    const Vec3 t = basis * toVec(uvw);
    if (std::abs(cosine(t, axis.t)) < kPerpendicularCosine) plane.push_back({norm(t), uvw});
  }
  std::sort(plane.begin(), plane.end(), [](const auto& x, const auto& y) { return x.first < y.first; });
  if (plane.size() < 2) return Mat3::identity();
  IntVec a = plane[0].second, c = plane[1].second;
  for (std::size_t i = 1; i < plane.size(); ++i) {
    const Vec3 ta = basis * toVec(a), tc = basis * toVec(plane[i].second);
    if (norm(cross(ta, tc)) > 1e-6 * norm(ta) * norm(tc)) {
      c = plane[i].second;
      break;
    }
  }
  const IntVec b = axis.row.direct;
  Mat3 m = rightHanded(columnsOf(a, b, c));
  switch (centringOf(m)) {
    case Centring::A: m = Mat3::fromColumns(m.column(2), Vec3{-m(0, 1), -m(1, 1), -m(2, 1)}, m.column(0)); break;
    case Centring::I: {
      const Vec3 x = m.column(0), z = m.column(2);
      m = Mat3::fromColumns({x[0] + z[0], x[1] + z[1], x[2] + z[2]}, m.column(1), z);
      break;
    }
    default: break;
  }
  // β ≥ 90°: turning a and b over keeps the cell right-handed and C stays C.
  if (dot(basis * m.column(0), basis * m.column(2)) > 0)
    for (int i = 0; i < 3; ++i) m(i, 0) = -m(i, 0), m(i, 1) = -m(i, 1);
  return m;
}

}  // namespace

std::string LatticeSymmetry::bravaisSymbol() const {
  std::string s;
  switch (system) {
    case CrystalSystem::Cubic: s = "c"; break;
    case CrystalSystem::Tetragonal: s = "t"; break;
    case CrystalSystem::Hexagonal:
    case CrystalSystem::Rhombohedral: s = "h"; break;
    case CrystalSystem::Orthorhombic: s = "o"; break;
    case CrystalSystem::MonoclinicA:
    case CrystalSystem::Monoclinic:
    case CrystalSystem::MonoclinicC: s = "m"; break;
    case CrystalSystem::Triclinic: s = "a"; break;
  }
  return s + centringLetter(centring);
}

LatticeSymmetry latticeSymmetry(const CellParameters& cell, Centring centring, double maxDeviationDegrees) {
  LatticeSymmetry result;
  const NiggliReduction reduction = niggliReduce(cell, centring, kClassificationTolerance);
  result.reduced = reduction.cell;
  const Mat3 basis = cartesianBasis(reduction.metric);
  std::vector<Axis> axes = findTwofoldAxes(basis, maxDeviationDegrees);
  // Pseudo-symmetry can give a count no lattice has: keep the best axes up to a valid count.
  while (!validAxisCount(axes.size())) axes.pop_back();

  Mat3 m = Mat3::identity();
  switch (axes.size()) {
    case 9:
      result.system = CrystalSystem::Cubic;
      m = cubicBasis(axes);
      break;
    case 7:
      result.system = CrystalSystem::Hexagonal;
      m = principalAxisBasis(axes, -0.5);
      break;
    case 5:
      result.system = CrystalSystem::Tetragonal;
      m = principalAxisBasis(axes, 0.0);
      break;
    case 3:
      if (perpendicular(axes[0], axes[1]) && perpendicular(axes[0], axes[2]) && perpendicular(axes[1], axes[2])) {
        result.system = CrystalSystem::Orthorhombic;
        m = orthorhombicBasis(basis, axes);
      } else {
        result.system = CrystalSystem::Hexagonal;  // rhombohedral lattice on hexagonal axes
        m = rhombohedralBasis(basis, axes);
      }
      break;
    case 1:
      result.system = CrystalSystem::Monoclinic;
      m = monoclinicBasis(basis, axes[0]);
      break;
    default: result.system = CrystalSystem::Triclinic; break;
  }
  result.transform = m;
  result.centring = centringOf(m);
  for (const Axis& axis : axes) {
    result.axes.push_back(axis.row);
    result.largestDeviation = std::max(result.largestDeviation, axis.row.deviation);
  }
  if (const auto conventional = cellFromDirectMetric(transpose(m) * reduction.metric * m))
    result.conventional = *conventional;
  return result;
}

}  // namespace quarvel
