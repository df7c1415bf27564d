// The card deck of the zone-indexing engine: problems made of a title card, two parameter cards,
// line cards (8f10.5, blank fields skipped), optional own line combinations or zones, optional
// trial lattices; the deck ends with "end". Blank parameter fields take the defaults below.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace quarvel {

struct ItoParameters {
  // first parameter card
  bool printManual = true;           // col 1: "9" suppresses the instruction manual
  bool printSpecialFeatures = false;  // col 2: "1" prints the instructions for special features
  bool intensities = false;          // col 3: "1" when line cards carry intensities 8(f7.3,a3)
  int nsolmx = 4;                    // col 4: solutions printed extensively
  std::array<int, 3> nsyst{0, 0, 0};  // cols 5-10: orthorhombic, monoclinic, triclinic preference
  double tol2 = 3.0;                 // q-units, zone search
  double tol3 = 4.5;                 // q-units, lattice search
  double wavel = 1.5406;             // Å
  int linco = 0;                     // own line combinations / zones follow the line cards
  int lzerck = 0;                    // zero-error check
  int enl = 0;                       // intermediate results
  int nq1 = 3, nq2 = 6;              // lines combined to find zones
  int nz1 = 6, nz2 = 6;              // zones combined to find lattices
  int nr = 0;                        // trial lattices given: refine and evaluate only those
  int indat = 5;
  int list = 1;                      // lattices with a full line list; negative: none
  int jtest = 0;                     // test output
  double wmol = 0.0, dobs = 0.0;
  double tolg = 6.0;                 // hundredths of a degree 2θ
  int ntst = 0;
  // second parameter card
  double zercor = 0.0;  // degrees 2θ added to every line
  double prntmr = 4.0;  // lowest figure of merit printed
  int prntln = 14;      // fewest lines indexed printed
};

// A card after the line cards when linco > 0: 2 values are a pair of lines to combine, 3 a zone
// (qa, qb, r; r = 0.08 marks a rectangular zone), the 4th a quality figure.
struct ItoZoneCard {
  std::array<double, 4> values{};
  int count = 0;
};

struct ItoProblem {
  std::string title;
  std::vector<std::string> cards;  // every card of the problem as read, for the echo
  ItoParameters parameters;
  std::vector<double> values;      // line positions in card order, negative ones included
  std::vector<std::string> intensities;
  std::vector<ItoZoneCard> zoneCards;
  std::vector<std::array<double, 6>> trialLattices;
};

struct ItoDeck {
  std::vector<ItoProblem> problems;
  bool endCardSeen = false;
  std::vector<std::string> notes;  // cards that could not be read, with their card number
};

ItoParameters readParameterCards(const std::string& first, const std::string& second);
ItoDeck readItoDeck(const std::vector<std::string>& cards);

}  // namespace quarvel
