#include "gui/row_list_editor.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "core/app/shell.h"

namespace quarvel {

RowListEditor::RowListEditor(const DialogControl& control, Shell& shell, QWidget* parent)
    : QWidget(parent), control_(control), shell_(shell),
      table_(new QTableWidget(static_cast<int>(control.rows.size()),
                              static_cast<int>(control.columns.size()), this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* fieldRow = new QGridLayout;
  QStringList headers;
  for (std::size_t c = 0; c < control.columns.size(); ++c) {
    const QString caption = QString::fromStdString(control.columns[c]);
    headers << caption;
    auto* field = new QLineEdit(this);
    field->setObjectName(QString::fromStdString(control.key) + ".field" + QString::number(c));
    fieldRow->addWidget(new QLabel(caption, this), 0, static_cast<int>(c));
    fieldRow->addWidget(field, 1, static_cast<int>(c));
    fields_.push_back(field);
  }
  layout->addLayout(fieldRow);

  table_->setObjectName(QString::fromStdString(control.key));
  table_->setHorizontalHeaderLabels(headers);
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  for (std::size_t r = 0; r < control.rows.size(); ++r) {
    for (std::size_t c = 0; c < control.columns.size() && c < control.rows[r].size(); ++c) {
      table_->setItem(static_cast<int>(r), static_cast<int>(c),
                      new QTableWidgetItem(QString::fromStdString(control.rows[r][c])));
    }
  }
  layout->addWidget(table_, 1);
  connect(table_, &QTableWidget::itemSelectionChanged, this, &RowListEditor::showSelectedInFields);

  auto* buttons = new QHBoxLayout;
  const std::pair<const char*, void (RowListEditor::*)()> kButtons[] = {
      {"Change", &RowListEditor::changeRow}, {"Add", &RowListEditor::addRow},
      {"Insert", &RowListEditor::insertRow}, {"Delete", &RowListEditor::deleteRow}};
  for (const auto& [caption, step] : kButtons) {
    auto* button = new QPushButton(caption, this);
    button->setAutoDefault(false);
    button->setObjectName(QString::fromStdString(control.key) + "." + caption);
    connect(button, &QPushButton::clicked, this, step);
    buttons->addWidget(button);
  }
  layout->addLayout(buttons);
  setEnabled(control.enabled);
}

std::vector<std::vector<std::string>> RowListEditor::rows() const {
  std::vector<std::vector<std::string>> out(static_cast<std::size_t>(table_->rowCount()));
  for (int r = 0; r < table_->rowCount(); ++r) {
    for (int c = 0; c < table_->columnCount(); ++c) {
      const QTableWidgetItem* item = table_->item(r, c);
      out[static_cast<std::size_t>(r)].push_back(item != nullptr ? item->text().toStdString() : std::string());
    }
  }
  return out;
}

int RowListEditor::selectedRow() const {
  const auto selected = table_->selectionModel()->selectedRows();
  return selected.isEmpty() ? -1 : selected.front().row();
}

void RowListEditor::showSelectedInFields() {
  const int row = selectedRow();
  if (row < 0) return;
  for (std::size_t c = 0; c < fields_.size(); ++c) {
    const QTableWidgetItem* item = table_->item(row, static_cast<int>(c));
    fields_[c]->setText(item != nullptr ? item->text() : QString());
  }
}

void RowListEditor::putRow(int row) {
  for (std::size_t c = 0; c < fields_.size(); ++c) {
    table_->setItem(row, static_cast<int>(c), new QTableWidgetItem(fields_[c]->text().trimmed()));
  }
}

bool RowListEditor::roomForOneMore() {
  if (control_.maxRows == 0 || static_cast<std::size_t>(table_->rowCount()) < control_.maxRows) return true;
  shell_.showMessage(control_.overflowTitle, control_.overflowText);
  return false;
}

void RowListEditor::changeRow() {
  if (const int row = selectedRow(); row >= 0) putRow(row);
}

void RowListEditor::addRow() {
  if (!roomForOneMore()) return;
  const int row = table_->rowCount();
  table_->insertRow(row);
  putRow(row);
  table_->selectRow(row);
}

void RowListEditor::insertRow() {
  if (!roomForOneMore()) return;
  const int row = std::max(selectedRow(), 0);
  table_->insertRow(row);
  putRow(row);
  table_->selectRow(row);
}

void RowListEditor::deleteRow() {
  if (const int row = selectedRow(); row >= 0) table_->removeRow(row);
}

}  // namespace quarvel
