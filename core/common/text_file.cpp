#include "core/common/text_file.h"

#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

namespace quarvel {

std::optional<std::string> readWholeFile(const std::filesystem::path& path) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) return std::nullopt;
  std::FILE* file = std::fopen(path.string().c_str(), "rb");
  if (file == nullptr) return std::nullopt;
  // One read into a buffer of the file's size; a file that grows meanwhile is read on in chunks.
  std::string text;
  const auto size = std::filesystem::file_size(path, ec);
  text.resize(ec ? 0 : static_cast<std::size_t>(size));
  std::size_t got = text.empty() ? 0 : std::fread(text.data(), 1, text.size(), file);
  text.resize(got);
  char chunk[65536];
  for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;) text.append(chunk, n);
  const bool failed = std::ferror(file) != 0;
  std::fclose(file);
  if (failed) return std::nullopt;
  return text;
}

std::vector<std::string> splitLines(std::string_view text) {
  const auto views = splitLineViews(text);
  return {views.begin(), views.end()};
}

std::vector<std::string_view> splitLineViews(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  std::vector<std::string_view> lines;
  lines.reserve(text.size() / 16 + 1);
  // Files with LF (or CRLF) ends are split at LF with a fast search; a CR left at a line's end
  // belongs to CRLF. Only files without any LF are taken as CR-only (old Mac) files.
  const bool crOnly = text.find('\n') == std::string_view::npos;
  const char separator = crOnly ? '\r' : '\n';
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find(separator, start);
    const bool last = end == std::string_view::npos;
    if (last) end = text.size();
    std::string_view line = text.substr(start, end - start);
    if (!crOnly && !line.empty() && line.back() == '\r') line.remove_suffix(1);
    // A lone CR inside an LF file still ends a line.
    for (std::size_t cr = line.find('\r'); cr != std::string_view::npos; cr = line.find('\r')) {
      lines.push_back(line.substr(0, cr));
      line.remove_prefix(cr + 1);
    }
    lines.push_back(line);
    if (last) break;
    start = end + 1;
  }
  return lines;
}

std::optional<std::vector<std::string>> readLines(const std::filesystem::path& path) {
  auto text = readWholeFile(path);
  if (!text) return std::nullopt;
  return splitLines(*text);
}

bool writeFileAtomically(const std::filesystem::path& path, std::string_view content) {
  namespace fs = std::filesystem;
  if (path.empty()) return false;
  std::error_code ec;
  if (fs::is_directory(path, ec)) return false;
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  std::random_device rd;
  const fs::path temp =
      folder / (".~" + path.filename().string() + "." + std::to_string(rd() % 1000000) + ".tmp");
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.flush();
    if (!out) {
      out.close();
      fs::remove(temp, ec);
      return false;
    }
  }
  fs::rename(temp, path, ec);
  if (ec) {
    fs::remove(temp, ec);
    return false;
  }
  return true;
}

AtomicFile::AtomicFile(std::filesystem::path target) : target_(std::move(target)) {}

AtomicFile::~AtomicFile() {
  if (file_ != nullptr) {
    std::fclose(file_);
    std::error_code ec;
    std::filesystem::remove(temp_, ec);
  }
}

bool AtomicFile::open() {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (target_.empty() || fs::is_directory(target_, ec)) return false;
  const fs::path folder = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
  std::random_device rd;
  temp_ = folder / (".~" + target_.filename().string() + "." + std::to_string(rd() % 1000000) + ".tmp");
  file_ = std::fopen(temp_.string().c_str(), "wb");
  return file_ != nullptr;
}

bool AtomicFile::write(std::string_view text) {
  if (file_ == nullptr || failed_) return false;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) failed_ = true;
  return !failed_;
}

bool AtomicFile::writeLine(std::string_view line) { return write(line) && write("\n"); }

bool AtomicFile::commit() {
  if (file_ == nullptr) return false;
  const bool flushed = std::fflush(file_) == 0 && !failed_;
  std::fclose(file_);
  file_ = nullptr;
  std::error_code ec;
  if (flushed) std::filesystem::rename(temp_, target_, ec);
  if (!flushed || ec) {
    std::filesystem::remove(temp_, ec);
    return false;
  }
  return true;
}

}  // namespace quarvel
