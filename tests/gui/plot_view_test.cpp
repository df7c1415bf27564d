#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <QLabel>
#include <QListWidget>
#include <QMdiSubWindow>
#include <QTest>

#include "core/app/command_ids.h"
#include "gui/desktop_app.h"
#include "gui/graphics_window.h"
#include "gui/notes_window.h"
#include "gui/printing.h"
#include "tests/gui/gui_test_support.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(PlotView, FullRangeSkipsGapsAndLeavesRoomForMarkers) {
  PlotScene scene;
  scene.curves.push_back({CurveRole::Pattern, "Pattern", {10, 20, 30, 40}, {kNaN, 5, 500, 50}});
  PlotRanges r = fullRangeOf(scene);
  EXPECT_DOUBLE_EQ(r.x.lower, 10);
  EXPECT_DOUBLE_EQ(r.x.upper, 40);
  EXPECT_DOUBLE_EQ(r.y.lower, 0);  // intensities start at zero
  EXPECT_GT(r.y.upper, 500);

  scene.logarithmic = true;
  scene.curves[0].y = {kNaN, 0.0, 100.0, 10.0};  // zero cannot be shown on a log axis
  r = fullRangeOf(scene);
  EXPECT_GT(r.y.lower, 0.0);
  EXPECT_LT(r.y.lower, 10.0);
  EXPECT_GT(r.y.lower, 1.0);

  // Marker strips: tick marks below the lowest value, peak markers above the highest.
  scene.logarithmic = false;
  scene.curves[0].y = {0, 10, 100, 50};
  scene.reflectionMarkers = {20};
  scene.peakMarkers = {30};
  r = fullRangeOf(scene);
  EXPECT_LT(r.y.lower, 0.0);
  EXPECT_GT(r.y.upper, 110.0);

  // A difference curve below zero is shown whole; an empty scene gets a neutral frame.
  scene = PlotScene();
  scene.curves.push_back({CurveRole::Difference, "Difference", {1, 2}, {-30, 40}});
  EXPECT_LE(fullRangeOf(scene).y.lower, -30);
  EXPECT_EQ(fullRangeOf(PlotScene()).x.upper, 1.0);
}

TEST(PlotView, StatusBarShowsTheCursorInTheCurrentUnit) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  Session& s = app.session();
  test::fillSlot(s.store().pattern(), 10.0f, 0.01f, 5001, [](float x) { return 100.0f + x; });
  s.store().copyPatternToAsLoaded();
  s.rebuildAxisTable();
  s.setPatternMenus(true);
  s.refreshView();

  app.window().resize(1000, 800);
  app.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&app.window()));
  GraphicsWindow& graphics = app.window().graphics();
  PlotView& plot = graphics.plot();
  plot.replot();
  EXPECT_EQ(plot.graphCount(), 1);
  EXPECT_EQ(plot.graph(0)->dataCount(), 5001);
  EXPECT_DOUBLE_EQ(plot.xAxis->range().lower, 10.0);
  EXPECT_NEAR(plot.xAxis->range().upper, 60.0, 1e-3);
  EXPECT_TRUE(app.window().findChild<QLabel*>("patternInfo")->text().startsWith("5001 points, 10.000 to 60.000 degrees"));

  const QPoint at(static_cast<int>(plot.xAxis->coordToPixel(30.0)), static_cast<int>(plot.yAxis->coordToPixel(80.0)));
  QTest::mouseMove(&plot, at);
  const QString position = graphics.positionText(), intensity = graphics.intensityText();
  ASSERT_TRUE(position.startsWith("Twotheta: ")) << position.toStdString();
  ASSERT_TRUE(intensity.startsWith("Intensity: ")) << intensity.toStdString();
  EXPECT_NEAR(position.mid(10).toDouble(), 30.0, 0.1);
  EXPECT_NEAR(intensity.mid(11).toDouble(), 80.0, 1.0);

  // In d-values the same pane names d and shows it in Å.
  app.dispatcher().dispatch(cmd::kAxisD);
  plot.replot();
  const double d = plot.xAxis->range().center();
  QTest::mouseMove(&plot, QPoint(static_cast<int>(plot.xAxis->coordToPixel(d)), at.y()));
  EXPECT_TRUE(graphics.positionText().startsWith("d-value: ")) << graphics.positionText().toStdString();
  EXPECT_NEAR(graphics.positionText().mid(9).toDouble(), d, 0.01);
}

TEST(PlotView, ZoomIsKeptByGridTogglesAndUndoneByFullPattern) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  Session& s = app.session();
  test::fillSlot(s.store().pattern(), 5.0f, 0.02f, 3000, [](float x) { return x; });
  s.rebuildAxisTable();
  s.refreshView();
  app.window().resize(1000, 800);
  app.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&app.window()));
  PlotView& plot = app.window().graphics().plot();
  plot.replot();

  // A rectangle dragged with the left button zooms into it.
  const int y0 = static_cast<int>(plot.yAxis->coordToPixel(60.0)), y1 = static_cast<int>(plot.yAxis->coordToPixel(10.0));
  const QPoint from(static_cast<int>(plot.xAxis->coordToPixel(20.0)), y0);
  const QPoint to(static_cast<int>(plot.xAxis->coordToPixel(30.0)), y1);
  QTest::mousePress(&plot, Qt::LeftButton, Qt::NoModifier, from);
  QTest::mouseMove(&plot, (from + to) / 2);
  QTest::mouseMove(&plot, to);
  QTest::mouseRelease(&plot, Qt::LeftButton, Qt::NoModifier, to);
  EXPECT_NEAR(plot.xAxis->range().lower, 20.0, 0.2);
  EXPECT_NEAR(plot.xAxis->range().upper, 30.0, 0.2);
  EXPECT_NEAR(plot.yAxis->range().upper, 60.0, 1.0);

  const QCPRange zoomed = plot.xAxis->range();
  app.dispatcher().dispatch(cmd::kYGrid);
  EXPECT_EQ(plot.xAxis->range(), zoomed);
  EXPECT_TRUE(plot.yAxis->grid()->visible());
  app.dispatcher().dispatch(cmd::kFullPattern);
  EXPECT_DOUBLE_EQ(plot.xAxis->range().lower, 5.0);

  // Pattern and background together: two curves and a legend naming them.
  test::fillSlot(s.store().slot(kSlotBackground), 5.0f, 0.02f, 3000, [](float) { return 3.0f; });
  app.dispatcher().dispatch(cmd::kPlotPatternBackground);
  EXPECT_EQ(plot.graphCount(), 2);
  EXPECT_TRUE(plot.legend->visible());
  app.dispatcher().dispatch(cmd::kPlotPattern);
  EXPECT_FALSE(plot.legend->visible());

  // Logarithmic intensities use the log scale; the plot can be saved as BMP and PDF.
  app.dispatcher().dispatch(cmd::kScaleLog);
  EXPECT_EQ(plot.yAxis->scaleType(), QCPAxis::stLogarithmic);
  EXPECT_TRUE(plot.saveImage(QString::fromStdString((dir / "plot.bmp").string())));
  EXPECT_TRUE(plot.saveImage(QString::fromStdString((dir / "plot.pdf").string())));
  EXPECT_GT(std::filesystem::file_size(dir / "plot.bmp"), 1000u);

  // "Print Report" lays the plot and the notes out on pages; here into a PDF file.
  app.shell().appendNotes("Peak search: 11 peaks");
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString((dir / "report.pdf").string()));
  printReport(printer, plot, *app.window().notes().document());
  EXPECT_GT(std::filesystem::file_size(dir / "report.pdf"), 1000u);
}

}  // namespace
}  // namespace quarvel

namespace quarvel {
namespace {

// "Manual Search" leaves the plot usable: a click in d-values is read back as the pattern's 2θ
// and the peak is taken at the nearest maximum.
TEST(PlotView, ClicksInThePlotFeedAPickingDialog) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  Session& s = app.session();
  test::fillSlot(s.store().pattern(), 10.0f, 0.01f, 5001,
                 [](float x) { return 100.0f + 1000.0f * std::exp(-(x - 30.0f) * (x - 30.0f) / 0.02f); });
  s.store().copyPatternToAsLoaded();
  s.rebuildAxisTable();
  s.setPatternMenus(true);
  app.dispatcher().dispatch(cmd::kAxisD);
  app.window().resize(1000, 800);
  app.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&app.window()));
  PlotView& plot = app.window().graphics().plot();
  plot.replot();

  QString picked;
  test::whenWindowOpens("Manual Peak Search", [&](QWidget* dialog) {
    const double d = toXUnit(30.1, 2, 1.5406);
    const QPoint at(static_cast<int>(std::lround(plot.xAxis->coordToPixel(d))),
                    static_cast<int>(plot.yAxis->coordToPixel(500.0)));
    QTest::mouseClick(&plot, Qt::LeftButton, Qt::NoModifier, at);
    auto* list = dialog->findChild<QListWidget*>("marks");
    if (list != nullptr && list->count() == 1) picked = list->item(0)->text();
    test::clickButton(dialog, "OK");
  });
  app.dispatcher().dispatch(cmd::kManualSearch);
  EXPECT_NEAR(picked.toDouble(), 30.1, 0.05) << picked.toStdString();
  ASSERT_EQ(s.peaks.size(), 1u);
  EXPECT_NEAR(s.peaks.peaks[0].position, 30.0, 0.02);
  EXPECT_EQ(plot.graphCount(), 2);  // the pattern and the peak marker; the orange marks are gone
}

}  // namespace
}  // namespace quarvel
