#include "core/app/menu_model.h"

#include <algorithm>

#include "core/app/command_ids.h"

namespace quarvel {
namespace {

using namespace cmd;

struct Builder {
  std::vector<MenuItem> items;

  void menu(int id, int parent, std::string text) {
    items.push_back({id, parent, std::move(text), "", MenuItemKind::Menu});
  }
  void command(int id, int parent, std::string text, std::string accel = "") {
    items.push_back({id, parent, std::move(text), std::move(accel), MenuItemKind::Command});
  }
  void checkable(int id, int parent, std::string text) {
    MenuItem item{id, parent, std::move(text), "", MenuItemKind::Command};
    item.checkable = true;
    items.push_back(std::move(item));
  }
  void separator(int parent) { items.push_back({0, parent, "", "", MenuItemKind::Separator}); }
};

void addFileMenu(Builder& b) {
  b.menu(kMenuFile, 0, "&File");
  b.menu(kMenuOpenPattern, kMenuFile, "Open Pattern File");
  b.command(kOpenGdf, kMenuOpenPattern, "gdf-file (Huber)");
  b.command(kOpenBrukerTxt, kMenuOpenPattern, "txt-file (Bruker)");
  b.command(kOpenUxd, kMenuOpenPattern, "uxd-file (Bruker)");
  b.command(kOpenUdf, kMenuOpenPattern, "udf-file (Philips)");
  b.command(kOpenXrdml, kMenuOpenPattern, "xrdml-file (Philips)");
  b.command(kOpenXy, kMenuOpenPattern, "xy-file (general)");
  b.command(kOpenStd, kMenuOpenPattern, "std-file (general)");
  b.command(kOpenChi, kMenuOpenPattern, "chi-file (Ostra)");
  b.command(kOpenXY_Velm, kMenuOpenPattern, "x_y-file (Velm)");
  b.command(kOpenCif, kMenuOpenPattern, "CIF");
  b.menu(kMenuSavePattern, kMenuFile, "Save Pattern File");
  b.command(kSaveGdf, kMenuSavePattern, "gdf-file");
  b.command(kSaveXy, kMenuSavePattern, "xy-file");
  b.command(kSaveXyw, kMenuSavePattern, "xyw-file");
  b.command(kSaveStd, kMenuSavePattern, "std-file");
  b.command(kSaveCif, kMenuSavePattern, "CIF");
  b.command(kSaveFittedPattern, kMenuFile, "Save fitted pattern");
  b.separator(kMenuFile);
  b.command(kOpenSumFile, kMenuFile, "Open sum file");
  b.command(kAddToSumFile, kMenuFile, "Add to sum file");
  b.command(kEditSumFile, kMenuFile, "Edit sum file");
  b.command(kCloseSumFile, kMenuFile, "Close sum file");
  b.separator(kMenuFile);
  b.command(kCalculatePattern, kMenuFile, "Calculate pattern");
  b.separator(kMenuFile);
  b.command(kSaveNotes, kMenuFile, "Save notes");
  b.command(kSaveNotesAs, kMenuFile, "Save notes as");
  b.command(kPrint, kMenuFile, "Print", "Ctrl+P");
  b.command(kPrintReport, kMenuFile, "Print Report");
  b.separator(kMenuFile);
  b.command(kAbout, kMenuFile, "&About QUARVEL");
  b.command(kExit, kMenuFile, "E&xit");
  b.separator(kMenuFile);
}

void addEditNotesMenu(Builder& b) {
  b.menu(kMenuEditNotes, 0, "&Edit notes");
  b.command(kNotesUndo, kMenuEditNotes, "&Undo");
  b.command(kNotesCut, kMenuEditNotes, "Cu&t", "Ctrl+X");
  b.command(kNotesCopy, kMenuEditNotes, "&Copy", "Ctrl+C");
  b.command(kNotesPaste, kMenuEditNotes, "&Paste", "Ctrl+V");
  b.command(kNotesDelete, kMenuEditNotes, "De&lete");
}

void addSettingsMenu(Builder& b) {
  b.menu(kMenuSettings, 0, "&Settings");
  b.command(kInfo, kMenuSettings, "Info");
  b.command(kWavelength, kMenuSettings, "Wavelength");
  b.separator(kMenuSettings);
  b.checkable(kXGrid, kMenuSettings, "x-Grid");
  b.checkable(kYGrid, kMenuSettings, "y-Grid");
  b.separator(kMenuSettings);
  b.checkable(kAxisTwoTheta, kMenuSettings, "Twotheta");
  b.checkable(kAxisD, kMenuSettings, "d-values");
  b.checkable(kAxisQ, kMenuSettings, "Q-values");
  b.separator(kMenuSettings);
  b.checkable(kScaleLinear, kMenuSettings, "Linear");
  b.checkable(kScaleLog, kMenuSettings, "Logarithmic");
  b.separator(kMenuSettings);
  b.checkable(kDebugMode, kMenuSettings, "Debug mode");
  b.checkable(kW7Mode, kMenuSettings, "W7 mode");
}

void addScriptsMenu(Builder& b) {
  b.menu(kMenuScripts, 0, "S&cripts");
  b.command(kCreateScript, kMenuScripts, "Create Script");
  b.command(kOpenScript, kMenuScripts, "Open Script");
  b.command(kEditScript, kMenuScripts, "Edit Script");
  b.command(kRunScript, kMenuScripts, "Run Script");
}

void addModifyMenu(Builder& b) {
  b.menu(kMenuModify, 0, "&Modify");
  b.command(kZeroShift, kMenuModify, "Zero shift");
  b.command(kTruncate, kMenuModify, "Truncate");
  b.command(kExcludedRegions, kMenuModify, "Excluded region(s)");
  b.command(kAddPolynomial, kMenuModify, "Add Polynomial");
  b.command(kAddProfileFunction, kMenuModify, "Add Profile Function");
  b.command(kScale, kMenuModify, "Scale ");
  b.command(kSmooth, kMenuModify, "Smooth");
  b.command(kSavitzkyGolay, kMenuModify, "Savitzky-Golay");
  b.command(kChebyshevFit, kMenuModify, "Chebyshev fit");
  b.command(kConvert, kMenuModify, "Convert");
  b.separator(kMenuModify);
  b.command(kLpCorrections, kMenuModify, "Lp-corrections");
  b.command(kAutoDivergence, kMenuModify, "Auto-Divergence");
  b.menu(kAbsorptionHead, kMenuModify, "Absorption correction");
  b.command(kAbsorptionCylinder, kAbsorptionHead, "Cylinder");
  b.command(kAbsorptionFlatPlate, kAbsorptionHead, "Flat plate");
  b.command(kAlpha2Stripping, kMenuModify, "Alpha2 stripping");
  b.menu(kEnergyHead, kMenuModify, "Enery dispersive");
  b.command(kEnergyToAngle, kEnergyHead, "Energy to Angle");
  b.command(kAngleToEnergy, kEnergyHead, "Angle to energy");
  b.menu(kFourierHead, kMenuModify, "Fourier Transform");
  b.command(kFourierForward, kFourierHead, "Forward");
  b.command(kFourierBackward, kFourierHead, "Backward");
  b.command(kCalibrate, kMenuModify, "Calibrate");
  b.separator(kMenuModify);
  b.command(kEditPattern, kMenuModify, "Edit Pattern");
  b.command(kUndo, kMenuModify, "Undo\tCtrl+Z", "Ctrl+Z");
}

void addMultipleMenu(Builder& b) {
  b.menu(kMenuMultiple, 0, "&Multiple pattern");
  b.menu(kMenuMultipleOpen, kMenuMultiple, "Open Pattern File");
  b.command(kMultiOpenGdf, kMenuMultipleOpen, "gdf-file (Huber)");
  b.command(kMultiOpenBrukerTxt, kMenuMultipleOpen, "txt-file (Bruker)");
  b.command(kMultiOpenUxd, kMenuMultipleOpen, "uxd-file (Bruker)");
  b.command(kMultiOpenUdf, kMenuMultipleOpen, "udf-file (Philips)");
  b.command(kMultiOpenXrdml, kMenuMultipleOpen, "xrdml-file (Philips)");
  b.command(kMultiOpenXy, kMenuMultipleOpen, "xy-file (general)");
  b.command(kMultiOpenStd, kMenuMultipleOpen, "std-file (general)");
  b.command(kMultiOpenChi, kMenuMultipleOpen, "chi-file (Ostra)");
  b.command(kMultiOpenXY_Velm, kMenuMultipleOpen, "x_y-file (Velm)");
  b.command(kMultiOpenCif, kMenuMultipleOpen, "CIF");
  b.command(kScalingIntervals, kMenuMultiple, "Scaling Intervals");
  b.command(kDisplacePattern, kMenuMultiple, "Displace Pattern");
  b.menu(kMenuClosePattern, kMenuMultiple, "Close Pattern");
  b.command(kClosePattern1, kMenuClosePattern, "Pattern 1");
  b.command(kClosePattern2, kMenuClosePattern, "Pattern 2");
  b.command(kClosePattern3, kMenuClosePattern, "Pattern 3");
  b.command(kClosePattern4, kMenuClosePattern, "Pattern 4");
  b.command(kAddPattern, kMenuMultiple, "Add Pattern");
  b.command(kFitPattern, kMenuMultiple, "Fit Pattern");
  b.command(kSaveFittedPatterns, kMenuMultiple, "Save Fitted Patterns");
}

void addBackgroundMenu(Builder& b) {
  b.menu(kMenuBackground, 0, "Background");
  b.command(kBackgroundFoil, kMenuBackground, "Foil");
  b.command(kBackgroundTape, kMenuBackground, "Tape");
  b.command(kBackgroundCapillary, kMenuBackground, "Capillary");
  b.menu(kMenuUserBackground, kMenuBackground, "User Defined");
  b.command(kBackgroundUserGdf, kMenuUserBackground, "gdf-file (Huber)");
  b.command(kBackgroundUserUdf, kMenuUserBackground, "udf-file (Philips)");
  b.command(kBackgroundUserXrdml, kMenuUserBackground, "xrdml-file (Philips)");
  b.command(kBackgroundUserXy, kMenuUserBackground, "xy-file (general)");
  b.command(kBackgroundUserStd, kMenuUserBackground, "std-file (general)");
  b.command(kBackgroundRefined, kMenuBackground, "Refined");
  b.separator(kMenuBackground);
  b.command(kScaleBackground, kMenuBackground, "Scale Background");
  b.command(kScaleToInterval, kMenuBackground, "Scale To Interval");
  b.command(kSubtractBackground, kMenuBackground, "Subtract");
  b.command(kCrystallinity, kMenuBackground, "Crystallinity");
  b.command(kSaveBackground, kMenuBackground, "Save Background");
  b.separator(kMenuBackground);
  b.command(kAutoSubtract, kMenuBackground, "Auto subtract");
  b.command(kAutoSubtractOptions, kMenuBackground, "Options");
}

void addPeakSearchMenu(Builder& b) {
  b.menu(kMenuPeakSearch, 0, "Peak search");
  b.command(kPeakSearch, kMenuPeakSearch, "Peak Search");
  b.command(kPeakSearchOptions, kMenuPeakSearch, "Options", "F5");
  b.command(kManualSearch, kMenuPeakSearch, "Manual Search");
  b.separator(kMenuPeakSearch);
  b.command(kPrintPeaks, kMenuPeakSearch, "Print Peaks");
  b.command(kSavePeaks, kMenuPeakSearch, "Save Peaks");
  b.command(kLoadPeaks, kMenuPeakSearch, "Load Peaks");
  b.command(kEditPeaks, kMenuPeakSearch, "Edit Peaks");
  b.command(kClearPeaks, kMenuPeakSearch, "Clear Peaks");
}

void addPeakFitMenu(Builder& b) {
  b.menu(kMenuPeakFit, 0, "Peak fit");
  b.command(kFitSinglePeak, kMenuPeakFit, "Fit Single Peak");
  b.command(kFitSinglePeakOptions, kMenuPeakFit, "Options");
  b.command(kFitAllPeaks, kMenuPeakFit, "Fit All Peaks");
  b.command(kFitAllPeaksOptions, kMenuPeakFit, "Options");
  b.separator(kMenuPeakFit);
  b.command(kGeneralPeakFit, kMenuPeakFit, "General peak fit");
  b.command(kSavePeakFit, kMenuPeakFit, "Save peak fit");
  b.command(kLoadPeakFit, kMenuPeakFit, "Load peak fit");
  b.command(kEditPeakFit, kMenuPeakFit, "Edit peak fit");
  b.command(kPrintPeakFit, kMenuPeakFit, "Print peak fit");
  b.command(kClearPeakFit, kMenuPeakFit, "Clear peak fit");
  b.separator(kMenuPeakFit);
  b.command(kShowIndividualProfiles, kMenuPeakFit, "Show Individual Profiles");
  b.command(kSaveIndividualProfiles, kMenuPeakFit, "Save Individual Profiles");
  b.separator(kMenuPeakFit);
  b.command(kPlotFwhm, kMenuPeakFit, "Plot FWHM", "F9");
  b.command(kPlotPeakShape, kMenuPeakFit, "Plot Peak Shape", "F10");
  b.command(kPlotParticleSize, kMenuPeakFit, "Plot Particle Size", "F11");
  b.command(kWilliamsonHall, kMenuPeakFit, "Williamson-Hall", "F12");
}

void addIndexMenu(Builder& b) {
  b.menu(kMenuIndex, 0, "Index");
  b.command(kTreor90, kMenuIndex, "TREOR90");
  b.command(kIto, kMenuIndex, "ITO");
  b.command(kViewOutput, kMenuIndex, "View Output");
  b.separator(kMenuIndex);
  b.command(kPlotTreorSolutions, kMenuIndex, "Plot TREOR solutions");
  b.command(kPlotItoSolutions, kMenuIndex, "Plot ITO solutions");
  b.separator(kMenuIndex);
  b.command(kUnitCellRefinement, kMenuIndex, "Unit Cell Refinement");
}

void addPlotMenu(Builder& b) {
  b.menu(kMenuPlot, 0, "&Plot");
  b.command(kFullPattern, kMenuPlot, "Full Pattern", "F1");
  b.separator(kMenuPlot);
  b.checkable(kPlotPattern, kMenuPlot, "Pattern");
  b.checkable(kPlotBackground, kMenuPlot, "Background");
  b.checkable(kPlotDifference, kMenuPlot, "Difference");
  b.checkable(kPlotCalculated, kMenuPlot, "Calculated pattern");
  b.checkable(kPlotPatternBackground, kMenuPlot, "Pattern+Background");
  b.items.back().accelerator = "F2";
}

void addWindowMenu(Builder& b) {
  b.menu(kMenuWindow, 0, "&Window");
  b.command(kTileHorizontal, kMenuWindow, "Tile horizontal", "F3");
  b.command(kTileVertical, kMenuWindow, "Tile vertical", "F4");
}

// Items greyed when the program starts; the operations that make them meaningful enable them.
constexpr int kGreyedAtStart[] = {
    kMenuModify,      kMenuMultiple,     kMenuBackground,     kMenuPeakSearch,  kMenuPeakFit,
    kMenuIndex,       kMenuPlot,         kAddToSumFile,       kEditSumFile,     kCloseSumFile,
    kSaveNotes,       kSaveNotesAs,      kMenuEditNotes,      kScalingIntervals, kDisplacePattern,
    kClosePattern2,   kClosePattern3,    kClosePattern4,      kAddPattern,      kFitPattern,
    kSaveFittedPatterns, kScaleBackground, kScaleToInterval,  kSubtractBackground,
    kCrystallinity,   kSaveBackground,   kPlotBackground,     kMenuClosePattern,
};

}  // namespace

MenuModel MenuModel::mainMenu() {
  Builder b;
  addFileMenu(b);
  addEditNotesMenu(b);
  addSettingsMenu(b);
  addScriptsMenu(b);
  addModifyMenu(b);
  addMultipleMenu(b);
  addBackgroundMenu(b);
  addPeakSearchMenu(b);
  addPeakFitMenu(b);
  addIndexMenu(b);
  addPlotMenu(b);
  addWindowMenu(b);

  MenuModel model;
  model.items_ = std::move(b.items);
  for (int id : kGreyedAtStart) model.findMutable(id)->enabled = false;
  model.findMutable(kAxisTwoTheta)->checked = true;
  model.findMutable(kScaleLinear)->checked = true;
  model.findMutable(kPlotPattern)->checked = true;

  model.accelerators_ = {
      {"Ctrl+Z", kUndo},         {"Ctrl+X", kNotesCut},      {"Ctrl+C", kNotesCopy},
      {"Ctrl+V", kNotesPaste},   {"Ctrl+P", kPrint},         {"Ctrl+I", kInterrupt},
      {"F1", kFullPattern},      {"F2", kPlotPatternBackground}, {"F3", kTileHorizontal},
      {"F4", kTileVertical},     {"F5", kPeakSearchOptions}, {"F9", kPlotFwhm},
      {"F10", kPlotPeakShape},   {"F11", kPlotParticleSize}, {"F12", kWilliamsonHall},
  };
  return model;
}

const MenuItem* MenuModel::find(int id) const {
  if (id == 0) return nullptr;
  auto it = std::find_if(items_.begin(), items_.end(), [id](const MenuItem& m) { return m.id == id; });
  return it == items_.end() ? nullptr : &*it;
}

MenuItem* MenuModel::findMutable(int id) { return const_cast<MenuItem*>(find(id)); }

bool MenuModel::isEnabled(int id) const {
  const MenuItem* item = find(id);
  return item != nullptr && item->enabled;
}

bool MenuModel::isChecked(int id) const {
  const MenuItem* item = find(id);
  return item != nullptr && item->checked;
}

void MenuModel::setEnabled(int id, bool enabled) {
  MenuItem* item = findMutable(id);
  if (item == nullptr || item->enabled == enabled) return;
  item->enabled = enabled;
  notify(*item);
}

void MenuModel::setChecked(int id, bool checked) {
  MenuItem* item = findMutable(id);
  if (item == nullptr || item->checked == checked) return;
  item->checked = checked;
  notify(*item);
}

void MenuModel::checkOneOf(std::initializer_list<int> group, int id) {
  for (int member : group) setChecked(member, member == id);
}

void MenuModel::setRecentFiles(const std::vector<std::string>& paths) {
  for (std::size_t i = 0; i < paths.size() && i < 4; ++i) {
    const int id = cmd::kRecentFile1 + static_cast<int>(i);
    MenuItem* item = findMutable(id);
    if (item == nullptr) {
      items_.push_back({id, cmd::kMenuFile, paths[i], "", MenuItemKind::Command});
      item = &items_.back();
    } else {
      item->text = paths[i];
    }
    notify(*item);
  }
}

std::string MenuModel::path(int id) const {
  std::string result;
  for (const MenuItem* item = find(id); item != nullptr; item = find(item->parent)) {
    result = result.empty() ? item->text : item->text + " > " + result;
  }
  return result;
}

void MenuModel::notify(const MenuItem& item) const {
  if (listener_) listener_(item);
}

std::string plainMenuText(std::string_view text) {
  std::string out;
  for (char c : text.substr(0, text.find('\t'))) {
    if (c != '&') out.push_back(c);
  }
  return out;
}

}  // namespace quarvel
