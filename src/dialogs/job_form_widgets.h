// Small pieces the pages of the job editor share: text conversion, named
// controls, and a QComboBox seen as the core's ListControl (so that
// DatabaseObjectsToList, ComboFindText and ComboFindItemData work on it).
#pragma once

#include <QString>
#include <cstdint>
#include <string>

#include "dialogs/combo_list_control.h"
#include "stores/list_controls.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

namespace ketrova::dialogs::jobform {

inline QString Q(const std::string& text) {
  return QString::fromStdString(text);
}
inline std::string S(const QString& text) {
  return text.toStdString();
}

QLabel* Label(const char* name, const QString& caption, QWidget* parent);
QLineEdit* Edit(const char* name, QWidget* parent);
QPushButton* Button(const char* name, const QString& caption, QWidget* parent);
QCheckBox* Check(const char* name, const QString& caption, QWidget* parent);
QComboBox* Combo(const char* name, QWidget* parent);

// Appends an entry with its item data.
void AddEntry(QComboBox& combo, const QString& text, std::int64_t itemData);
// Selects the first entry with that item data; -1 (nothing) when none.
// Answers the index.
int SelectItemData(QComboBox& combo, std::int64_t itemData);
// Selects the first entry whose text matches by ComboFindText; -1 when none.
int SelectText(QComboBox& combo, const std::string& text);
// The item data of the selected entry, `none` without a selection.
std::int64_t SelectedItemData(const QComboBox& combo, std::int64_t none = 0);

// The shared adapter, under the name the pages use.
using dialogs::ComboListControl;

}  // namespace ketrova::dialogs::jobform
