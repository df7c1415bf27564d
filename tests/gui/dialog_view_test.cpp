#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

#include "core/app/recording_shell.h"
#include "gui/dialog_view.h"
#include "gui/row_list_editor.h"

namespace quarvel {
namespace {

DialogModel everyKind() {
  DialogModel m("Smooth", 200, 150);
  m.label("Moving average over the points", "Options")
      .edit("points", "Number of points", 5.0, "Options")
      .checkBox("repeat", "Repeat", false, "Options")
      .radio("method", "Method", {"Moving average", "Spline"}, 0)
      .listBox("solution", "Solutions", {"a=5.431", "a=5.432"})
      .edit("file", "File", "")
      .browse("file", FileRequest{"Open Pattern File", {"Open pattern file (*.xy)"}, "xy"});
  DialogControl regions;
  regions.kind = ControlKind::ListEditor;
  regions.key = "regions";
  regions.columns = {"Low", "High"};
  regions.rows = {{"10", "12"}};
  regions.maxRows = 2;
  regions.overflowTitle = "Error";
  regions.overflowText = "Too many regions";
  m.add(regions);
  DialogControl table;
  table.kind = ControlKind::Table;
  table.key = "peaks";
  table.columns = {"2theta", "Intensity"};
  table.editableColumns = {false, true};
  table.rows = {{"28.44", "100"}, {"47.30", "55"}};
  m.add(table);
  m.okCancel();
  return m;
}

TEST(DialogView, RendersEveryControlAndWritesTheAnswersBack) {
  RecordingShell shell;
  shell.answerFile("/data/run7.xy");
  DialogModel model = everyKind();
  DialogView view(model, shell);
  EXPECT_EQ(view.windowTitle(), "Smooth");

  EXPECT_EQ(view.findChild<QLineEdit*>("points")->text(), "5");
  view.findChild<QLineEdit*>("points")->setText(" 7 ");
  view.findChild<QCheckBox*>("repeat")->setChecked(true);
  view.findChild<QRadioButton*>("method.1")->setChecked(true);
  view.findChild<QListWidget*>("solution")->setCurrentRow(1);
  view.findChild<QPushButton*>("file.browse")->click();
  EXPECT_EQ(shell.fileRequests.at(0).title, "Open Pattern File");

  auto* editor = view.findChild<RowListEditor*>();
  view.findChild<QLineEdit*>("regions.field0")->setText("20");
  view.findChild<QLineEdit*>("regions.field1")->setText("21");
  editor->addRow();
  editor->addRow();  // a third row is beyond the limit of two
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Error", "Too many regions"}));

  auto* table = view.findChild<QTableWidget*>("peaks");
  EXPECT_FALSE(table->item(0, 0)->flags() & Qt::ItemIsEditable);
  EXPECT_TRUE(table->item(0, 1)->flags() & Qt::ItemIsEditable);
  table->item(1, 1)->setText("60");

  view.findChild<QPushButton*>(DialogView::buttonName("OK"))->click();
  EXPECT_EQ(view.result(), DialogModel::kOk);
  EXPECT_EQ(model.number("points"), 7.0);
  EXPECT_TRUE(model.checked("repeat"));
  EXPECT_EQ(model.selected("method"), 1);
  EXPECT_EQ(model.selected("solution"), 1);
  EXPECT_EQ(model.text("file"), "/data/run7.xy");
  EXPECT_EQ(model.at("regions").rows, (std::vector<std::vector<std::string>>{{"10", "12"}, {"20", "21"}}));
  EXPECT_EQ(model.at("peaks").rows[1][1], "60");
}

TEST(DialogView, CancelLeavesTheModelAsItWas) {
  RecordingShell shell;
  DialogModel model = everyKind();
  DialogView view(model, shell);
  view.findChild<QLineEdit*>("points")->setText("9");
  view.findChild<QRadioButton*>("method.1")->setChecked(true);
  view.findChild<QPushButton*>(DialogView::buttonName("Cancel"))->click();
  EXPECT_EQ(view.result(), DialogModel::kCancel);
  EXPECT_EQ(model.text("points"), "5");
  EXPECT_EQ(model.selected("method"), 0);
}

// A list that takes the focus gets a current line without a selection; that is not a choice.
TEST(DialogView, ListBoxCountsOnlyASelectedLineAsChosen) {
  RecordingShell shell;
  DialogModel model("Indexing solutions", 200, 100);
  model.listBox("solution", " No.  a", {"   1  5.431", "   2  7.680"}).okCancel();
  model.setSelected("solution", -1);
  DialogView view(model, shell);
  auto* list = view.findChild<QListWidget*>("solution");
  list->setCurrentRow(0, QItemSelectionModel::NoUpdate);
  view.findChild<QPushButton*>(DialogView::buttonName("OK"))->click();
  EXPECT_EQ(model.selected("solution"), -1);
}

}  // namespace
}  // namespace quarvel
