// The frame "QUARVEL - Display and handle diffraction patterns": the menu bar built from the
// session's menu model, an MDI area with the graphics child, the "Input/Output" notes child and
// any text viewers, and a progress bar with a Stop button for long computations.
#pragma once

#include <memory>
#include <string>

#include <QMainWindow>

class QMdiArea;
class QMdiSubWindow;
class QProgressBar;
class QPushButton;
class QLabel;

namespace quarvel {

class CommandDispatcher;
class DialogView;
class GraphicsWindow;
class MenuBinding;
class NotesWindow;
class Session;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow();
  ~MainWindow() override;

  // Connects the frame to the working state: builds the menu bar and routes every menu
  // action and accelerator to `dispatcher`.
  void attach(Session& session, CommandDispatcher& dispatcher);
  Session* session() const { return session_; }

  GraphicsWindow& graphics() { return *graphics_; }
  NotesWindow& notes() { return *notes_; }
  QMdiArea& mdiArea() { return *mdi_; }
  MenuBinding* menus() { return menus_.get(); }

  // Runs a command through the dispatcher. While a command is running, only the interrupt
  // (Ctrl+I) is accepted: it asks the running computation to stop.
  void runCommand(int id);
  bool busy() const { return busy_; }

  // What the shell asks of the windows.
  void repaintPlot(bool resetView);
  void windowCommand(int id);
  void appendNotes(const QString& line);
  void openTextViewer(const QString& path);
  bool takeInterrupt();
  void requestInterrupt() { interrupt_ = true; }
  void showProgress(double fraction, const QString& text);
  // Runs a dialog that collects clicks in the plot: the frame stays usable (commands still
  // wait), each click adds the pattern's 2θ to the dialog and an orange mark to the plot.
  int runPickingDialog(DialogView& view);
  // Prints a report text under `jobName` (to a PDF file where no printer exists).
  void printText(const QString& jobName, const QString& text);

  // Open MDI children, and the check made before another one is opened: false (with the
  // message) when the limit of open windows is reached.
  int childWindowCount() const;
  bool reserveChildWindow();

  void tileHorizontally();
  void tileVertically();
  // Graphics above, notes below: the arrangement at start.
  void arrangeDefault();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void buildProgressBar();
  void describePattern();
  void showChild(QMdiSubWindow* child);
  void notesChanged();
  void editNotes(int id);
  void printReport();
  void showAbout();

  QMdiArea* mdi_;
  GraphicsWindow* graphics_;
  NotesWindow* notes_;
  QMdiSubWindow* graphicsChild_;
  QMdiSubWindow* notesChild_;
  QProgressBar* progress_ = nullptr;
  QLabel* progressText_ = nullptr;
  QLabel* patternInfo_ = nullptr;
  QPushButton* stop_ = nullptr;
  Session* session_ = nullptr;
  CommandDispatcher* dispatcher_ = nullptr;
  std::unique_ptr<MenuBinding> menus_;
  bool busy_ = false;
  bool interrupt_ = false;
};

}  // namespace quarvel
