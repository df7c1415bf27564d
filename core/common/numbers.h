// Number reading and writing that ignores the locale: the files this program reads and writes
// always use a decimal point, whatever language the user's desktop speaks.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvel {

// The whole of `text` (blanks around it allowed) as a number; nullopt otherwise.
// Accepts Fortran exponents ("1.5D+02") and a leading '+'.
std::optional<double> parseNumber(std::string_view text);
std::optional<long> parseInteger(std::string_view text);

// Reads numbers the way a list-directed read does: fields separated by blanks, tabs or commas.
// Stops at the first field that is not a number; returns what was read before it.
std::vector<double> readFreeNumbers(std::string_view line);
// The same without allocating: at most out.size() numbers into `out`; returns how many were read.
std::size_t readLeadingNumbers(std::string_view line, std::span<double> out);

// A fixed column field (1-based first column, width) read as a number; blank -> nullopt.
std::optional<double> readField(std::string_view line, std::size_t firstColumn, std::size_t width);
// Same for an integer field; blank -> nullopt; a field that is not an integer -> nullopt.
std::optional<long> readIntField(std::string_view line, std::size_t firstColumn, std::size_t width);

// Fortran edit descriptors: Fw.d and Iw, right-aligned; w asterisks when the value does not fit.
std::string formatF(double value, int width, int decimals);
std::string formatI(long value, int width);
// Ew.d: "0.1234E+02" style, right-aligned in width.
std::string formatE(double value, int width, int decimals);
// Text left-aligned and blank-padded (or cut) to width.
std::string padRight(std::string_view text, std::size_t width);
// Text right-aligned in width (cut to width when longer).
std::string padLeft(std::string_view text, std::size_t width);

// Shortest decimal text that reads back to the same float.
std::string shortestFloatText(float value);

// Nearest integer, halves away from zero (Fortran NINT).
long nint(double value);

std::string trim(std::string_view text);
std::string toLower(std::string_view text);
std::string toUpper(std::string_view text);
bool startsWith(std::string_view text, std::string_view prefix);

}  // namespace quarvel
