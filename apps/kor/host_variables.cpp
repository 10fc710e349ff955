#include "host_variables.h"

#include "support/text.h"

namespace kor {

void HostVariables::Add(const std::string& name, const ketrova::Variant& value, const std::string&,
                        const std::string&) {
  values_[ketrova::AsciiUpper(name)] = value;
}

ketrova::Variant HostVariables::Item(const std::string& name) const {
  auto it = values_.find(ketrova::AsciiUpper(name));
  return it == values_.end() ? ketrova::Variant() : it->second;
}

std::string HostVariables::GetVariable(const std::string& name) const {
  return Item(name).ToText();
}

Rgb RgbFromColourNumber(std::int32_t colour) {
  auto c = static_cast<std::uint32_t>(colour);
  return {static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
          static_cast<int>((c >> 16) & 0xFF)};
}

}  // namespace kor
