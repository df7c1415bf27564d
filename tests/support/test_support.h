// Helpers shared by the tests: temporary folders, the shared real-world data, and patterns
// made on the spot.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "core/pattern/pattern_store.h"

namespace quarvel::test {

// The folder of real instrument files (../shared/data or $QUARVEL_SHARED_DATA); empty when
// it is not there, so tests can skip cleanly.
std::filesystem::path sharedDataDir();
// Small files made by the project for its own tests.
std::filesystem::path testDataDir();

// A fresh, empty folder removed when the object goes.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// Fills a slot with n points from start by step, intensity f(2θ).
void fillSlot(PatternSlot& slot, float start, float step, int n, const std::function<float(float)>& f,
              float wavelength = 1.5406f);

// Writes text to a file (test fixtures).
void writeText(const std::filesystem::path& path, const std::string& text);

}  // namespace quarvel::test

#define QUARVEL_REQUIRE_SHARED_DATA()                                            \
  do {                                                                           \
    if (::quarvel::test::sharedDataDir().empty())                                \
      GTEST_SKIP() << "shared data folder not present; real-file test skipped"; \
  } while (0)
