#include "core/app/settings.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <system_error>

#include "core/app/messages.h"
#include "core/app/shell.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"

namespace quarvel {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFilesBegin = "OLD QUARVEL FILES";
constexpr const char* kFilesEnd = "END QUARVEL FILES";
constexpr const char* kBlockBegin = "OLD QUARVEL";
constexpr const char* kBlockEnd = "END QUARVEL";

// A marker line in upper or lower case (mixed case is not a marker).
bool isMarker(const std::string& line, const std::string& marker) {
  const std::string t = trim(line);
  return t == marker || t == toLower(marker);
}

// The value of `line` when it starts with `key` written all in upper or all in lower case;
// mixed-case keys are deliberately not recognised.
std::optional<std::string> valueOf(const std::string& line, const std::string& key) {
  if (!startsWith(line, key) && !startsWith(line, toLower(key))) return std::nullopt;
  const auto eq = line.find('=');
  if (eq == std::string::npos) return std::nullopt;
  return trim(std::string_view(line).substr(eq + 1));
}

template <typename T>
void readNumber(const std::string& line, const std::string& key, T& target) {
  if (auto v = valueOf(line, key)) {
    auto values = readFreeNumbers(*v);
    if (!values.empty()) target = static_cast<T>(values.front());
  }
}

void readKeyLine(const std::string& line, SettingsValues& s) {
  if (auto v = valueOf(line, "DIR=")) s.startDirectory = *v;
  if (auto v = valueOf(line, "EDT=")) s.editor = *v;
  readNumber(line, "ORX=", s.originX);
  readNumber(line, "ORY=", s.originY);
  readNumber(line, "EXX=", s.width);
  readNumber(line, "EXY=", s.height);
  readNumber(line, "MINU=", s.minU);
  readNumber(line, "MINV=", s.minV);
  readNumber(line, "MINW=", s.minW);
  if (auto v = valueOf(line, "OPERATOR=")) s.operatorName = *v;
  if (auto v = valueOf(line, "DEPART")) s.department = *v;
  if (auto v = valueOf(line, "COMPANY")) s.company = *v;
  if (auto v = valueOf(line, "ADDRESS")) s.address = *v;
}

bool writeLines(const fs::path& path, const std::vector<std::string>& lines) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  for (const auto& line : lines) out << line << '\n';
  out.flush();
  return static_cast<bool>(out);
}

}  // namespace

const std::vector<std::string>& Settings::defaultLines() {
  static const std::vector<std::string> lines = {
      "ini-file for QUARVEL",
      "! Starting directory",
      "DIR=C:\\Users\\",
      "! Editor",
      "EDT=C:\\WINDOWS\\NOTEPAD.EXE",
      "! Main window origin and extension",
      "ORX=20",
      "ORY=20",
      "EXX=900",
      "EXY=700",
      "! Minimum Cagliotti parameters",
      "MINU=0.",
      "MINV=0.",
      "MINW=0.02",
      "! Your coordinates",
      "OPERATOR=",
      "DEPARTMENT=",
      "COMPANY=",
      "ADDRESS=",
  };
  return lines;
}

void Settings::read(const fs::path& folder, Shell& shell) {
  const fs::path file = folder / kFileName;
  std::error_code ec;
  if (!fs::exists(file, ec)) {
    if (!writeLines(file, defaultLines())) shell.showMessage(msg::kFileError, msg::kErrorOpeningIni);
    return;
  }
  auto lines = readLines(file);
  if (!lines) {
    shell.showMessage(msg::kFileError, msg::kErrorOpeningIni);
    return;
  }
  enum class Block { None, Files, Program } block = Block::None;
  for (const std::string& line : *lines) {
    if (isMarker(line, kFilesBegin)) { block = Block::Files; continue; }
    if (isMarker(line, kFilesEnd)) { block = Block::None; continue; }
    if (isMarker(line, kBlockBegin)) { block = Block::Program; continue; }
    if (isMarker(line, kBlockEnd)) { block = Block::None; continue; }
    if (!line.empty() && line.front() == '!') continue;
    switch (block) {
      case Block::Files:
        if (!trim(line).empty() && values.recentFiles.size() < kMaxRecent)
          values.recentFiles.push_back(trim(line));
        break;
      case Block::Program:
        if (auto eq = line.find('='); eq != std::string::npos)
          values.extra[trim(line.substr(0, eq))] = trim(line.substr(eq + 1));
        break;
      case Block::None:
        readKeyLine(line, values);
        break;
    }
  }
}

bool Settings::rewrite(const fs::path& folder, Shell& shell) const {
  const fs::path file = folder / kFileName;
  const fs::path scratch = folder / kScratchName;
  std::error_code ec;
  std::vector<std::string> lines;
  if (fs::exists(file, ec)) {
    auto existing = readLines(file);
    if (!existing) {
      shell.showMessage(msg::kFileError, msg::kErrorOpeningIni);
      return false;
    }
    lines = std::move(*existing);
  } else {
    lines = defaultLines();
  }

  std::vector<std::string> recentBlock{kFilesBegin};
  recentBlock.insert(recentBlock.end(), values.recentFiles.begin(), values.recentFiles.end());
  recentBlock.emplace_back(kFilesEnd);
  std::vector<std::string> programBlock{kBlockBegin};
  for (const auto& [key, value] : values.extra) programBlock.push_back(key + "=" + value);
  programBlock.emplace_back(kBlockEnd);

  std::vector<std::string> out;
  bool wroteRecent = false, wroteProgram = false, skipping = false;
  std::string skipUntil;
  for (const std::string& line : lines) {
    if (skipping) {
      if (isMarker(line, skipUntil)) skipping = false;
      continue;
    }
    if (isMarker(line, kFilesBegin)) {
      out.insert(out.end(), recentBlock.begin(), recentBlock.end());
      wroteRecent = skipping = true;
      skipUntil = kFilesEnd;
    } else if (isMarker(line, kBlockBegin)) {
      out.insert(out.end(), programBlock.begin(), programBlock.end());
      wroteProgram = skipping = true;
      skipUntil = kBlockEnd;
    } else {
      out.push_back(line);
    }
  }
  // A fresh file carries no blocks; they are added only once there is something to keep.
  if (!wroteProgram && !values.extra.empty()) out.insert(out.end(), programBlock.begin(), programBlock.end());
  if (!wroteRecent && !values.recentFiles.empty()) out.insert(out.end(), recentBlock.begin(), recentBlock.end());

  if (!writeLines(scratch, out)) {
    shell.showMessage(msg::kFileError, msg::kErrorOpeningTempIni);
    return false;
  }
  fs::copy_file(scratch, file, fs::copy_options::overwrite_existing, ec);
  if (ec) {
    shell.showMessage(msg::kFileError, msg::kErrorUpdatingIni);
    return false;
  }
  if (!fs::remove(scratch, ec) || ec) {
    shell.showMessage(msg::kFileError, msg::kErrorDeletingTempIni);
    return false;
  }
  return true;
}

void Settings::addRecentFile(const std::string& path) {
  auto& recent = values.recentFiles;
  recent.erase(std::remove(recent.begin(), recent.end(), path), recent.end());
  recent.insert(recent.begin(), path);
  if (recent.size() > kMaxRecent) recent.resize(kMaxRecent);
}

}  // namespace quarvel
