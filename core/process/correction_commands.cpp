// Commands of the instrument and sample corrections: "Lp-corrections", "Auto-Divergence" and
// "Absorption correction" > "Flat plate".
#include <algorithm>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/session.h"
#include "core/process/corrections.h"
#include "core/process/modify_commands.h"
#include "core/process/modify_operations.h"
#include "core/process/process_messages.h"

namespace quarvel {
namespace {

bool askLpChoice(Session& s) {
  ProcessSettings& p = s.process;
  DialogModel d(msg::kLpTitle, 150, 150);
  d.radio("choice", "",
          {"*(1+cos2(2th))", "/(1+cos2(2th))", "*sin(th)", "/sin(th)", "*sin(th) * sin(2th)", "/sin(th)/sin(2th)",
           "*cos(2th - 45)", "/cos(2th - 45)"},
          std::clamp(p.lpChoice, 1, kLpChoiceCount) - 1)
      .okCancel();
  if (s.shell().runDialog(d) != DialogModel::kOk) return false;
  p.lpChoice = d.selected("choice") + 1;
  return true;
}

void autoDivergence(Session& s) {
  bool reverse = false;
  if (!s.flags.scriptRunning) {
    Shell& shell = s.shell();
    if (!shell.askYesNo(msg::kAutoDivergenceTitle, msg::kAutoDivergenceQuestion)) {
      if (!shell.askYesNo(msg::kAutoDivergenceTitle, msg::kReverseCorrectionQuestion)) return;
      reverse = true;
    }
  }
  applyAutoDivergence(s, reverse);
}

void flatPlate(Session& s) {
  ProcessSettings& p = s.process;
  if (!s.flags.scriptRunning) {
    DialogModel d(msg::kFlatPlateTitle, 140, 80);
    d.edit("alpha", msg::kInclinationAngle, p.inclination).edit("mut", msg::kMuThickness, p.muThickness).okCancel();
    if (s.shell().runDialog(d) != DialogModel::kOk) return;
    p.inclination = static_cast<float>(d.number("alpha", p.inclination));
    p.muThickness = static_cast<float>(d.number("mut", p.muThickness));
  }
  applyFlatPlate(s, p.inclination, p.muThickness);
}

}  // namespace

void registerCorrectionCommands(CommandDispatcher& d) {
  d.on(cmd::kLpCorrections, [](Session& s) {
    Operation op = modify::lpCorrections();
    op.askUser = askLpChoice;
    runOperation(s, op);
  });
  d.on(cmd::kAutoDivergence, autoDivergence);
  d.on(cmd::kAbsorptionFlatPlate, flatPlate);
}

}  // namespace quarvel
