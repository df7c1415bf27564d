// Writers: the exact bytes of every layout, every format read back by its reader,
// and a failed save that leaves the previous file alone.
#include <gtest/gtest.h>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/common/text_file.h"
#include "core/pattern/pattern_reading.h"
#include "core/pattern/pattern_writers.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct WriterFixture : ::testing::Test {
  RecordingShell shell;
  test::TempDir dir;
  Session session{shell, dir.path()};
  void SetUp() override {
    test::fillSlot(session.store().pattern(), 10.0f, 0.02f, 3, [](float x) { return x * 10.0f + 0.26f; });
    session.store().wavelength.alpha1 = 1.5406f;
  }
};

TEST_F(WriterFixture, XyAndCifLayoutsAreExact) {
  EXPECT_EQ(patternFileText(session.store(), 1, SaveFormat::Xy, "p.xy"),
            "   10.0000        100\n   10.0200        100\n   10.0400        101\n");
  EXPECT_EQ(patternFileText(session.store(), 1, SaveFormat::Cif, "p.cif"),
            "# Powder CIF created by QUARVEL\n"
            "data-p.cif\n"
            "_diffrn_radiation_wavelength   1.54060\n"
            "# Scan information data\n"
            "_pd_meas_2theta_range_min  10.00000\n"
            "_pd_meas_2theta_range_max  10.04000\n"
            "_pd_meas_2theta_range_inc   0.02000\n"
            "# 2-Theta scan data\n"
            "loop_\n"
            "_pd_meas_intensity_total\n"
            "          100.3\n"
            "          100.5\n"
            "          100.7\n"
            "#--eof--eof--eof--eof--eof--eof--#\n");
}

TEST_F(WriterFixture, GdfStdXywAndFittedLayoutsAreExact) {
  EXPECT_EQ(patternFileText(session.store(), 1, SaveFormat::Std, "p.dat"),
            "   10.0000   0.02000   10.0400\n"
            "      100.26      100.46      100.66\n");
  EXPECT_EQ(patternFileText(session.store(), 1, SaveFormat::Xyw, "p.xyw"),
            "   10.0000        100.260   9.974067e-03\n"
            "   10.0200        100.460   9.954210e-03\n"
            "   10.0400        100.660   9.934432e-03\n");
  // Header comments fall back to a title and the file name; the date sits between > and <.
  EXPECT_EQ(patternFileText(session.store(), 1, SaveFormat::Gdf, "p.gdf"),
            "QUARVEL powder pattern\np.gdf\n1\n\n\n\n\n\n\n><\n"
            "     10.0000\n     10.0400\n    0.020000\n\n\n\n"
            "         100.26\n         100.46\n         100.66\n");

  test::fillSlot(session.store().slot(kSlotCalculated), 10.0f, 0.02f, 3, [](float) { return 90.0f; });
  test::fillSlot(session.store().slot(kSlotBackground), 10.0f, 0.02f, 2, [](float) { return 5.5f; });
  EXPECT_EQ(fittedPatternText(session.store()),
            "#   2theta       observed     calculated     difference     background\n"
            "   10.0000        100.260         90.000         10.260          5.500\n"
            "   10.0200        100.460         90.000         10.460          5.500\n"
            "   10.0400        100.660         90.000         10.660          0.000\n");
}

TEST_F(WriterFixture, EveryFormatReadsBackWithTheSameGrid) {
  test::fillSlot(session.store().pattern(), 5.0f, 0.01f, 1234, [](float x) { return 50.0f + 1000.0f * (x > 7.0f && x < 7.2f); });
  const std::pair<SaveFormat, OpenFormat> pairs[] = {{SaveFormat::Gdf, OpenFormat::Gdf}, {SaveFormat::Xy, OpenFormat::Xy},
                                                     {SaveFormat::Std, OpenFormat::Std}, {SaveFormat::Xyw, OpenFormat::Xy},
                                                     {SaveFormat::Cif, OpenFormat::Cif}};
  for (auto [save, open] : pairs) {
    const auto path = dir / ("round." + saveExtensionFor(save));
    ASSERT_FALSE(writePatternFile(session.store(), 1, save, path));
    RecordingShell otherShell;
    Session other(otherShell, dir.path());
    ASSERT_TRUE(readPatternFile(other, open, 1, path.string())) << saveExtensionFor(save);
    const PatternSlot &a = session.store().pattern(), &b = other.store().pattern();
    ASSERT_EQ(b.count, a.count) << saveExtensionFor(save);
    EXPECT_NEAR(b.start, a.start, 1e-4);
    EXPECT_NEAR(b.step, a.step, 1e-6);
    for (int i = 0; i < a.count; ++i) ASSERT_NEAR(b.y[i], a.y[i], 0.5) << saveExtensionFor(save) << " point " << i;
  }
}

TEST_F(WriterFixture, AFailedSaveKeepsThePreviousFileAndShowsTheWritersText) {
  const auto unwritable = dir / "no-such-folder" / "p.gdf";
  auto failure = writePatternFile(session.store(), 1, SaveFormat::Gdf, unwritable);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->title, "File error");
  EXPECT_EQ(failure->text, "Error opening xy file");  // the gdf writer shares the xy text

  // A writer that gives up half way (disk full, interrupted) leaves the old file as it was.
  const auto target = dir / "keep.xy";
  test::writeText(target, "precious\n");
  {
    AtomicFile file(target);
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(file.writeLine("half of the new content"));
  }
  EXPECT_EQ(readWholeFile(target).value_or(""), "precious\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);  // no temporary left
}

}  // namespace
}  // namespace quarvel
