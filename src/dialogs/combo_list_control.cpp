#include "dialogs/combo_list_control.h"

#include <QComboBox>
#include <QVariant>

namespace ketrova::dialogs {

int ComboListControl::ListCount() const {
  return combo_.count();
}

std::string ComboListControl::List(int index) const {
  return combo_.itemText(index).toStdString();
}

std::int64_t ComboListControl::ItemData(int index) const {
  return combo_.itemData(index).toLongLong();
}

void ComboListControl::Clear() {
  combo_.clear();
}

void ComboListControl::AddItem(const std::string& text) {
  combo_.addItem(QString::fromStdString(text), QVariant::fromValue<qlonglong>(0));
}

void ComboListControl::RemoveItem(int index) {
  combo_.removeItem(index);
}

void ComboListControl::SetItemData(int index, std::int64_t value) {
  combo_.setItemData(index, QVariant::fromValue<qlonglong>(value));
}

void ComboListControl::SetListIndex(int index) {
  combo_.setCurrentIndex(index);
}

}  // namespace ketrova::dialogs
