// Calls a built-in function by name as the compiled script would, and shows
// results as short texts for the assertions.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/script/vbscript/builtins.h"
#include "support/regional.h"
#include "support/vb_error.h"

namespace ketrova::script::vbscript::testing {

template <typename... T>
Variant Call(std::string_view name, T&&... args) {
  const Builtin* builtin = FindBuiltin(name);
  if (!builtin) throw std::logic_error("no built-in " + std::string(name));
  std::vector<Variant> values{Variant(std::forward<T>(args))...};
  return builtin->Function(values);
}

// "Null", "Empty", an array as "[a|b]", anything else as CStr has it.
inline std::string Show(const Variant& v) {
  if (v.IsNull()) return "Null";
  if (v.IsEmpty()) return "Empty";
  if (v.IsArray()) {
    std::string out = "[";
    for (std::size_t i = 0; i < v.AsArray()->data.size(); ++i)
      out += (i ? "|" : "") + Show(v.AsArray()->data[i]);
    return out + "]";
  }
  return v.ToString();
}

template <typename... T>
std::string Text(std::string_view name, T&&... args) {
  return Show(Call(name, std::forward<T>(args)...));
}

// The VBScript error number a call raises; 0 when it raises none.
template <typename... T>
int ErrorOf(std::string_view name, T&&... args) {
  try {
    Call(name, std::forward<T>(args)...);
  } catch (const VbError& e) {
    return e.Number;
  }
  return 0;
}

inline Variant Null() {
  return Variant::Null();
}
inline Variant Missing() {
  return Variant::Missing();
}

// Runs every test under the German settings, which hold under C and POSIX.
class GermanSettings : public ::testing::Test {
 protected:
  void SetUp() override { SetRegional(GermanRegional()); }
  void TearDown() override { ResetRegional(); }
};

}  // namespace ketrova::script::vbscript::testing
