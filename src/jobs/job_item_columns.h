// The columns of a job side. On a source side a column names a store field and
// whether it is read; on a target side its SourceColumn names the source column
// that feeds it (empty: not written).
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "core/enums.h"
#include "support/collection.h"
#include "support/numbered_list.h"
#include "support/variant.h"

namespace ketrova {

class CConverter;

class CJobItemColumn {
 public:
  CJobItemColumn() { Clear(); }
  std::int32_t Index = 0;
  std::string SourceColumn;
  std::string TargetColumn;
  std::string Key;
  std::string Name;
  std::string DisplayName;
  bool Visible = true;
  std::string ColumnWidth = "100";
  std::int32_t FieldType = kFieldTypeUnknown;
  std::string Quote;
  Variant DefaultValue = Variant("");
  CConverter* Converter = nullptr;

  void Save(pugi::xml_node objRootNode);
  void Load(pugi::xml_node objRootNode);
  // A copy whose DisplayName and TargetColumn pass MakeIdentifier.
  std::unique_ptr<CJobItemColumn> Clone() const;
  void Clear();
};

class CJobItemColumns : public NumberedList<CJobItemColumn> {
 public:
  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);
  // The underlying collection, keyed by each column's Key.
  Collection<CJobItemColumn>& Columns() { return items_; }

  CJobItemColumn& Add();
  void DebugItems() const {}
  void Save(pugi::xml_node objRootNode);
  // Reads the columns below the element at `szTreeNode` under `objNode`.
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode);
};

}  // namespace ketrova
