#include "core/index/solution_choice.h"

#include "core/app/shell.h"
#include "core/common/numbers.h"

namespace quarvel {

std::string solutionColumnHeads() {
  return " No.        a        b        c    alpha     beta    gamma     volume      FOM  NIX";
}

std::string solutionLine(std::size_t number, const IndexingSolution& x) {
  return formatI(static_cast<long>(number), 4) + formatF(x.a, 9, 4) + formatF(x.b, 9, 4) + formatF(x.c, 9, 4) +
         formatF(x.alpha, 9, 3) + formatF(x.beta, 9, 3) + formatF(x.gamma, 9, 3) + formatF(x.volume, 11, 2) +
         formatF(x.merit, 9, 1) + formatF(x.nix, 5, 0);
}

std::optional<std::size_t> chooseSolution(Shell& shell, const std::vector<IndexingSolution>& solutions) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < solutions.size(); ++i) lines.push_back(solutionLine(i + 1, solutions[i]));
  DialogModel dialog("Indexing solutions", 400, 180);
  dialog.listBox("solution", solutionColumnHeads(), lines).okCancel();
  dialog.setSelected("solution", -1);
  for (;;) {
    if (shell.runDialog(dialog) == DialogModel::kCancel) return std::nullopt;
    const int selected = dialog.selected("solution");
    if (selected >= 0 && static_cast<std::size_t>(selected) < solutions.size()) return static_cast<std::size_t>(selected);
    shell.showMessage("Select solution", "Select a solution first");
  }
}

}  // namespace quarvel
