#include "jobs/job_item_filters.h"

#include "core/converter.h"
#include "core/project_values.h"
#include "core/xml_list.h"
#include "core/xml_node.h"
#include "stores/field_types.h"
#include "support/text.h"

namespace ketrova {

void CJobItemFilter::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  xml.WriteNodeAttribute(objRootNode, "ANDOR", AndOr);
  xml.WriteNodeAttribute(objRootNode, "COLUMN", Column);
  xml.WriteNodeAttribute(objRootNode, "FILTERTYPE", std::to_string(FilterType));
  xml.WriteNodeAttribute(objRootNode, "VALUE", Value);
  xml.WriteNodeAttribute(objRootNode, "BRACKET", Bracket);
  xml.WriteNodeAttribute(objRootNode, "FIELDTYPE", std::to_string(FieldType));
}

void CJobItemFilter::Load(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  AndOr = xml.ReadAttribute(objRootNode, "ANDOR");
  Column = xml.ReadAttribute(objRootNode, "COLUMN");
  FilterType = TextToLong(xml.ReadAttribute(objRootNode, "FILTERTYPE", "9"));
  Value = xml.ReadAttribute(objRootNode, "VALUE");
  Bracket = xml.ReadAttribute(objRootNode, "BRACKET");
  FieldType = TextToLong(xml.ReadAttribute(objRootNode, "FIELDTYPE", "13"));
}

std::string CJobItemFilter::GetFilter() const {
  Variant unused;
  std::string quote = GetFieldDefault(FieldType, unused);
  std::string value = Value;
  if (FieldType == 7 || FieldType == 64 || FieldType == 133 || FieldType == 134) {
    // Dates go in as the user typed them.
    quote.clear();
  } else if (!quote.empty() && !value.empty() && value.front() == quote.front()) {
    value = RemoveString(value, quote);
  }
  switch (FilterType) {
    case jftLike:
      return " LIKE " + quote + "%" + value + "%" + quote;
    case jftNotLike:
      return " NOT LIKE " + quote + "%" + value + "%" + quote;
    case jftEqual:
      return " = " + quote + value + quote;
    case jftNotEqual:
      return " <> " + quote + value + quote;
    case jftLess:
      return " < " + quote + value + quote;
    case jftLessEqual:
      return " <= " + quote + value + quote;
    case jftGreater:
      return " > " + quote + value + quote;
    case jftGreaterEqual:
      return " >= " + quote + value + quote;
    default:
      return {};
  }
}

void CJobItemFilter::Clear() {
  Index = 0;
  AndOr.clear();
  Column.clear();
  Value.clear();
  Bracket.clear();
  FilterType = jftNone;
  FieldType = kFieldTypeUnknown;
}

void CJobItemFilters::SetConverter(CConverter* converter) {
  Converter = converter;
  for (CJobItemFilter& filter : items_) filter.Converter = converter;
}

CJobItemFilter& CJobItemFilters::Add() {
  CJobItemFilter& filter = AddNumbered();
  filter.Converter = Converter;
  return filter;
}

void CJobItemFilters::Save(pugi::xml_node objRootNode) {
  SaveListItems(Converter->XMLLib(), objRootNode, *this, "FILTER");
}

std::string CJobItemFilters::Load(const std::string& szTreeNode, pugi::xml_node objNode) {
  LoadListItems(Converter->XMLLib(), *this, szTreeNode, objNode);
  return {};
}

}  // namespace ketrova
