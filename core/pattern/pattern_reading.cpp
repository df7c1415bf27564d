#include "core/pattern/pattern_reading.h"

#include <algorithm>
#include <filesystem>

#include "core/app/session.h"
#include "core/common/text_file.h"
#include "core/pattern/readers/pattern_parsers.h"

namespace quarvel {

std::string openExtensionFor(OpenFormat format) {
  static constexpr const char* kExtensions[] = {"gdf", "xy", "dat", "udf", "chi", "xrdml", "x_y", "txt", "cif", "uxd"};
  return kExtensions[static_cast<int>(format)];
}

std::string openFilterFor(OpenFormat format) { return "Open pattern file (*." + openExtensionFor(format) + ")"; }

void storeScan(Session& session, int slot, const ScanData& scan, const std::string& path) {
  PatternStore& store = session.store();
  PatternSlot& target = store.slot(slot);
  target.clear();
  const auto count = std::min<std::size_t>(scan.y.size(), kMaxPoints);
  std::copy_n(scan.y.begin(), count, target.y.begin());
  target.count = static_cast<int>(count);
  target.start = scan.start;
  target.step = scan.step;
  target.wavelength = scan.wavelength;
  target.recomputeEnd();
  if (slot != kSlotPattern) return;

  store.copyPatternToAsLoaded();
  PatternInfo& info = store.info;
  info.loadedPath = info.savedPath = path;
  info.title = scan.title;
  info.date = scan.date;
  info.time = scan.time;
  if (!scan.diffractometer.empty()) info.diffractometer = scan.diffractometer;
  info.comments = {};
  for (std::size_t i = 0; i < scan.comments.size() && i < info.comments.size(); ++i) info.comments[i] = scan.comments[i];
  store.wavelength = scan.wavelengths;
}

bool readPatternFile(Session& session, OpenFormat format, int slot, const std::string& path) {
  PatternSlot& target = session.store().slot(slot);
  target.clear();
  const auto text = readWholeFile(session.resolve(path));
  if (!text) {
    session.message(kFileErrorTitle, readerTexts(format).openError);
    return false;
  }
  const ReadOutcome outcome = parsePatternText(format, *text);
  if (const auto* failure = std::get_if<ReadFailure>(&outcome)) {
    session.message(failure->title, failure->text);
    return false;
  }
  const auto& scan = std::get<ScanData>(outcome);
  storeScan(session, slot, scan, path);
  const std::string name = std::filesystem::path(path).filename().string();
  for (const auto& remark : scan.remarks) session.note(name + ": " + remark);
  return true;
}

}  // namespace quarvel
