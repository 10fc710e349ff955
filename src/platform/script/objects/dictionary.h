// Dictionary: Scripting.Dictionary, the keyed list scripts create with
// CreateObject. Keys are any value but an array: numbers compare as numbers
// whatever their subtype (1 and 1.0 are one key, 1 and "1" two), text by its
// code units, or without regard to case when CompareMode is 1 (text compare).
// Item is the default member; reading the Item of a missing key adds that key
// with an Empty value, as the original does. For Each walks the keys in the
// order they were added.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/script/binding.h"

namespace ketrova::script {

class Dictionary : public BoundObject<Dictionary> {
 public:
  std::string TypeName() const override { return "Dictionary"; }
  static const MemberTable<Dictionary>& Members();

  void Add(const Variant& key, const Variant& item);
  bool Exists(const Variant& key) const;
  // The item of a key; a missing key is added with an Empty item.
  Variant& Item(const Variant& key);
  void SetItem(const Variant& key, const Variant& item);
  // Gives an existing key a new key (32811 when the key is missing, 457 when
  // the new key exists).
  void RenameKey(const Variant& key, const Variant& newKey);
  void Remove(const Variant& key);
  void RemoveAll();
  std::int32_t Count() const { return static_cast<std::int32_t>(entries_.size()); }
  // Zero-based arrays of Variants, in the order of adding.
  Variant Keys() const;
  Variant Items() const;
  int CompareMode() const { return compareMode_; }
  // Only while the dictionary is empty (5 otherwise).
  void SetCompareMode(int mode);

 private:
  struct Entry {
    Variant key;
    Variant item;
  };
  std::string Normalize(const Variant& key) const;
  void Reindex();

  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t> index_;
  int compareMode_ = 0;
};

}  // namespace ketrova::script
