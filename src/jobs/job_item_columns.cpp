#include "jobs/job_item_columns.h"

#include "core/converter.h"
#include "core/project_values.h"
#include "core/xml_list.h"
#include "core/xml_node.h"
#include "stores/field_types.h"
#include "support/text.h"

namespace ketrova {

void CJobItemColumn::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  xml.WriteNodeAttribute(objRootNode, "NAME", Name);
  xml.WriteNodeAttribute(objRootNode, "DISPLAYNAME", DisplayName);
  xml.WriteNodeAttribute(objRootNode, "VISIBLE", BoolText(Visible));
  xml.WriteNodeAttribute(objRootNode, "COLUMNWIDTH", ColumnWidth);
  xml.WriteNodeAttribute(objRootNode, "SOURCECOLUMN", SourceColumn);
  xml.WriteNodeAttribute(objRootNode, "TARGETCOLUMN", TargetColumn);
  xml.WriteNodeAttribute(objRootNode, "FIELDTYPE", std::to_string(FieldType));
}

void CJobItemColumn::Load(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  Name = xml.ReadAttribute(objRootNode, "NAME");
  DisplayName = xml.ReadAttribute(objRootNode, "DISPLAYNAME");
  Visible = TextToBool(xml.ReadAttribute(objRootNode, "VISIBLE", "TRUE"));
  ColumnWidth = xml.ReadAttribute(objRootNode, "COLUMNWIDTH", "20");
  SourceColumn = xml.ReadAttribute(objRootNode, "SOURCECOLUMN");
  TargetColumn = xml.ReadAttribute(objRootNode, "TARGETCOLUMN");
  FieldType = TextToLong(xml.ReadAttribute(objRootNode, "FIELDTYPE", "13"));
  Quote = GetFieldDefault(FieldType, DefaultValue);
}

std::unique_ptr<CJobItemColumn> CJobItemColumn::Clone() const {
  auto column = std::make_unique<CJobItemColumn>(*this);
  column->DisplayName = MakeIdentifier(DisplayName);
  column->TargetColumn = MakeIdentifier(TargetColumn);
  return column;
}

void CJobItemColumn::Clear() {
  CConverter* converter = Converter;
  Index = 0;
  SourceColumn.clear();
  TargetColumn.clear();
  Key.clear();
  Name.clear();
  DisplayName.clear();
  Visible = true;
  ColumnWidth = "100";
  FieldType = kFieldTypeUnknown;
  Quote.clear();
  DefaultValue = Variant("");
  Converter = converter;
}

void CJobItemColumns::SetConverter(CConverter* converter) {
  Converter = converter;
  for (CJobItemColumn& column : items_) column.Converter = converter;
}

CJobItemColumn& CJobItemColumns::Add() {
  CJobItemColumn& column = AddNumbered();
  column.Converter = Converter;
  return column;
}

void CJobItemColumns::Save(pugi::xml_node objRootNode) {
  SaveListItems(Converter->XMLLib(), objRootNode, *this, "JOBITEMCOLUMN");
}

std::string CJobItemColumns::Load(const std::string& szTreeNode, pugi::xml_node objNode) {
  LoadListItems(Converter->XMLLib(), *this, szTreeNode, objNode);
  return {};
}

}  // namespace ketrova
