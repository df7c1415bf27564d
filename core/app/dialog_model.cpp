#include "core/app/dialog_model.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "core/common/numbers.h"

namespace quarvel {

DialogModel& DialogModel::label(std::string text, std::string group) {
  DialogControl c;
  c.kind = ControlKind::Label;
  c.label = std::move(text);
  c.group = std::move(group);
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::edit(std::string key, std::string label, std::string value,
                               std::string group) {
  DialogControl c;
  c.kind = ControlKind::Edit;
  c.key = std::move(key);
  c.label = std::move(label);
  c.text = std::move(value);
  c.group = std::move(group);
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::edit(std::string key, std::string label, double value,
                               std::string group) {
  return edit(std::move(key), std::move(label), formatEditNumber(value), std::move(group));
}

DialogModel& DialogModel::checkBox(std::string key, std::string label, bool checked,
                                   std::string group) {
  DialogControl c;
  c.kind = ControlKind::CheckBox;
  c.key = std::move(key);
  c.label = std::move(label);
  c.checked = checked;
  c.group = std::move(group);
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::radio(std::string key, std::string caption,
                                std::vector<std::string> options, int selected) {
  DialogControl c;
  c.kind = ControlKind::RadioGroup;
  c.key = std::move(key);
  c.group = std::move(caption);
  c.options = std::move(options);
  c.selected = selected;
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::listBox(std::string key, std::string label,
                                  std::vector<std::string> lines) {
  DialogControl c;
  c.kind = ControlKind::ListBox;
  c.key = std::move(key);
  c.label = std::move(label);
  c.options = std::move(lines);
  c.selected = -1;
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::browse(std::string target, FileRequest request, std::string group) {
  DialogControl c;
  c.kind = ControlKind::Browse;
  c.key = target + ".browse";
  c.label = "Browse";
  c.target = std::move(target);
  c.file = std::move(request);
  c.group = std::move(group);
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::plotPick(std::string key, std::string label) {
  DialogControl c;
  c.kind = ControlKind::PlotPick;
  c.key = std::move(key);
  c.label = std::move(label);
  add(std::move(c));
  return *this;
}

std::vector<double> DialogModel::picked(std::string_view key) const {
  std::vector<double> values;
  if (const DialogControl* c = find(key))
    for (const auto& row : c->rows)
      if (!row.empty())
        if (auto v = parseNumber(row.front())) values.push_back(*v);
  return values;
}

DialogModel& DialogModel::button(std::string label, int returnCode) {
  DialogControl c;
  c.kind = ControlKind::Button;
  c.label = std::move(label);
  c.returnCode = returnCode;
  add(std::move(c));
  return *this;
}

DialogModel& DialogModel::okCancel() { return button("OK", kOk).button("Cancel", kCancel); }

DialogControl& DialogModel::add(DialogControl control) {
  controls_.push_back(std::move(control));
  return controls_.back();
}

const DialogControl* DialogModel::find(std::string_view key) const {
  auto it = std::find_if(controls_.begin(), controls_.end(),
                         [key](const DialogControl& c) { return !c.key.empty() && c.key == key; });
  return it == controls_.end() ? nullptr : &*it;
}

DialogControl* DialogModel::find(std::string_view key) {
  return const_cast<DialogControl*>(std::as_const(*this).find(key));
}

DialogControl& DialogModel::at(std::string_view key) {
  DialogControl* c = find(key);
  if (c == nullptr) throw std::out_of_range("no dialog control named " + std::string(key));
  return *c;
}

std::string DialogModel::text(std::string_view key) const {
  const DialogControl* c = find(key);
  return c == nullptr ? std::string() : c->text;
}

std::optional<double> DialogModel::number(std::string_view key) const {
  return parseNumber(text(key));
}

double DialogModel::number(std::string_view key, double fallback) const {
  return number(key).value_or(fallback);
}

bool DialogModel::checked(std::string_view key) const {
  const DialogControl* c = find(key);
  return c != nullptr && c->checked;
}

int DialogModel::selected(std::string_view key) const {
  const DialogControl* c = find(key);
  return c == nullptr ? -1 : c->selected;
}

void DialogModel::setText(std::string_view key, std::string value) { at(key).text = std::move(value); }
void DialogModel::setChecked(std::string_view key, bool value) { at(key).checked = value; }
void DialogModel::setSelected(std::string_view key, int index) { at(key).selected = index; }

std::string formatEditNumber(double value) {
  // Plain decimals for the magnitudes people type (a tolerance reads 0.0002, not 2e-04);
  // exponents only for the very small and very large.
  const auto v = static_cast<float>(value);
  const float magnitude = std::abs(v);
  if (magnitude != 0.0f && (magnitude < 1e-5f || magnitude >= 1e9f)) return shortestFloatText(v);
  char buffer[64];
  auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::fixed);
  return ec == std::errc() ? std::string(buffer, end) : shortestFloatText(v);
}

}  // namespace quarvel
