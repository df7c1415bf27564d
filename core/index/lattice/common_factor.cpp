#include "core/index/lattice/common_factor.h"

#include <algorithm>
#include <array>

namespace quarvel {

namespace {

constexpr bool even(int x) { return (x & 1) == 0; }

constexpr std::array<IndexCondition, 9> kConditions{{
    {"h = 2n", [](int h, int, int) { return even(h); }},
    {"k = 2n", [](int, int k, int) { return even(k); }},
    {"l = 2n", [](int, int, int l) { return even(l); }},
    {"k+l = 2n", [](int, int k, int l) { return even(k + l); }},
    {"h+l = 2n", [](int h, int, int l) { return even(h + l); }},
    {"h+k = 2n", [](int h, int k, int) { return even(h + k); }},
    {"h+k+l = 2n", [](int h, int k, int l) { return even(h + k + l); }},
    {"h, k, l all odd or all even", [](int h, int k, int l) { return even(h + k) && even(k + l); }},
    {"-h+k+l = 3n", [](int h, int k, int l) { return ((-h + k + l) % 3 + 3) % 3 == 0; }},
}};

}  // namespace

std::span<const IndexCondition> indexConditions() { return kConditions; }

std::vector<std::string_view> commonIndexConditions(std::span<const LineAssignment> lines, int minimumLines) {
  const auto indexed = std::count_if(lines.begin(), lines.end(), [](const LineAssignment& a) { return a.indexed; });
  if (indexed < minimumLines) return {};
  std::vector<std::string_view> common;
  for (const IndexCondition& condition : kConditions) {
    const bool all = std::all_of(lines.begin(), lines.end(), [&](const LineAssignment& a) {
      return !a.indexed || condition.holds(a.h, a.k, a.l);
    });
    if (all) common.push_back(condition.name);
  }
  return common;
}

}  // namespace quarvel
