#include "core/index/lattice/centring.h"

#include <cctype>

namespace quarvel {

Centring centringFromLetter(char letter) {
  switch (std::toupper(static_cast<unsigned char>(letter))) {
    case 'A': return Centring::A;
    case 'B': return Centring::B;
    case 'C': return Centring::C;
    case 'F': return Centring::F;
    case 'I': return Centring::I;
    case 'R': return Centring::R;
    default: return Centring::P;
  }
}

std::optional<Centring> centringFromCode(int code) {
  if (code < 1 || code > 7) return std::nullopt;
  return static_cast<Centring>(code);
}

char centringLetter(Centring centring) {
  static constexpr char letters[] = "PABCFIR";
  return letters[static_cast<int>(centring) - 1];
}

}  // namespace quarvel
