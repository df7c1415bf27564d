#include "core/index/lattice/crystal_system.h"

namespace quarvel {

std::string_view crystalSystemName(CrystalSystem system) {
  switch (system) {
    case CrystalSystem::Cubic: return "cubic";
    case CrystalSystem::Tetragonal: return "tetragonal";
    case CrystalSystem::Hexagonal: return "hexagonal";
    case CrystalSystem::Rhombohedral: return "rhombohedral";
    case CrystalSystem::Orthorhombic: return "orthorhombic";
    case CrystalSystem::MonoclinicA: return "monoclinic (a unique)";
    case CrystalSystem::Monoclinic: return "monoclinic";
    case CrystalSystem::MonoclinicC: return "monoclinic (c unique)";
    case CrystalSystem::Triclinic: return "triclinic";
  }
  return "triclinic";
}

int freeParameterCount(CrystalSystem system) {
  switch (system) {
    case CrystalSystem::Cubic: return 1;
    case CrystalSystem::Tetragonal:
    case CrystalSystem::Hexagonal:
    case CrystalSystem::Rhombohedral: return 2;
    case CrystalSystem::Orthorhombic: return 3;
    case CrystalSystem::MonoclinicA:
    case CrystalSystem::Monoclinic:
    case CrystalSystem::MonoclinicC: return 4;
    case CrystalSystem::Triclinic: return 6;
  }
  return 6;
}

MetricParameters designRow(CrystalSystem system, int h, int k, int l) {
  const double hh = double(h) * h, kk = double(k) * k, ll = double(l) * l;
  const double kl = double(k) * l, hl = double(h) * l, hk = double(h) * k;
  switch (system) {
    case CrystalSystem::Cubic: return {hh + kk + ll, 0, 0, 0, 0, 0};
    case CrystalSystem::Tetragonal: return {hh + kk, ll, 0, 0, 0, 0};
    case CrystalSystem::Hexagonal: return {hh + hk + kk, ll, 0, 0, 0, 0};
    case CrystalSystem::Rhombohedral: return {hh + kk + ll, kl + hl + hk, 0, 0, 0, 0};
    case CrystalSystem::Orthorhombic: return {hh, kk, ll, 0, 0, 0};
    case CrystalSystem::MonoclinicA: return {hh, kk, ll, kl, 0, 0};
    case CrystalSystem::Monoclinic: return {hh, kk, ll, hl, 0, 0};
    case CrystalSystem::MonoclinicC: return {hh, kk, ll, hk, 0, 0};
    case CrystalSystem::Triclinic: return {hh, kk, ll, kl, hl, hk};
  }
  return {};
}

ReciprocalMetric metricFromParameters(CrystalSystem system, std::span<const double> p) {
  switch (system) {
    case CrystalSystem::Cubic: return {p[0], p[0], p[0], 0, 0, 0};
    case CrystalSystem::Tetragonal: return {p[0], p[0], p[1], 0, 0, 0};
    case CrystalSystem::Hexagonal: return {p[0], p[0], p[1], 0, 0, p[0]};
    case CrystalSystem::Rhombohedral: return {p[0], p[0], p[0], p[1], p[1], p[1]};
    case CrystalSystem::Orthorhombic: return {p[0], p[1], p[2], 0, 0, 0};
    case CrystalSystem::MonoclinicA: return {p[0], p[1], p[2], p[3], 0, 0};
    case CrystalSystem::Monoclinic: return {p[0], p[1], p[2], 0, p[3], 0};
    case CrystalSystem::MonoclinicC: return {p[0], p[1], p[2], 0, 0, p[3]};
    case CrystalSystem::Triclinic: return {p[0], p[1], p[2], p[3], p[4], p[5]};
  }
  return {};
}

MetricParameters parametersFromMetric(CrystalSystem system, const ReciprocalMetric& m) {
  switch (system) {
    case CrystalSystem::Cubic: return {m.A, 0, 0, 0, 0, 0};
    case CrystalSystem::Tetragonal:
    case CrystalSystem::Hexagonal: return {m.A, m.C, 0, 0, 0, 0};
    case CrystalSystem::Rhombohedral: return {m.A, m.D, 0, 0, 0, 0};
    case CrystalSystem::Orthorhombic: return {m.A, m.B, m.C, 0, 0, 0};
    case CrystalSystem::MonoclinicA: return {m.A, m.B, m.C, m.D, 0, 0};
    case CrystalSystem::Monoclinic: return {m.A, m.B, m.C, m.E, 0, 0};
    case CrystalSystem::MonoclinicC: return {m.A, m.B, m.C, m.F, 0, 0};
    case CrystalSystem::Triclinic: return {m.A, m.B, m.C, m.D, m.E, m.F};
  }
  return {};
}

CellParameters constrainCell(CrystalSystem system, const CellParameters& cell) {
  CellParameters c = cell;
  switch (system) {
    case CrystalSystem::Cubic:
      c.b = c.c = c.a;
      c.alpha = c.beta = c.gamma = 90.0;
      break;
    case CrystalSystem::Tetragonal:
      c.b = c.a;
      c.alpha = c.beta = c.gamma = 90.0;
      break;
    case CrystalSystem::Hexagonal:
      c.b = c.a;
      c.alpha = c.beta = 90.0;
      c.gamma = 120.0;
      break;
    case CrystalSystem::Rhombohedral:
      c.b = c.c = c.a;
      c.beta = c.gamma = c.alpha;
      break;
    case CrystalSystem::Orthorhombic: c.alpha = c.beta = c.gamma = 90.0; break;
    case CrystalSystem::MonoclinicA: c.beta = c.gamma = 90.0; break;
    case CrystalSystem::Monoclinic: c.alpha = c.gamma = 90.0; break;
    case CrystalSystem::MonoclinicC: c.alpha = c.beta = 90.0; break;
    case CrystalSystem::Triclinic: break;
  }
  return c;
}

}  // namespace quarvel
