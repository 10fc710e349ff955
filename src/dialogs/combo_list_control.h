// A QComboBox seen as the core's ListControl, so that the core's list helpers
// (the ODBC listing, DatabaseObjectsToList, ComboFindText, ComboFindItemData)
// fill and search it. Item data are 64-bit numbers; an entry added without
// data holds 0.
#pragma once

#include <cstdint>
#include <string>

#include "stores/list_controls.h"

class QComboBox;

namespace ketrova::dialogs {

// The combo must outlive the adapter.
class ComboListControl : public ListControl {
 public:
  explicit ComboListControl(QComboBox& combo) : combo_(combo) {}
  int ListCount() const override;
  std::string List(int index) const override;
  std::int64_t ItemData(int index) const override;
  void Clear() override;
  void AddItem(const std::string& text) override;
  void RemoveItem(int index) override;
  void SetItemData(int index, std::int64_t value) override;
  void SetListIndex(int index) override;

 private:
  QComboBox& combo_;
};

}  // namespace ketrova::dialogs
