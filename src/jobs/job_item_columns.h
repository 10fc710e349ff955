// The columns of a job side. On a source side a column names a store field and
// whether it is read; on a target side its SourceColumn names the source column
// that feeds it (empty: not written). Lists are 1-based with Key = Index as
// text at Add; Remove renumbers nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "core/enums.h"
#include "support/collection.h"
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

class CJobItemColumns {
 public:
  CJobItemColumns() = default;
  ~CJobItemColumns() { Clear(); }
  CJobItemColumns(const CJobItemColumns&) = delete;
  CJobItemColumns& operator=(const CJobItemColumns&) = delete;

  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);
  // The underlying collection, keyed by each column's Key.
  Collection<CJobItemColumn>& Columns() { return items_; }

  CJobItemColumn& Add();
  void Remove(std::int32_t Index) { items_.Remove(Index); }
  void Remove(std::string_view Key) { items_.Remove(Key); }
  CJobItemColumn& Item(std::int32_t Index) const { return items_.Item(Index); }
  CJobItemColumn& Item(std::string_view Key) const { return items_.Item(Key); }
  std::int32_t Count() const { return items_.Count(); }
  void DebugItems() const {}
  void Clear();
  void Save(pugi::xml_node objRootNode);
  // Reads the columns below the element at `szTreeNode` under `objNode`.
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode);

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  Collection<CJobItemColumn> items_;
};

}  // namespace ketrova
