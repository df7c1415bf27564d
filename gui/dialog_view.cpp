#include "gui/dialog_view.h"

#include <algorithm>

#include <QButtonGroup>
#include <QCheckBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

#include "core/app/shell.h"
#include "gui/row_list_editor.h"

namespace quarvel {
namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }
QString nameOf(const DialogControl& c) { return qs(c.key); }

}  // namespace

DialogView::DialogView(DialogModel& model, Shell& shell, QWidget* parent)
    : QDialog(parent), model_(model), shell_(shell), body_(new QVBoxLayout(this)),
      buttons_(new QHBoxLayout) {
  setWindowTitle(qs(model.title()));
  buttons_->addStretch(1);
  for (DialogControl& control : model.controls()) addControl(control);
  body_->addStretch(1);
  body_->addLayout(buttons_);
  sizeFromDialogUnits();
}

void DialogView::sizeFromDialogUnits() {
  // A dialog unit is a quarter of the average character width and an eighth of its height.
  const QFontMetrics fm(font());
  const int w = model_.width() * fm.averageCharWidth() / 4;
  const int h = model_.height() * fm.height() / 8;
  resize(std::max(w, sizeHint().width()), std::max(h, sizeHint().height()));
}

QFormLayout& DialogView::formFor(const std::string& group) {
  for (auto& [caption, form] : forms_) {
    if (caption == group) return *form;
  }
  auto* form = new QFormLayout;
  if (group.empty()) {
    body_->addLayout(form);
  } else {
    auto* box = new QGroupBox(qs(group), this);
    box->setLayout(form);
    body_->addWidget(box);
  }
  forms_.emplace_back(group, form);
  return *form;
}

void DialogView::addControl(DialogControl& c) {
  const bool joinsOptionRow = (c.kind == ControlKind::Edit || c.kind == ControlKind::Label) && c.group == optionRowGroup_;
  if (!joinsOptionRow) optionRow_ = nullptr;
  switch (c.kind) {
    case ControlKind::Label: addLabel(c); break;
    case ControlKind::Edit: addEdit(c); break;
    case ControlKind::CheckBox: addCheckBox(c); break;
    case ControlKind::RadioGroup: addRadioGroup(c); break;
    case ControlKind::ListBox: addListBox(c); break;
    case ControlKind::ListEditor: addListEditor(c); break;
    case ControlKind::Table: addTable(c); break;
    case ControlKind::Browse: addBrowse(c); break;
    case ControlKind::Button: addButton(c); break;
    case ControlKind::PlotPick: addPlotPick(c); break;
  }
}

void DialogView::addLabel(const DialogControl& c) {
  auto* label = new QLabel(qs(c.label), this);
  label->setEnabled(c.enabled);
  if (optionRow_ != nullptr) {
    optionRow_->insertWidget(optionRow_->count() - 1, label);
    return;
  }
  label->setWordWrap(true);
  formFor(c.group).addRow(label);
}

void DialogView::addEdit(const DialogControl& c) {
  auto* edit = new QLineEdit(qs(c.text), this);
  edit->setObjectName(nameOf(c));
  edit->setEnabled(c.enabled);
  // A Browse button that fills this edit sits on the same row.
  const auto& all = model_.controls();
  const auto browse = std::find_if(all.begin(), all.end(), [&c](const DialogControl& b) {
    return b.kind == ControlKind::Browse && b.target == c.key;
  });
  if (optionRow_ != nullptr && browse == all.end()) {
    if (!c.label.empty()) optionRow_->insertWidget(optionRow_->count() - 1, new QLabel(qs(c.label), this));
    edit->setMaximumWidth(fontMetrics().averageCharWidth() * 12);
    optionRow_->insertWidget(optionRow_->count() - 1, edit);
  } else if (browse != all.end()) {
    auto* row = new QHBoxLayout;
    row->addWidget(edit, 1);
    row->addWidget(makeBrowseButton(*browse));
    formFor(c.group).addRow(qs(c.label), row);
  } else {
    formFor(c.group).addRow(qs(c.label), edit);
  }
  writers_.push_back([this, key = c.key, edit] { model_.setText(key, edit->text().trimmed().toStdString()); });
}

void DialogView::addCheckBox(const DialogControl& c) {
  auto* box = new QCheckBox(qs(c.label), this);
  box->setObjectName(nameOf(c));
  box->setChecked(c.checked);
  box->setEnabled(c.enabled);
  optionRow_ = new QHBoxLayout;
  optionRowGroup_ = c.group;
  optionRow_->addWidget(box);
  optionRow_->addStretch(1);  // what joins the row goes before this, so the row stays left-aligned
  formFor(c.group).addRow(optionRow_);
  writers_.push_back([this, key = c.key, box] { model_.setChecked(key, box->isChecked()); });
}

void DialogView::addRadioGroup(const DialogControl& c) {
  auto* box = new QGroupBox(qs(c.group), this);
  box->setObjectName(nameOf(c));
  box->setEnabled(c.enabled);
  // Up to six choices sit side by side; longer lists run down.
  QBoxLayout* layout = c.options.size() <= 6 ? static_cast<QBoxLayout*>(new QHBoxLayout(box))
                                             : static_cast<QBoxLayout*>(new QVBoxLayout(box));
  auto* group = new QButtonGroup(box);
  for (std::size_t i = 0; i < c.options.size(); ++i) {
    auto* button = new QRadioButton(qs(c.options[i]), box);
    button->setObjectName(nameOf(c) + "." + QString::number(i));
    button->setChecked(static_cast<int>(i) == c.selected);
    group->addButton(button, static_cast<int>(i));
    layout->addWidget(button);
  }
  body_->addWidget(box);
  writers_.push_back([this, key = c.key, group] { model_.setSelected(key, group->checkedId()); });
}

void DialogView::addListBox(const DialogControl& c) {
  auto* list = new QListWidget(this);
  list->setObjectName(nameOf(c));
  list->setEnabled(c.enabled);
  list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));  // column-aligned lines
  int widest = 0;
  for (const std::string& line : c.options) {
    list->addItem(qs(line));
    widest = std::max(widest, list->fontMetrics().horizontalAdvance(qs(line)));
  }
  // Wide enough for the longest line, so that columns are never cut.
  list->setMinimumWidth(widest + 2 * list->frameWidth() + list->verticalScrollBar()->sizeHint().width() + 8);
  if (c.selected >= 0 && c.selected < list->count()) list->setCurrentRow(c.selected);
  if (!c.label.empty()) {
    auto* heads = new QLabel(qs(c.label), this);  // column heads over the lines: the same font
    heads->setFont(list->font());
    heads->setIndent(list->frameWidth() + 2);
    formFor(c.group).addRow(heads);
  }
  formFor(c.group).addRow(list);
  // A double click chooses the line as OK does.
  connect(list, &QListWidget::itemDoubleClicked, this, [this] { press(DialogModel::kOk); });
  writers_.push_back([this, key = c.key, list] {
    // A view that takes the focus makes its first line current without selecting it: only a
    // selected line counts as chosen.
    const QList<QListWidgetItem*> chosen = list->selectedItems();
    model_.setSelected(key, chosen.isEmpty() ? -1 : list->row(chosen.front()));
  });
}

void DialogView::addListEditor(const DialogControl& c) {
  auto* editor = new RowListEditor(c, shell_, this);
  if (!c.label.empty()) formFor(c.group).addRow(new QLabel(qs(c.label), this));
  formFor(c.group).addRow(editor);
  writers_.push_back([this, key = c.key, editor] {
    DialogControl& control = model_.at(key);
    control.rows = editor->rows();
    control.selected = editor->selectedRow();
  });
}

void DialogView::addTable(const DialogControl& c) {
  const int rows = static_cast<int>(c.rows.size()), columns = static_cast<int>(c.columns.size());
  auto* table = new QTableWidget(rows, columns, this);
  table->setObjectName(nameOf(c));
  table->setEnabled(c.enabled);
  QStringList headers;
  for (const std::string& h : c.columns) headers << qs(h);
  table->setHorizontalHeaderLabels(headers);
  // Without a list of editable columns every column may be edited.
  auto editable = [&c](std::size_t col) {
    return c.editableColumns.empty() || (col < c.editableColumns.size() && c.editableColumns[col]);
  };
  for (int r = 0; r < rows; ++r) {
    const auto& row = c.rows[static_cast<std::size_t>(r)];
    for (int col = 0; col < columns; ++col) {
      const auto ucol = static_cast<std::size_t>(col);
      auto* item = new QTableWidgetItem(ucol < row.size() ? qs(row[ucol]) : QString());
      if (!editable(ucol)) item->setFlags(item->flags() & ~Qt::ItemIsEditable);
      table->setItem(r, col, item);
    }
  }
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  if (!c.label.empty()) formFor(c.group).addRow(new QLabel(qs(c.label), this));
  formFor(c.group).addRow(table);
  writers_.push_back([this, key = c.key, table] {
    DialogControl& control = model_.at(key);
    for (int r = 0; r < table->rowCount() && r < static_cast<int>(control.rows.size()); ++r) {
      auto& row = control.rows[static_cast<std::size_t>(r)];
      row.resize(static_cast<std::size_t>(table->columnCount()));
      for (int col = 0; col < table->columnCount(); ++col) {
        if (const QTableWidgetItem* item = table->item(r, col)) row[static_cast<std::size_t>(col)] = item->text().trimmed().toStdString();
      }
    }
    control.selected = table->currentRow();
  });
}

QPushButton* DialogView::makeBrowseButton(const DialogControl& c) {
  auto* button = new QPushButton(qs(c.label), this);
  button->setObjectName(nameOf(c));
  button->setAutoDefault(false);
  button->setEnabled(c.enabled);
  connect(button, &QPushButton::clicked, this, [this, target = c.target, request = c.file] {
    auto* edit = findChild<QLineEdit*>(qs(target));
    if (auto path = shell_.chooseFile(request); path && edit != nullptr) edit->setText(qs(*path));
  });
  return button;
}

void DialogView::addBrowse(const DialogControl& c) {
  if (findChild<QPushButton*>(nameOf(c)) != nullptr) return;  // already beside its edit
  formFor(c.group).addRow(makeBrowseButton(c));
}

void DialogView::addButton(const DialogControl& c) {
  auto* button = new QPushButton(qs(c.label), this);
  button->setObjectName(buttonName(c.label));
  button->setEnabled(c.enabled);
  if (c.returnCode == DialogModel::kOk) button->setDefault(true);
  buttons_->addWidget(button);
  connect(button, &QPushButton::clicked, this, [this, code = c.returnCode] { press(code); });
}

void DialogView::addPlotPick(const DialogControl& c) {
  picks_ = new QListWidget(this);
  picks_->setObjectName(nameOf(c));
  for (const auto& row : c.rows)
    if (!row.empty()) picks_->addItem(qs(row.front()));
  if (!c.label.empty()) formFor(c.group).addRow(new QLabel(qs(c.label), this));
  formFor(c.group).addRow(picks_);
  writers_.push_back([this, key = c.key] {
    DialogControl& control = model_.at(key);
    control.rows.clear();
    for (int i = 0; i < picks_->count(); ++i) control.rows.push_back({picks_->item(i)->text().toStdString()});
  });
}

void DialogView::addPick(double twoTheta) {
  if (picks_ == nullptr) return;
  picks_->addItem(QString::number(twoTheta, 'f', 4));
  picks_->scrollToBottom();
}

void DialogView::writeBack() {
  for (const auto& write : writers_) write();
}

void DialogView::press(int returnCode) {
  if (returnCode != DialogModel::kCancel) writeBack();
  done(returnCode);
}

}  // namespace quarvel
