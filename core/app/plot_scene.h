// What the pattern plot shows, computed from the session: the curves chosen by the plot mode in
// the current x unit, the peak and reflection markers, the excluded regions and the axis setup.
// The GUI draws a PlotScene as it is; tests check it without a window system.
#pragma once

#include <string>
#include <vector>

namespace quarvel {

class Session;

enum class CurveRole { Pattern, Background, Difference, Calculated, Multiple };

struct PlotCurve {
  CurveRole role = CurveRole::Pattern;
  std::string name;
  std::vector<double> x;  // in the current x unit, ascending
  std::vector<double> y;  // NaN marks a gap (points that a logarithmic axis cannot show)
};

struct PlotScene {
  std::vector<PlotCurve> curves;
  std::vector<double> peakMarkers;        // x of the peak-list entries
  std::vector<double> reflectionMarkers;  // x of calculated reflections
  std::vector<std::pair<double, double>> excludedSpans;  // x ranges of excluded regions
  std::string xLabel;
  std::string yLabel = "Intensity";
  bool logarithmic = false;
  bool xGrid = false;
  bool yGrid = false;
  int xUnit = 1;  // 1 2θ, 2 d, 3 Q

  bool empty() const { return curves.empty(); }
};

PlotScene buildPlotScene(const Session& session);

// Converts a 2θ (degrees) into the x unit (1 2θ, 2 d in Å, 3 Q in 1/Å) at `wavelength`.
double toXUnit(double twoTheta, int unit, double wavelength);

// The pattern's 2θ (degrees) at plot position `x` in the session's current x unit: the inverse
// of the conversion buildPlotScene applies (x unit, wavelength and zero correction). Used when
// the user marks positions in the plot.
double twoThetaAtPlotX(const Session& session, double x);

}  // namespace quarvel
