// The summary file: several patterns side by side, one row per 2θ point and one 9-character
// column per added pattern, after an 8-character 2θ field.
#pragma once

#include <string>
#include <string_view>

namespace quarvel {

class Session;

inline constexpr int kMaxSummaryColumns = 100;

// Pattern columns of a summary file judged by its first line: (length without trailing
// blanks - 8) / 9, and 0 when that is below 1.
int summaryColumns(std::string_view firstLine);

// Opens (or creates) the summary file and enables the commands that use it.
bool openSummaryFile(Session& session, const std::string& path);
// Adds the current pattern as one more column; false (with the message shown) on failure.
bool addToSummaryFile(Session& session);
// Shows the summary file in the external editor of the settings file.
void editSummaryFile(Session& session);
void closeSummaryFile(Session& session);

// The summary text with one more column holding `slot`'s values: rows of an empty file follow
// the pattern's points; rows of an existing file keep their 2θ, and the new column holds the
// pattern's value interpolated there (blank outside the pattern's range).
std::string summaryWithColumn(std::string_view existing, const Session& session, const std::string& heading);

}  // namespace quarvel
