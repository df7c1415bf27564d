// The rules every reader shares (limits, trailing points, messages and titles) and the format
// details of the readers that have no public sample files: those are checked on files written
// for these tests from the format descriptions (tests/data/patterns).
#include <gtest/gtest.h>

#include <string>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/pattern/pattern_reading.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

ScanData scanOf(const ReadOutcome& o) {
  if (const auto* f = std::get_if<ReadFailure>(&o)) ADD_FAILURE() << f->title << ": " << f->text;
  return std::holds_alternative<ScanData>(o) ? std::get<ScanData>(o) : ScanData{};
}

ReadFailure failureOf(const ReadOutcome& o) {
  if (const auto* f = std::get_if<ReadFailure>(&o)) return *f;
  ADD_FAILURE() << "read succeeded";
  return {};
}

TEST(ReaderRules, TrailingZerosAreDroppedAndTheStepComesFromTheLastKeptPoint) {
  const ScanData s = scanOf(parseXy("; comment\n10.0 5\n10.5 6\n11.0 7\n11.5 0\n12.0 0\n"));
  ASSERT_EQ(s.y.size(), 3u);
  EXPECT_FLOAT_EQ(s.start, 10.0f);
  EXPECT_FLOAT_EQ(s.step, 0.5f);
  // x_y keeps only positive trailing points; xy keeps a trailing negative one.
  EXPECT_EQ(scanOf(parseXyVelm("1 1\n2 2\n3 -1\n")).y.size(), 2u);
  EXPECT_EQ(scanOf(parseXy("1 1\n2 2\n3 -1\n")).y.size(), 3u);
}

TEST(ReaderRules, ReadersStopAtTheirPointLimits) {
  std::string xy;
  for (int i = 0; i < 25000; ++i) xy += std::to_string(5 + i * 0.001) + " 100\n";
  EXPECT_EQ(scanOf(parseXy(xy)).y.size(), static_cast<std::size_t>(kReaderPointLimit));
  std::string udf = "DataAngleRange,5.0,30.0,/\nScanStepSize,0.001,/\nRawScan\n";
  for (int i = 0; i < 25001; ++i) udf += "100,";
  EXPECT_EQ(scanOf(parseUdf(udf)).y.size(), static_cast<std::size_t>(kUdfPointLimit));
}

TEST(ReaderRules, EmptyAndUnreadableFilesGetTheirReadersMessages) {
  EXPECT_EQ(failureOf(parseXy("; only\n_ comments\n")).text, "Nothing read from xy file");
  EXPECT_EQ(failureOf(parseXy("1 0\n2 0\n")).text, "Nothing read from xy file");
  EXPECT_EQ(failureOf(parseChi("title\n2-Theta\n")).text, "Error reading chi file");
  EXPECT_EQ(failureOf(parseStd("start step\n1 2 3\n")).title, "File Error");
  EXPECT_EQ(failureOf(parseStd("10 0.02\nBANK 1\n")).text, "Nothing read from std file");
  EXPECT_EQ(failureOf(parseBrukerTxt("Start=1\n")).text, "Error reading txt file");
  EXPECT_EQ(failureOf(parseCifPowder("data_x\n_cell_length_a 5\n")).text, "Nothing read from cif");

  std::string gdf;
  for (int line = 1; line <= 16; ++line) gdf += line == 3 ? "1\n" : line == 12 ? "end?\n" : "10\n";
  const ReadFailure f = failureOf(parseGdf(gdf + "5\n"));
  EXPECT_EQ(f.title, "File Error");
  EXPECT_EQ(f.text, "Error reading gdf file3");
}

TEST(ReaderRules, StdReadsTenValuesPerLineAfterStartAndStep) {
  const ScanData s = scanOf(parseStd("8.01 0.01 8.13 title\n1 2 3 4 5 6 7 8 9 10\n11 12 0\n"));
  EXPECT_EQ(s.y.size(), 12u);  // the trailing 0 fails the > 0 test
  EXPECT_FLOAT_EQ(s.y[11], 12.0f);
  EXPECT_FLOAT_EQ(s.step, 0.01f);
}

TEST(ReaderRules, CifReadsTheIntensityColumnWithUncertaintiesAndMissingValues) {
  const ScanData s = scanOf(parseCifPowder(
      "data_overall\n_diffrn_radiation_wavelength 0.8257\ndata_p\n_pd_meas_2theta_range_min 5.0\n"
      "_pd_meas_2theta_range_inc 0.01\nloop_\n_pd_proc_ls_weight\n_pd_meas_intensity_total\n"
      "0.1 119(17)\n0.2 .\n0.3 815(37)\n#--eof\n"));
  ASSERT_EQ(s.y.size(), 3u);
  EXPECT_FLOAT_EQ(s.y[0], 119.0f);
  EXPECT_FLOAT_EQ(s.y[1], 0.0f);
  EXPECT_NEAR(s.wavelength, 0.8257, 1e-6);
  EXPECT_FLOAT_EQ(s.wavelengths.alpha2, s.wavelength);
}

TEST(ReaderRules, ProjectMadeSamplesOfTheFormatsWithoutPublicFiles) {
  // gdf, Bruker txt and udf: written for these tests from the format descriptions.
  struct Case { const char* file; OpenFormat format; double wavelength; const char* date; };
  for (const Case& c : {Case{"silicon_huber.gdf", OpenFormat::Gdf, 1.5406, "12-Mar-2024 09:41"},
                        Case{"silicon_bruker.txt", OpenFormat::BrukerTxt, 1.54187, "03/12/2024"},
                        Case{"silicon_philips.udf", OpenFormat::Udf, 1.5406, "12-Mar-2024 10:15"}}) {
    SCOPED_TRACE(c.file);
    RecordingShell shell;
    test::TempDir dir;
    Session session(shell, dir.path());
    ASSERT_TRUE(readPatternFile(session, c.format, 1, (test::testDataDir() / "patterns" / c.file).string()));
    const PatternSlot& s = session.store().pattern();
    EXPECT_EQ(s.count, 1501);
    EXPECT_FLOAT_EQ(s.start, 20.0f);
    EXPECT_NEAR(s.step, 0.02, 1e-7);
    EXPECT_NEAR(s.end, 50.0, 1e-3);
    EXPECT_NEAR(s.wavelength, c.wavelength, 1e-6);
    EXPECT_EQ(session.store().info.date, c.date);
    // The silicon (111) peak at 28.44 deg is point 422.
    EXPECT_GT(s.y[422], 900.0f);
  }
}

TEST(ReaderRules, LoadingIntoSlotOneKeepsTheAsLoadedCopyAndThePaths) {
  RecordingShell shell;
  test::TempDir dir;
  Session session(shell, dir.path());
  const auto file = dir / "p.xy";
  test::writeText(file, "10 5\n10.1 6\n");
  session.store().info.title = "old title";
  ASSERT_TRUE(readPatternFile(session, OpenFormat::Xy, 1, file.string()));
  EXPECT_EQ(session.store().slot(3).count, 2);
  EXPECT_EQ(session.store().info.loadedPath, file.string());
  EXPECT_EQ(session.store().info.title, "");
  EXPECT_FLOAT_EQ(session.store().wavelength.alpha2, 1.54433f);

  EXPECT_FALSE(readPatternFile(session, OpenFormat::Chi, 1, (dir / "missing.chi").string()));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File error", "Error opening chi file"}));
  EXPECT_EQ(session.store().pattern().count, 0);
}

}  // namespace
}  // namespace quarvel
