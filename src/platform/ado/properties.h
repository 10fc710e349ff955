// Properties: the dynamic property list that ADO fields and ADOX columns carry
// ("Autoincrement", "Increment", "Jet OLEDB:Allow Zero Length" ...). Item takes
// a name (case ignored) or a 0-based position; an unknown one raises 3265.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/object.h"
#include "support/variant.h"

namespace ketrova::ado {

class Property : public Object {
 public:
  Property(std::string name, Variant value) : Name(std::move(name)), Value(std::move(value)) {}
  std::string TypeName() const override { return "Property"; }
  std::string Name;
  Variant Value;
};

class Properties : public Object {
 public:
  std::string TypeName() const override { return "Properties"; }
  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  Property& Item(std::string_view name) const;
  Property& Item(const char* name) const { return Item(std::string_view(name)); }
  Property& Item(const std::string& name) const { return Item(std::string_view(name)); }
  Property& Item(std::int32_t index) const;
  Property* Find(std::string_view name) const;
  // Sets a property, adding it when it is not there yet.
  void Set(std::string_view name, Variant value);

 private:
  std::vector<std::shared_ptr<Property>> items_;
};

}  // namespace ketrova::ado
