// The test scripts' output: an object added with its members global, so that
// a script writes `Print a, b` (or `Test.Print a`). Each call writes its
// arguments separated by one blank and ends the line; Null shows as "Null".
#pragma once

#include <cctype>
#include <string>

#include "support/object.h"
#include "support/vb_error.h"

namespace ketrova::script::vbscript::testing {

class PrintObject : public Object {
 public:
  std::string TypeName() const override { return "TestOutput"; }
  int GetIDOfName(std::string_view name) override {
    std::string lower(name);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower == "print" ? 1 : kDispIdUnknown;
  }
  Variant Invoke(int dispId, InvokeKind, std::span<Variant> args) override {
    if (dispId != 1) throw VbError(438);
    std::string line;
    for (size_t i = 0; i < args.size(); ++i) {
      if (i) line += ' ';
      line += Show(args[i]);
    }
    output += line + "\n";
    return Variant();
  }
  static std::string Show(const Variant& v) {
    if (v.IsNull()) return "Null";
    if (v.IsArray()) return "<Array>";
    if (v.IsObject()) {
      if (v.IsNothing()) return "<Nothing>";
      try {
        return Show(v.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {}));
      } catch (const VbError&) {
        return "<" + v.TypeName() + ">";
      }
    }
    return v.ToText();
  }

  std::string output;
};

}  // namespace ketrova::script::vbscript::testing
