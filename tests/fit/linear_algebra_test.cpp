#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "core/fit/linear_algebra.h"

namespace quarvel {
namespace {

TEST(LinearAlgebra, InvertsAKnownMatrixWithPivoting) {
  // A zero in the first pivot position forces a row interchange.
  SquareMatrix<double> a(3);
  const double values[3][3] = {{0, 2, 1}, {1, 1, 0}, {3, 0, 1}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) a(i, j) = values[i][j];
  const SquareMatrix<double> original = a;
  ASSERT_EQ(invertMatrix(a), 0);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      double sum = 0.0;
      for (int k = 0; k < 3; ++k) sum += original(i, k) * a(k, j);
      EXPECT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-6) << i << "," << j;
    }
  EXPECT_NEAR(a(0, 0), -0.2, 1e-6);  // cofactor 1 over the determinant -5
}

TEST(LinearAlgebra, ReportsAllZeroRowsAndKeepsGoingPastZeroPivots) {
  SquareMatrix<double> zeroRow(3);
  zeroRow(0, 0) = 1;
  zeroRow(2, 2) = 1;
  EXPECT_EQ(invertMatrix(zeroRow), -1);

  // Singular without a zero row: the zero pivot is replaced by 1e-20 and elimination goes on.
  SquareMatrix<float> lu(2);
  lu(0, 0) = 1;
  lu(0, 1) = 2;
  lu(1, 0) = 2;
  lu(1, 1) = 4;
  std::vector<int> perm;
  int parity = 0;
  EXPECT_EQ(luDecompose(lu, perm, parity), 0);
  EXPECT_EQ(parity, 1);  // both rows scale to the same pivot merit: no interchange
  EXPECT_FLOAT_EQ(lu(1, 1), 1e-20f);
}

TEST(LinearAlgebra, InvertsOrder2030AndTreatsLargerOrdersAs2030) {
  // A tridiagonal, diagonally dominant normal matrix of the largest order.
  SquareMatrix<double> a(2031);
  for (int i = 0; i < a.n; ++i) {
    a(i, i) = 4.0 + (i % 7);
    if (i + 1 < a.n) a(i, i + 1) = a(i + 1, i) = -1.0;
  }
  const SquareMatrix<double> original = a;
  ASSERT_EQ(invertMatrix(a), 0);
  for (int row : {0, 1000, 2029}) {
    for (int col : {0, 17, 2029}) {
      double sum = 0.0;
      for (int k = 0; k < 2030; ++k) sum += original(row, k) * a(k, col);
      EXPECT_NEAR(sum, row == col ? 1.0 : 0.0, 1e-5) << row << "," << col;
    }
  }
  EXPECT_EQ(a(2030, 2030), original(2030, 2030));  // beyond the order: untouched
}

TEST(LinearAlgebra, PolynomialFitIsExactOnAPolynomial) {
  std::vector<double> x, y;
  for (int i = 0; i < 20; ++i) {
    x.push_back(0.1 * i);
    y.push_back(2.0 - 3.0 * x.back() + 0.5 * x.back() * x.back());
  }
  auto c = fitPolynomial(x, y, 2);
  ASSERT_TRUE(c);
  EXPECT_NEAR((*c)[0], 2.0, 1e-4);
  EXPECT_NEAR((*c)[1], -3.0, 1e-4);
  EXPECT_NEAR((*c)[2], 0.5, 1e-4);
  EXPECT_FALSE(fitPolynomial(std::vector<double>{1.0}, std::vector<double>{2.0}, 1));
}

TEST(LinearAlgebra, CellDerivativesMatchFiniteDifferences) {
  const CellParameters cell{7.1, 8.3, 9.6, 84.0, 101.5, 93.0};
  const double lambda = 1.5406;
  auto twoTheta = [&](const CellParameters& c, int h, int k, int l) {
    return 2.0 * std::asin(0.5 * lambda * reciprocalLength(h, k, l, c)) * 57.29577951308232;
  };
  EXPECT_NEAR(reciprocalLength(1, 1, 1, {5.43, 5.43, 5.43, 90, 90, 90}), std::sqrt(3.0) / 5.43, 1e-12);
  for (auto [h, k, l] : {std::array{1, 0, 0}, std::array{2, -1, 3}, std::array{0, 4, -2}}) {
    const auto d = positionDerivatives(h, k, l, cell, lambda);
    for (int p = 0; p < 6; ++p) {
      CellParameters plus = cell, minus = cell;
      double* fields[2][6] = {{&plus.a, &plus.b, &plus.c, &plus.alpha, &plus.beta, &plus.gamma},
                              {&minus.a, &minus.b, &minus.c, &minus.alpha, &minus.beta, &minus.gamma}};
      const double step = 1e-5;
      *fields[0][p] += step;
      *fields[1][p] -= step;
      const double numeric = (twoTheta(plus, h, k, l) - twoTheta(minus, h, k, l)) / (2 * step);
      EXPECT_NEAR(d[static_cast<std::size_t>(p)], numeric, 1e-5 * (1 + std::fabs(numeric)))
          << h << k << l << " parameter " << p;
    }
  }
}

}  // namespace
}  // namespace quarvel
