// Dialog titles, captions, questions and messages of the Modify menu, exactly as the program
// has always shown them.
#pragma once

namespace quarvel::msg {

inline constexpr const char* kZeroShiftTitle = "Zero shift";
inline constexpr const char* kZeroShiftEdit = "Add to starting point";
inline constexpr const char* kMaintainSteps = "Maintain original steps";
inline constexpr const char* kTruncateTitle = "Truncate pattern";
inline constexpr const char* kTruncateGroup = "New pattern limits:";
inline constexpr const char* kExcludedRegionsDialogTitle = "Excluded region(s)";
inline constexpr const char* kExcludedRegionsTitle = "Excluded regions";
inline constexpr const char* kTooManyExcludedRegions = "Too many excluded regions";
inline constexpr const char* kAddPolynomialTitle = "Add polynomial function";
inline constexpr const char* kScaleTitle = "Scale";
inline constexpr const char* kScaleEdit = "Scale factor";
inline constexpr const char* kSmoothTitle = "Smooth";
inline constexpr const char* kSmoothEdit = "Smoothing factor";
inline constexpr const char* kSavitzkyGolayTitle = "Savitzky-Golay filtering";
inline constexpr const char* kWindowSizeGroup = "Window size";
inline constexpr const char* kChebyshevTitle = "Chebyshev fit";
inline constexpr const char* kChebyshevEdit = "Chebyshev order (0-14)";
inline constexpr const char* kConvertTitle = "Convert Pattern";
inline constexpr const char* kDegrees = "Degrees";
inline constexpr const char* kLpTitle = "Lp-corrections";
inline constexpr const char* kAutoDivergenceTitle = "Auto-divergence";
inline constexpr const char* kAutoDivergenceQuestion = "Do you want to correct data for auto-divergence slit?";
inline constexpr const char* kReverseCorrectionQuestion = "Do you want to make the reverse correction?";
inline constexpr const char* kFlatPlateTitle = "Flat Plate Data";
inline constexpr const char* kInclinationAngle = "Inclination angle";
inline constexpr const char* kMuThickness = "Mu * thickness";
inline constexpr const char* kEditPatternTitle = "Edit Pattern";

}  // namespace quarvel::msg
