#include "core/script/script_runner.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>

#include <fmt/format.h>

#include "core/app/session.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/pattern_reading.h"
#include "core/pattern/pattern_writers.h"
#include "core/peaks/background_commands.h"
#include "core/process/modify_operations.h"
#include "core/script/script_file.h"

namespace quarvel {
namespace {

constexpr OpenFormat kInputFormats[] = {OpenFormat::Gdf, OpenFormat::Xy, OpenFormat::Std, OpenFormat::Udf,
                                        OpenFormat::Chi};  // code 5 is read with the chi reader, as always
constexpr SaveFormat kOutputFormats[] = {SaveFormat::Gdf, SaveFormat::Xy, SaveFormat::Xyw, SaveFormat::Std};

std::vector<std::string> nonEmptyLines(const std::vector<std::string>& lines) {
  std::vector<std::string> out;
  for (const auto& l : lines)
    if (!trim(l).empty()) out.push_back(trim(l));
  return out;
}

bool readError(Session& s, const ScriptCommand& c) {
  s.message("Read Error", "Error reading " + c.name + " command");
  return false;
}

// The shell of a worker session: messages and notes go to the desktop's shell one at a time;
// everything that needs a window does nothing.
class WorkerShell : public Shell {
 public:
  WorkerShell(Shell& target, std::mutex& lock) : target_(target), lock_(lock) {}
  void showMessage(std::string_view title, std::string_view text) override {
    std::lock_guard guard(lock_);
    target_.showMessage(title, text);
  }
  bool askYesNo(std::string_view, std::string_view) override { return true; }
  std::optional<std::string> chooseFile(const FileRequest&) override { return std::nullopt; }
  int runDialog(DialogModel&) override { return DialogModel::kOk; }
  void menuChanged(const MenuItem&) override {}
  void repaintPlot(bool) override {}
  void windowCommand(int) override {}
  void appendNotes(std::string_view line) override {
    std::lock_guard guard(lock_);
    target_.appendNotes(line);
  }
  void openTextViewer(const std::string&) override {}
  bool interruptRequested() override { return false; }
  void progress(double, std::string_view) override {}

 private:
  Shell& target_;
  std::mutex& lock_;
};

bool writeAddUp(Session& s, const std::vector<std::optional<AddUpPart>>& parts, const std::string& name) {
  std::vector<double> sum;
  float start = 0.0f, step = 0.0f;
  bool first = true;
  for (const auto& part : parts) {
    if (!part) continue;
    if (part->y.size() > kMaxAddUpPoints) {
      s.message("Pattern Error", "More than 10000 data points");
      return false;
    }
    if (first) {
      start = part->start;
      step = part->step;
      first = false;
    }
    if (sum.size() < part->y.size()) sum.resize(part->y.size(), 0.0);
    for (std::size_t i = 0; i < part->y.size(); ++i) sum[i] += part->y[i];
  }
  if (first) return true;
  std::string text = "    2theta      intensity\n";
  for (std::size_t i = 0; i < sum.size(); ++i)
    text += fmt::format("{:10.4f} {:14.2f}\n", start + static_cast<double>(i) * step, sum[i]);
  if (!writeFileAtomically(s.resolve(name), text)) {
    s.message("File error", "Error opening sum file");
    return false;
  }
  return true;
}

}  // namespace

std::optional<ScriptProgram> loadScript(Session& s, const std::string& scriptFile) {
  const auto script = readLines(s.resolve(scriptFile));
  if (!script) {
    s.message("File error", "Error opening script file");
    return std::nullopt;
  }
  const std::string inputName = script->size() > 0 ? trim((*script)[0]) : "";
  const std::string outputName = script->size() > 1 ? trim((*script)[1]) : "";
  const auto inputs = inputName.empty() ? std::nullopt : readLines(s.resolve(inputName));
  if (!inputs) {
    s.message("File Error", "Error opening input file list file");
    return std::nullopt;
  }
  const auto outputs = outputName.empty() ? std::nullopt : readLines(s.resolve(outputName));
  if (!outputs) {
    s.message("File Error", "Error opening output file list file");
    return std::nullopt;
  }
  ScriptProgram program;
  for (std::size_t i = 2; i < script->size(); ++i)
    if (!trim((*script)[i]).empty()) program.commands.push_back((*script)[i]);
  const auto in = nonEmptyLines(*inputs), out = nonEmptyLines(*outputs);
  for (std::size_t i = 0; i < in.size() && i < out.size(); ++i) program.pairs.emplace_back(in[i], out[i]);
  return program;
}

bool processPair(Session& s, const ScriptProgram& program, const std::string& input, const std::string& output,
                 std::optional<AddUpPart>& addUp) {
  s.flags.scriptRunning = true;
  for (const std::string& line : program.commands) {
    const ScriptCommand c = parseScriptCommand(line);
    const auto& v = c.values;
    switch (c.keyword) {
      case ScriptKeyword::Infm: {
        const long code = c.readable ? nint(v[0]) : 0;
        if (code < 1 || code > 5) return readError(s, c);
        if (!readPatternFile(s, kInputFormats[code - 1], kSlotPattern, input)) return false;
        s.store().selection.currentSlot = kSlotPattern;
        s.rebuildAxisTable();
        break;
      }
      case ScriptKeyword::Zero:
        if (!c.readable) return readError(s, c);
        applyZeroShift(s, static_cast<float>(v[0]), s.process.maintainOriginalSteps);
        break;
      case ScriptKeyword::Trun:
        // Unreadable limits are passed over without a message.
        if (c.readable) applyTruncate(s, static_cast<float>(v[0]), static_cast<float>(v[1]));
        break;
      case ScriptKeyword::Scal:
        if (!c.readable) return readError(s, c);
        applyScale(s, v[0]);
        break;
      case ScriptKeyword::Smoo:
        if (!c.readable) return readError(s, c);
        applySmooth(s, static_cast<int>(nint(v[0])));
        break;
      case ScriptKeyword::Sago:
        if (!c.readable) return readError(s, c);
        applySavitzkyGolay(s, static_cast<int>(nint(v[0])));
        break;
      case ScriptKeyword::Bkgr:
        if (!c.readable) return readError(s, c);
        s.background.autoSmoothingFactor = static_cast<int>(nint(v[0]));
        autoSubtractBackground(s, s.background.autoSmoothingFactor);
        break;
      case ScriptKeyword::Conv: {
        if (!c.readable) return readError(s, c);
        ConvertSettings grid;
        grid.oldWavelength = static_cast<float>(v[0]);
        grid.newWavelength = static_cast<float>(v[1]);
        grid.start = static_cast<float>(v[2]);
        grid.stop = static_cast<float>(v[3]);
        grid.step = static_cast<float>(v[4]);
        grid.used = true;
        applyConvert(s, grid);
        break;
      }
      case ScriptKeyword::Utfm: {
        const long code = c.readable ? nint(v[0]) : 0;
        if (code < 1 || code > 5) return readError(s, c);
        const PatternSlot& slot = s.store().slot(s.store().selection.currentSlot);
        if (code == kAddUpOutput) {
          addUp = AddUpPart{slot.start, slot.step, std::vector<float>(slot.y.begin(), slot.y.begin() + slot.count)};
          break;
        }
        if (auto failure = writePatternFile(s.store(), s.store().selection.currentSlot, kOutputFormats[code - 1],
                                            s.resolve(output))) {
          s.message(failure->title, failure->text);
          return false;
        }
        break;
      }
      case ScriptKeyword::Unknown:
        break;  // lines that are not commands (comments, blank fields) are passed over
    }
  }
  return true;
}

bool runScript(Session& s, const std::string& scriptFile, int jobs) {
  const auto program = loadScript(s, scriptFile);
  if (!program) return false;
  s.flags.scriptRunning = true;
  s.flags.interrupt = false;
  const std::size_t total = program->pairs.size();
  std::vector<std::optional<AddUpPart>> parts(total);
  std::atomic<std::size_t> next{0}, done{0};
  std::atomic<bool> failed{false};
  std::mutex lock;

  auto work = [&](Session& worker) {
    for (std::size_t i = next++; i < total && !failed; i = next++) {
      const auto& [input, output] = program->pairs[i];
      if (!processPair(worker, *program, input, output, parts[i])) failed = true;
      ++done;
    }
  };
  if (jobs <= 1 || total < 2) {
    for (std::size_t i = 0; i < total && !failed; ++i) {
      if (s.interruptRequested()) {
        failed = true;
        break;
      }
      const auto& [input, output] = program->pairs[i];
      if (!processPair(s, *program, input, output, parts[i])) failed = true;
      ++done;
      s.shell().progress(static_cast<double>(i + 1) / static_cast<double>(total),
                         fmt::format("{} of {} files", i + 1, total));
    }
  } else {
    std::vector<std::thread> threads;
    std::vector<std::unique_ptr<WorkerShell>> shells;
    std::vector<std::unique_ptr<Session>> sessions;
    for (int t = 0; t < jobs; ++t) {
      shells.push_back(std::make_unique<WorkerShell>(s.shell(), lock));
      sessions.push_back(std::make_unique<Session>(*shells.back(), s.workingDirectory()));
      Session& w = *sessions.back();
      w.process = s.process;
      w.background = s.background;
      w.store().wavelength = s.store().wavelength;
    }
    for (int t = 0; t < jobs; ++t) threads.emplace_back(work, std::ref(*sessions[static_cast<std::size_t>(t)]));
    // The calling thread reports progress and watches for an interrupt while the workers run.
    while (done < total && !failed) {
      if (s.interruptRequested()) failed = true;
      {
        std::lock_guard guard(lock);
        s.shell().progress(static_cast<double>(done) / static_cast<double>(total), fmt::format("{} of {} files", done.load(), total));
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      if (next >= total + static_cast<std::size_t>(jobs)) break;
    }
    for (auto& t : threads) t.join();
    s.shell().progress(1.0, fmt::format("{} of {} files", done.load(), total));
  }
  bool ok = !failed;
  const bool interrupted = s.flags.interrupt;
  const bool addedUp = std::any_of(parts.begin(), parts.end(), [](const auto& p) { return p.has_value(); });
  if (ok && addedUp) ok = writeAddUp(s, parts, program->pairs.back().second);
  s.flags.scriptRunning = false;
  s.rebuildAxisTable();
  s.refreshView();
  if (ok) s.message("Script", "Script done");
  else if (interrupted) s.message("Script", fmt::format("Script interrupted after {} of {} files", done.load(), total));
  return ok;
}

}  // namespace quarvel
