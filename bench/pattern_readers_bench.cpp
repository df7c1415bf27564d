// Reading a 20000-point xy file and a 20000-point xrdml file into the store, in process, and
// the same files converted by a separate process: `quarvel-cli convert` against xylib's
// `xyconv` when it is installed (scripts/bench-readers.sh installs it). Process runs include
// start-up, which is what a user of either command waits for.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/pattern/pattern_reading.h"

namespace fs = std::filesystem;
using namespace quarvel;

namespace {

constexpr int kPoints = 20000;

double intensity(int i) { return 200.0 + 5000.0 * std::exp(-std::pow((i % 700 - 350) / 12.0, 2)) + (i * 7919 % 37); }

const fs::path& benchFolder() {
  static const fs::path folder = [] {
    fs::path f = fs::temp_directory_path() / "quarvel-reader-bench";
    fs::create_directories(f);
    std::ofstream xy(f / "scan.xy");
    for (int i = 0; i < kPoints; ++i) xy << 5.0 + i * 0.005 << ' ' << intensity(i) << '\n';
    std::ofstream x(f / "scan.xrdml");
    x << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xrdMeasurements xmlns=\"http://www.xrdml.com/XRDMeasurement/1.5\">\n"
         "<xrdMeasurement measurementType=\"Scan\" status=\"Completed\">\n<usedWavelength intended=\"K-Alpha 1\">\n"
         "<kAlpha1 unit=\"Angstrom\">1.5405980</kAlpha1><kAlpha2 unit=\"Angstrom\">1.5444260</kAlpha2>\n"
         "<ratioKAlpha2KAlpha1>0.5000</ratioKAlpha2KAlpha1></usedWavelength>\n"
         "<scan appendNumber=\"0\" mode=\"Continuous\" scanAxis=\"Gonio\" status=\"Completed\">\n<dataPoints>\n"
         "<positions axis=\"2Theta\" unit=\"deg\"><startPosition>5.000</startPosition><endPosition>"
      << 5.0 + (kPoints - 1) * 0.005
      << "</endPosition></positions>\n<commonCountingTime unit=\"seconds\">1.0</commonCountingTime>\n<intensities unit=\"counts\">";
    for (int i = 0; i < kPoints; ++i) x << (i ? " " : "") << std::lround(intensity(i));
    x << "</intensities>\n</dataPoints>\n</scan>\n</xrdMeasurement>\n</xrdMeasurements>\n";
    return f;
  }();
  return folder;
}

void readInProcess(benchmark::State& state, OpenFormat format, const char* name) {
  RecordingShell shell;
  Session session(shell, benchFolder());
  const std::string path = (benchFolder() / name).string();
  for (auto _ : state) {
    if (!readPatternFile(session, format, kSlotPattern, path)) state.SkipWithError("read failed");
    benchmark::DoNotOptimize(session.store().pattern().y.data());
  }
  state.counters["points"] = session.store().pattern().count;
}

void BM_ReadXy(benchmark::State& state) { readInProcess(state, OpenFormat::Xy, "scan.xy"); }
void BM_ReadXrdml(benchmark::State& state) { readInProcess(state, OpenFormat::Xrdml, "scan.xrdml"); }

void runCommand(benchmark::State& state, const std::string& command) {
  for (auto _ : state)
    if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
}

// quarvel-cli sits next to the bench folder in the build tree.
std::string cli() { return (fs::path(QUARVEL_BUILD_DIR) / "cli" / "quarvel-cli").string(); }

void BM_ProcessQuarvelConvertXy(benchmark::State& state) {
  runCommand(state, cli() + " convert " + (benchFolder() / "scan.xy").string() + " " + (benchFolder() / "out1.xy").string());
}
void BM_ProcessQuarvelConvertXrdml(benchmark::State& state) {
  runCommand(state, cli() + " convert " + (benchFolder() / "scan.xrdml").string() + " " + (benchFolder() / "out2.xy").string());
}
void BM_ProcessXyconvXy(benchmark::State& state) {
  if (std::system("command -v xyconv >/dev/null 2>&1") != 0) return state.SkipWithError("xyconv not installed");
  runCommand(state, "xyconv -t text " + (benchFolder() / "scan.xy").string() + " " + (benchFolder() / "out3.txt").string());
}
void BM_ProcessXyconvXrdml(benchmark::State& state) {
  if (std::system("command -v xyconv >/dev/null 2>&1") != 0) return state.SkipWithError("xyconv not installed");
  runCommand(state, "xyconv -t xrdml " + (benchFolder() / "scan.xrdml").string() + " " + (benchFolder() / "out4.txt").string());
}

}  // namespace

BENCHMARK(BM_ReadXy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadXrdml)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessQuarvelConvertXy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessXyconvXy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessQuarvelConvertXrdml)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProcessXyconvXrdml)->Unit(benchmark::kMillisecond);
