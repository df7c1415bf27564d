// Lattice centring types and their reflection conditions. Only lattice-type absences are
// modelled here, never the absences of a space group's glides and screws.
#pragma once

#include <optional>
#include <string_view>

namespace quarvel {

// Codes as the dialogs number them: P 1, A 2, B 3, C 4, F 5, I 6, R 7.
enum class Centring { P = 1, A = 2, B = 3, C = 4, F = 5, I = 6, R = 7 };

// R means obverse setting on hexagonal axes: -h + k + l = 3n.
constexpr bool isAllowedReflection(Centring centring, int h, int k, int l) {
  switch (centring) {
    case Centring::P: return true;
    case Centring::A: return ((k + l) & 1) == 0;
    case Centring::B: return ((h + l) & 1) == 0;
    case Centring::C: return ((h + k) & 1) == 0;
    case Centring::F: return ((h + k) & 1) == 0 && ((k + l) & 1) == 0;
    case Centring::I: return ((h + k + l) & 1) == 0;
    case Centring::R: return (((-h + k + l) % 3) + 3) % 3 == 0;
  }
  return true;
}

// Lattice points per conventional cell.
constexpr int latticePointsPerCell(Centring centring) {
  switch (centring) {
    case Centring::P: return 1;
    case Centring::F: return 4;
    case Centring::R: return 3;
    default: return 2;
  }
}

// The centring of a letter (the first letter of a space-group symbol): any other letter is P.
Centring centringFromLetter(char letter);
// The centring of a dialog code 1-7; nullopt outside.
std::optional<Centring> centringFromCode(int code);
char centringLetter(Centring centring);

}  // namespace quarvel
