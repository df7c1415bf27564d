// 3×3 matrices and vectors in double precision: the small algebra of metric tensors and basis
// changes that the lattice code does everywhere.
#pragma once

#include <array>
#include <cmath>

namespace quarvel {

using Vec3 = std::array<double, 3>;

struct Mat3 {
  std::array<std::array<double, 3>, 3> m{};

  double& operator()(int i, int j) { return m[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]; }
  double operator()(int i, int j) const { return m[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]; }

  static Mat3 identity() {
    Mat3 r;
    for (int i = 0; i < 3; ++i) r(i, i) = 1.0;
    return r;
  }
  static Mat3 fromColumns(const Vec3& c0, const Vec3& c1, const Vec3& c2) {
    Mat3 r;
    for (int i = 0; i < 3; ++i) {
      r(i, 0) = c0[static_cast<std::size_t>(i)];
      r(i, 1) = c1[static_cast<std::size_t>(i)];
      r(i, 2) = c2[static_cast<std::size_t>(i)];
    }
    return r;
  }
  Vec3 column(int j) const { return {(*this)(0, j), (*this)(1, j), (*this)(2, j)}; }
};

inline Mat3 operator*(const Mat3& a, const Mat3& b) {
  Mat3 r;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      double s = 0.0;
      for (int k = 0; k < 3; ++k) s += a(i, k) * b(k, j);
      r(i, j) = s;
    }
  return r;
}

inline Vec3 operator*(const Mat3& a, const Vec3& v) {
  Vec3 r{};
  for (int i = 0; i < 3; ++i) r[static_cast<std::size_t>(i)] = a(i, 0) * v[0] + a(i, 1) * v[1] + a(i, 2) * v[2];
  return r;
}

inline Mat3 transpose(const Mat3& a) {
  Mat3 r;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) r(i, j) = a(j, i);
  return r;
}

inline double determinant(const Mat3& a) {
  return a(0, 0) * (a(1, 1) * a(2, 2) - a(1, 2) * a(2, 1)) - a(0, 1) * (a(1, 0) * a(2, 2) - a(1, 2) * a(2, 0)) +
         a(0, 2) * (a(1, 0) * a(2, 1) - a(1, 1) * a(2, 0));
}

// Inverse by cofactors; the caller checks the determinant first when it may vanish.
inline Mat3 inverse(const Mat3& a) {
  const double det = determinant(a);
  Mat3 r;
  r(0, 0) = (a(1, 1) * a(2, 2) - a(1, 2) * a(2, 1)) / det;
  r(0, 1) = (a(0, 2) * a(2, 1) - a(0, 1) * a(2, 2)) / det;
  r(0, 2) = (a(0, 1) * a(1, 2) - a(0, 2) * a(1, 1)) / det;
  r(1, 0) = (a(1, 2) * a(2, 0) - a(1, 0) * a(2, 2)) / det;
  r(1, 1) = (a(0, 0) * a(2, 2) - a(0, 2) * a(2, 0)) / det;
  r(1, 2) = (a(0, 2) * a(1, 0) - a(0, 0) * a(1, 2)) / det;
  r(2, 0) = (a(1, 0) * a(2, 1) - a(1, 1) * a(2, 0)) / det;
  r(2, 1) = (a(0, 1) * a(2, 0) - a(0, 0) * a(2, 1)) / det;
  r(2, 2) = (a(0, 0) * a(1, 1) - a(0, 1) * a(1, 0)) / det;
  return r;
}

inline double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double norm(const Vec3& a) { return std::sqrt(dot(a, a)); }

}  // namespace quarvel
