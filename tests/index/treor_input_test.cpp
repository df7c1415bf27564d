#include <gtest/gtest.h>

#include "core/index/peak_positions.h"
#include "core/index/treor/treor_input.h"
#include "core/index/treor/treor_job_file.h"
#include "core/index/treor/treor_run.h"

namespace quarvel {
namespace {

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST(TreorInput, ReadsTitleLinesAndKeywordCards) {
  const auto parsed = parseTreorInput(
      "quartz peaks\r\n  20.860\n26.640  100\n36.544\n\nCHOICE=3, WAVE= 1.54056,\nVOL=-1500,NIX= 2,merit= 15,\n"
      "D1= 0.00030,D2= 0.00050, USE=12, KS=0,\nEND*\n");
  ASSERT_TRUE(parsed.input);
  const TreorInput& in = *parsed.input;
  EXPECT_EQ(in.title, "quartz peaks");
  EXPECT_EQ(in.values, (std::vector<double>{20.86, 26.64, 36.544}));
  EXPECT_EQ(in.keywords.choice, 3);
  EXPECT_DOUBLE_EQ(in.keywords.wave, 1.54056);
  EXPECT_DOUBLE_EQ(in.keywords.vol, -1500);
  EXPECT_EQ(in.keywords.nix, 2);
  EXPECT_DOUBLE_EQ(in.keywords.merit, 15);
  EXPECT_DOUBLE_EQ(in.keywords.d1, 0.0003);
  EXPECT_DOUBLE_EQ(in.keywords.d2, 0.0005);
  EXPECT_EQ(in.keywords.testLines, 12);
  EXPECT_EQ(in.keywords.ks, 0);
}

TEST(TreorInput, BadCardsAreRefusedWithTheCardNamed) {
  // A missing comma joins two cards into one value that does not read.
  auto parsed = parseTreorInput("t\n20.0\n\nCHOICE=3\nWAVE=1.54056,\nEND*\n");
  EXPECT_FALSE(parsed.input);
  EXPECT_NE(parsed.badCard.find("CHOICE"), std::string::npos);
  parsed = parseTreorInput("t\n20.0\n\nCOLOUR=3,\nEND*\n");  // unidentified keyword
  EXPECT_FALSE(parsed.input);
  parsed = parseTreorInput("t\n20.0\n\nCHOICE=7,\nEND*\n");  // no such input form
  EXPECT_FALSE(parsed.input);
  parsed = parseTreorInput("t\n20.0\n\nWAVE,\nEND*\n");  // a name without its value
  EXPECT_FALSE(parsed.input);

  const auto report = invalidCardReport(parsed.badCard);
  ASSERT_EQ(report.size(), 5u);
  EXPECT_EQ(report[2], " **ERROR** PROGRAM CONTROL CARD INVALID.");
  EXPECT_EQ(report[3], " PROBABLY MISSING COMMA OR DELIMITER KEYWORD");
  EXPECT_EQ(report[4], " OR UNIDENTIFIED KEYWORD.");
}

TEST(TreorJobFile, WritesTheKeywordLinesInTheirFixedFormats) {
  TreorJob job = withJobDefaults({.peakFile = "peaks.txt", .choice = -1, .wavelength = 0, .maxVolume = 0,
                                  .unindexed = -3, .merit = 0, .d1 = 0, .d2 = -1});
  EXPECT_EQ(joined(treorJobLines(job, {20.86, 126.5})),
            "peaks.txt\n   20.8600\n  126.5000\n\nCHOICE=3,\nWAVE= 1.54056,\nVOL=-2000,\nNIX= 1,\nMERIT= 10,\n"
            "D1= 0.00020,\nD2= 0.00040,\nEND*\n");
  job.maxVolume = 2500.5;  // halves away from zero, right-aligned
  job.merit = 9.5;
  const auto lines = treorJobLines(job, {});
  EXPECT_EQ(lines[4], "VOL= 2501,");
  EXPECT_EQ(lines[6], "MERIT= 10,");
  job.maxVolume = -1200;  // a negative volume is the user's choice and stays
  EXPECT_DOUBLE_EQ(withJobDefaults(job).maxVolume, -1200);
}

TEST(TreorJobFile, TheEngineReadsWhatTheJobWrites) {
  TreorJob job;
  job.choice = 4;
  job.wavelength = 0.7093;
  job.maxVolume = 900;
  job.unindexed = 0;
  job.merit = 20;
  const auto parsed = parseTreorInput(joined(treorJobLines(job, {4.2, 3.1, 2.05})));
  ASSERT_TRUE(parsed.input) << parsed.badCard;
  EXPECT_EQ(parsed.input->values, (std::vector<double>{4.2, 3.1, 2.05}));
  EXPECT_EQ(parsed.input->keywords.choice, 4);
  EXPECT_DOUBLE_EQ(parsed.input->keywords.wave, 0.7093);
  EXPECT_DOUBLE_EQ(parsed.input->keywords.vol, 900);
  EXPECT_EQ(parsed.input->keywords.nix, 0);
  EXPECT_DOUBLE_EQ(parsed.input->keywords.merit, 20);
}

TEST(IndexingPeakFile, PositionsStopAtABadRecordOrAThousand) {
  EXPECT_EQ(readPeakPositions({"          20.5   999", "31.25", "peak", "40.0"}), (std::vector<double>{20.5, 31.25}));
  const std::vector<std::string> many(1200, "       12.5");
  EXPECT_EQ(readPeakPositions(many).size(), 1000u);
}

}  // namespace
}  // namespace quarvel
