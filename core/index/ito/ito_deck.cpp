#include "core/index/ito/ito_deck.h"

#include <optional>

#include "core/common/numbers.h"

namespace quarvel {
namespace {

char column(const std::string& card, std::size_t col) { return col <= card.size() ? card[col - 1] : ' '; }

// A blank (or zero) field keeps the default: none of these parameters means anything at zero.
void setIfGiven(double& target, std::optional<double> value) {
  if (value && *value != 0.0) target = *value;
}
void setIfGiven(int& target, std::optional<long> value) {
  if (value && *value != 0) target = static_cast<int>(*value);
}
void setSigned(int& target, std::optional<long> value) {
  if (value) target = static_cast<int>(*value);
}

std::optional<long> intField(const std::string& card, std::size_t first, std::size_t width) {
  if (first > card.size()) return std::nullopt;
  return readIntField(card, first, width);
}
std::optional<double> realField(const std::string& card, std::size_t first, std::size_t width) {
  if (first > card.size()) return std::nullopt;
  return readField(card, first, width);
}

bool isBlank(const std::string& card) { return trim(card).empty(); }

bool isEndCard(const std::string& card) { return toLower(card.substr(0, 3)) == "end"; }

// A blank card or a zero in the first field ends the line cards.
bool endsLines(const std::string& card) {
  if (isBlank(card)) return true;
  const auto first = realField(card, 1, 10);
  return first && *first == 0.0 && trim(card.substr(0, 10)) != "";
}

void readLineCard(const std::string& card, bool intensities, ItoProblem& problem) {
  for (std::size_t field = 0; field < 8; ++field) {
    const std::size_t first = 1 + field * 10;
    const auto value = realField(card, first, intensities ? 7 : 10);
    if (!value) continue;
    problem.values.push_back(*value);
    if (intensities) problem.intensities.push_back(trim(first + 6 <= card.size() ? card.substr(first + 6, 3) : ""));
  }
}

}  // namespace

ItoParameters readParameterCards(const std::string& first, const std::string& second) {
  ItoParameters p;
  p.printManual = column(first, 1) != '9';
  p.printSpecialFeatures = column(first, 2) == '1';
  p.intensities = column(first, 3) == '1';
  setIfGiven(p.nsolmx, intField(first, 4, 1));
  for (std::size_t i = 0; i < 3; ++i) setSigned(p.nsyst[i], intField(first, 5 + 2 * i, 2));
  setIfGiven(p.tol2, realField(first, 11, 5));
  setIfGiven(p.tol3, realField(first, 16, 5));
  setIfGiven(p.wavel, realField(first, 21, 10));
  setSigned(p.linco, intField(first, 31, 2));
  setSigned(p.lzerck, intField(first, 33, 1));
  setSigned(p.enl, intField(first, 34, 1));
  setIfGiven(p.nq1, intField(first, 35, 2));
  setIfGiven(p.nq2, intField(first, 37, 2));
  setIfGiven(p.nz1, intField(first, 39, 2));
  setIfGiven(p.nz2, intField(first, 41, 2));
  setSigned(p.nr, intField(first, 43, 2));
  setIfGiven(p.indat, intField(first, 45, 2));
  setIfGiven(p.list, intField(first, 47, 2));
  setSigned(p.jtest, intField(first, 49, 2));
  setIfGiven(p.wmol, realField(first, 51, 10));
  setIfGiven(p.dobs, realField(first, 61, 10));
  setIfGiven(p.tolg, realField(first, 71, 8));
  setSigned(p.ntst, intField(first, 79, 2));

  if (const auto z = realField(second, 1, 10)) p.zercor = *z;
  setIfGiven(p.prntmr, realField(second, 11, 10));
  if (const auto n = realField(second, 21, 10); n && *n > 0) p.prntln = static_cast<int>(nint(*n));
  return p;
}

ItoDeck readItoDeck(const std::vector<std::string>& cards) {
  ItoDeck deck;
  std::size_t i = 0;
  auto next = [&](std::string& card) {
    if (i >= cards.size()) return false;
    card = cards[i++];
    while (!card.empty() && (card.back() == '\r' || card.back() == '\n')) card.pop_back();
    return true;
  };
  std::string card;
  while (next(card)) {
    if (isEndCard(card)) {
      deck.endCardSeen = true;
      break;
    }
    ItoProblem problem;
    problem.title = card;
    problem.cards.push_back(card);
    std::string first, second;
    if (!next(first) || !next(second)) {
      deck.notes.push_back("the deck ends inside the parameter cards of problem " + trim(problem.title));
      break;
    }
    problem.cards.push_back(first);
    problem.cards.push_back(second);
    problem.parameters = readParameterCards(first, second);
    bool ended = false;
    while (next(card)) {
      problem.cards.push_back(card);
      if (endsLines(card)) {
        ended = true;
        break;
      }
      if (isEndCard(card)) {  // a deck whose last problem lacks its blank card
        problem.cards.pop_back();
        --i;
        ended = true;
        break;
      }
      readLineCard(card, problem.parameters.intensities, problem);
    }
    if (ended && problem.parameters.linco > 0) {
      while (next(card)) {
        problem.cards.push_back(card);
        if (isBlank(card)) break;
        ItoZoneCard zone;
        for (std::size_t f = 0; f < 4; ++f) {
          if (const auto v = realField(card, 1 + 10 * f, 10)) {
            zone.values[f] = *v;
            zone.count = static_cast<int>(f) + 1;
          }
        }
        // a single digit in column 31 asks for a high quality figure
        if (zone.count >= 3 && card.size() >= 31 && trim(card.substr(30)).size() == 1) zone.values[3] = 99.0;
        if (zone.count >= 2) problem.zoneCards.push_back(zone);
      }
    }
    if (ended && problem.parameters.nr > 0) {
      while (next(card)) {
        problem.cards.push_back(card);
        const auto firstValue = realField(card, 1, 10);
        if (!firstValue || *firstValue == 0.0) break;
        std::array<double, 6> lattice{};
        for (std::size_t f = 0; f < 6; ++f) lattice[f] = realField(card, 1 + 10 * f, 10).value_or(0.0);
        problem.trialLattices.push_back(lattice);
      }
    }
    deck.problems.push_back(std::move(problem));
  }
  return deck;
}

}  // namespace quarvel
