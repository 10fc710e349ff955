// The host's named values, shared by all plug-ins (folders, colours). Names
// compare without regard to case.
#pragma once

#include <map>
#include <string>

#include "host/host_application.h"

namespace kor {

class HostVariables : public ketrova::host::Variables {
 public:
  void Add(const std::string& name, const ketrova::Variant& value, const std::string& reserved1,
           const std::string& reserved2) override;
  ketrova::Variant Item(const std::string& name) const override;
  std::string GetVariable(const std::string& name) const override;

 private:
  std::map<std::string, ketrova::Variant> values_;  // by upper-case name
};

// A Windows colour number (0x00BBGGRR, as published texts such as "&HEFEBE7"
// or "14270901" read) as red, green and blue.
struct Rgb {
  int red, green, blue;
};
Rgb RgbFromColourNumber(std::int32_t colour);

}  // namespace kor
