#include "core/pattern/pattern_writers.h"

#include <cmath>
#include <iterator>

#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/common/text_file.h"

namespace quarvel {
namespace {

struct WriterTexts {
  const char* openError;
  const char* recordError;
};

WriterTexts writerTexts(SaveFormat format) {
  switch (format) {
    case SaveFormat::Gdf: return {"Error opening xy file", "Error writing records to gdf file"};  // gdf shares the xy text
    case SaveFormat::Xy: return {"Error opening xy file", "Error writing records to xy file"};
    case SaveFormat::Std: return {"Error opening std file", "Error writing records to std file"};
    case SaveFormat::Xyw: return {"Error opening xyw file", "Error writing records to xyw file"};
    case SaveFormat::Cif: return {"Error opening cif", "Error writing records to cif"};
  }
  return {"Error opening xy file", "Error writing records to xy file"};
}

// F10.4 and I10 written with fmt where the values fit their fields (nearly always), and with the
// Fortran-style formatter, asterisks included, where they do not.
void appendXy(std::string& out, const PatternSlot& s) {
  for (int i = 0; i < s.count; ++i) {
    const double x = s.x(i);
    const long y = nint(s.y[static_cast<std::size_t>(i)]);
    if (x > -999.0 && x < 9999.0 && y > -999999999L && y < 9999999999L)
      fmt::format_to(std::back_inserter(out), "{:10.4f} {:10d}\n", x, y);
    else
      out += formatF(x, 10, 4) + " " + formatI(y, 10) + "\n";
  }
}

// The weight column is the reciprocal counting variance, 1 / max(I, 1).
void appendXyw(std::string& out, const PatternSlot& s) {
  for (int i = 0; i < s.count; ++i) {
    const double y = s.y[static_cast<std::size_t>(i)];
    out += fmt::format("{:10.4f} {:14.3f} {:14.6e}\n", s.x(i), y, 1.0 / std::max(std::fabs(y), 1.0));
  }
}

void appendStd(std::string& out, const PatternSlot& s) {
  out += formatF(s.start, 10, 4) + formatF(s.step, 10, 5) + formatF(s.end, 10, 4) + "\n";
  for (int i = 0; i < s.count; ++i) {
    out += formatF(s.y[static_cast<std::size_t>(i)], 12, 2);
    if (i % 10 == 9 || i + 1 == s.count) out += "\n";
  }
}

void appendGdf(std::string& out, const PatternStore& store, const PatternSlot& s, const std::string& name) {
  const PatternInfo& info = store.info;
  auto comment = [&](std::size_t line, const std::string& fallback) {
    const std::string& c = info.comments[line - 1];
    return (c.empty() ? fallback : c).substr(0, 80) + "\n";
  };
  out += comment(1, "QUARVEL powder pattern");
  out += comment(2, name);
  const std::string& third = info.comments[2];
  out += (parseInteger(third) ? third : std::string("1")) + "\n";
  for (std::size_t line = 4; line <= 8; ++line) out += comment(line, "");
  out += info.title.substr(0, 80) + "\n";
  out += ">" + info.date + "<\n";
  out += formatF(s.start, 12, 4) + "\n" + formatF(s.end, 12, 4) + "\n" + formatF(s.step, 12, 6) + "\n";
  for (std::size_t line = 14; line <= 16; ++line) out += comment(line, "");
  for (int i = 0; i < s.count; ++i) out += formatF(s.y[static_cast<std::size_t>(i)], 15, 2) + "\n";
}

void appendCif(std::string& out, const PatternStore& store, const PatternSlot& s, const std::string& name) {
  out += "# Powder CIF created by QUARVEL\n";
  out += "data-" + name + "\n";  // a hyphen, as the program has always written it
  out += "_diffrn_radiation_wavelength" + formatF(store.wavelength.alpha1, 10, 5) + "\n";
  out += "# Scan information data\n";
  out += "_pd_meas_2theta_range_min" + formatF(s.start, 10, 5) + "\n";
  out += "_pd_meas_2theta_range_max" + formatF(s.end, 10, 5) + "\n";
  out += "_pd_meas_2theta_range_inc" + formatF(s.step, 10, 5) + "\n";
  out += "# 2-Theta scan data\n";
  out += "loop_\n";
  out += "_pd_meas_intensity_total\n";
  for (int i = 0; i < s.count; ++i) {
    const double y = s.y[static_cast<std::size_t>(i)];
    if (std::fabs(y) < 1.0e12) fmt::format_to(std::back_inserter(out), "{:15.1f}\n", y);
    else out += formatF(y, 15, 1) + "\n";
  }
  out += "#--eof--eof--eof--eof--eof--eof--#\n";
}

std::optional<ReadFailure> writeText(const std::filesystem::path& path, const std::string& text,
                                     const char* openError, const char* recordError) {
  AtomicFile file(path);
  if (!file.open()) return ReadFailure{kFileErrorTitle, openError};
  if (!file.write(text) || !file.commit()) return ReadFailure{kFileErrorTitleCaps, recordError};
  return std::nullopt;
}

}  // namespace

std::string saveExtensionFor(SaveFormat format) {
  static constexpr const char* kExtensions[] = {"gdf", "xy", "dat", "xyw", "cif"};
  return kExtensions[static_cast<int>(format)];
}

std::string saveFilterFor(SaveFormat format) { return "Pattern file (*." + saveExtensionFor(format) + ")"; }

std::string patternFileText(const PatternStore& store, int slot, SaveFormat format, const std::string& name) {
  const PatternSlot& s = store.slot(slot);
  std::string out;
  out.reserve(static_cast<std::size_t>(s.count) * 32 + 1024);
  switch (format) {
    case SaveFormat::Gdf: appendGdf(out, store, s, name); break;
    case SaveFormat::Xy: appendXy(out, s); break;
    case SaveFormat::Std: appendStd(out, s); break;
    case SaveFormat::Xyw: appendXyw(out, s); break;
    case SaveFormat::Cif: appendCif(out, store, s, name); break;
  }
  return out;
}

std::optional<ReadFailure> writePatternFile(const PatternStore& store, int slot, SaveFormat format,
                                            const std::filesystem::path& path) {
  const WriterTexts texts = writerTexts(format);
  return writeText(path, patternFileText(store, slot, format, path.filename().string()), texts.openError,
                   texts.recordError);
}

std::string fittedPatternText(const PatternStore& store) {
  const PatternSlot& observed = store.slot(kSlotPattern);
  const PatternSlot& calculated = store.slot(kSlotCalculated);
  const PatternSlot& background = store.slot(kSlotBackground);
  std::string out = "#   2theta       observed     calculated     difference     background\n";
  const int n = std::min(observed.count, calculated.count);
  for (int i = 0; i < n; ++i) {
    const auto k = static_cast<std::size_t>(i);
    const double yo = observed.y[k], yc = calculated.y[k];
    const double yb = i < background.count ? background.y[k] : 0.0;
    out += fmt::format("{:10.4f} {:14.3f} {:14.3f} {:14.3f} {:14.3f}\n", observed.x(i), yo, yc, yo - yc, yb);
  }
  return out;
}

std::optional<ReadFailure> writeFittedPatternFile(const PatternStore& store, const std::filesystem::path& path) {
  return writeText(path, fittedPatternText(store), "Error writing fitted pattern file",
                   "Error writing records to fitted pattern file");
}

}  // namespace quarvel
