#include "stores/database_objects.h"

#include <stdexcept>

#include "core/converter.h"
#include "core/error_text.h"
#include "core/project_values.h"
#include "core/xml_document.h"
#include "core/xml_list.h"
#include "core/xml_node.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

bool IsValidMySQLField(std::int32_t inDataType) {
  switch (inDataType) {
    case 0:
    case 9:
    case 10:
    case 12:
    case 13:
    case 128:
    case 132:
    case 138:
    case 204:
    case 205:
      return false;
    default:
      return true;
  }
}

// The leading number of a text, 0 when there is none.
std::int32_t LeadingNumber(const std::string& text) {
  try {
    return static_cast<std::int32_t>(std::stol(Trim(text)));
  } catch (const std::logic_error&) {  // no number, or one beyond long
    return 0;
  }
}

}  // namespace

// --- CDatabaseObjectField -------------------------------------------------

std::unique_ptr<CDatabaseObjectField> CDatabaseObjectField::Clone() const {
  auto field = std::make_unique<CDatabaseObjectField>(*this);
  field->Converter = nullptr;
  return field;
}

void CDatabaseObjectField::Clear() {
  CConverter* converter = Converter;
  *this = CDatabaseObjectField();
  Converter = converter;
}

void CDatabaseObjectField::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  xml.WriteNodeAttribute(objRootNode, "NAME", Name);
  xml.WriteNodeAttribute(objRootNode, "COLUMNNAME", ColumnName);
  xml.WriteNodeAttribute(objRootNode, "COLUMNWIDTH", ColumnWidth);
  xml.WriteNodeAttribute(objRootNode, "ACTUALSIZE", std::to_string(ActualSize));
  xml.WriteNodeAttribute(objRootNode, "DEFINEDSIZE", std::to_string(DefinedSize));
  xml.WriteNodeAttribute(objRootNode, "NUMERICSCALE", std::to_string(NumericScale));
  xml.WriteNodeAttribute(objRootNode, "PRECISION", std::to_string(Precision));
  xml.WriteNodeAttribute(objRootNode, "STATUS", std::to_string(Status));
  xml.WriteNodeAttribute(objRootNode, "FIELDTYPE", std::to_string(FieldType));
}

void CDatabaseObjectField::Load(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  Name = xml.ReadAttribute(objRootNode, "NAME");
  ColumnName = xml.ReadAttribute(objRootNode, "COLUMNNAME");
  ColumnWidth = xml.ReadAttribute(objRootNode, "COLUMNWIDTH", "20");
  ActualSize = TextToLong(xml.ReadAttribute(objRootNode, "ACTUALSIZE", "0"));
  DefinedSize = TextToLong(xml.ReadAttribute(objRootNode, "DEFINEDSIZE", "0"));
  NumericScale = TextToByte(xml.ReadAttribute(objRootNode, "NUMERICSCALE", "0"));
  Precision = TextToByte(xml.ReadAttribute(objRootNode, "PRECISION", "0"));
  Status = TextToLong(xml.ReadAttribute(objRootNode, "STATUS", "0"));
  FieldType = TextToLong(xml.ReadAttribute(objRootNode, "FIELDTYPE", "13"));
}

// --- CDatabaseObjectFields ------------------------------------------------

void CDatabaseObjectFields::SetConverter(CConverter* converter) {
  Converter = converter;
  for (CDatabaseObjectField& field : items_) field.Converter = converter;
}

CDatabaseObjectField& CDatabaseObjectFields::AddObject(
    std::unique_ptr<CDatabaseObjectField> objObject) {
  std::string key = std::to_string(objObject->Index);
  return items_.Add(std::move(objObject), key);
}

CDatabaseObjectField& CDatabaseObjectFields::Add() {
  CDatabaseObjectField& field = AddNumbered();
  field.Converter = Converter;
  return field;
}

void CDatabaseObjectFields::Save(pugi::xml_node objRootNode) {
  SaveListItems(Converter->XMLLib(), objRootNode, *this, "FIELD");
}

std::string CDatabaseObjectFields::Load(const std::string& szTreeNode) {
  LoadListItems(Converter->XMLLib(), *this, szTreeNode);
  return {};
}

// --- CDatabaseObject ------------------------------------------------------

CDatabaseObject::CDatabaseObject() : fields_(std::make_unique<CDatabaseObjectFields>()) {}

void CDatabaseObject::SetConverter(CConverter* converter) {
  Converter = converter;
  fields_->SetConverter(converter);
}

bool CDatabaseObject::IsValidField(std::int32_t inDataType) {
  return !Database || Database->DatabaseTypeNative() != dbtMySQL || IsValidMySQLField(inDataType);
}

std::string CDatabaseObject::LoadColumns() {
  std::string szStep = "Open Recordset" + Name;
  auto rs = std::make_shared<ado::Recordset>();
  std::string result;
  try {
    std::int32_t native = Database->DatabaseTypeNative();
    if (native != dbtOutlook) {
      if (!Database->Active()) Database->SetActive(true);
      std::string sql =
          "SELECT * FROM " + Database->ColBracketLeft() + Name + Database->ColBracketRight();
      if (Database->DatabaseType == dbtMySQL)
        sql += " WHERE 1";
      else
        rs->SetMaxRecords(1);
      rs->Open(Variant(sql), Variant(ObjectPtr(Database->Connection)), ado::adOpenForwardOnly, -1,
               -1);
    } else {
      Database->RecordSetOpen(rs, "", Name, 1, ado::adOpenForwardOnly, ado::adLockReadOnly);
    }
    fields_->Clear();
    bool target = Database->DatabaseDirection == dbdTarget;
    for (const ado::FieldPtr& field : rs->GetFields()) {
      if (native == dbtMySQL && !IsValidMySQLField(field->Type())) continue;
      szStep = "Read Field :" + field->Name();
      CDatabaseObjectField& entry = fields_->Add();
      entry.Name = target ? MakeIdentifier(field->Name()) : field->Name();
      entry.ColumnName = entry.Name;
      entry.ColumnWidth = "20";
      entry.DefinedSize = field->DefinedSize() == -1 ? 255 : field->DefinedSize();
      entry.FieldType = field->Type() == ado::adIUnknown ? ado::adBSTR : field->Type();
      entry.NumericScale = field->NumericScale();
      entry.Precision = field->Precision();
      entry.Status = field->Status();
      if (native == dbtMySQL) ReadMySQLColumnSize(entry, field->Name());
    }
  } catch (...) {
    // A failure ends the listing with the error text of its step; the fields read so far stay.
    SetPendingError(std::current_exception());
    result = ReplaceAll(BuildErrorText(1, std::string(), szStep), "\r\n", " ");
    Err().Clear();
  }
  CloseRecordset(rs.get());
  return result;
}

void CDatabaseObject::ReadMySQLColumnSize(CDatabaseObjectField& objField,
                                          const std::string& szColumnName) {
  auto rs = std::make_shared<ado::Recordset>();
  std::string type;
  try {
    rs->SetActiveConnection(Database->Connection);
    rs->Open(Variant(" SHOW FULL FIELDS FROM " + Database->ColBracketLeft() + Name +
                     Database->ColBracketRight() + " LIKE '" + szColumnName + "'"),
             Variant::Missing(), -1, -1, -1);
    Variant value = rs->GetFields().Item("Type").Value();
    if (!value.IsNull()) type = value.ToText();
  } catch (...) {
    // The size from the server is a refinement: each failing step leaves the driver's size.
  }
  CloseRecordset(rs.get());
  if (type.empty()) return;
  std::size_t open = type.find('(');
  std::size_t close = type.find(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return;
  std::string inner = type.substr(open + 1, close - open - 1);
  std::size_t comma = inner.find(',');
  if (comma != std::string::npos) {
    objField.DefinedSize = LeadingNumber(inner.substr(0, comma));
    objField.Precision = static_cast<std::uint8_t>(LeadingNumber(inner.substr(comma + 1)));
  } else {
    objField.DefinedSize = LeadingNumber(inner);
  }
}

std::unique_ptr<CDatabaseObject> CDatabaseObject::Clone() const {
  auto object = std::make_unique<CDatabaseObject>();
  object->Index = Index;
  object->Key = Key;
  object->Name = Name;
  object->ObjectType = ObjectType;
  object->SQL = SQL;
  object->Visible = Visible;
  for (const CDatabaseObjectField& field : *fields_) object->fields_->AddObject(field.Clone());
  return object;
}

void CDatabaseObject::Clear() {
  Index = 0;
  Key.clear();
  Name.clear();
  SQL.clear();
  Visible = false;
  ObjectType = dboTable;
  fields_->Clear();
}

CDatabaseObjectField* CDatabaseObject::ColumnByName(const std::string& szColumnName) const {
  for (CDatabaseObjectField& field : *fields_)
    if (IsEqual(field.Name, szColumnName)) return &field;
  return nullptr;
}

void CDatabaseObject::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "NAME", Name);
  xml.WriteNodeAttribute(objRootNode, "OBJECTTYPE", std::to_string(ObjectType));
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  std::string sql = SQL;
  xml.AppendChild(objRootNode, xml.CreateCData("SQL", sql));
  xml.WriteNodeAttribute(objRootNode, "VISIBLE", BoolText(Visible));
  pugi::xml_node fields = xml.CreateElement("FIELDS");
  fields_->Save(fields);
  xml.AppendChild(objRootNode, fields);
}

void CDatabaseObject::Load(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  Name = xml.ReadAttribute(objRootNode, "NAME");
  ObjectType = TextToLong(xml.ReadAttribute(objRootNode, "OBJECTTYPE", "0"));
  // The statement is the text of the whole element; only SQL holds text.
  SQL = ConvertUmlautsEscape(NodeText(objRootNode), false);
  Visible = TextToBool(xml.ReadAttribute(objRootNode, "VISIBLE", "TRUE"));
  // The path is searched from the root element and finds nothing there, so a
  // loaded catalogue has no field lists; analysis fills them when needed.
  fields_->Load(std::string(objRootNode.name()) + "/Fields");
}

// --- CDatabaseObjects -----------------------------------------------------

void CDatabaseObjects::SetConverter(CConverter* converter) {
  Converter = converter;
  for (CDatabaseObject& object : items_) object.SetConverter(converter);
}

CDatabaseObject& CDatabaseObjects::Add() {
  CDatabaseObject& object = AddNumbered();
  object.SetConverter(Converter);
  object.Database = Database;
  return object;
}

void CDatabaseObjects::Save(pugi::xml_node objRootNode) {
  SaveListItems(Converter->XMLLib(), objRootNode, *this, "OBJECT");
}

std::string CDatabaseObjects::Load(const std::string& szTreeNode) {
  LoadListItems(Converter->XMLLib(), *this, szTreeNode);
  return {};
}

}  // namespace ketrova
