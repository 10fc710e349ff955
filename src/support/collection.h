// Collection<T>: the 1-based keyed list behind every list of the object tree,
// with VB Collection semantics. The collection owns its items. Item takes a
// position (1 to Count) or a key; keys compare without regard to case. A
// position out of range raises error 9, an unknown key error 5, a duplicate key
// on Add error 457.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/variant.h"
#include "support/vb_error.h"

namespace ketrova {

// Equality of two keys without regard to the case of ASCII letters.
bool KeyEquals(std::string_view a, std::string_view b);

template <typename T>
class Collection {
 public:
  struct Entry {
    std::string key;
    std::unique_ptr<T> item;
  };

  // Appends an item, under a key when it is not empty. `before` and `after`
  // are 1-based positions (0 for none), as VB's Collection.Add takes them.
  T& Add(std::unique_ptr<T> item, std::string key = {}, std::int32_t before = 0,
         std::int32_t after = 0) {
    if (!key.empty() && FindKey(key) != entries_.end()) throw VbError(457);
    std::size_t pos = entries_.size();
    if (before > 0) {
      CheckPosition(before);
      pos = static_cast<std::size_t>(before - 1);
    } else if (after > 0) {
      CheckPosition(after);
      pos = static_cast<std::size_t>(after);
    }
    auto it = entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(pos),
                              Entry{std::move(key), std::move(item)});
    return *it->item;
  }

  std::int32_t Count() const { return static_cast<std::int32_t>(entries_.size()); }
  bool Empty() const { return entries_.empty(); }

  T& Item(std::int32_t position) const {
    CheckPosition(position);
    return *entries_[static_cast<std::size_t>(position - 1)].item;
  }
  T& Item(std::string_view key) const { return *KeyEntry(key).item; }
  T& Item(const char* key) const { return Item(std::string_view(key)); }
  T& Item(const std::string& key) const { return Item(std::string_view(key)); }
  // A script's index: a text is a key, a number a position (13 for anything
  // else, as VB answers).
  T& Item(const Variant& index) const {
    if (index.IsString()) return Item(std::string_view(index.AsString()));
    if (index.IsNumber() || index.Type() == vbBoolean || index.Type() == vbDate)
      return Item(index.ToLong());
    throw VbError(13);
  }
  // A key that is a number text is still a key, as in VB.
  T* Find(std::string_view key) const {
    auto it = FindKey(key);
    return it == entries_.end() ? nullptr : it->item.get();
  }
  bool Exists(std::string_view key) const { return FindKey(key) != entries_.end(); }

  // Removes an item and gives it back to the caller.
  std::unique_ptr<T> Remove(std::int32_t position) {
    CheckPosition(position);
    auto it = entries_.begin() + (position - 1);
    auto item = std::move(it->item);
    entries_.erase(it);
    return item;
  }
  std::unique_ptr<T> Remove(std::string_view key) {
    auto it = FindKey(key);
    if (it == entries_.end()) throw VbError(5);
    auto item = std::move(it->item);
    entries_.erase(it);
    return item;
  }
  void Clear() { entries_.clear(); }

  // The key of a position, empty when the item was added without one.
  const std::string& KeyAt(std::int32_t position) const {
    CheckPosition(position);
    return entries_[static_cast<std::size_t>(position - 1)].key;
  }
  // Position of an item, 0 when it is not in the collection.
  std::int32_t IndexOf(const T* item) const {
    for (std::size_t i = 0; i < entries_.size(); ++i)
      if (entries_[i].item.get() == item) return static_cast<std::int32_t>(i + 1);
    return 0;
  }
  void SetKeyAt(std::int32_t position, std::string key) {
    CheckPosition(position);
    entries_[static_cast<std::size_t>(position - 1)].key = std::move(key);
  }

  // Iteration in order over the items (T&).
  class iterator {
   public:
    using It = typename std::vector<Entry>::const_iterator;
    explicit iterator(It it) : it_(it) {}
    T& operator*() const { return *it_->item; }
    T* operator->() const { return it_->item.get(); }
    iterator& operator++() {
      ++it_;
      return *this;
    }
    bool operator==(const iterator& o) const { return it_ == o.it_; }

   private:
    It it_;
  };
  iterator begin() const { return iterator(entries_.begin()); }
  iterator end() const { return iterator(entries_.end()); }

 private:
  void CheckPosition(std::int32_t position) const {
    if (position < 1 || position > Count()) throw VbError(9);
  }
  typename std::vector<Entry>::const_iterator FindKey(std::string_view key) const {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const Entry& e) { return !e.key.empty() && KeyEquals(e.key, key); });
  }
  typename std::vector<Entry>::iterator FindKey(std::string_view key) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const Entry& e) { return !e.key.empty() && KeyEquals(e.key, key); });
  }
  const Entry& KeyEntry(std::string_view key) const {
    auto it = FindKey(key);
    if (it == entries_.end()) throw VbError(5);
    return *it;
  }

  std::vector<Entry> entries_;
};

}  // namespace ketrova
