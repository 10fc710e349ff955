// The catalogue of a store: CDatabaseObjects lists its tables and views, each
// CDatabaseObject holds its columns as CDatabaseObjectFields. Filled by the
// schema analysis or from the project file, so that a project can be edited
// with its stores offline.
//
// Converter and Database are back references that the owner sets.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "core/enums.h"
#include "support/numbered_list.h"
#include "support/variant.h"

namespace ketrova {

class CConverter;
class CDatabase;

class CDatabaseObjectField {
 public:
  CDatabaseObjectField() = default;
  std::int32_t Index = 0;
  std::string Key;
  std::string Name;
  std::string ColumnName;
  std::string ColumnWidth = "50";
  std::int32_t ActualSize = 0;
  std::int32_t DefinedSize = 0;
  std::uint8_t NumericScale = 0;
  Variant OriginalValue = Variant("");
  std::uint8_t Precision = 0;
  std::int32_t Status = 0;
  std::int32_t FieldType = kFieldTypeUnknown;
  Variant UnderlyingValue = Variant("");
  Variant Value = Variant("");
  CConverter* Converter = nullptr;

  std::unique_ptr<CDatabaseObjectField> Clone() const;
  void Clear();
  void Save(pugi::xml_node objRootNode);
  void Load(pugi::xml_node objRootNode);
};

class CDatabaseObjectFields : public NumberedList<CDatabaseObjectField> {
 public:
  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);

  // Appends a field under its own Index as key, unchanged.
  CDatabaseObjectField& AddObject(std::unique_ptr<CDatabaseObjectField> objObject);
  CDatabaseObjectField& Add();
  void Save(pugi::xml_node objRootNode);
  // Searches `szTreeNode` from the root element.
  std::string Load(const std::string& szTreeNode);
};

class CDatabaseObject {
 public:
  CDatabaseObject();
  std::int32_t Index = 0;
  std::string Key;
  std::string Name;
  std::int32_t ObjectType = dboTable;
  std::string SQL;
  bool Visible = false;
  CConverter* Converter = nullptr;
  CDatabase* Database = nullptr;
  CDatabaseObjectFields& Fields() { return *fields_; }
  const CDatabaseObjectFields& Fields() const { return *fields_; }
  void SetConverter(CConverter* converter);

  // False for the ADO types a MySQL store cannot hold; true otherwise.
  bool IsValidField(std::int32_t inDataType);
  // Reads the columns from the store into Fields, replacing those there, and
  // opens the store when it is closed; the error text (on one line) or "".
  // The fields read before a failure stay.
  std::string LoadColumns();
  // Takes a column's size (and the scale of a decimal type, into Precision)
  // from the server's own type text; failures leave the field as it was.
  void ReadMySQLColumnSize(CDatabaseObjectField& objField, const std::string& szColumnName);
  std::unique_ptr<CDatabaseObject> Clone() const;
  void Clear();
  // The first field whose Name IsEqual to the name, or null.
  CDatabaseObjectField* ColumnByName(const std::string& szColumnName) const;
  void Save(pugi::xml_node objRootNode);
  void Load(pugi::xml_node objRootNode);

 private:
  std::unique_ptr<CDatabaseObjectFields> fields_;
};

class CDatabaseObjects : public NumberedList<CDatabaseObject> {
 public:
  CConverter* Converter = nullptr;
  CDatabase* Database = nullptr;
  void SetConverter(CConverter* converter);

  CDatabaseObject& Add();
  void Save(pugi::xml_node objRootNode);
  // Searches `szTreeNode` from the root element; one CDatabaseObject per child.
  std::string Load(const std::string& szTreeNode);
};

}  // namespace ketrova
