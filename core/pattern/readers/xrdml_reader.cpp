// Reader of PANalytical/Philips xrdml files. The XML is scanned for the few elements needed,
// within the first <scan> only, and the positions of the 2Theta axis are taken from the
// <positions> element whose axis is 2Theta (other axes carry start/end positions too).
#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "core/pattern/readers/text_scanning.h"

namespace quarvel {
namespace {

constexpr ReaderTexts kXrdmlTexts{"Error opening xrdml file", "Error reading xrdml file", "Nothing read from xrdml file"};

struct Element {
  std::string_view attributes;
  std::string_view content;  // up to the closing tag (or the end of the text)
  std::size_t next = 0;      // where to search for the next element of the same name
};

// "<" or "</" followed by a name (built by appending: GCC 12 warns falsely on "<" + string).
std::string tagStart(std::string_view opener, std::string_view name) {
  std::string tag(opener);
  tag.append(name);
  return tag;
}

bool isNameEnd(char c) { return c == ' ' || c == '>' || c == '/' || c == '\t' || c == '\r' || c == '\n'; }

std::optional<Element> findElement(std::string_view text, std::string_view name, std::size_t from = 0) {
  const std::string open = tagStart("<", name);
  for (std::size_t at = text.find(open, from); at != std::string_view::npos; at = text.find(open, at + 1)) {
    const std::size_t nameEnd = at + open.size();
    if (nameEnd >= text.size() || !isNameEnd(text[nameEnd])) continue;
    const std::size_t tagEnd = text.find('>', nameEnd);
    if (tagEnd == std::string_view::npos) return std::nullopt;
    Element e;
    e.attributes = text.substr(nameEnd, tagEnd - nameEnd);
    if (!e.attributes.empty() && e.attributes.back() == '/') {
      e.next = tagEnd + 1;
      return e;
    }
    const std::string close = tagStart("</", name);
    std::size_t closeAt = text.find(close, tagEnd + 1);
    while (closeAt != std::string_view::npos && closeAt + close.size() < text.size() &&
           !isNameEnd(text[closeAt + close.size()]))
      closeAt = text.find(close, closeAt + 1);  // "</scanAxisCenter" does not close "<scan"
    if (closeAt == std::string_view::npos) closeAt = text.size();
    e.content = text.substr(tagEnd + 1, closeAt - tagEnd - 1);
    e.next = closeAt;
    return e;
  }
  return std::nullopt;
}

std::string attribute(std::string_view attributes, std::string_view name) {
  std::string key(name);
  key += '=';
  for (std::size_t at = attributes.find(key); at != std::string_view::npos; at = attributes.find(key, at + 1)) {
    if (at > 0 && !isNameEnd(attributes[at - 1])) continue;
    const std::size_t q = at + key.size();
    if (q >= attributes.size()) return {};
    const char quote = attributes[q];
    const std::size_t end = attributes.find(quote, q + 1);
    if (end == std::string_view::npos) return {};
    return std::string(attributes.substr(q + 1, end - q - 1));
  }
  return {};
}

// The element's text up to the first "<" (nested elements are not expected in leaf values).
std::string_view leafText(const Element& e) { return e.content.substr(0, e.content.find('<')); }

std::optional<double> leafNumber(std::string_view text, std::string_view name) {
  auto e = findElement(text, name);
  if (!e) return std::nullopt;
  auto n = readFreeNumbers(leafText(*e));
  if (n.empty()) return std::nullopt;
  return n.front();
}

}  // namespace

const ReaderTexts& xrdmlReaderTexts() { return kXrdmlTexts; }

ReadOutcome parseXrdml(std::string_view text) {
  ScanData scan;
  scan.diffractometer = "Philips PW 3710";
  if (auto a1 = leafNumber(text, "kAlpha1")) scan.wavelengths.alpha1 = static_cast<float>(*a1);
  if (auto a2 = leafNumber(text, "kAlpha2")) scan.wavelengths.alpha2 = static_cast<float>(*a2);
  if (auto r = leafNumber(text, "ratioKAlpha2KAlpha1")) scan.wavelengths.ratio = static_cast<float>(*r);
  else if (auto r2 = leafNumber(text, "ratioKAlpha2")) scan.wavelengths.ratio = static_cast<float>(*r2);
  scan.wavelength = scan.wavelengths.alpha1;

  // The first scan; the others (pole figures, maps) are counted for the notes.
  std::string_view body = text;
  int scans = 0;
  for (auto e = findElement(text, "scan"); e; e = findElement(text, "scan", e->next)) {
    if (++scans == 1) body = e->content;
  }
  if (scans > 1) scan.remarks.push_back(fmt::format("{} scans in the file; the first is loaded", scans));
  if (auto stamp = findElement(body, "endTimeStamp")) scan.date = trim(leafText(*stamp));

  std::optional<Element> twoTheta;
  for (auto e = findElement(body, "positions"); e; e = findElement(body, "positions", e->next)) {
    if (toLower(attribute(e->attributes, "axis")) == "2theta") {
      twoTheta = e;
      break;
    }
  }
  if (!twoTheta) return ReadFailure{kFileErrorTitleCaps, "No 2Theta positions in the xrdml file: nothing read"};

  std::optional<Element> data = findElement(body, "intensities");
  if (!data) data = findElement(body, "counts");
  if (!data) return ReadFailure{kFileErrorTitle, kXrdmlTexts.emptyError};
  std::vector<double> values = readFreeNumbers(leafText(*data));
  if (values.size() > kReaderPointLimit) values.resize(kReaderPointLimit);
  if (values.empty()) return ReadFailure{kFileErrorTitle, kXrdmlTexts.emptyError};
  if (auto factors = findElement(body, "beamAttenuationFactors")) {
    const auto f = readFreeNumbers(leafText(*factors));
    if (f.size() >= values.size()) {
      for (std::size_t i = 0; i < values.size(); ++i) values[i] *= f[i];
      scan.remarks.push_back("beam attenuation factors applied to the counts");
    }
  }
  const double n = static_cast<double>(values.size());
  const auto first = leafNumber(twoTheta->content, "startPosition");
  const auto last = leafNumber(twoTheta->content, "endPosition");
  if (first && last) {
    scan.start = static_cast<float>(*first);
    scan.step = values.size() > 1 ? static_cast<float>((*last - *first) / (n - 1.0)) : 0.0f;
  } else if (auto list = findElement(twoTheta->content, "listPositions")) {
    const auto positions = readFreeNumbers(leafText(*list));
    if (positions.empty()) return ReadFailure{kFileErrorTitleCaps, "No 2Theta positions in the xrdml file: nothing read"};
    const std::size_t m = std::min(positions.size(), values.size());
    const double step = m > 1 ? (positions[m - 1] - positions[0]) / static_cast<double>(m - 1) : 0.0;
    scan.start = static_cast<float>(positions[0]);
    scan.step = static_cast<float>(step);
    if (auto remark = unevenStepRemark(std::span(positions.data(), m), positions[0], step)) scan.remarks.push_back(*remark);
  } else if (auto common = leafNumber(twoTheta->content, "commonPosition")) {
    return ReadFailure{kFileErrorTitleCaps,
                       fmt::format("2Theta is not scanned in this xrdml file (fixed at {}): nothing read", *common)};
  } else {
    return ReadFailure{kFileErrorTitleCaps, "No 2Theta positions in the xrdml file: nothing read"};
  }
  for (double v : values) scan.y.push_back(asFloat(v).value_or(0.0f));
  const int count = keptCount(scan.y, [](float v) { return v > 0.0f; });
  if (count < 1) return ReadFailure{kFileErrorTitle, kXrdmlTexts.emptyError};
  scan.y.resize(static_cast<std::size_t>(count));
  return scan;
}

}  // namespace quarvel
