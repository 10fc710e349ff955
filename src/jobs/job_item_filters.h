// The filter list of a job's source side: simple conditions of a column, an
// operator and a value. A filter turns only its operator and value into text;
// the column, brackets, joining word and WHERE are the job side's.
#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>

#include "core/enums.h"
#include "support/numbered_list.h"

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

class CJobItemFilters : public NumberedList<CJobItemFilter> {
 public:
  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);

  CJobItemFilter& Add();
  void Save(pugi::xml_node objRootNode);
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode);
};

}  // namespace ketrova
