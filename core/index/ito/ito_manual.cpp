#include "core/index/ito/ito_manual.h"

namespace quarvel {

const std::vector<std::string>& itoManual() {
  static const std::vector<std::string> text{
      " instructions for the zone-indexing program",
      " -------------------------------------------",
      " the deck holds one problem after another and ends with a card \"end\" in columns 1-3.",
      " each problem is made of:",
      "  card 1   title, up to 80 characters",
      "  card 2   parameters (a blank field takes the default in brackets)",
      "           col  1     9 suppresses these instructions                      (0)",
      "           col  2     1 prints the instructions for special features       (0)",
      "           col  3     1 when the line cards carry intensities, 8(f7.3,a3)  (0)",
      "           col  4     number of solutions printed extensively              (4)",
      "           col  5- 6  orthorhombic: +1 preferred, -1 not wanted, 0 indifferent",
      "           col  7- 8  monoclinic, same coding",
      "           col  9-10  triclinic, same coding",
      "           col 11-15  tol2, tolerance of the zone search, q-units          (3.0)",
      "           col 16-20  tol3, tolerance of the lattice search, q-units       (4.5)",
      "           col 21-30  wavelength in angstrom                               (1.5406)",
      "           col 31-32  linco > 0: own line pairs or zones follow the lines  (0)",
      "           col 33     lzerck > 0: zero-error check                         (0)",
      "           col 34     intermediate results when 1 or more                  (0)",
      "           col 35-38  nq1, nq2: the first nq1 lines are paired with the    (3, 6)",
      "                      first nq2 lines to find zones",
      "           col 39-42  nz1, nz2: the first nz1 zones are paired with the    (6, 6)",
      "                      first nz2 zones (each zone with itself too) to find lattices",
      "           col 43-44  nr > 0: only the trial lattices given are refined    (0)",
      "           col 45-46  input unit of the lines                              (5)",
      "           col 47-48  lattices listed with all lines; negative: none       (1)",
      "           col 49-50  test output when 1 or more                           (0)",
      "           col 51-60  molecular weight                                     (0.0)",
      "           col 61-70  observed density                                     (0.0)",
      "           col 71-78  tolg, tolerance between observed and calculated      (6.0)",
      "                      lines in hundredths of a degree 2-theta",
      "           col 79-80  where test output starts; a multiple of 11 keeps it on",
      "  card 3   col  1-10  zero correction in degrees 2-theta added to all lines (0.0)",
      "           col 11-20  lattices with a lower figure of merit are not printed (4.0)",
      "           col 21-30  lattices with fewer lines indexed are not printed    (14)",
      "  cards    line positions, 8f10.5, as 2-theta, q (10000/d**2) or d; blank fields",
      "           are skipped. the first six values must be in order: rising values are",
      "           2-theta (q above 180), falling values are d. a negative value drops the line.",
      "  card     blank (or zero in columns 1-10): end of the lines.",
      " at most 40 lines are used and at least 20 are needed; the first 20 decide the",
      " indexing and the figure of merit. all work is in q-units, q = 10000/d**2.",
      "",
  };
  return text;
}

const std::vector<std::string>& itoSpecialFeatures() {
  static const std::vector<std::string> text{
      " special features",
      " ----------------",
      " linco > 0: after the blank card that ends the lines, cards in 4f10.2 give either two",
      "   q-values to be combined in the zone search, or a zone qa, qb, r with a quality",
      "   figure; r = 0.08 marks a rectangular zone, a single digit in column 31 a high",
      "   quality. a blank card ends them. fewer than 40 zones are kept.",
      " nr > 0: cards in 6f10.2 give trial lattices, either the reciprocal constants a-f in",
      "   q-units (q=h*h*a+k*k*b+l*l*c+k*l*d+l*h*e+h*k*f) or a direct cell in angstrom and",
      "   degrees; a card with zero or blank in columns 1-10 ends them. only these lattices",
      "   are refined and evaluated.",
      "",
  };
  return text;
}

}  // namespace quarvel
