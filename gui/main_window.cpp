#include "gui/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QTextDocument>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/messages.h"
#include "core/app/plot_scene.h"
#include "core/app/session.h"
#include "gui/dialog_view.h"
#include "gui/graphics_window.h"
#include "gui/menu_binding.h"
#include "gui/notes_window.h"
#include "gui/printing.h"
#include "gui/text_limits.h"

namespace quarvel {

MainWindow::MainWindow()
    : mdi_(new QMdiArea(this)), graphics_(new GraphicsWindow), notes_(new NotesWindow) {
  setWindowTitle(msg::kFrameTitle);
  setCentralWidget(mdi_);
  mdi_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  mdi_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  // The graphics and notes children live as long as the frame: closing them only hides them.
  notesChild_ = mdi_->addSubWindow(notes_);
  graphicsChild_ = mdi_->addSubWindow(graphics_);
  for (QMdiSubWindow* child : {notesChild_, graphicsChild_}) child->setAttribute(Qt::WA_DeleteOnClose, false);
  graphicsChild_->resize(645, 470);
  buildProgressBar();
  connect(notes_, &NotesWindow::contentChanged, this, &MainWindow::notesChanged);
  resize(1100, 780);
}

MainWindow::~MainWindow() = default;

void MainWindow::buildProgressBar() {
  patternInfo_ = new QLabel(this);
  patternInfo_->setObjectName("patternInfo");
  statusBar()->addWidget(patternInfo_, 1);
  progressText_ = new QLabel(this);
  progress_ = new QProgressBar(this);
  progress_->setRange(0, 1000);
  progress_->setMaximumWidth(260);
  stop_ = new QPushButton("Stop", this);
  connect(stop_, &QPushButton::clicked, this, &MainWindow::requestInterrupt);
  statusBar()->addWidget(progressText_, 1);
  statusBar()->addPermanentWidget(progress_);
  statusBar()->addPermanentWidget(stop_);
  for (QWidget* w : {static_cast<QWidget*>(progressText_), static_cast<QWidget*>(progress_),
                     static_cast<QWidget*>(stop_)}) {
    w->hide();
  }
}

void MainWindow::attach(Session& session, CommandDispatcher& dispatcher) {
  session_ = &session;
  dispatcher_ = &dispatcher;
  menus_ = std::make_unique<MenuBinding>(*menuBar(), *this, session.menu(), [this](int id) { runCommand(id); });
}

void MainWindow::runCommand(int id) {
  if (dispatcher_ == nullptr) return;
  if (busy_) {
    if (id == cmd::kInterrupt) requestInterrupt();
    return;
  }
  busy_ = true;
  interrupt_ = false;
  dispatcher_->dispatch(id);
  busy_ = false;
  showProgress(1.0, QString());
}

void MainWindow::repaintPlot(bool resetView) {
  if (session_ == nullptr) return;
  graphics_->showScene(buildPlotScene(*session_), resetView);
  if (resetView && graphicsChild_->isHidden()) showChild(graphicsChild_);
  describePattern();
}

// One line in the frame's status bar about the pattern on display.
void MainWindow::describePattern() {
  const PatternStore& store = session_->store();
  const PatternSlot& slot = store.pattern();
  if (slot.count == 0) {
    patternInfo_->clear();
    return;
  }
  QString name = QString::fromStdString(store.info.title);
  if (name.isEmpty()) name = QFileInfo(QString::fromStdString(store.info.loadedPath)).fileName();
  const QString text = QString("%1 points, %2 to %3 degrees 2theta, step %4, wavelength %5")
                           .arg(slot.count)
                           .arg(slot.start, 0, 'f', 3)
                           .arg(slot.x(slot.count - 1), 0, 'f', 3)
                           .arg(slot.step, 0, 'f', 4)
                           .arg(slot.wavelength, 0, 'f', 5);
  patternInfo_->setText(name.isEmpty() ? text : name + ": " + text);
}

void MainWindow::showChild(QMdiSubWindow* child) {
  child->widget()->show();
  child->show();
}

void MainWindow::appendNotes(const QString& line) {
  if (notesChild_->isHidden()) showChild(notesChild_);
  notes_->appendLine(line);
}

void MainWindow::notesChanged() {
  if (session_ == nullptr || notes_->document()->isEmpty()) return;
  // The notes commands make sense once there is text to save or edit.
  for (int id : {cmd::kSaveNotes, cmd::kSaveNotesAs, cmd::kMenuEditNotes}) session_->menu().setEnabled(id, true);
}

int MainWindow::childWindowCount() const { return static_cast<int>(mdi_->subWindowList().size()); }

bool MainWindow::reserveChildWindow() {
  if (childWindowCount() + 1 < msg::kMaxChildWindows) return true;
  QMessageBox::warning(this, msg::kProgramTitle, cutTo79(msg::kTooManyWindows));
  return false;
}

void MainWindow::openTextViewer(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
    QMessageBox::warning(this, msg::kFileError, cutTo79("Cannot open file " + path));
    return;
  }
  if (!reserveChildWindow()) return;
  auto* viewer = new QPlainTextEdit;
  viewer->setReadOnly(true);
  viewer->setLineWrapMode(QPlainTextEdit::NoWrap);
  viewer->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  viewer->setPlainText(QString::fromUtf8(file.readAll()));
  viewer->setWindowTitle(QFileInfo(path).fileName());
  QMdiSubWindow* child = mdi_->addSubWindow(viewer);
  child->setAttribute(Qt::WA_DeleteOnClose, true);
  child->resize(mdi_->width() * 2 / 3, mdi_->height() * 2 / 3);
  child->show();
}

bool MainWindow::takeInterrupt() {
  QCoreApplication::processEvents();  // delivers Ctrl+I and the Stop button
  return std::exchange(interrupt_, false);
}

void MainWindow::showProgress(double fraction, const QString& text) {
  const bool running = fraction < 1.0;
  progressText_->setText(text);
  progress_->setValue(static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 1000.0));
  progressText_->setVisible(running);
  patternInfo_->setVisible(!running);
  progress_->setVisible(running);
  stop_->setVisible(running);
  if (running) QCoreApplication::processEvents();
}

int MainWindow::runPickingDialog(DialogView& view) {
  PlotView& plot = graphics_->plot();
  std::vector<double> marks;
  const auto clicks = connect(&plot, &PlotView::clicked, &view, [&](double x, double) {
    if (session_ == nullptr) return;
    view.addPick(twoThetaAtPlotX(*session_, x));
    marks.push_back(x);
    plot.setPickMarks(marks);
  });
  view.setModal(false);
  view.setWindowFlag(Qt::Tool);
  view.show();
  view.move(mapToGlobal(QPoint(width() - view.width() - 30, 60)));
  QEventLoop loop;
  connect(&view, &QDialog::finished, &loop, &QEventLoop::quit);
  loop.exec();
  disconnect(clicks);
  plot.setPickMarks({});
  return view.result();
}

void MainWindow::printText(const QString& jobName, const QString& text) {
  QTextDocument document;
  document.setDefaultFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  document.setPlainText(text);
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(jobName);
  if (preparePrinter(printer, this)) document.print(&printer);
}

void MainWindow::windowCommand(int id) {
  switch (id) {
    case cmd::kNotesUndo: case cmd::kNotesCut: case cmd::kNotesCopy: case cmd::kNotesPaste:
    case cmd::kNotesDelete:
      editNotes(id);
      break;
    case cmd::kSaveNotes: notes_->save(); break;
    case cmd::kSaveNotesAs: notes_->saveAs(); break;
    case cmd::kPrint: notes_->print(); break;
    case cmd::kPrintReport: printReport(); break;
    case cmd::kAbout: showAbout(); break;
    case cmd::kExit: QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection); break;
    case cmd::kTileHorizontal: tileHorizontally(); break;
    case cmd::kTileVertical: tileVertically(); break;
    default: break;
  }
}

void MainWindow::editNotes(int id) {
  switch (id) {
    case cmd::kNotesUndo: notes_->undo(); break;
    case cmd::kNotesCut: notes_->cut(); break;
    case cmd::kNotesCopy: notes_->copy(); break;
    case cmd::kNotesPaste: notes_->paste(); break;
    case cmd::kNotesDelete: notes_->textCursor().removeSelectedText(); break;
    default: break;
  }
}

void MainWindow::printReport() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(msg::kNotesJobName);
  if (preparePrinter(printer, this)) quarvel::printReport(printer, graphics_->plot(), *notes_->document());
}

void MainWindow::showAbout() {
  QMessageBox::about(this, "About QUARVEL",
                     QString("<h3>QUARVEL %1</h3><p>Display and handle diffraction patterns.</p>"
                             "<p>Open, treat, search and fit peaks, index and refine powder X-ray "
                             "diffraction patterns.</p>")
                         .arg(QUARVEL_VERSION));
}

namespace {

QList<QMdiSubWindow*> visibleChildren(QMdiArea& mdi) {
  QList<QMdiSubWindow*> children;
  for (QMdiSubWindow* child : mdi.subWindowList(QMdiArea::CreationOrder)) {
    if (child->isVisible() && !child->isMinimized()) children << child;
  }
  return children;
}

// Places the children in equal strips: one above the other, or side by side.
void tile(QMdiArea& mdi, bool stacked) {
  const QList<QMdiSubWindow*> children = visibleChildren(mdi);
  if (children.isEmpty()) return;
  const QSize area = mdi.viewport()->size();
  const int n = static_cast<int>(children.size());
  for (int i = 0; i < n; ++i) {
    children[i]->showNormal();
    if (stacked) {
      const int h = area.height() / n;
      children[i]->setGeometry(0, i * h, area.width(), h);
    } else {
      const int w = area.width() / n;
      children[i]->setGeometry(i * w, 0, w, area.height());
    }
  }
}

}  // namespace

void MainWindow::tileHorizontally() { tile(*mdi_, true); }
void MainWindow::tileVertically() { tile(*mdi_, false); }

void MainWindow::arrangeDefault() {
  const QSize area = mdi_->viewport()->size();
  const int plotHeight = area.height() * 7 / 10;
  graphicsChild_->setGeometry(0, 0, area.width(), plotHeight);
  notesChild_->setGeometry(0, plotHeight, area.width(), area.height() - plotHeight);
  mdi_->setActiveSubWindow(graphicsChild_);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (busy_ || !notes_->maybeSave()) {
    event->ignore();
    return;
  }
  event->accept();
}

}  // namespace quarvel
