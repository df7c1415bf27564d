#include <gtest/gtest.h>

#include <random>

#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/lattice_symmetry.h"
#include "core/index/lattice/reduced_form.h"

namespace quarvel {
namespace {

void expectSameCell(const CellParameters& x, const CellParameters& y, double lengthTol, double angleTol) {
  EXPECT_NEAR(x.a, y.a, lengthTol);
  EXPECT_NEAR(x.b, y.b, lengthTol);
  EXPECT_NEAR(x.c, y.c, lengthTol);
  EXPECT_NEAR(x.alpha, y.alpha, angleTol);
  EXPECT_NEAR(x.beta, y.beta, angleTol);
  EXPECT_NEAR(x.gamma, y.gamma, angleTol);
}

// The cell of the same lattice in the basis B·T.
CellParameters transformed(const CellParameters& cell, const Mat3& t) {
  return *cellFromDirectMetric(transpose(t) * directMetric(cell) * t);
}

TEST(LatticeNiggli, TwoSettingsOfCimetidineReduceToOneCell) {
  // The same monoclinic lattice as two programs print it (a and c swapped, different β).
  const CellParameters first{6.8239, 18.818, 10.698, 90, 111.28, 90};
  const CellParameters second{10.394, 18.819, 6.825, 90, 106.44, 90};
  const NiggliReduction r1 = niggliReduce(first, Centring::P, kClassificationTolerance);
  const NiggliReduction r2 = niggliReduce(second, Centring::P, kClassificationTolerance);
  ASSERT_TRUE(r1.reduced && r2.reduced);
  expectSameCell(r1.cell, r2.cell, 0.01, 0.05);
  EXPECT_TRUE(sameLattice(first, Centring::P, second, Centring::P));
}

TEST(LatticeNiggli, SkewedSettingsAndBoundaryCellsReduceStably) {
  const CellParameters triclinic{8.754, 9.000, 6.910, 102.38, 98.68, 98.92};
  const NiggliReduction reference = niggliReduce(triclinic, Centring::P);
  EXPECT_NEAR(determinant(reference.transform), 1.0, 1e-12);
  std::mt19937 random(11);
  std::uniform_int_distribution<std::size_t> pick(0, smallUnimodularMatrices().size() - 1);
  for (int trial = 0; trial < 20; ++trial) {
    // Two small unimodular steps make an oblique setting of the same lattice.
    const Mat3 t = smallUnimodularMatrices()[pick(random)] * smallUnimodularMatrices()[pick(random)];
    const NiggliReduction skewed = niggliReduce(transformed(triclinic, t), Centring::P);
    ASSERT_TRUE(skewed.reduced);
    expectSameCell(skewed.cell, reference.cell, 1e-6, 1e-5);
  }
  // A primitive orthorhombic cell with a = b stays put when its angles wobble by 1e-6°.
  const CellParameters boundary{5, 5, 7, 90, 90, 90};
  for (const double wobble : {1e-6, -1e-6}) {
    const NiggliReduction r = niggliReduce({5, 5 + 1e-7, 7, 90 + wobble, 90 - wobble, 90 + wobble}, Centring::P);
    expectSameCell(r.cell, boundary, 1e-5, 1e-4);
  }
  // Centred cells reduce to their primitive cells: F cubic a gives a rhombohedron of a/√2, 60°.
  const NiggliReduction fcc = niggliReduce({5.4309, 5.4309, 5.4309, 90, 90, 90}, Centring::F);
  expectSameCell(fcc.cell, {5.4309 / std::sqrt(2.0), 5.4309 / std::sqrt(2.0), 5.4309 / std::sqrt(2.0), 60, 60, 60}, 1e-9, 1e-6);
}

TEST(LatticeRelations, SameLatticeAcrossSettingsAndSuperCells) {
  const CellParameters mono{9.1896, 12.4755, 6.2427, 90, 106.927, 90};
  const Mat3 shear = Mat3::fromColumns({1, 0, 1}, {0, -1, 0}, {0, 0, -1});  // a + c, −b, −c
  EXPECT_TRUE(sameLattice(mono, Centring::P, transformed(mono, shear), Centring::P));
  // A C-centred cell and its primitive description are one lattice.
  const CellParameters oc{9.2353, 11.0318, 11.3348, 90, 90, 90};
  EXPECT_TRUE(sameLattice(oc, Centring::C, transformed(oc, primitiveTransform(Centring::C)), Centring::P));
  EXPECT_FALSE(sameLattice(oc, Centring::P, oc, Centring::C));

  // With one long axis the whole metric hides short edges half a percent off; each element on
  // its own does not, and still matches the same cell in another setting and refined again.
  const CellParameters longC{4.4365, 3.9520, 21.5579, 90, 90, 90}, shortEdgesOff{4.4131, 3.9688, 21.5587, 90, 90, 90};
  EXPECT_TRUE(sameLattice(longC, Centring::P, shortEdgesOff, Centring::P, 1e-2));
  EXPECT_FALSE(sameLattice(longC, Centring::P, shortEdgesOff, Centring::P, 1e-2, MetricMatch::EachElement));
  EXPECT_TRUE(sameLattice(mono, Centring::P, transformed(mono, shear), Centring::P, 1e-2, MetricMatch::EachElement));
  EXPECT_TRUE(sameLattice(longC, Centring::P, {4.4402, 3.9512, 21.5480, 90, 90.04, 90}, Centring::P, 1e-2,
                          MetricMatch::EachElement));

  // Doubling an axis is not the same lattice but an index-2 super-cell; tripling gives 3.
  CellParameters doubled = mono;
  doubled.c *= 2;
  EXPECT_FALSE(sameLattice(mono, Centring::P, doubled, Centring::P));
  EXPECT_EQ(superCellIndex(mono, Centring::P, doubled, Centring::P), 2);
  EXPECT_EQ(superCellIndex(doubled, Centring::P, mono, Centring::P), 0);  // the other way round
  EXPECT_EQ(superCellIndex(mono, Centring::P, transformed(mono, Mat3::fromColumns({1, 1, 0}, {-1, 2, 0}, {0, 0, 1})), Centring::P), 3);
  EXPECT_EQ(superCellIndex(oc, Centring::C, oc, Centring::P), 2);  // the conventional cell of C
  EXPECT_EQ(superCellIndex(mono, Centring::P, transformed(mono, shear), Centring::P), 1);
  EXPECT_EQ(hermiteNormalForms(2).size(), 7u);
  EXPECT_EQ(hermiteNormalForms(3).size(), 13u);
  EXPECT_EQ(hermiteNormalForms(4).size(), 35u);
}

struct SymmetryCase {
  const char* symbol;
  CellParameters cell;
  Centring centring;
};

TEST(LatticeSymmetry, TwofoldAxesGiveTheBravaisLatticeAndConventionalCell) {
  const SymmetryCase cases[] = {
      {"cF", {5.4309, 5.4309, 5.4309, 90, 90, 90}, Centring::F},
      {"cI", {10.2541, 10.2541, 10.2541, 90, 90, 90}, Centring::I},
      {"tP", {11.189, 11.189, 9.4805, 90, 90, 90}, Centring::P},
      {"tI", {4.0, 4.0, 9.0, 90, 90, 90}, Centring::I},
      {"hP", {4.916, 4.916, 5.4054, 90, 90, 120}, Centring::P},
      {"hR", {4.7592, 4.7592, 12.9946, 90, 90, 120}, Centring::R},
      {"oP", {3.4202, 10.027, 11.0284, 90, 90, 90}, Centring::P},
      {"oC", {9.2353, 11.0318, 11.3348, 90, 90, 90}, Centring::C},
      {"mP", {9.1896, 12.4755, 6.2427, 90, 106.927, 90}, Centring::P},
      {"mC", {7.0, 9.0, 6.0, 90, 101.0, 90}, Centring::C},
      {"aP", {8.754, 9.000, 6.910, 102.38, 98.68, 98.92}, Centring::P},
  };
  for (const SymmetryCase& c : cases) {
    SCOPED_TRACE(c.symbol);
    // Start from the reduced primitive cell, as an indexing engine would deliver it.
    const CellParameters primitive = niggliReduce(c.cell, c.centring).cell;
    const LatticeSymmetry exact = latticeSymmetry(primitive, Centring::P, 0.1);
    EXPECT_EQ(exact.bravaisSymbol(), c.symbol);
    EXPECT_NEAR(cellVolume(exact.conventional), cellVolume(c.cell), 1e-6 * cellVolume(c.cell));
    EXPECT_TRUE(sameLattice(exact.conventional, exact.centring, c.cell, c.centring));
    if (c.symbol[0] != 'm' && c.symbol[0] != 'a') {
      EXPECT_NEAR(exact.conventional.a, c.cell.a, 1e-6);
      EXPECT_NEAR(exact.conventional.c, c.cell.c, 1e-6);
    }
    // Distorted by 0.3° the lattice is still recognised with the default 0.5° window.
    CellParameters distorted = primitive;
    distorted.alpha += 0.3;
    EXPECT_EQ(latticeSymmetry(distorted, Centring::P).bravaisSymbol(), c.symbol);
  }
  const LatticeSymmetry mono = latticeSymmetry({6.8239, 18.818, 10.698, 90, 111.28, 90}, Centring::P);
  EXPECT_GE(mono.conventional.beta, 90.0);
  EXPECT_NEAR(mono.conventional.b, 18.818, 1e-6);
}

struct FormCase {
  int form;
  CellParameters cell;
  Centring centring;
};

TEST(LatticeReducedForm, FormNumberAndTwofoldAxesAgreeOnTheLatticeType) {
  // Lattices in shapes that land on different characters of the same Bravais type.
  const FormCase cases[] = {
      {1, {5.4309, 5.4309, 5.4309, 90, 90, 90}, Centring::F}, {5, {10.25, 10.25, 10.25, 90, 90, 90}, Centring::I},
      {3, {4, 4, 4, 90, 90, 90}, Centring::P},                {21, {11.189, 11.189, 9.4805, 90, 90, 90}, Centring::P},
      {11, {4, 4, 9, 90, 90, 90}, Centring::P},               {15, {4, 4, 9, 90, 90, 90}, Centring::I},
      {18, {9, 9, 4, 90, 90, 90}, Centring::I},               {7, {5, 5, 6, 90, 90, 90}, Centring::I},
      {6, {6, 6, 5, 90, 90, 90}, Centring::I},                {12, {4.916, 4.916, 5.4054, 90, 90, 120}, Centring::P},
      {22, {4.916, 4.916, 3.1, 90, 90, 120}, Centring::P},    {9, {4.7592, 4.7592, 12.9946, 90, 90, 120}, Centring::R},
      {24, {5, 5, 3, 90, 90, 120}, Centring::R},              {2, {5, 5, 8, 90, 90, 120}, Centring::R},
      {32, {3.42, 10.03, 11.03, 90, 90, 90}, Centring::P},    {13, {9.2353, 11.0318, 11.3348, 90, 90, 90}, Centring::C},
      {38, {5, 12, 7, 90, 90, 90}, Centring::C},              {40, {12, 5, 3, 90, 90, 90}, Centring::C},
      {19, {5, 6, 7, 90, 90, 90}, Centring::I},               {16, {5, 6, 7, 90, 90, 90}, Centring::F},
      {26, {3, 6, 9, 90, 90, 90}, Centring::F},               {34, {9.19, 12.48, 6.24, 90, 106.9, 90}, Centring::P},
      {33, {5, 6, 7, 90, 100, 90}, Centring::P},              {14, {7, 9, 6, 90, 101, 90}, Centring::C},
      {37, {12, 5, 6, 90, 101, 90}, Centring::C},             {29, {5, 12, 9, 90, 120, 90}, Centring::C},
      {39, {9, 5, 12, 90, 95, 90}, Centring::C},              {44, {8.754, 9, 6.91, 102.38, 98.68, 98.92}, Centring::P},
      {31, {5, 6, 7, 80, 85, 75}, Centring::P},
  };
  for (const FormCase& c : cases) {
    SCOPED_TRACE(c.form);
    const NiggliReduction r = niggliReduce(c.cell, c.centring);
    const ReducedForm form = reducedForm(r.metric);
    EXPECT_EQ(form.number, c.form);
    std::string bravais(form.bravais);
    if (bravais == "mI") bravais = "mC";  // the same lattices in an I-centred setting
    EXPECT_EQ(bravais, latticeSymmetry(r.cell, Centring::P, 0.1).bravaisSymbol());
  }
}

}  // namespace
}  // namespace quarvel
