#include "core/index/treor/treor_input.h"

#include <functional>
#include <utility>

#include "core/common/numbers.h"

namespace quarvel {

namespace {

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = text.find('\n', start);
    std::string line(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return lines;
}

bool isBlank(std::string_view line) { return trim(line).empty(); }

// The observed value of a line card: its first field, when it is a number.
std::optional<double> lineValue(std::string_view line) {
  const auto numbers = readFreeNumbers(line);
  if (numbers.empty()) return std::nullopt;
  return numbers.front();
}

using Setter = std::function<bool(TreorKeywords&, double)>;

Setter realKeyword(double TreorKeywords::* field) {
  return [field](TreorKeywords& k, double v) {
    k.*field = v;
    return true;
  };
}

Setter intKeyword(int TreorKeywords::* field) {
  return [field](TreorKeywords& k, double v) {
    k.*field = static_cast<int>(nint(v));
    return true;
  };
}

// Keyword names as the cards spell them. A name is matched whole; an unknown name is an
// unidentified keyword.
const std::vector<std::pair<std::string_view, Setter>>& keywordTable() {
  static const std::vector<std::pair<std::string_view, Setter>> table = {
      {"CHOICE", [](TreorKeywords& k, double v) {
         k.choice = static_cast<int>(nint(v));
         return k.choice >= 0 && k.choice <= 4;
       }},
      {"WAVE", realKeyword(&TreorKeywords::wave)},
      {"VOL", realKeyword(&TreorKeywords::vol)},
      {"NIX", intKeyword(&TreorKeywords::nix)},
      {"MERIT", realKeyword(&TreorKeywords::merit)},
      {"D1", realKeyword(&TreorKeywords::d1)},
      {"D2", realKeyword(&TreorKeywords::d2)},
      {"SSQTL", realKeyword(&TreorKeywords::ssqtl)},
      {"CEM", realKeyword(&TreorKeywords::cem)},
      {"USE", intKeyword(&TreorKeywords::testLines)},
      {"IQ", intKeyword(&TreorKeywords::iq)},
      {"IPRINT", intKeyword(&TreorKeywords::printIq)},
      {"IDIV", intKeyword(&TreorKeywords::idiv)},
      {"SELECT", intKeyword(&TreorKeywords::select)},
      {"MONOSET", intKeyword(&TreorKeywords::monoset)},
      {"KS", intKeyword(&TreorKeywords::ks)},
      {"THS", intKeyword(&TreorKeywords::ths)},
      {"MOLW", realKeyword(&TreorKeywords::molw)},
      {"DENS", realKeyword(&TreorKeywords::dens)},
      {"EDENS", realKeyword(&TreorKeywords::edens)},
      {"BETA", realKeyword(&TreorKeywords::maxBeta)},
  };
  return table;
}

const Setter* findKeyword(std::string_view name) {
  for (const auto& [keyword, setter] : keywordTable())
    if (keyword == name) return &setter;
  return nullptr;
}

// The cards as one text split at the delimiters , / = and * (line ends are blanks inside a
// card, so a missing comma joins two cards into one bad value). Returns false with the bad
// card when a card does not read.
bool readCards(const std::string& cards, TreorKeywords& keywords, std::string& badCard) {
  std::size_t pos = 0;
  while (pos < cards.size()) {
    const std::size_t nameEnd = cards.find_first_of(",/=*", pos);
    const std::string name = toUpper(trim(cards.substr(pos, nameEnd - pos)));
    if (name == "END") return true;
    if (nameEnd == std::string::npos) {
      if (name.empty()) return true;
      badCard = name;
      return false;
    }
    if (cards[nameEnd] != '=') {
      // An empty card between two delimiters is harmless; a name without a value is not.
      if (name.empty()) {
        pos = nameEnd + 1;
        continue;
      }
      badCard = name;
      return false;
    }
    const std::size_t valueEnd = cards.find_first_of(",/=*", nameEnd + 1);
    const std::string valueText =
        trim(cards.substr(nameEnd + 1, valueEnd == std::string::npos ? std::string::npos : valueEnd - nameEnd - 1));
    const Setter* setter = findKeyword(name);
    const auto value = parseNumber(valueText);
    if (setter == nullptr || !value || (valueEnd != std::string::npos && cards[valueEnd] == '=') ||
        !(*setter)(keywords, *value)) {
      badCard = name + "=" + valueText;
      return false;
    }
    if (valueEnd == std::string::npos) return true;
    pos = valueEnd + 1;
  }
  return true;
}

}  // namespace

TreorInputResult parseTreorInput(std::string_view text) {
  const auto lines = splitLines(text);
  TreorInput input;
  std::size_t i = 0;
  if (i < lines.size()) input.title = lines[i++];
  // The lines end at the first blank line, or at the first card that is not a number.
  for (; i < lines.size(); ++i) {
    if (isBlank(lines[i])) {
      ++i;
      break;
    }
    const auto value = lineValue(lines[i]);
    if (!value) break;
    input.values.push_back(*value);
  }
  std::string cards;
  for (; i < lines.size(); ++i) cards += lines[i] + ' ';
  TreorInputResult result;
  if (!readCards(cards, input.keywords, result.badCard)) return result;
  result.input = std::move(input);
  return result;
}

}  // namespace quarvel
