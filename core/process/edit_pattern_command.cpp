// "Edit Pattern": the points of the current pattern as a table of 2θ and intensity, in which the
// intensities can be changed. OK keeps the undo copy and takes the new intensities.
#include <fmt/format.h>

#include <memory>
#include <vector>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/messages.h"
#include "core/app/session.h"
#include "core/common/numbers.h"
#include "core/process/modify_commands.h"
#include "core/process/modify_operations.h"
#include "core/process/process_messages.h"

namespace quarvel {
namespace {

constexpr const char* kTableKey = "points";

DialogControl pointTable(const PatternSlot& slot) {
  DialogControl table;
  table.kind = ControlKind::Table;
  table.key = kTableKey;
  table.columns = {"Twotheta", "Intensity"};
  table.editableColumns = {false, true};
  table.rows.reserve(static_cast<std::size_t>(slot.count));
  for (int i = 0; i < slot.count; ++i)
    table.rows.push_back({fmt::format("{:.4f}", slot.x(i)), shortestFloatText(slot.y[static_cast<std::size_t>(i)])});
  return table;
}

// The edited intensities, or nullopt (after telling the user which row is wrong).
std::optional<std::vector<float>> readIntensities(Session& s, const DialogControl& table, int count) {
  std::vector<float> values;
  values.reserve(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < table.rows.size() && values.size() < static_cast<std::size_t>(count); ++i) {
    const std::string text = table.rows[i].size() > 1 ? table.rows[i][1] : std::string();
    const auto v = parseNumber(text);
    if (!v) {
      s.message(msg::kError, fmt::format("Intensity of point {} is not a number: \"{}\"", i + 1, trim(text)));
      return std::nullopt;
    }
    values.push_back(static_cast<float>(*v));
  }
  return values;
}

void editPattern(Session& s) {
  const int slotIndex = s.store().selection.currentSlot;
  const PatternSlot& slot = s.store().slot(slotIndex);
  if (slot.count == 0) return;
  auto edited = std::make_shared<std::vector<float>>();
  Operation op;
  op.askUser = [edited, &slot](Session& session) {
    DialogModel d(msg::kEditPatternTitle, 160, 220);
    d.add(pointTable(slot));
    d.okCancel();
    if (session.shell().runDialog(d) != DialogModel::kOk) return false;
    auto values = readIntensities(session, d.at(kTableKey), slot.count);
    if (!values) return false;
    *edited = std::move(*values);
    return true;
  };
  op.apply = [edited, slotIndex](Session& session) {
    PatternSlot& target = session.store().slot(slotIndex);
    std::copy(edited->begin(), edited->end(), target.y.begin());
  };
  runOperation(s, op);
}

}  // namespace

void registerEditPatternCommand(CommandDispatcher& d) { d.on(cmd::kEditPattern, editPattern); }

}  // namespace quarvel
