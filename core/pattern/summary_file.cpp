#include "core/pattern/summary_file.h"

#include <cmath>
#include <filesystem>
#include <fstream>

#include "core/app/command_ids.h"
#include "core/app/session.h"
#include "core/common/external_program.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"

namespace quarvel {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t kTwoThetaWidth = 8;
constexpr std::size_t kColumnWidth = 9;

void setSummaryMenus(Session& session, bool open) {
  session.menu().setEnabled(cmd::kOpenSumFile, !open);
  for (int id : {cmd::kAddToSumFile, cmd::kEditSumFile, cmd::kCloseSumFile}) session.menu().setEnabled(id, open);
}

// The pattern's intensity at 2θ by linear interpolation between its points; nullopt outside.
std::optional<double> valueAt(const PatternSlot& s, double twoTheta) {
  if (s.count < 1 || s.step == 0.0f) return std::nullopt;
  const double t = (twoTheta - s.start) / s.step;
  const double last = s.count - 1;
  if (t < -1e-3 || t > last + 1e-3) return std::nullopt;
  const double clamped = std::clamp(t, 0.0, last);
  const auto i = static_cast<std::size_t>(std::floor(clamped));
  if (i + 1 >= static_cast<std::size_t>(s.count)) return s.y[i];
  const double f = clamped - static_cast<double>(i);
  return s.y[i] * (1.0 - f) + s.y[i + 1] * f;
}

std::string valueField(std::optional<double> v) {
  return v ? formatI(nint(*v), static_cast<int>(kColumnWidth)) : std::string(kColumnWidth, ' ');
}

std::string rtrimmed(std::string_view s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return std::string(s);
}

}  // namespace

int summaryColumns(std::string_view firstLine) {
  const long length = static_cast<long>(rtrimmed(firstLine).size());
  const long columns = (length - static_cast<long>(kTwoThetaWidth)) / static_cast<long>(kColumnWidth);
  return columns < 1 ? 0 : static_cast<int>(columns);
}

std::string summaryWithColumn(std::string_view existing, const Session& session, const std::string& heading) {
  const PatternSlot& s = session.store().pattern();
  const std::string head = padLeft(heading.substr(0, kColumnWidth - 1), kColumnWidth);
  auto lines = splitLines(existing);
  while (!lines.empty() && trim(lines.back()).empty()) lines.pop_back();
  std::string out;
  if (lines.empty() || summaryColumns(lines.front()) == 0) {
    out += padRight("  2theta", kTwoThetaWidth) + head + "\n";
    for (int i = 0; i < s.count; ++i)
      out += formatF(s.x(i), static_cast<int>(kTwoThetaWidth), 3) + valueField(s.y[static_cast<std::size_t>(i)]) + "\n";
    return out;
  }
  const int columns = summaryColumns(lines.front());
  const std::size_t width = kTwoThetaWidth + static_cast<std::size_t>(columns) * kColumnWidth;
  out += padRight(lines.front(), width) + head + "\n";
  for (std::size_t r = 1; r < lines.size(); ++r) {
    const auto twoTheta = readField(lines[r], 1, kTwoThetaWidth);
    out += padRight(lines[r], width) + valueField(twoTheta ? valueAt(s, *twoTheta) : std::nullopt) + "\n";
  }
  return out;
}

bool openSummaryFile(Session& session, const std::string& path) {
  const fs::path file = session.resolve(path);
  if (!fs::exists(file)) {
    std::ofstream create(file);
    if (!create) {
      session.message("File Error", "Invalid file selection");
      session.summary.path.clear();
      return false;
    }
  }
  const auto lines = readLines(file);
  if (!lines) {
    session.message("File Error", "Invalid file selection");
    session.summary.path.clear();
    return false;
  }
  session.summary.path = file.string();
  session.summary.open = true;
  session.summary.columns = lines->empty() ? 0 : summaryColumns(lines->front());
  setSummaryMenus(session, true);
  return true;
}

bool addToSummaryFile(Session& session) {
  SummaryState& sum = session.summary;
  if (!sum.open) return false;
  if (sum.columns >= kMaxSummaryColumns) {
    session.message("File error", "Too many files in summary file");
    return false;
  }
  const fs::path scratch = session.resolve("temp.sum");
  std::error_code ec;
  fs::copy_file(sum.path, scratch, fs::copy_options::overwrite_existing, ec);
  const auto existing = ec ? std::nullopt : readWholeFile(scratch);
  if (!existing) {
    session.message("File error", "Error copying summary file");
    return false;
  }
  const std::string loaded = session.store().info.loadedPath;
  const std::string heading = loaded.empty() ? "pattern" : fs::path(loaded).stem().string();
  if (!writeFileAtomically(sum.path, summaryWithColumn(*existing, session, heading))) {
    session.message("File Error", "Error writing summary file");
    return false;
  }
  ++sum.columns;
  return true;
}

void editSummaryFile(Session& session) {
  if (!session.summary.open) return;
  if (!startExternalProgram(session.settings().values.editor, session.summary.path))
    session.shell().openTextViewer(session.summary.path);
}

void closeSummaryFile(Session& session) {
  session.summary.open = false;
  session.summary.columns = 0;
  setSummaryMenus(session, false);
}

}  // namespace quarvel
