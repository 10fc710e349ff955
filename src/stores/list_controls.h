// The controls that the schema analysis and the ODBC listing fill: a progress
// bar, a label, and a list or combo box. A dialog implements them over its own
// widgets; the command-line tool and the tests use TextList. Any of them may be
// absent where an operation takes a pointer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/system.h"

namespace ketrova {

class ProgressBarControl {
 public:
  virtual ~ProgressBarControl() = default;
  virtual void SetMin(double value) = 0;
  virtual void SetMax(double value) = 0;
  virtual void SetValue(double value) = 0;
  virtual void SetVisible(bool visible) = 0;
};

class LabelControl {
 public:
  virtual ~LabelControl() = default;
  virtual void SetCaption(const std::string& caption) = 0;
};

// A list or combo box: entries with item data, 0-based.
class ListControl : public ComboList {
 public:
  virtual void Clear() = 0;
  virtual void AddItem(const std::string& text) = 0;
  virtual void RemoveItem(int index) = 0;
  virtual void SetItemData(int index, std::int64_t value) = 0;
  virtual void SetListIndex(int index) = 0;
};

// A list kept in memory.
class TextList : public ListControl {
 public:
  struct Entry {
    std::string text;
    std::int64_t itemData = 0;
  };

  int ListCount() const override { return static_cast<int>(entries.size()); }
  std::string List(int index) const override { return entries.at(index).text; }
  std::int64_t ItemData(int index) const override { return entries.at(index).itemData; }
  void Clear() override {
    entries.clear();
    listIndex = -1;
  }
  void AddItem(const std::string& text) override { entries.push_back({text, 0}); }
  void RemoveItem(int index) override { entries.erase(entries.begin() + index); }
  void SetItemData(int index, std::int64_t value) override { entries.at(index).itemData = value; }
  void SetListIndex(int index) override { listIndex = index; }

  std::vector<Entry> entries;
  int listIndex = -1;
};

}  // namespace ketrova
