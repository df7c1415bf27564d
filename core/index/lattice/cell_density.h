// The density test of a cell: a cell holds a whole number Z of formula units, so with the molar
// weight and the measured density of the compound only some cell volumes are possible.
#pragma once

namespace quarvel {

// Density (g/cm³) of a cell of `volume` Å³ holding z formula units of molarWeight g/mol.
double cellDensity(double volume, double molarWeight, int z);

struct DensityLimits {
  double molarWeight = 0;  // g/mol; 0: no test
  double density = 0;      // g/cm³ measured; 0: no test
  double deviation = 0;    // g/cm³ the calculated density may differ by; 0: a tenth of `density`
  bool active() const { return molarWeight > 0 && density > 0; }
  double allowed() const { return deviation > 0 ? deviation : 0.1 * density; }
};

// The whole number of formula units (at least one) whose density comes nearest the measured one.
struct DensityFit {
  int z = 0;
  double density = 0;   // g/cm³ calculated for z
  bool within = false;  // within the allowed deviation
};
DensityFit densityFit(double volume, const DensityLimits& limits);

}  // namespace quarvel
