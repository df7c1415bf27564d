// Command ids of the menus and accelerators. The numbers are the program's public vocabulary:
// scripts of other tools, the docs and the command table refer to them, so they never change.
#pragma once

namespace quarvel::cmd {

// File
inline constexpr int kOpenGdf = 643;
inline constexpr int kOpenBrukerTxt = 656;
inline constexpr int kOpenUxd = 1373;
inline constexpr int kOpenUdf = 644;
inline constexpr int kOpenXrdml = 648;
inline constexpr int kOpenXy = 645;
inline constexpr int kOpenStd = 646;
inline constexpr int kOpenChi = 647;
inline constexpr int kOpenXY_Velm = 1370;
inline constexpr int kOpenCif = 1371;
inline constexpr int kSaveGdf = 649;
inline constexpr int kSaveXy = 650;
inline constexpr int kSaveXyw = 651;
inline constexpr int kSaveStd = 652;
inline constexpr int kSaveCif = 1372;
inline constexpr int kSaveFittedPattern = 578;
inline constexpr int kOpenSumFile = 1160;
inline constexpr int kAddToSumFile = 1161;
inline constexpr int kEditSumFile = 1162;
inline constexpr int kCloseSumFile = 1163;
inline constexpr int kCalculatePattern = 588;
inline constexpr int kSaveNotes = 583;
inline constexpr int kSaveNotesAs = 584;
inline constexpr int kPrint = 585;
inline constexpr int kPrintReport = 579;
inline constexpr int kAbout = 586;
inline constexpr int kExit = 587;
inline constexpr int kRecentFile1 = 211;
inline constexpr int kRecentFile2 = 212;
inline constexpr int kRecentFile3 = 213;
inline constexpr int kRecentFile4 = 214;

// Edit notes (handled by the notes window itself)
inline constexpr int kNotesUndo = 600;
inline constexpr int kNotesCut = 610;
inline constexpr int kNotesCopy = 611;
inline constexpr int kNotesPaste = 612;
inline constexpr int kNotesDelete = 613;

// Settings
inline constexpr int kInfo = 1201;
inline constexpr int kWavelength = 623;
inline constexpr int kXGrid = 1355;
inline constexpr int kYGrid = 1356;
inline constexpr int kAxisTwoTheta = 1052;
inline constexpr int kAxisD = 1053;
inline constexpr int kAxisQ = 1054;
inline constexpr int kScaleLinear = 1056;
inline constexpr int kScaleLog = 1057;
inline constexpr int kDebugMode = 1206;
inline constexpr int kW7Mode = 1207;

// Scripts
inline constexpr int kCreateScript = 661;
inline constexpr int kOpenScript = 662;
inline constexpr int kEditScript = 663;
inline constexpr int kRunScript = 664;

// Modify
inline constexpr int kAutoDivergence = 697;
inline constexpr int kAlpha2Stripping = 696;
inline constexpr int kAbsorptionHead = 1350;
inline constexpr int kAbsorptionCylinder = 1351;
inline constexpr int kAbsorptionFlatPlate = 1352;
inline constexpr int kZeroShift = 615;
inline constexpr int kTruncate = 617;
inline constexpr int kExcludedRegions = 692;
inline constexpr int kAddPolynomial = 618;
inline constexpr int kLpCorrections = 1410;
inline constexpr int kScale = 619;
inline constexpr int kSmooth = 620;
inline constexpr int kSavitzkyGolay = 621;
inline constexpr int kChebyshevFit = 695;
inline constexpr int kConvert = 622;
inline constexpr int kEnergyHead = 1380;
inline constexpr int kEnergyToAngle = 1381;
inline constexpr int kAngleToEnergy = 1382;
inline constexpr int kFourierHead = 653;
inline constexpr int kFourierForward = 654;
inline constexpr int kFourierBackward = 655;
inline constexpr int kCalibrate = 698;
inline constexpr int kAddProfileFunction = 1390;
inline constexpr int kEditPattern = 624;
inline constexpr int kUndo = 635;

// Multiple pattern
inline constexpr int kMultiOpenGdf = 926;
inline constexpr int kMultiOpenBrukerTxt = 657;
inline constexpr int kMultiOpenUxd = 1374;
inline constexpr int kMultiOpenUdf = 927;
inline constexpr int kMultiOpenXrdml = 928;
inline constexpr int kMultiOpenXy = 929;
inline constexpr int kMultiOpenChi = 942;
inline constexpr int kMultiOpenStd = 930;
inline constexpr int kMultiOpenXY_Velm = 941;
inline constexpr int kMultiOpenCif = 931;
inline constexpr int kScalingIntervals = 932;
inline constexpr int kDisplacePattern = 939;
inline constexpr int kClosePattern1 = 933;
inline constexpr int kClosePattern2 = 934;
inline constexpr int kClosePattern3 = 935;
inline constexpr int kClosePattern4 = 936;
inline constexpr int kAddPattern = 937;
inline constexpr int kFitPattern = 938;
inline constexpr int kSaveFittedPatterns = 940;

// Background
inline constexpr int kBackgroundFoil = 591;
inline constexpr int kBackgroundTape = 592;
inline constexpr int kBackgroundCapillary = 593;
inline constexpr int kBackgroundUserGdf = 1190;
inline constexpr int kBackgroundUserUdf = 1191;
inline constexpr int kBackgroundUserXrdml = 1192;
inline constexpr int kBackgroundUserXy = 1193;
inline constexpr int kBackgroundUserStd = 1194;
inline constexpr int kBackgroundRefined = 690;
inline constexpr int kScaleBackground = 595;
inline constexpr int kScaleToInterval = 596;
inline constexpr int kSubtractBackground = 691;
inline constexpr int kCrystallinity = 589;
inline constexpr int kSaveBackground = 1196;
inline constexpr int kAutoSubtract = 598;
inline constexpr int kAutoSubtractOptions = 597;

// Peak search
inline constexpr int kPeakSearch = 626;
inline constexpr int kPeakSearchOptions = 629;
inline constexpr int kManualSearch = 627;
inline constexpr int kPrintPeaks = 630;
inline constexpr int kSavePeaks = 631;
inline constexpr int kLoadPeaks = 632;
inline constexpr int kEditPeaks = 633;
inline constexpr int kClearPeaks = 634;

// Peak fit
inline constexpr int kFitSinglePeak = 681;
inline constexpr int kFitSinglePeakOptions = 682;
inline constexpr int kFitAllPeaks = 683;
inline constexpr int kFitAllPeaksOptions = 684;
inline constexpr int kGeneralPeakFit = 710;
inline constexpr int kSavePeakFit = 711;
inline constexpr int kLoadPeakFit = 712;
inline constexpr int kEditPeakFit = 713;
inline constexpr int kPrintPeakFit = 709;
inline constexpr int kClearPeakFit = 714;
inline constexpr int kShowIndividualProfiles = 715;
inline constexpr int kSaveIndividualProfiles = 716;
inline constexpr int kPlotFwhm = 685;
inline constexpr int kPlotPeakShape = 686;
inline constexpr int kPlotParticleSize = 687;
inline constexpr int kWilliamsonHall = 688;

// Index
inline constexpr int kTreor90 = 671;
inline constexpr int kIto = 672;
inline constexpr int kViewOutput = 675;
inline constexpr int kPlotTreorSolutions = 676;
inline constexpr int kPlotItoSolutions = 678;
inline constexpr int kUnitCellRefinement = 677;

// Plot
inline constexpr int kFullPattern = 638;
inline constexpr int kPlotPattern = 639;
inline constexpr int kPlotBackground = 640;
inline constexpr int kPlotDifference = 641;
inline constexpr int kPlotCalculated = 642;
inline constexpr int kPlotPatternBackground = 1195;

// Window
inline constexpr int kTileHorizontal = 701;
inline constexpr int kTileVertical = 700;

// Accelerator only: Ctrl+I asks a long computation to stop at its next cycle.
inline constexpr int kInterrupt = 614;

// Menu heads that carry no command of their own. They get negative ids so that the enabling
// rules can name them without colliding with a command.
inline constexpr int kMenuFile = -1;
inline constexpr int kMenuOpenPattern = -2;
inline constexpr int kMenuSavePattern = -3;
inline constexpr int kMenuEditNotes = -4;
inline constexpr int kMenuSettings = -5;
inline constexpr int kMenuScripts = -6;
inline constexpr int kMenuModify = -7;
inline constexpr int kMenuMultiple = -8;
inline constexpr int kMenuMultipleOpen = -9;
inline constexpr int kMenuClosePattern = -10;
inline constexpr int kMenuBackground = -11;
inline constexpr int kMenuUserBackground = -12;
inline constexpr int kMenuPeakSearch = -13;
inline constexpr int kMenuPeakFit = -14;
inline constexpr int kMenuIndex = -15;
inline constexpr int kMenuPlot = -16;
inline constexpr int kMenuWindow = -17;

}  // namespace quarvel::cmd
