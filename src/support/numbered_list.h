// NumberedList<T>: the common part of the project's plain lists (a job side's
// columns and filters, a store's catalogue and each entry's fields, the log).
// The list owns its items in a Collection. A new item is cleared and numbered
// after the last one: Index = Count + 1, and that number as text is its Key.
// Remove renumbers nothing, so an Add after a Remove can meet a key still in
// use and raise error 457, as these lists have always behaved.
//
// T needs the members Index and Key and a Clear(). Clear and the destructor
// clear every item before letting it go. A list that owns back references
// (Converter, Database) sets them in its own Add on the item AddNumbered gives.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "support/collection.h"

namespace ketrova {

template <typename T>
class NumberedList {
 public:
  NumberedList() = default;
  ~NumberedList() { Clear(); }
  NumberedList(const NumberedList&) = delete;
  NumberedList& operator=(const NumberedList&) = delete;

  void Remove(std::int32_t Index) { items_.Remove(Index); }
  void Remove(std::string_view Key) { items_.Remove(Key); }
  T& Item(std::int32_t Index) const { return items_.Item(Index); }
  T& Item(std::string_view Key) const { return items_.Item(Key); }
  std::int32_t Count() const { return items_.Count(); }
  void Clear() {
    for (T& item : items_) item.Clear();
    items_.Clear();
  }

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 protected:
  T& AddNumbered() {
    auto item = std::make_unique<T>();
    item->Clear();
    item->Index = Count() + 1;
    item->Key = std::to_string(item->Index);
    std::string key = item->Key;
    return items_.Add(std::move(item), std::move(key));
  }

  Collection<T> items_;
};

}  // namespace ketrova
