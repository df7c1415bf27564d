// Placeholders until the pattern readers and the summary file land: the commands are accepted
// and do nothing.
#include "core/pattern/pattern_files.h"

namespace quarvel {

bool openPatternFile(Session&, OpenFormat, const std::string&) { return false; }
bool openSummaryFile(Session&, const std::string&) { return false; }

}  // namespace quarvel
