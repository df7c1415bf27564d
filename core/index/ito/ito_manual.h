// The card format of the zone-indexing engine, printed at the head of its report unless the
// first parameter card holds "9" in column 1, and the special features (own zones, trial
// lattices) printed when column 2 holds "1".
#pragma once

#include <string>
#include <vector>

namespace quarvel {

const std::vector<std::string>& itoManual();
const std::vector<std::string>& itoSpecialFeatures();

}  // namespace quarvel
