// Message titles and texts of the application shell, kept as the program has always shown them
// (typos included: users and their scripts recognise these exact strings).
#pragma once

namespace quarvel::msg {

// Titles shared by every subsystem.
inline constexpr const char* kFileError = "File Error";
inline constexpr const char* kFileErrorLower = "File error";
inline constexpr const char* kReadError = "Read Error";
inline constexpr const char* kError = "Error";
inline constexpr const char* kWarning = "Warning";
inline constexpr const char* kProgramTitle = "QUARVEL";

// Windows.
inline constexpr const char* kFrameTitle = "QUARVEL - Display and handle diffraction patterns";
inline constexpr const char* kGraphicsTitle = "QUARVEL Graphics";
inline constexpr const char* kNotesTitle = "Input/Output";
inline constexpr const char* kNotesJobName = "QUARVEL Notes";
inline constexpr const char* kUntitled = "Untitled";
inline constexpr const char* kStatusTwoTheta = "Twotheta";
inline constexpr const char* kStatusIntensity = "Intensity";
inline constexpr const char* kTooManyWindows = "Maximun window allowed to open is 100 ";
inline constexpr int kMaxChildWindows = 100;
inline constexpr const char* kInitializationError = "Initialization Error";
inline constexpr const char* kGraphicsInitError = "Error initializing graphics window";

// File dialogs.
inline constexpr const char* kInvalidFileSelection = "Invalid file selection";
inline constexpr const char* kErrorSettingDirectory = "Error setting current directory";
inline constexpr const char* kUnrecognizedExtension = "Unrecognized extension";
inline constexpr const char* kAllFilesFilter = "All Files (*.*)";
inline constexpr const char* kProgressTitle = "Progress";
inline constexpr const char* kSaveFileStarting = "Save file starting";
inline constexpr const char* kSaveFileEnded = "Save file ended";

// Notes window.
inline constexpr const char* kNotesFilter = "Text Files (*.txt)";
inline constexpr const char* kCannotCreateFile = "Cannot create file";
inline constexpr const char* kWriteError = "I/O error while writing file";
inline constexpr const char* kSaveChangesTo = "Save changes to";
inline constexpr const char* kNoPrinter = "Cannot obtain Printer DC";
inline constexpr const char* kBitmapFilter = "BitMap Files (*.bmp)";

// Settings file.
inline constexpr const char* kErrorGettingDirectory = "Error getting current directory";
inline constexpr const char* kErrorOpeningIni = "Error opening ini-file";
inline constexpr const char* kErrorOpeningTempIni = "Error opening temporary ini-file";
inline constexpr const char* kErrorUpdatingIni = "Error updating ini-file";
inline constexpr const char* kErrorDeletingTempIni = "Error deleting temporary ini-file";

// Shared by the least-squares users.
inline constexpr const char* kMatrixInversionError = "Matrix inversion error";

}  // namespace quarvel::msg
