// Object: the late-bound object interface (the IDispatch stand-in). Record
// sets, fields, connections, jobs, dictionaries and script class instances are
// Objects, so that a Variant can hold them and both script engines can call
// them by name.
//
// A caller resolves a member name once with GetIDOfName (names compare without
// regard to case) and then calls Invoke with that id as often as it likes.
// Arguments are passed in source order; for a property put the new value is the
// last argument. An implementation may write to an argument to pass a value
// back by reference. Failures are raised as VbError (438 for an unknown member,
// 450 for a wrong argument count).
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/variant.h"

namespace ketrova {

enum class InvokeKind {
  kMethod = 1,
  kPropertyGet = 2,
  kPropertyPut = 4,     // Let
  kPropertyPutRef = 8,  // Set
};

inline constexpr int kDispIdValue = 0;     // the default member
inline constexpr int kDispIdUnknown = -1;  // no such member
inline constexpr int kDispIdNewEnum = -4;  // enumeration (For Each)

// What a call site keeps of a member it reads with constant arguments again
// and again (rs.Fields("Name"), once per record): the object the member
// answered, held weakly so that keeping it changes no object's life, and the
// marks by which the object that answered tells whether it still would.
struct HeldAnswer {
  std::weak_ptr<Object> answer;
  const void* mark = nullptr;
  std::size_t index = 0;
  std::size_t count = 0;
};

// Walks the items of a collection object for For Each.
class Enumerator {
 public:
  virtual ~Enumerator() = default;
  // The next item into `item`; false at the end.
  virtual bool Next(Variant& item) = 0;
};

class Object : public std::enable_shared_from_this<Object> {
 public:
  virtual ~Object() = default;

  // What VBScript's TypeName answers for this object ("Recordset", "Field" ...).
  virtual std::string TypeName() const = 0;

  // The id of a member, kDispIdUnknown when there is none. kDispIdValue names
  // the default member where the object has one.
  virtual int GetIDOfName(std::string_view name);

  // Calls a member. The default raises 438 "Objekt unterstützt diese
  // Eigenschaft oder Methode nicht".
  virtual Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args);

  // An enumerator for For Each; the default raises 451 (not a collection).
  virtual std::unique_ptr<Enumerator> NewEnum();

  // For call sites that read a member with the same constant arguments again
  // and again. HoldAnswer: after the member `dispId`, read with `args`,
  // answered `answer`, whether a caller may keep that answer; the object
  // fills `held` and answers true. AnswerStands: whether what `held` keeps
  // (filled by this object) is still what that read would answer now. A
  // caller asks it before every use and otherwise reads the member as ever,
  // so that every error the read raises is still raised. The defaults keep
  // nothing.
  virtual bool HoldAnswer(int dispId, std::span<const Variant> args, const Variant& answer,
                          HeldAnswer& held) {
    return false;
  }
  virtual bool AnswerStands(const HeldAnswer& held) const { return false; }

  // The names of the members, for scripts that add an object with its members
  // made global. Empty by default.
  virtual std::vector<std::string> MemberNames() const { return {}; }

  // Convenience for C++ callers: resolve and invoke in one step.
  Variant Get(std::string_view name, std::span<Variant> args = {});
  void Put(std::string_view name, Variant value);
  Variant Call(std::string_view name, std::span<Variant> args = {});
};

}  // namespace ketrova
