#include "tests/support/test_support.h"

#include <cstdlib>
#include <fstream>
#include <random>

namespace quarvel::test {

namespace fs = std::filesystem;

fs::path sharedDataDir() {
  std::error_code ec;
  if (const char* env = std::getenv("QUARVEL_SHARED_DATA"); env != nullptr && *env != '\0') {
    return fs::is_directory(env, ec) ? fs::path(env) : fs::path();
  }
  const fs::path fallback(QUARVEL_SHARED_DATA_DEFAULT);
  return fs::is_directory(fallback, ec) ? fs::canonical(fallback, ec) : fs::path();
}

fs::path testDataDir() { return fs::path(QUARVEL_TEST_DATA); }

TempDir::TempDir() {
  std::random_device rd;
  path_ = fs::temp_directory_path() / ("quarvel-test-" + std::to_string(rd()) + std::to_string(rd()));
  fs::create_directories(path_);
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

void fillSlot(PatternSlot& slot, float start, float step, int n, const std::function<float(float)>& f,
              float wavelength) {
  slot.start = start;
  slot.step = step;
  slot.count = n;
  slot.wavelength = wavelength;
  slot.recomputeEnd();
  for (int i = 0; i < n; ++i) slot.y[static_cast<std::size_t>(i)] = f(slot.x(i));
}

void writeText(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

}  // namespace quarvel::test
