#include "dialogs/job_form_widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "support/system.h"

namespace ketrova::dialogs::jobform {

QLabel* Label(const char* name, const QString& caption, QWidget* parent) {
  auto* label = new QLabel(caption, parent);
  label->setObjectName(QLatin1String(name));
  return label;
}

QLineEdit* Edit(const char* name, QWidget* parent) {
  auto* edit = new QLineEdit(parent);
  edit->setObjectName(QLatin1String(name));
  return edit;
}

QPushButton* Button(const char* name, const QString& caption, QWidget* parent) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(QLatin1String(name));
  button->setAutoDefault(false);
  return button;
}

QCheckBox* Check(const char* name, const QString& caption, QWidget* parent) {
  auto* box = new QCheckBox(caption, parent);
  box->setObjectName(QLatin1String(name));
  return box;
}

QComboBox* Combo(const char* name, QWidget* parent) {
  auto* combo = new QComboBox(parent);
  combo->setObjectName(QLatin1String(name));
  return combo;
}

void AddEntry(QComboBox& combo, const QString& text, std::int64_t itemData) {
  combo.addItem(text, QVariant::fromValue<qlonglong>(itemData));
}

int SelectItemData(QComboBox& combo, std::int64_t itemData) {
  const int index = ComboFindItemData(itemData, ComboListControl(combo));
  combo.setCurrentIndex(index);
  return index;
}

int SelectText(QComboBox& combo, const std::string& text) {
  const int index = ComboFindText(text, ComboListControl(combo));
  combo.setCurrentIndex(index);
  return index;
}

std::int64_t SelectedItemData(const QComboBox& combo, std::int64_t none) {
  if (combo.currentIndex() < 0) return none;
  return combo.currentData().toLongLong();
}

}  // namespace ketrova::dialogs::jobform
