// The ten pattern-file parsers: each turns a file's text into a ScanData or the failure message
// the user sees. They never touch a store; readPatternFile (pattern_reading.h) does that.
#pragma once

#include <string_view>

#include "core/pattern/pattern_files.h"
#include "core/pattern/readers/scan_data.h"

namespace quarvel {

ReadOutcome parseXy(std::string_view text);        // xy (general)
ReadOutcome parseXyVelm(std::string_view text);    // x_y (Velm)
ReadOutcome parseChi(std::string_view text);       // chi (Ostra, Fit2D)
ReadOutcome parseStd(std::string_view text);       // std (general, .dat)
ReadOutcome parseGdf(std::string_view text);       // gdf (Huber)
ReadOutcome parseBrukerTxt(std::string_view text); // txt (Bruker)
ReadOutcome parseUxd(std::string_view text);       // uxd (Bruker)
ReadOutcome parseUdf(std::string_view text);       // udf (Philips)
ReadOutcome parseXrdml(std::string_view text);     // xrdml (Philips / PANalytical)
ReadOutcome parseCifPowder(std::string_view text); // CIF powder

const ReaderTexts& xyReaderTexts();
const ReaderTexts& chiReaderTexts();
const ReaderTexts& stdReaderTexts();
const ReaderTexts& gdfReaderTexts();
const ReaderTexts& brukerReaderTexts();  // txt and uxd
const ReaderTexts& udfReaderTexts();
const ReaderTexts& xrdmlReaderTexts();
const ReaderTexts& cifReaderTexts();

// The parser and the messages of an opening format.
ReadOutcome parsePatternText(OpenFormat format, std::string_view text);
const ReaderTexts& readerTexts(OpenFormat format);

}  // namespace quarvel
