// quarvel: the desktop program.
//   quarvel [FILE]   starts with FILE opened (a pattern, or a .sum summary file).
// Hidden options for developers: --demo fills the plot with a synthetic pattern, and
// --screenshot PNG saves a picture of the frame once it is drawn and exits, and --apply ID,ID,...
// runs menu commands after the file is opened the way a script runs them (no dialogs, no
// questions, the remembered settings), for reproducible pictures of results.
#include <filesystem>

#include <QApplication>
#include <QCommandLineParser>
#include <QMouseEvent>
#include <QTimer>

#include "gui/app_icon.h"
#include "gui/demo_pattern.h"
#include "gui/graphics_window.h"
#include "gui/desktop_app.h"

namespace {

struct Options {
  QString file;
  bool demo = false;
  QString screenshot;
  QStringList apply;
};

Options parseOptions(const QApplication& app) {
  QCommandLineParser parser;
  parser.setApplicationDescription("QUARVEL - Display and handle diffraction patterns");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument("file", "Pattern or summary file to open.");
  QCommandLineOption demo("demo", "Show a synthetic pattern.");
  QCommandLineOption screenshot("screenshot", "Save a PNG of the window and exit.", "png");
  demo.setFlags(QCommandLineOption::HiddenFromHelp);
  QCommandLineOption apply("apply", "Run these menu commands without dialogs.", "ids");
  screenshot.setFlags(QCommandLineOption::HiddenFromHelp);
  apply.setFlags(QCommandLineOption::HiddenFromHelp);
  parser.addOption(apply);
  parser.addOption(demo);
  parser.addOption(screenshot);
  parser.process(app);
  Options options;
  if (!parser.positionalArguments().isEmpty()) options.file = parser.positionalArguments().front();
  options.demo = parser.isSet(demo);
  options.screenshot = parser.value(screenshot);
  options.apply = parser.value(apply).split(',', Qt::SkipEmptyParts);
  return options;
}

// Puts the mouse over the plot, so a screenshot shows the cursor read-out in the status bar.
void pointAt(quarvel::PlotView& plot, double x, double intensity) {
  const QPointF pixel(plot.xAxis->coordToPixel(x), plot.yAxis->coordToPixel(intensity));
  QMouseEvent move(QEvent::MouseMove, pixel, plot.mapToGlobal(pixel), Qt::NoButton, Qt::NoButton,
                   Qt::NoModifier);
  QApplication::sendEvent(&plot, &move);
}

// The example pattern shipped with the program: beside an installed program, or in the source
// tree it was built from.
std::string bundledExample() {
  const std::filesystem::path here = QCoreApplication::applicationDirPath().toStdString();
  for (const std::filesystem::path& candidate :
       {here / "../share/quarvel/examples/silicon.xy", here / "examples/silicon.xy",
        std::filesystem::path(QUARVEL_EXAMPLES_DIR) / "silicon.xy"}) {
    std::error_code ec;
    if (std::filesystem::is_regular_file(candidate, ec)) return std::filesystem::canonical(candidate, ec).string();
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("quarvel");
  QApplication::setApplicationVersion(QUARVEL_VERSION);
  QApplication::setWindowIcon(quarvel::appIcon());
  const Options options = parseOptions(app);

  quarvel::DesktopApp desktop(std::filesystem::current_path());
  desktop.window().show();
  desktop.window().arrangeDefault();
  if (!options.file.isEmpty()) {
    desktop.openFile(std::filesystem::absolute(options.file.toStdString()).string());
  } else if (options.demo) {
    quarvel::loadDemoPattern(desktop.session());
  } else if (desktop.session().settings().values.recentFiles.empty()) {
    // First start (nothing opened yet): show the bundled example so there is something to see.
    if (const auto example = bundledExample(); !example.empty()) desktop.openFile(example);
  }
  if (!options.apply.isEmpty()) {
    quarvel::Session& session = desktop.session();
    session.flags.scriptRunning = true;
    for (const QString& id : options.apply) desktop.dispatcher().dispatch(id.toInt());
    session.flags.scriptRunning = false;
    session.refreshView();
  }
  if (!options.screenshot.isEmpty()) {
    QTimer::singleShot(800, &app, [&desktop, &options] {
      pointAt(desktop.window().graphics().plot(), 47.3, 5200.0);
      desktop.window().grab().save(options.screenshot);
      QApplication::exit(0);  // leaves without the questions a user gets when closing
    });
  }
  return QApplication::exec();
}
