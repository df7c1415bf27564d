// libFuzzer harness: one pattern reader on arbitrary bytes. The reader must never crash, hang
// or read outside its buffers, and a successful read must give a usable grid.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/pattern/readers/pattern_parsers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto outcome = quarvel::parsePatternText(static_cast<quarvel::OpenFormat>(QUARVEL_FUZZ_FORMAT), text);
  if (const auto* scan = std::get_if<quarvel::ScanData>(&outcome)) {
    if (scan->y.empty() || scan->y.size() > quarvel::kReaderPointLimit) std::abort();
  }
  return 0;
}
