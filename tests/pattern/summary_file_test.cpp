// The summary file: column counting, the first and later columns, the 100-column limit.
#include <gtest/gtest.h>

#include "core/app/command_ids.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/common/text_file.h"
#include "core/pattern/summary_file.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TEST(SummaryFile, ColumnsAreCountedFromTheFirstLine) {
  EXPECT_EQ(summaryColumns(std::string(26, 'x')), 2);
  EXPECT_EQ(summaryColumns(std::string(17, 'x') + "   "), 1);
  EXPECT_EQ(summaryColumns("short"), 0);
  EXPECT_EQ(summaryColumns(""), 0);
}

TEST(SummaryFile, ColumnsAreAddedUntilTheLimit) {
  RecordingShell shell;
  test::TempDir dir;
  Session session(shell, dir.path());
  session.start();
  test::fillSlot(session.store().pattern(), 10.0f, 0.5f, 3, [](float x) { return x; });
  session.store().info.loadedPath = "/data/first.xy";
  const auto path = (dir / "all.sum").string();

  ASSERT_TRUE(openSummaryFile(session, path));
  EXPECT_EQ(session.summary.columns, 0);
  EXPECT_TRUE(session.menu().isEnabled(cmd::kAddToSumFile));
  EXPECT_FALSE(session.menu().isEnabled(cmd::kOpenSumFile));
  ASSERT_TRUE(addToSummaryFile(session));

  // A second pattern on a shifted grid: interpolated at the rows' 2θ, blank outside.
  test::fillSlot(session.store().pattern(), 10.5f, 0.5f, 3, [](float x) { return 2 * x; });
  session.store().info.loadedPath = "/data/second.xy";
  ASSERT_TRUE(addToSummaryFile(session));
  EXPECT_EQ(readWholeFile(path).value_or(""),
            "  2theta    first   second\n"
            "  10.000       10         \n"
            "  10.500       11       21\n"
            "  11.000       11       22\n");
  EXPECT_EQ(session.summary.columns, 2);

  session.summary.columns = 100;
  EXPECT_FALSE(addToSummaryFile(session));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File error", "Too many files in summary file"}));

  closeSummaryFile(session);
  EXPECT_FALSE(session.menu().isEnabled(cmd::kAddToSumFile));
  ASSERT_TRUE(openSummaryFile(session, path));
  EXPECT_EQ(session.summary.columns, 2);
}

}  // namespace
}  // namespace quarvel
