// The automatic peak search: known peaks in noise, the candidate limits, the edges, and a
// golden record of what it finds on the real patterns.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <random>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/pattern/pattern_reading.h"
#include "core/peaks/peak_search.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct Synthetic {
  float start = 10.0f, step = 0.02f;
  std::vector<float> y;
};

// Gaussian peaks of FWHM `fwhm` on a flat background of 200 counts with Gaussian counting noise.
Synthetic pattern(const std::vector<std::pair<double, double>>& peaks, double fwhm, unsigned seed, int n = 3000) {
  Synthetic s;
  std::mt19937 rng(seed);
  for (int i = 0; i < n; ++i) {
    const double x = s.start + i * s.step;
    double mean = 200.0;
    for (auto [position, height] : peaks) mean += height * std::exp(-4 * std::log(2.0) * std::pow((x - position) / fwhm, 2));
    s.y.push_back(static_cast<float>(std::normal_distribution<double>(mean, std::sqrt(mean))(rng)));
  }
  return s;
}

TEST(PeakSearch, FindsEverySignificantPeakAndNoNoise) {
  const std::vector<std::pair<double, double>> peaks = {{20.0, 3000}, {31.5, 800}, {40.0, 300}, {52.25, 150}, {60.0, 100}};
  PeakSearchOptions options;
  options.smoothingFactor = 7;
  options.sigmaFactor = 3.0f;
  for (unsigned seed : {1u, 2u, 3u}) {
    const Synthetic s = pattern(peaks, 0.12, seed);
    std::vector<Peak> found;
    searchPeaks(s.start, s.step, s.y, options, found);
    ASSERT_EQ(found.size(), peaks.size()) << "seed " << seed;
    for (std::size_t k = 0; k < peaks.size(); ++k) {
      // The candidate is the point after the maximum of the second difference's lobe.
      EXPECT_NEAR(found[k].position, peaks[k].first, 2.5 * s.step) << "seed " << seed;
      EXPECT_GT(found[k].intensity, 0.4 * peaks[k].second);
    }
  }
}

TEST(PeakSearch, ASecondSearchReplacesTheList) {
  const Synthetic s = pattern({{30.0, 1000}}, 0.12, 7);
  std::vector<Peak> list(3);
  searchPeaks(s.start, s.step, s.y, PeakSearchOptions{}, list);
  EXPECT_EQ(list.size(), 1u);
}

TEST(PeakSearch, CandidatesTooCloseToAnEndAreNeverAccepted) {
  std::vector<float> y(100, 100.0f);
  EXPECT_EQ(testCandidate(y, {5, 4}, 0.02f).height, 0.0);   // h = 6 starts before the second point
  EXPECT_EQ(testCandidate(y, {94, 4}, 0.02f).height, 0.0);  // h = 6 reaches past the end
  EXPECT_EQ(testCandidate(y, {7, 4}, 0.02f).noise, 10.0);   // the first window that fits
}

// 1500 identical peaks, the first one too weak to pass: candidates 2..1000 enter, and candidate
// 1001, the first passing one above 1000, ends the search.
TEST(PeakSearch, TheFirstPassingCandidateAbove1000EndsTheSearch) {
  std::vector<float> y(19000, 100.0f);
  for (int p = 0; p < 1500; ++p) {
    const int centre = 20 + 12 * p;
    const float height = p == 0 ? 1.0f : 5000.0f;
    for (int k = -6; k <= 6; ++k)
      y[static_cast<std::size_t>(centre + k)] += height * std::exp(-4 * std::log(2.0f) * (k / 3.0f) * (k / 3.0f));
  }
  PeakSearchOptions options;
  options.smoothingFactor = 1;
  options.minFwhm = 0.02f;
  options.maxFwhm = 0.2f;
  std::vector<Peak> found;
  searchPeaks(0.0f, 0.01f, y, options, found);
  EXPECT_EQ(found.size(), 999u);
}

TEST(PeakSearch, ManualClicksClimbToTheNearestMaximum) {
  const std::vector<float> y = {1, 2, 5, 9, 4, 3, 6, 2};
  EXPECT_EQ(nearestMaximum(10.0f, 1.0f, y, 11.2f), 3);
  EXPECT_EQ(nearestMaximum(10.0f, 1.0f, y, 15.4f), 6);
  EXPECT_EQ(nearestMaximum(10.0f, 1.0f, {}, 11.0f), -1);
}

// What the search finds with the default options on the real patterns; a change of the count
// shows in review. Regenerate with QUARVEL_WRITE_GOLDEN=1.
TEST(PeakSearch, RealPatternsGiveTheRecordedPeakCounts) {
  QUARVEL_REQUIRE_SHARED_DATA();
  const std::pair<const char*, OpenFormat> files[] = {
      {"xy/yadg_210520step1_30min.xy", OpenFormat::Xy},           {"xy/combs_SDPDRR1_sample2_Cu.XY", OpenFormat::Xy},
      {"xy/pyobjcryst_cpd-1a_QARR.prn", OpenFormat::Xy},          {"xy/fityk_SiC_Zn.dat", OpenFormat::Xy},
      {"xy/gsas2tut_x3lactos_3col_esd_crlf.xye", OpenFormat::Xy}, {"xrdml/fairmat_XRD-918-16_10_v1.6_crlf.xrdml", OpenFormat::Xrdml},
      {"uxd/xylib_BT86_.UXD", OpenFormat::Uxd},                   {"std/fox_pbso4_xray_rrr_title_on_line1.dat", OpenFormat::Std},
      {"pdcif/pdcifplotter_vb5042sup1_CoKa_wavelength_loop.cif", OpenFormat::Cif},
  };
  const auto golden = test::testDataDir() / "peaks" / "real_pattern_peak_counts.txt";
  std::map<std::string, std::size_t> expected;
  {
    std::ifstream in(golden);
    std::string name;
    std::size_t count = 0;
    while (in >> name >> count) expected[name] = count;
  }
  std::string record;
  for (auto [file, format] : files) {
    RecordingShell shell;
    test::TempDir dir;
    Session session(shell, dir.path());
    ASSERT_TRUE(readPatternFile(session, format, 1, (test::sharedDataDir() / "patterns" / file).string()));
    const PatternSlot& p = session.store().pattern();
    std::vector<Peak> found;
    searchPeaks(p.start, p.step, p.data(), PeakSearchOptions{}, found);
    record += std::string(file) + " " + std::to_string(found.size()) + "\n";
    EXPECT_GT(found.size(), 3u) << file;
    EXPECT_EQ(found.size(), expected[file]) << file;
  }
  if (std::getenv("QUARVEL_WRITE_GOLDEN")) test::writeText(golden, record);
}

}  // namespace
}  // namespace quarvel
