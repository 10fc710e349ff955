#include "platform/script/objects/dictionary.h"

#include <cstdio>

namespace ketrova::script {

namespace {

constexpr std::int32_t kElementNotFound = 32811;

[[noreturn]] void RaiseNotFound() {
  throw VbError(kElementNotFound, "Element nicht gefunden");
}

Variant ToArray(std::vector<Variant> values) {
  auto array = std::make_shared<SafeArray>();
  array->bounds.push_back({0, static_cast<std::int32_t>(values.size())});
  array->data = std::move(values);
  return Variant(array);
}

}  // namespace

const MemberTable<Dictionary>& Dictionary::Members() {
  static const auto table =
      MemberTable<Dictionary>()
          .Property(
              "Item", 1, 1, [](Dictionary& d, Args a) { return d.Item(a[0]); },
              [](Dictionary& d, Args a, const Variant& v) { d.SetItem(a[0], v); })
          .Property("Count", [](Dictionary& d, Args) { return Variant::Long(d.Count()); })
          .Property(
              "Key", 1, 1, [](Dictionary&, Args) -> Variant { throw VbError(438); },
              [](Dictionary& d, Args a, const Variant& v) { d.RenameKey(a[0], v); })
          .Property(
              "CompareMode", [](Dictionary& d, Args) { return Variant::Long(d.CompareMode()); },
              [](Dictionary& d, Args, const Variant& v) { d.SetCompareMode(v.ToLong()); })
          .Method("Add", 2, 2,
                  [](Dictionary& d, Args a) {
                    d.Add(a[0], a[1]);
                    return Variant();
                  })
          .Method("Exists", 1, 1, [](Dictionary& d, Args a) { return Variant(d.Exists(a[0])); })
          .Method("Keys", 0, 0, [](Dictionary& d, Args) { return d.Keys(); })
          .Method("Items", 0, 0, [](Dictionary& d, Args) { return d.Items(); })
          .Method("Remove", 1, 1,
                  [](Dictionary& d, Args a) {
                    d.Remove(a[0]);
                    return Variant();
                  })
          .Method("RemoveAll", 0, 0,
                  [](Dictionary& d, Args) {
                    d.RemoveAll();
                    return Variant();
                  })
          .Default("Item")
          .Enumeration([](Dictionary& d) -> std::unique_ptr<Enumerator> {
            std::vector<Variant> keys;
            for (const auto& e : d.entries_) keys.push_back(e.key);
            return std::make_unique<VectorEnumerator>(std::move(keys));
          });
  return table;
}

std::string Dictionary::Normalize(const Variant& key) const {
  if (key.IsArray()) throw VbError(13);
  if (key.IsObject()) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "o:%p", static_cast<const void*>(key.AsObject().get()));
    return buffer;
  }
  if (key.IsEmpty()) return "e";
  if (key.IsNull()) return "z";
  if (key.IsString()) {
    std::string text = "s:" + key.AsString();
    if (compareMode_ != 0) {
      for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
  }
  if (key.Type() == vbBoolean) return key.AsBool() ? "b:1" : "b:0";
  if (key.Type() == vbDate) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "d:%.17g", key.AsDate().value);
    return buffer;
  }
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "n:%.17g", key.ToDouble());
  return buffer;
}

void Dictionary::Reindex() {
  index_.clear();
  for (std::size_t i = 0; i < entries_.size(); ++i) index_[Normalize(entries_[i].key)] = i;
}

void Dictionary::Add(const Variant& key, const Variant& item) {
  std::string normal = Normalize(key);
  if (index_.count(normal)) throw VbError(457);
  index_[normal] = entries_.size();
  entries_.push_back({key, item});
}

bool Dictionary::Exists(const Variant& key) const {
  return index_.count(Normalize(key)) != 0;
}

Variant& Dictionary::Item(const Variant& key) {
  std::string normal = Normalize(key);
  auto it = index_.find(normal);
  if (it != index_.end()) return entries_[it->second].item;
  index_[normal] = entries_.size();
  entries_.push_back({key, Variant()});
  return entries_.back().item;
}

void Dictionary::SetItem(const Variant& key, const Variant& item) {
  Item(key) = item;
}

void Dictionary::RenameKey(const Variant& key, const Variant& newKey) {
  auto it = index_.find(Normalize(key));
  if (it == index_.end()) RaiseNotFound();
  std::string normal = Normalize(newKey);
  if (index_.count(normal)) throw VbError(457);
  std::size_t position = it->second;
  index_.erase(it);
  index_[normal] = position;
  entries_[position].key = newKey;
}

void Dictionary::Remove(const Variant& key) {
  auto it = index_.find(Normalize(key));
  if (it == index_.end()) RaiseNotFound();
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(it->second));
  Reindex();
}

void Dictionary::RemoveAll() {
  entries_.clear();
  index_.clear();
}

Variant Dictionary::Keys() const {
  std::vector<Variant> keys;
  for (const auto& e : entries_) keys.push_back(e.key);
  return ToArray(std::move(keys));
}

Variant Dictionary::Items() const {
  std::vector<Variant> items;
  for (const auto& e : entries_) items.push_back(e.item);
  return ToArray(std::move(items));
}

void Dictionary::SetCompareMode(int mode) {
  if (!entries_.empty() || mode < 0) throw VbError(5);
  compareMode_ = mode;
}

}  // namespace ketrova::script
