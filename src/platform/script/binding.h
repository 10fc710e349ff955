// Binding: a table-driven way to make a C++ class a late-bound Object, so that
// both script languages can reach its members by name.
//
// A class lists its members once in a MemberTable (name -> getter, setter,
// method), names its default member and, if it is a collection, how it is
// enumerated; it then derives from BoundObject<Itself> and gets GetIDOfName,
// Invoke, NewEnum and MemberNames for free:
//
//   class Counter : public script::BoundObject<Counter> {
//    public:
//     std::string TypeName() const override { return "Counter"; }
//     static const script::MemberTable<Counter>& Members() {
//       static const auto table = script::MemberTable<Counter>()
//           .Property("Value", [](Counter& c, script::Args) { return Variant(c.value); },
//                     [](Counter& c, script::Args, const Variant& v) { c.value = v.ToLong(); })
//           .Method("Add", 1, 1, [](Counter& c, script::Args a) { ... })
//           .Default("Value");
//       return table;
//     }
//     int value = 0;
//   };
//
// Invoke is lenient the way IDispatch is: a method may be read as a property
// and a property called as a method. A property read or assigned with more
// arguments than it takes is read with the arguments it takes, and the rest go
// to the default member of the object it gives; this is what makes
// `rs.Fields("x") = v` reach Fields.Item("x").Value. Too few or too many
// arguments raise 450, an unknown member 438.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/script/ado_binding.h"
#include "support/collection.h"
#include "support/object.h"
#include "support/variant.h"
#include "support/vb_error.h"

namespace ketrova::script {

using Args = std::span<Variant>;

// What a script engine needs to know about a member besides its id: whether
// reading its name alone already means something (a property without
// arguments) or whether it must be called (a method, an indexed property).
// JScript cannot tell `o.x` from `o.x()` at the moment of the read, so it asks.
class MemberShapes {
 public:
  virtual ~MemberShapes() = default;
  virtual bool NeedsCall(int dispId) const = 0;
};

// A record set, connection or field a member answers reaches scripts as its
// script view; any other value unchanged.
inline Variant ForScript(Variant v) {
  if (v.IsObject() && v.AsObject() && NeedsScriptView(*v.AsObject()))
    return Variant(BindForScript(v.AsObject()));
  return v;
}

template <typename T>
class MemberTable {
 public:
  using Getter = std::function<Variant(T&, Args)>;
  using Setter = std::function<void(T&, Args, const Variant&)>;
  using Caller = std::function<Variant(T&, Args)>;
  using Enumerate = std::function<std::unique_ptr<Enumerator>(T&)>;

  // A property without arguments; without a setter it is read-only.
  MemberTable& Property(std::string name, Getter get, Setter put = {}) {
    return Add(std::move(name), 0, 0, std::move(get), std::move(put), {});
  }
  // A property that takes arguments (Item(key)); the setter receives them
  // and the new value.
  MemberTable& Property(std::string name, int minArgs, int maxArgs, Getter get, Setter put = {}) {
    return Add(std::move(name), minArgs, maxArgs, std::move(get), std::move(put), {});
  }
  // A method; maxArgs -1 takes any number.
  MemberTable& Method(std::string name, int minArgs, int maxArgs, Caller call) {
    return Add(std::move(name), minArgs, maxArgs, {}, {}, std::move(call));
  }
  // Names the default member, which must already be listed.
  MemberTable& Default(std::string_view name) {
    defaultIndex_ = Find(name) - 1;
    return *this;
  }
  MemberTable& Enumeration(Enumerate enumerate) {
    enumerate_ = std::move(enumerate);
    return *this;
  }

  // 1-based ids in listing order; kDispIdUnknown for an unknown name.
  int Find(std::string_view name) const {
    for (std::size_t i = 0; i < entries_.size(); ++i)
      if (KeyEquals(entries_[i].name, name)) return static_cast<int>(i + 1);
    return kDispIdUnknown;
  }
  bool HasDefault() const { return defaultIndex_ >= 0; }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& e : entries_) names.push_back(e.name);
    return names;
  }

  bool NeedsCall(int dispId) const {
    const Entry* e = EntryOf(dispId);
    return e && (!e->get || e->minArgs > 0);
  }

  Variant Invoke(T& self, int dispId, InvokeKind kind, Args args) const {
    const Entry* e = EntryOf(dispId);
    if (!e) throw VbError(438);
    int count = static_cast<int>(args.size());
    if (kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef) {
      if (count < 1) throw VbError(450);
      int indexCount = count - 1;
      if (e->put && indexCount >= e->minArgs && indexCount <= e->maxArgs) {
        e->put(self, args.first(static_cast<std::size_t>(indexCount)), args.back());
        return {};
      }
      if (!e->get) throw VbError(e->put ? 450 : 438);
      return Forward(self, *e, kind, args);
    }
    if (e->call) {
      CheckCount(*e, count);
      return script::ForScript(e->call(self, args));
    }
    if (!e->get) throw VbError(438);
    if (count > e->maxArgs) return Forward(self, *e, InvokeKind::kPropertyGet, args);
    CheckCount(*e, count);
    return script::ForScript(e->get(self, args));
  }

  std::unique_ptr<Enumerator> NewEnum(T& self) const {
    if (!enumerate_) throw VbError(451);
    return enumerate_(self);
  }

 private:
  struct Entry {
    std::string name;
    int minArgs = 0;
    int maxArgs = 0;
    Getter get;
    Setter put;
    Caller call;
  };

  MemberTable& Add(std::string name, int minArgs, int maxArgs, Getter get, Setter put,
                   Caller call) {
    entries_.push_back(
        Entry{std::move(name), minArgs, maxArgs, std::move(get), std::move(put), std::move(call)});
    return *this;
  }

  const Entry* EntryOf(int dispId) const {
    if (dispId == kDispIdValue) {
      return defaultIndex_ >= 0 ? &entries_[static_cast<std::size_t>(defaultIndex_)] : nullptr;
    }
    if (dispId < 1 || dispId > static_cast<int>(entries_.size())) return nullptr;
    return &entries_[static_cast<std::size_t>(dispId - 1)];
  }

  static void CheckCount(const Entry& e, int count) {
    if (count < e.minArgs || (e.maxArgs >= 0 && count > e.maxArgs)) throw VbError(450);
  }

  // Reads the property with the arguments it takes and hands the rest to the
  // default member of the object it gives.
  static Variant Forward(T& self, const Entry& e, InvokeKind kind, Args args) {
    bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
    std::size_t own =
        std::min(static_cast<std::size_t>(std::max(e.maxArgs, 0)), args.size() - (put ? 1 : 0));
    if (static_cast<int>(own) < e.minArgs) throw VbError(450);
    Variant target = e.get(self, args.first(own));
    if (!target.IsObject() || target.IsNothing()) throw VbError(put && !e.put ? 438 : 450);
    target = script::ForScript(std::move(target));
    return script::ForScript(target.AsObject()->Invoke(kDispIdValue, kind, args.subspan(own)));
  }

  std::vector<Entry> entries_;
  int defaultIndex_ = -1;
  Enumerate enumerate_;
};

// The base of a class whose members come from `static const MemberTable<T>&
// T::Members()`.
template <typename T>
class BoundObject : public Object, public MemberShapes {
 public:
  int GetIDOfName(std::string_view name) override { return T::Members().Find(name); }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    return T::Members().Invoke(static_cast<T&>(*this), dispId, kind, args);
  }
  std::unique_ptr<Enumerator> NewEnum() override {
    return T::Members().NewEnum(static_cast<T&>(*this));
  }
  std::vector<std::string> MemberNames() const override { return T::Members().Names(); }
  bool NeedsCall(int dispId) const override { return T::Members().NeedsCall(dispId); }
};

// Walks a snapshot of values; for collections that enumerate what they hold
// at the moment For Each starts.
class VectorEnumerator : public Enumerator {
 public:
  explicit VectorEnumerator(std::vector<Variant> items) : items_(std::move(items)) {}
  bool Next(Variant& item) override {
    if (next_ >= items_.size()) return false;
    item = items_[next_++];
    return true;
  }

 private:
  std::vector<Variant> items_;
  std::size_t next_ = 0;
};

}  // namespace ketrova::script
