#include "core/script/script_file.h"

#include <algorithm>

#include "core/common/numbers.h"

namespace quarvel {
namespace {

std::string command(const char* keyword, std::initializer_list<std::string> fields) {
  std::string line = keyword;
  for (const auto& f : fields) line += f;
  return line;
}

std::string real(double v, int decimals) { return formatF(v, 10, decimals); }
std::string integer(long v) { return formatI(v, 10); }

}  // namespace

ScriptDefinition withoutVoidCommands(ScriptDefinition s) {
  if (s.zeroShift && *s.zeroShift == 0.0f) s.zeroShift.reset();
  if (s.truncate && s.truncate->first == 0.0f && s.truncate->second == 0.0f) s.truncate.reset();
  if (s.smooth && *s.smooth < 3) s.smooth.reset();
  if (s.savitzkyGolay && *s.savitzkyGolay < 5) s.savitzkyGolay.reset();
  if (s.savitzkyGolay && *s.savitzkyGolay > 25) s.savitzkyGolay = 25;
  return s;
}

std::vector<std::string> scriptLines(const ScriptDefinition& s) {
  auto rtrim = [](std::string t) {
    while (!t.empty() && t.back() == ' ') t.pop_back();
    return t.substr(0, 260);
  };
  std::vector<std::string> lines{rtrim(s.inputList), rtrim(s.outputList), command("INFM", {integer(s.inputFormat)})};
  if (s.zeroShift) lines.push_back(command("ZERO", {real(*s.zeroShift, 4)}));
  if (s.truncate) lines.push_back(command("TRUN", {real(s.truncate->first, 4), real(s.truncate->second, 4)}));
  if (s.scale) lines.push_back(command("SCAL", {real(*s.scale, 5)}));
  if (s.smooth) lines.push_back(command("SMOO", {integer(*s.smooth)}));
  if (s.savitzkyGolay) lines.push_back(command("SAGO", {integer(*s.savitzkyGolay)}));
  if (s.background) lines.push_back(command("BKGR", {integer(*s.background)}));
  if (s.convert) {
    const ConvertSettings& c = *s.convert;
    lines.push_back(command("CONV", {real(c.oldWavelength, 5), real(c.newWavelength, 5), real(c.start, 5),
                                     real(c.stop, 5), real(c.step, 5)}));
  }
  lines.push_back(command("UTFM", {integer(s.outputFormat)}));
  return lines;
}

std::size_t parameterCount(ScriptKeyword k) {
  switch (k) {
    case ScriptKeyword::Trun: return 2;
    case ScriptKeyword::Conv: return 5;
    case ScriptKeyword::Unknown: return 0;
    default: return 1;
  }
}

ScriptCommand parseScriptCommand(std::string_view line) {
  static constexpr std::pair<const char*, ScriptKeyword> kKeywords[] = {
      {"INFM", ScriptKeyword::Infm}, {"ZERO", ScriptKeyword::Zero}, {"TRUN", ScriptKeyword::Trun},
      {"SCAL", ScriptKeyword::Scal}, {"SMOO", ScriptKeyword::Smoo}, {"SAGO", ScriptKeyword::Sago},
      {"BKGR", ScriptKeyword::Bkgr}, {"CONV", ScriptKeyword::Conv}, {"UTFM", ScriptKeyword::Utfm}};
  ScriptCommand c;
  c.name = std::string(line.substr(0, 4));
  for (auto [name, keyword] : kKeywords)
    if (c.name == name) c.keyword = keyword;
  c.values = readFreeNumbers(line.size() > 4 ? line.substr(4) : std::string_view{});
  c.readable = c.values.size() >= parameterCount(c.keyword);
  return c;
}

}  // namespace quarvel
