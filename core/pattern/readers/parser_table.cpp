#include "core/pattern/readers/pattern_parsers.h"

namespace quarvel {

ReadOutcome parsePatternText(OpenFormat format, std::string_view text) {
  switch (format) {
    case OpenFormat::Gdf: return parseGdf(text);
    case OpenFormat::Xy: return parseXy(text);
    case OpenFormat::Std: return parseStd(text);
    case OpenFormat::Udf: return parseUdf(text);
    case OpenFormat::Chi: return parseChi(text);
    case OpenFormat::Xrdml: return parseXrdml(text);
    case OpenFormat::XYVelm: return parseXyVelm(text);
    case OpenFormat::BrukerTxt: return parseBrukerTxt(text);
    case OpenFormat::Cif: return parseCifPowder(text);
    case OpenFormat::Uxd: return parseUxd(text);
  }
  return ReadFailure{kFileErrorTitle, "Unknown pattern format"};
}

const ReaderTexts& readerTexts(OpenFormat format) {
  switch (format) {
    case OpenFormat::Gdf: return gdfReaderTexts();
    case OpenFormat::Std: return stdReaderTexts();
    case OpenFormat::Udf: return udfReaderTexts();
    case OpenFormat::Chi: return chiReaderTexts();
    case OpenFormat::Xrdml: return xrdmlReaderTexts();
    case OpenFormat::BrukerTxt:
    case OpenFormat::Uxd: return brukerReaderTexts();
    case OpenFormat::Cif: return cifReaderTexts();
    case OpenFormat::Xy:
    case OpenFormat::XYVelm: break;
  }
  return xyReaderTexts();
}

}  // namespace quarvel
