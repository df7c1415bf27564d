// The "Input/Output" notes child: an editable text that receives every result line, saved as a
// text file and printed (to a PDF file where no printer exists).
#pragma once

#include <QPlainTextEdit>
#include <QString>

namespace quarvel {

class NotesWindow : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit NotesWindow(QWidget* parent = nullptr);

  void appendLine(const QString& line);

  // The file the notes were last saved to (empty until "Save notes as").
  const QString& fileName() const { return fileName_; }
  // "Save notes": to the current file, or asks for one like "Save notes as".
  bool save();
  bool saveAs();
  // Writes the text to `path`; shows "Cannot create file" / "I/O error while writing file".
  bool saveTo(const QString& path);
  // Prints the text under the job name "QUARVEL Notes"; into a PDF file when the system has
  // no printer.
  void print();

  // Answers the "Save changes to" question for a changed text. False when the user cancelled.
  bool maybeSave();

 signals:
  void contentChanged();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QString fileName_;
};

}  // namespace quarvel
