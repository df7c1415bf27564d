#include "core/common/text_file.h"

#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

namespace quarvel {

std::optional<std::string> readWholeFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream buffer;
  buffer << in.rdbuf();
  if (in.bad()) return std::nullopt;
  return std::move(buffer).str();
}

std::vector<std::string> splitLines(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' || text[i] == '\r') {
      lines.emplace_back(text.substr(start, i - start));
      if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      start = i + 1;
    }
  }
  if (start < text.size()) lines.emplace_back(text.substr(start));
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
