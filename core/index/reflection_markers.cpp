#include "core/index/reflection_markers.h"

#include <algorithm>

#include "core/app/session.h"
#include "core/structure/reflection_generator.h"

namespace quarvel {

int markReflections(Session& session, const UnitCell& cell, int laueClass, Centring centring) {
  const PatternSlot& pattern = session.store().pattern();
  const double zero = session.indexing.twoThetaZero;
  ReflectionRange range;
  range.wavelength = session.store().wavelength.alpha1;
  if (pattern.count > 0) {
    range.twoThetaMin = std::min(pattern.start, pattern.end) - zero;
    range.twoThetaMax = std::max(pattern.start, pattern.end) - zero;
  }
  const CellParameters parameters{cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma};
  std::vector<float>& markers = session.indexing.reflectionMarkers;
  markers.clear();
  for (const GeneratedReflection& r : generateReflections(parameters, laueClass, centring, range))
    markers.push_back(static_cast<float>(r.twoTheta + zero));
  return static_cast<int>(markers.size());
}

}  // namespace quarvel
