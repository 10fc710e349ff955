// A record stand-in for the tests: an object with Fields(name) answering
// Field objects whose default member is Value, as the engine's Source and
// Destination record sets are seen by scripts.
#pragma once

#include <cctype>
#include <map>
#include <memory>
#include <string>

#include "support/object.h"
#include "support/vb_error.h"

namespace ketrova::script::vbscript::testing {

inline std::string Lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

class FieldObject : public Object {
 public:
  explicit FieldObject(std::string name) : name_(std::move(name)) {}
  std::string TypeName() const override { return "Field"; }
  int GetIDOfName(std::string_view name) override {
    std::string lower = Lowered(name);
    if (lower == "value") return kDispIdValue;
    if (lower == "name") return 1;
    return kDispIdUnknown;
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (dispId == 1) return name_;
    if (dispId != kDispIdValue) throw VbError(438);
    if (kind == InvokeKind::kPropertyPut) {
      value = args.back();
      return Variant();
    }
    return value;
  }
  Variant value;

 private:
  std::string name_;
};

class RecordObject : public Object {
 public:
  std::string TypeName() const override { return "Recordset"; }
  int GetIDOfName(std::string_view name) override {
    return Lowered(name) == "fields" ? 1 : kDispIdUnknown;
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (dispId != 1 && dispId != kDispIdValue) throw VbError(438);
    if (args.empty()) throw VbError(450);
    if (kind == InvokeKind::kPropertyPut) throw VbError(438);
    return ObjectPtr(Field(args[0].ToString()));
  }
  std::shared_ptr<FieldObject> Field(const std::string& name) {
    auto& f = fields_[Lowered(name)];
    if (!f) f = std::make_shared<FieldObject>(name);
    return f;
  }

 private:
  std::map<std::string, std::shared_ptr<FieldObject>> fields_;
};

}  // namespace ketrova::script::vbscript::testing
