// The settings file quarvel.ini in the working directory: starting directory, editor, window
// geometry, the lower bounds of the Caglioti parameters, the user's coordinates and the list
// of recently opened files. Read once at start; rewritten at start and after every successful
// pattern open, through the scratch file temp.ini.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace quarvel {

class Shell;

struct SettingsValues {
  std::string startDirectory = "C:\\Users\\";
  std::string editor = "c:\\windows\\notepad.exe";
  int originX = 20, originY = 20;
  int width = 900, height = 700;
  float minU = 0.0f, minV = 0.0f, minW = 0.02f;
  std::string operatorName, department, company, address;
  std::vector<std::string> recentFiles;  // most recent first, at most four
  // Further program settings kept in the program's own block of the file (KEY=value lines),
  // e.g. the background files of the Background menu.
  std::map<std::string, std::string> extra;
};

class Settings {
 public:
  static constexpr const char* kFileName = "quarvel.ini";
  static constexpr const char* kScratchName = "temp.ini";
  static constexpr std::size_t kMaxRecent = 4;

  // The nineteen lines written when the file does not exist.
  static const std::vector<std::string>& defaultLines();

  // Reads quarvel.ini from `folder`, creating it with the default lines when it is missing.
  // Failures are reported through `shell` ("File Error") and leave the defaults in force.
  void read(const std::filesystem::path& folder, Shell& shell);

  // Rewrites quarvel.ini through temp.ini with the current recent-file list and program block.
  // Returns false after reporting a failure.
  bool rewrite(const std::filesystem::path& folder, Shell& shell) const;

  // Puts `path` at the head of the recent list (moving it there when already listed).
  void addRecentFile(const std::string& path);

  SettingsValues values;
};

}  // namespace quarvel
