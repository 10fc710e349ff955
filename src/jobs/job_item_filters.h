// The filter list of a job's source side: simple conditions of a column, an
// operator and a value. A filter turns only its operator and value into text;
// the column, brackets, joining word and WHERE are the job side's.
#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>

#include "core/enums.h"
#include "support/collection.h"

namespace ketrova {

class CConverter;

class CJobItemFilter {
 public:
  CJobItemFilter() { Clear(); }
  std::int32_t Index = 0;
  std::string Key;
  std::string AndOr;
  std::string Column;
  std::int32_t FieldType = kFieldTypeUnknown;
  std::int32_t FilterType = jftNone;
  std::string Value;
  std::string Bracket;
  CConverter* Converter = nullptr;

  void Save(pugi::xml_node objRootNode);
  void Load(pugi::xml_node objRootNode);
  // The operator and the quoted value (" LIKE '%abc%'"); empty for jftNone.
  std::string GetFilter() const;
  // Key and Converter stay.
  void Clear();
};

class CJobItemFilters {
 public:
  CJobItemFilters() = default;
  ~CJobItemFilters() { Clear(); }
  CJobItemFilters(const CJobItemFilters&) = delete;
  CJobItemFilters& operator=(const CJobItemFilters&) = delete;

  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);

  CJobItemFilter& Add();
  void Remove(std::int32_t Index) { items_.Remove(Index); }
  void Remove(std::string_view Key) { items_.Remove(Key); }
  CJobItemFilter& Item(std::int32_t Index) const { return items_.Item(Index); }
  CJobItemFilter& Item(std::string_view Key) const { return items_.Item(Key); }
  std::int32_t Count() const { return items_.Count(); }
  void Clear();
  void Save(pugi::xml_node objRootNode);
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode);

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  Collection<CJobItemFilter> items_;
};

}  // namespace ketrova
