// Reader of powder CIF files. The file is cut into data blocks with their single items and
// loops; the first block holding a measured-intensity column is the pattern. Its 2θ grid
// comes from the range items, or from a 2θ column of the same loop; the wavelength from the
// same block or, as multi-block files do, from any other block.
#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "core/pattern/readers/text_scanning.h"

namespace quarvel {
namespace {

constexpr ReaderTexts kCifTexts{"Error opening cif", "Error reading cif", "Nothing read from cif"};

struct CifLoop {
  std::vector<std::string> tags;
  std::vector<std::string> values;  // row by row
  std::size_t rows() const { return tags.empty() ? 0 : values.size() / tags.size(); }
  std::optional<std::size_t> column(std::string_view tag) const {
    for (std::size_t i = 0; i < tags.size(); ++i)
      if (tags[i] == tag) return i;
    return std::nullopt;
  }
};

struct CifBlock {
  std::vector<std::pair<std::string, std::string>> items;
  std::vector<CifLoop> loops;
  std::optional<std::string> item(std::string_view tag) const {
    for (const auto& [t, v] : items)
      if (t == tag) return v;
    return std::nullopt;
  }
  const CifLoop* loopWith(std::string_view tag) const {
    for (const auto& l : loops)
      if (l.column(tag)) return &l;
    return nullptr;
  }
};

// Whitespace-separated values; quoted values keep their blanks.
std::vector<std::string> tokens(std::string_view line) {
  std::vector<std::string> out;
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
    if (i >= line.size() || line[i] == '#') break;
    if (line[i] == '\'' || line[i] == '"') {
      const char q = line[i];
      std::size_t j = i + 1;
      while (j < line.size() && !(line[j] == q && (j + 1 == line.size() || line[j + 1] == ' ' || line[j + 1] == '\t'))) ++j;
      out.emplace_back(line.substr(i + 1, j - i - 1));
      i = j + 1;
      continue;
    }
    std::size_t j = i;
    while (j < line.size() && line[j] != ' ' && line[j] != '\t') ++j;
    out.emplace_back(line.substr(i, j - i));
    i = j;
  }
  return out;
}

// A loop's data end at an empty line or a line beginning with "_" or "#" (and, in real files,
// at the next "loop_" or data block).
bool endsData(const std::string& t) {
  return t.empty() || t[0] == '_' || t[0] == '#' || startsWith(toLower(t), "loop_") || startsWith(toLower(t), "data_");
}

std::vector<CifBlock> parseBlocks(const std::vector<std::string>& lines) {
  std::vector<CifBlock> blocks(1);
  std::size_t i = 0;
  auto skipTextField = [&](std::size_t& k) {  // k at the opening ";" line; leaves k after the closing one
    std::string text = lines[k].substr(1);
    for (++k; k < lines.size() && (lines[k].empty() || lines[k][0] != ';'); ++k) text += "\n" + lines[k];
    if (k < lines.size()) ++k;
    return text;
  };
  while (i < lines.size()) {
    const std::string t = trim(lines[i]);
    const std::string lower = toLower(t);
    if (t.empty() || t[0] == '#') { ++i; continue; }
    if (startsWith(lower, "data_")) { blocks.emplace_back(); ++i; continue; }
    if (!lines[i].empty() && lines[i][0] == ';') { skipTextField(i); continue; }
    if (startsWith(lower, "loop_")) {
      CifLoop loop;
      // Tags may follow "loop_" on its own line.
      for (const auto& tag : tokens(t.substr(5)))
        if (!tag.empty() && tag[0] == '_') loop.tags.push_back(toLower(tag));
      for (++i; i < lines.size(); ++i) {
        const std::string tag = trim(lines[i]);
        if (tag.empty() || tag[0] != '_') break;
        loop.tags.push_back(toLower(tokens(tag).front()));
      }
      for (; i < lines.size() && !endsData(trim(lines[i])); ++i) {
        if (lines[i][0] == ';') { loop.values.push_back(skipTextField(i)); --i; continue; }
        for (auto& v : tokens(lines[i])) loop.values.push_back(std::move(v));
      }
      if (!loop.tags.empty()) blocks.back().loops.push_back(std::move(loop));
      continue;
    }
    if (t[0] == '_') {
      auto parts = tokens(t);
      const std::string tag = toLower(parts.front());
      ++i;
      if (parts.size() > 1) {
        blocks.back().items.emplace_back(tag, parts[1]);
        continue;
      }
      if (i < lines.size() && !lines[i].empty() && lines[i][0] == ';') {
        blocks.back().items.emplace_back(tag, skipTextField(i));
        continue;
      }
      // A tag alone, followed by values one per line: read as a one-column loop.
      CifLoop column;
      column.tags.push_back(tag);
      for (; i < lines.size() && !endsData(trim(lines[i])); ++i)
        for (auto& v : tokens(lines[i])) column.values.push_back(std::move(v));
      if (column.values.size() == 1) blocks.back().items.emplace_back(tag, column.values.front());
      else blocks.back().loops.push_back(std::move(column));
      continue;
    }
    ++i;
  }
  return blocks;
}

// A CIF number: the standard uncertainty in parentheses is dropped; "." and "?" are missing.
std::optional<double> cifNumber(std::string_view value) {
  if (auto paren = value.find('('); paren != std::string_view::npos) value = value.substr(0, paren);
  return parseNumber(value);
}

constexpr std::string_view kIntensityTags[] = {"_pd_meas_intensity_total", "_pd_meas_counts_total",
                                               "_pd_proc_intensity_total"};

std::optional<double> blockWavelength(const CifBlock& block) {
  if (auto v = block.item("_diffrn_radiation_wavelength")) return cifNumber(*v);
  if (const CifLoop* loop = block.loopWith("_diffrn_radiation_wavelength"); loop && loop->rows() > 0)
    return cifNumber(loop->values[*loop->column("_diffrn_radiation_wavelength")]);
  return std::nullopt;
}

bool mentions(const CifBlock& block, std::string_view fragment) {
  for (const auto& [t, v] : block.items)
    if (t.find(fragment) != std::string::npos) return true;
  for (const auto& l : block.loops)
    for (const auto& t : l.tags)
      if (t.find(fragment) != std::string::npos) return true;
  return false;
}

}  // namespace

const ReaderTexts& cifReaderTexts() { return kCifTexts; }

ReadOutcome parseCifPowder(std::string_view text) {
  const auto blocks = parseBlocks(splitLines(text));
  const CifBlock* patternBlock = nullptr;
  const CifLoop* loop = nullptr;
  std::size_t intensityColumn = 0;
  int patterns = 0;
  for (const auto& block : blocks) {
    for (auto tag : kIntensityTags) {
      if (const CifLoop* l = block.loopWith(tag)) {
        if (++patterns == 1) {
          patternBlock = &block;
          loop = l;
          intensityColumn = *l->column(tag);
        }
        break;
      }
    }
  }
  if (!patternBlock) {
    for (const auto& block : blocks)
      if (mentions(block, "time_of_flight"))
        return ReadFailure{kFileErrorTitleCaps, "Time-of-flight data in the cif, not a 2theta scan: nothing read"};
    return ReadFailure{kFileErrorTitle, kCifTexts.emptyError};
  }
  ScanData scan;
  if (patterns > 1) scan.remarks.push_back(fmt::format("{} patterns in the file; the first is loaded", patterns));

  std::optional<double> wavelength = blockWavelength(*patternBlock);
  for (std::size_t b = 0; !wavelength && b < blocks.size(); ++b) wavelength = blockWavelength(blocks[b]);
  if (!wavelength || !asFloat(*wavelength)) {
    wavelength = 1.5406;
    scan.remarks.push_back("no wavelength in the file; 1.5406 assumed");
  }
  scan.wavelength = static_cast<float>(*wavelength);
  scan.wavelengths = {scan.wavelength, scan.wavelength, 0.0f};

  const std::size_t rows = std::min<std::size_t>(loop->rows(), kReaderPointLimit);
  std::vector<double> twoTheta;
  const auto scanColumn = loop->column("_pd_meas_2theta_scan");
  for (std::size_t r = 0; r < rows; ++r) {
    const auto v = cifNumber(loop->values[r * loop->tags.size() + intensityColumn]);
    scan.y.push_back(v ? asFloat(*v).value_or(0.0f) : 0.0f);
    if (scanColumn) twoTheta.push_back(cifNumber(loop->values[r * loop->tags.size() + *scanColumn]).value_or(0.0));
  }
  if (scan.y.empty()) return ReadFailure{kFileErrorTitle, kCifTexts.emptyError};

  auto rangeItem = [&](std::string_view what) -> std::optional<double> {
    for (const char* prefix : {"_pd_meas_2theta_range_", "_pd_proc_2theta_range_"})
      if (auto v = patternBlock->item(std::string(prefix) + std::string(what))) return cifNumber(*v);
    return std::nullopt;
  };
  const auto min = rangeItem("min"), max = rangeItem("max"), inc = rangeItem("inc");
  const double n = static_cast<double>(scan.y.size());
  if (min && (inc || max)) {
    scan.start = static_cast<float>(*min);
    scan.step = static_cast<float>(inc ? *inc : (n > 1 ? (*max - *min) / (n - 1) : 0.0));
  } else if (!twoTheta.empty()) {
    scan.start = static_cast<float>(twoTheta.front());
    scan.step = static_cast<float>(n > 1 ? (twoTheta.back() - twoTheta.front()) / (n - 1) : 0.0);
    if (auto remark = unevenStepRemark(twoTheta, twoTheta.front(), scan.step)) scan.remarks.push_back(*remark);
  } else if (mentions(*patternBlock, "time_of_flight")) {
    return ReadFailure{kFileErrorTitleCaps, "Time-of-flight data in the cif, not a 2theta scan: nothing read"};
  } else {
    return ReadFailure{kFileErrorTitleCaps, kCifTexts.readError};
  }
  const int count = keptCount(scan.y, [](float v) { return v != 0.0f; });
  if (count < 1) return ReadFailure{kFileErrorTitle, kCifTexts.emptyError};
  scan.y.resize(static_cast<std::size_t>(count));
  return scan;
}

}  // namespace quarvel
