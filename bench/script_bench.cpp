// A script over 1000 pattern files of 5000 points (INFM, SMOO, BKGR, UTFM), on one thread and
// on two: files per second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/script/script_runner.h"

namespace fs = std::filesystem;
using namespace quarvel;

namespace {

constexpr int kFiles = 1000;

const fs::path& batchFolder() {
  static const fs::path folder = [] {
    fs::path f = fs::temp_directory_path() / "quarvel-script-bench";
    fs::create_directories(f);
    std::ofstream in(f / "in.lst"), out(f / "out.lst");
    for (int k = 0; k < kFiles; ++k) {
      const std::string name = "p" + std::to_string(k) + ".xy";
      std::ofstream xy(f / name);
      for (int i = 0; i < 5000; ++i) {
        const double x = 5.0 + 0.015 * i;
        xy << x << ' ' << std::lround(300 + 4000 * std::exp(-std::pow((x - 30 - k % 20) / 0.1, 2)) + (i * 7919 + k) % 41)
           << '\n';
      }
      in << name << '\n';
      out << "out" << k << ".xy\n";
    }
    std::ofstream scr(f / "batch.scr");
    scr << "in.lst\nout.lst\nINFM         2\nSMOO         5\nBKGR       201\nUTFM         2\n";
    return f;
  }();
  return folder;
}

void BM_ScriptThousandFiles(benchmark::State& state) {
  RecordingShell shell;
  Session session(shell, batchFolder());
  for (auto _ : state)
    if (!runScript(session, (batchFolder() / "batch.scr").string(), static_cast<int>(state.range(0))))
      state.SkipWithError(shell.lastMessage().text.c_str());
  state.counters["files/s"] = benchmark::Counter(static_cast<double>(kFiles) * static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK(BM_ScriptThousandFiles)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
