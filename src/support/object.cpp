#include "support/object.h"

#include "support/vb_error.h"

namespace ketrova {

int Object::GetIDOfName(std::string_view) { return kDispIdUnknown; }

Variant Object::Invoke(int, InvokeKind, std::span<Variant>) { throw VbError(438); }

std::unique_ptr<Enumerator> Object::NewEnum() { throw VbError(451); }

namespace {
int ResolveOrRaise(Object& object, std::string_view name) {
  int id = object.GetIDOfName(name);
  if (id == kDispIdUnknown) throw VbError(438);
  return id;
}
}  // namespace

Variant Object::Get(std::string_view name, std::span<Variant> args) {
  return Invoke(ResolveOrRaise(*this, name), InvokeKind::kPropertyGet, args);
}

void Object::Put(std::string_view name, Variant value) {
  Variant args[1] = {std::move(value)};
  InvokeKind kind = args[0].IsObject() ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut;
  Invoke(ResolveOrRaise(*this, name), kind, args);
}

Variant Object::Call(std::string_view name, std::span<Variant> args) {
  return Invoke(ResolveOrRaise(*this, name), InvokeKind::kMethod, args);
}

}  // namespace ketrova
