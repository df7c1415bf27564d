// Zones: two-dimensional sub-lattices of the reciprocal lattice, q(h,k) = h²·qa + k²·qb + hk·r
// in q-units. `finzon` finds them from coincidences among the first lines, `evalu8` counts the
// lines each one indexes and `rear` reduces, reformulates, merges and sorts them.
#pragma once

#include <string>
#include <vector>

#include "core/index/ito/ito_deck.h"
#include "core/index/ito/ito_lines.h"

namespace quarvel {

inline constexpr int kItoZoneStorage = 39;  // fewer than 40 zones are kept

struct ItoZone {
  double qa = 0, qb = 0, r = 0;  // reduced: |r| ≤ qa ≤ qb
  int baseLine1 = 0, baseLine2 = 0;  // 1-based lines the zone came from (0 for a given zone)
  int indexed = 0;                   // among the first 20 lines
  double quality = 0;                // two-dimensional de Wolff figure
  int points = 0;                    // distinct zone values up to the 20th line
  double excess = 0;                 // −log10 of the chance that its points catch as many lines
  bool reformulated = false;
  bool given = false;

  double q(int h, int k) const { return h * h * qa + k * k * qb + h * k * r; }
};

struct ZoneSearch {
  std::vector<ItoZone> zones;  // best first
  bool storageFull = false;
  int reformulated = 0;
};

// Lines i and j (0-based) as orders of one row: q_j/q_i = (m/n)² within their tolerances, m > n,
// n ≤ 2, m ≤ 9 (line j the second, third, … order of the row of line i, or of its half).
bool onSameRow(const ItoLines& lines, int i, int j);

// Gauss reduction of a zone basis.
void reduceZone(ItoZone& zone);

// Lines among the first 20 within their tolerance of a zone point, and the quality figure.
void evaluateZone(ItoZone& zone, const ItoLines& lines);

// `own` holds the line pairs and zones given on cards (linco > 0).
ZoneSearch findZones(const ItoLines& lines, const ItoParameters& parameters, const std::vector<ItoZoneCard>& own);

}  // namespace quarvel
