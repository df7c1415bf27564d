// "Excluded region(s)": a list of up to 25 2θ ranges edited with "Change", "Add", "Insert" and
// "Delete". On OK the list is remembered and the points inside the ranges are set to zero.
#include <fmt/format.h>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/list_editor.h"
#include "core/app/session.h"
#include "core/common/numbers.h"
#include "core/process/modify_commands.h"
#include "core/process/modify_operations.h"
#include "core/process/process_messages.h"

namespace quarvel {
namespace {

constexpr const char* kRegionsKey = "regions";

DialogControl regionList(const std::vector<ExcludedRegion>& regions) {
  DialogControl list;
  list.kind = ControlKind::ListEditor;
  list.key = kRegionsKey;
  list.label = std::string(1, '-');  // the two edits of a row are joined by a dash
  list.columns = {"Low", "High"};
  list.editableColumns = {true, true};
  list.options = {"Change", "Add", "Insert", "Delete"};
  list.maxRows = kMaxExcludedRegions;
  list.overflowTitle = msg::kExcludedRegionsTitle;
  list.overflowText = msg::kTooManyExcludedRegions;
  list.selected = -1;
  for (const ExcludedRegion& r : regions) list.rows.push_back({formatEditNumber(r.low), formatEditNumber(r.high)});
  return list;
}

// Rows whose two fields are not both numbers are dropped.
std::vector<ExcludedRegion> regionsOf(const DialogControl& list) {
  std::vector<ExcludedRegion> regions;
  for (const auto& row : list.rows) {
    if (row.size() < 2) continue;
    const auto low = parseNumber(row[0]);
    const auto high = parseNumber(row[1]);
    if (!low || !high) continue;
    regions.push_back({static_cast<float>(*low), static_cast<float>(*high)});
    if (regions.size() == kMaxExcludedRegions) break;
  }
  return regions;
}

bool askRegions(Session& s) {
  DialogModel d(msg::kExcludedRegionsDialogTitle, 245, 124);
  d.add(regionList(s.process.excludedRegions));
  d.okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  s.process.excludedRegions = regionsOf(d.at(kRegionsKey));
  return true;
}

}  // namespace

void registerExcludedRegionsCommand(CommandDispatcher& d) {
  d.on(cmd::kExcludedRegions, [](Session& s) {
    Operation op = modify::excludedRegions();
    op.askUser = askRegions;
    runOperation(s, op);
  });
}

}  // namespace quarvel
