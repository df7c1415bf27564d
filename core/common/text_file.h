// Reading text files the way instruments really write them (LF, CRLF or CR line ends, a UTF-8
// byte-order mark, no final newline), and writing files so that a failed write never destroys
// the user's previous file.
#pragma once

#include <filesystem>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvel {

// Whole file as bytes; nullopt when it cannot be opened.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

// Splits text into lines at LF, CRLF or lone CR; drops a leading UTF-8 BOM.
std::vector<std::string> splitLines(std::string_view text);
// The same as views into `text` (no copies; `text` must outlive them).
std::vector<std::string_view> splitLineViews(std::string_view text);

// Lines of a file; nullopt when it cannot be opened.
std::optional<std::vector<std::string>> readLines(const std::filesystem::path& path);

// Writes `content` to a temporary file in the target's folder and renames it over the target
// only when everything was written. Returns false (target untouched) on any failure.
bool writeFileAtomically(const std::filesystem::path& path, std::string_view content);

// A file written line by line into a temporary file beside the target and renamed over the
// target by commit(). If the writer gives up (or is destroyed before commit), the temporary
// file is removed and the user's previous file is untouched. open() failing corresponds to
// "cannot open", writeLine()/commit() failing to "cannot write".
class AtomicFile {
 public:
  explicit AtomicFile(std::filesystem::path target);
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  ~AtomicFile();

  bool open();
  bool write(std::string_view text);
  bool writeLine(std::string_view line);  // appends '\n'
  bool commit();

 private:
  std::filesystem::path target_;
  std::filesystem::path temp_;
  std::FILE* file_ = nullptr;
  bool failed_ = false;
};

}  // namespace quarvel
