#include "platform/ado/properties.h"

#include "platform/ado/ado_errors.h"
#include "platform/ado/enums.h"
#include "support/collection.h"
#include "support/vb_error.h"

namespace ketrova::ado {

Property* Properties::Find(std::string_view name) const {
  for (const auto& p : items_)
    if (KeyEquals(p->Name, name)) return p.get();
  return nullptr;
}

Property& Properties::Item(std::string_view name) const {
  if (Property* p = Find(name)) return *p;
  ThrowAdoError(AdoError::kItemNotFound, "ADODB.Properties");
}

Property& Properties::Item(std::int32_t index) const {
  if (index < 0 || index >= Count()) ThrowAdoError(AdoError::kItemNotFound, "ADODB.Properties");
  return *items_[static_cast<std::size_t>(index)];
}

void Properties::Set(std::string_view name, Variant value) {
  if (Property* p = Find(name)) {
    p->Value = std::move(value);
    return;
  }
  items_.push_back(std::make_shared<Property>(std::string(name), std::move(value)));
}

}  // namespace ketrova::ado
