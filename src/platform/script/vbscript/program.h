// What compiled VBScript code lives in: modules with their global variables
// and procedures, classes, and the host's objects. The compiler fills these;
// the interpreter runs them. Global variables sit in a deque, so a compiled
// reference to one stays valid while the module grows.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/script/vbscript/ast.h"
#include "support/object.h"

namespace ketrova::script::vbscript {

struct Module;
struct ClassDef;

struct Procedure {
  std::string name;
  ProcDecl* decl = nullptr;
  Module* module = nullptr;
  ClassDef* owner = nullptr;  // set for class members
  int numParams = 0;
  int numLocals = 0;                    // parameters and the return value included
  int returnSlot = -1;                  // Function and Property Get
  std::vector<bool> byRef;              // per parameter
  std::vector<std::string> localNames;  // lower case, per slot ("" for hidden)
  std::unordered_map<std::string, int> localIndex;
  std::unordered_map<std::string, Variant> constants;  // local Const
  std::vector<int> fixedLocals;                        // slots declared Dim a(n)
  bool compiled = false;
};

// A class member: a field, or the procedures of a property or method.
struct ClassMember {
  std::string name;
  bool isPublic = true;
  int field = -1;
  Procedure* get = nullptr;  // Function or Property Get
  Procedure* let = nullptr;
  Procedure* set = nullptr;
  Procedure* sub = nullptr;
};

struct ClassDef {
  std::string name;
  Module* module = nullptr;
  std::vector<std::string> fieldNames;
  std::vector<std::vector<std::int32_t>> fieldBounds;  // Dim a(3) in the class
  std::vector<ClassMember> members;
  std::unordered_map<std::string, int> memberIndex;  // lower-case name -> members
  int defaultMember = -1;
  Procedure* initialize = nullptr;
  Procedure* terminate = nullptr;
};

struct GlobalEntry {
  Variant* variable = nullptr;  // nullptr for a constant
  Variant constant;
  bool fixedArray = false;
};

// One compiled text: owns its tree and the procedures and classes it declared.
struct Unit {
  ParsedText text;
  std::vector<ExprPtr> extraExprs;  // for Eval
  std::vector<std::unique_ptr<Procedure>> procs;
  std::vector<std::unique_ptr<ClassDef>> classes;
  Procedure top;  // the top-level statements: hidden slots only
};

struct Module : std::enable_shared_from_this<Module> {
  std::string name;
  Module* parent = nullptr;  // the global module, for a named module
  std::deque<Variant> storage;
  std::unordered_map<std::string, GlobalEntry> globals;  // lower-case name
  std::unordered_map<std::string, Procedure*> procs;
  std::vector<Procedure*> procOrder;
  std::unordered_map<std::string, ClassDef*> classes;
  std::vector<std::shared_ptr<Unit>> units;
};

struct HostObject {
  std::string name;
  ObjectPtr object;
  bool addMembers = false;
};

std::string ToLower(std::string_view s);

}  // namespace ketrova::script::vbscript
