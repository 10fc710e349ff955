// The objects scripts make: instances of script classes (New) with their
// members, the Err object, and the procedure references of GetRef.
#include <cstdint>
#include <utility>

#include "platform/script/vbscript/interpreter_impl.h"
#include "platform/script/vbscript/regexp.h"

namespace ketrova::script::vbscript {
namespace {

// The object GetRef answers: calling its default member calls the procedure.
class ProcedureRef : public Object {
 public:
  ProcedureRef(Procedure* proc, std::shared_ptr<Module> module, Interpreter* interp,
               std::shared_ptr<bool> alive)
      : proc_(proc), module_(std::move(module)), interp_(interp), alive_(std::move(alive)) {}
  std::string TypeName() const override { return "Object"; }
  Variant Invoke(int dispId, InvokeKind, std::span<Variant> args) override {
    if (dispId != kDispIdValue) throw VbError(438);
    if (!*alive_) throw VbError(91);
    return interp_->Call(*proc_, nullptr, args);
  }

 private:
  Procedure* proc_;
  std::shared_ptr<Module> module_;
  Interpreter* interp_;
  std::shared_ptr<bool> alive_;
};

// Err.Raise of a COM error code raises the VB error it stands for, as
// VBScript maps them: a code of VB's own facility (&H800A0000 + n) is n, the
// system codes below have their VB numbers (the table Wine's VBScript tests
// pin against Windows), anything else stays as it is.
std::int32_t VbNumberOfRaisedCode(std::int32_t code) {
  auto hresult = static_cast<std::uint32_t>(code);
  if ((hresult & 0xFFFF0000u) == 0x800A0000u) return static_cast<std::int32_t>(hresult & 0xFFFF);
  static constexpr std::pair<std::uint32_t, std::int32_t> kMapped[] = {
      {0x80004001, 445},  // E_NOTIMPL
      {0x80004002, 430},  // E_NOINTERFACE
      {0x80020001, 438},  // DISP_E_UNKNOWNINTERFACE
      {0x80020003, 438},  // DISP_E_MEMBERNOTFOUND
      {0x80020004, 448},  // DISP_E_PARAMNOTFOUND
      {0x80020005, 13},   // DISP_E_TYPEMISMATCH
      {0x80020006, 438},  // DISP_E_UNKNOWNNAME
      {0x80020007, 446},  // DISP_E_NONAMEDARGS
      {0x80020008, 458},  // DISP_E_BADVARTYPE
      {0x8002000A, 6},    // DISP_E_OVERFLOW
      {0x8002000B, 9},    // DISP_E_BADINDEX
      {0x8002000C, 447},  // DISP_E_UNKNOWNLCID
      {0x8002000D, 10},   // DISP_E_ARRAYISLOCKED
      {0x8002000E, 450},  // DISP_E_BADPARAMCOUNT
      {0x8002000F, 449},  // DISP_E_PARAMNOTOPTIONAL
      {0x80020011, 451},  // DISP_E_NOTACOLLECTION
      {0x8002802F, 453},  // TYPE_E_DLLFUNCTIONNOTFOUND
      {0x80028CA0, 13},   // TYPE_E_TYPEMISMATCH
      {0x80028CA1, 9},    // TYPE_E_OUTOFBOUNDS
      {0x80028CA2, 57},   // TYPE_E_IOERROR
      {0x80028CA3, 322},  // TYPE_E_CANTCREATETMPFILE
      {0x80030002, 432},  // STG_E_FILENOTFOUND
      {0x80030003, 76},   // STG_E_PATHNOTFOUND
      {0x80030004, 67},   // STG_E_TOOMANYOPENFILES
      {0x80030005, 70},   // STG_E_ACCESSDENIED
      {0x80030008, 7},    // STG_E_INSUFFICIENTMEMORY
      {0x80030012, 67},   // STG_E_NOMOREFILES
      {0x80030013, 70},   // STG_E_DISKISWRITEPROTECTED
      {0x8003001D, 57},   // STG_E_WRITEFAULT
      {0x8003001E, 57},   // STG_E_READFAULT
      {0x80030020, 75},   // STG_E_SHAREVIOLATION
      {0x80030021, 70},   // STG_E_LOCKVIOLATION
      {0x80030050, 58},   // STG_E_FILEALREADYEXISTS
      {0x80030070, 61},   // STG_E_MEDIUMFULL
      {0x800300FC, 53},   // STG_E_INVALIDNAME
      {0x80030100, 70},   // STG_E_INUSE
      {0x80030101, 70},   // STG_E_NOTCURRENT
      {0x80030103, 57},   // STG_E_CANTSAVE
      {0x80040154, 429},  // REGDB_E_CLASSNOTREG
      {0x800401E3, 429},  // MK_E_UNAVAILABLE
      {0x800401E6, 432},  // MK_E_INVALIDEXTENSION
      {0x800401EA, 432},  // MK_E_CANTOPENFILE
      {0x800401F3, 429},  // CO_E_CLASSSTRING
      {0x800401F5, 429},  // CO_E_APPNOTFOUND
      {0x800401FE, 429},  // CO_E_APPDIDNTREG
      {0x80070005, 70},   // E_ACCESSDENIED
      {0x8007000E, 7},    // E_OUTOFMEMORY
      {0x80070057, 5},    // E_INVALIDARG
      {0x800706BA, 462},  // RPC_S_SERVER_UNAVAILABLE
      {0x80080005, 429},  // CO_E_SERVER_EXEC_FAILURE
  };
  for (const auto& [from, to] : kMapped)
    if (from == hresult) return to;
  return code;
}

// The script's Err object.
class ErrObjectRef : public Object {
 public:
  explicit ErrObjectRef(ErrObject& err) : err_(err) {}
  std::string TypeName() const override { return "ErrObject"; }
  int GetIDOfName(std::string_view name) override {
    static constexpr std::string_view kNames[] = {
        "number", "description", "source", "helpfile", "helpcontext", "raise", "clear"};
    std::string lower = ToLower(name);
    for (int i = 0; i < 7; ++i)
      if (lower == kNames[i]) return i + 1;
    return kDispIdUnknown;
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
    if (dispId == kDispIdValue) dispId = 1;
    switch (dispId) {
      case 1:
        if (put) return err_.Number = Last(args).ToLong(), Variant();
        return Variant::Long(err_.Number);
      case 2:
        if (put) return err_.Description = Last(args).ToString(), Variant();
        return err_.Description;
      case 3:
        if (put) return err_.Source = Last(args).ToString(), Variant();
        return err_.Source;
      case 4:
        if (put) return err_.HelpFile = Last(args).ToString(), Variant();
        return err_.HelpFile;
      case 5:
        if (put) return err_.HelpContext = Last(args).ToLong(), Variant();
        return Variant::Long(err_.HelpContext);
      case 6: {
        // What Raise leaves out keeps the Err object's value (Err.Raise 5
        // after Err.Raise 1, "Quelle" keeps the source); only where that is
        // empty the defaults stand in. 0 and numbers above 65535 that are no
        // COM codes raise 5.
        if (args.empty() || args[0].IsMissing()) throw VbError(450);
        std::int32_t code = args[0].ToLong();
        std::int32_t number = code == 0 || code > 0xFFFF ? 5 : VbNumberOfRaisedCode(code);
        auto given = [&](size_t i) { return i < args.size() && !args[i].IsMissing(); };
        std::string source = given(1) ? args[1].ToString() : err_.Source;
        if (source.empty()) source = kRuntimeErrorSource;
        std::string description = given(2) ? args[2].ToString() : err_.Description;
        if (description.empty()) description = RaisedErrorText(number);
        throw RaisedError(number, description, source,
                          given(3) ? args[3].ToString() : err_.HelpFile,
                          given(4) ? args[4].ToLong() : err_.HelpContext);
      }
      case 7:
        err_.Clear();
        return Variant();
      default:
        throw VbError(438);
    }
  }

 private:
  static const Variant& Last(std::span<Variant> args) {
    if (args.empty()) throw VbError(450);
    return args.back();
  }
  ErrObject& err_;
};

}  // namespace

ObjectPtr MakeErrObject(ErrObject& err) {
  return std::make_shared<ErrObjectRef>(err);
}

ObjectPtr MakeProcedureRef(Procedure* proc, Interpreter* interp, std::shared_ptr<bool> alive) {
  return std::make_shared<ProcedureRef>(proc, proc->module->shared_from_this(), interp,
                                        std::move(alive));
}

int ClassInstance::GetIDOfName(std::string_view name) {
  auto it = cls->memberIndex.find(ToLower(name));
  return it == cls->memberIndex.end() ? kDispIdUnknown : it->second + 1;
}

Variant ClassInstance::Invoke(int dispId, InvokeKind kind, std::span<Variant> args) {
  if (!*alive) throw VbError(91);
  int member = dispId == kDispIdValue ? cls->defaultMember : dispId - 1;
  if (member < 0 || member >= static_cast<int>(cls->members.size())) throw VbError(438);
  return interp->InvokeMember(*this, member, kind, args);
}

std::vector<std::string> ClassInstance::MemberNames() const {
  std::vector<std::string> names;
  for (const auto& m : cls->members)
    if (m.isPublic) names.push_back(m.name);
  return names;
}

ObjectPtr ClassInstance::Self() {
  ObjectPtr self = weak_from_this().lock();
  // In Class_Terminate the instance is already released: lend it unowned.
  return self ? self : ObjectPtr(ObjectPtr(), this);
}

Variant Interpreter::Impl::NewObject(Expr& e, Frame& f) {
  if (!e.newClass) {
    std::string lower = ToLower(e.name);
    if (lower == "regexp") return CreateRegExp();
    for (Module* m = f.module; m && !e.newClass; m = m->parent) {
      auto it = m->classes.find(lower);
      if (it != m->classes.end()) e.newClass = it->second;
    }
    if (!e.newClass) throw VbError(506, Quoted(506, e.name));
  }
  ClassDef* cls = e.newClass;
  auto instance =
      std::make_shared<ClassInstance>(cls, cls->module->shared_from_this(), self, alive);
  instance->fields.resize(cls->fieldNames.size());
  for (size_t i = 0; i < cls->fieldBounds.size(); ++i) {
    if (cls->fieldBounds[i].empty()) continue;
    auto array = std::make_shared<SafeArray>();
    size_t total = 1;
    for (std::int32_t upper : cls->fieldBounds[i]) {
      if (upper < 0) break;
      array->bounds.push_back({0, upper + 1});
      total *= static_cast<size_t>(upper + 1);
    }
    array->data.resize(array->bounds.empty() ? 0 : total);
    instance->fields[i] = Variant(array);
  }
  if (cls->initialize) CallValues(*cls->initialize, instance.get(), {});
  return Variant(ObjectPtr(instance));
}

Variant Interpreter::Impl::InvokeMember(ClassInstance& instance, int member, InvokeKind kind,
                                        std::span<Variant> args) {
  ClassMember& m = instance.cls->members[member];
  bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
  if (m.field >= 0) {
    Variant& field = instance.fields[m.field];
    if (put) {
      if (args.empty()) throw VbError(450);
      Variant v = args.back();
      if (kind == InvokeKind::kPropertyPut && v.IsObject()) v = DefaultValue(v);
      if (args.size() == 1) {
        field = std::move(v);
      } else if (field.IsArray()) {
        SafeArray& array = field.MutableArray();
        array.data[ElementOffset(array, args.first(args.size() - 1))] = std::move(v);
      } else {
        throw VbError(13);
      }
      return Variant();
    }
    if (args.empty()) return field;
    if (field.IsArray()) return field.AsArray()->data[ElementOffset(*field.AsArray(), args)];
    if (field.IsObject()) return RequireObject(field)->Invoke(kDispIdValue, kind, args);
    throw VbError(13);
  }
  if (kind == InvokeKind::kPropertyPut) {
    if (m.let) return CallValues(*m.let, &instance, args);
    if (m.set && !args.empty() && args.back().IsObject())
      return CallValues(*m.set, &instance, args);
    throw VbError(438, Quoted(438, m.name));
  }
  if (kind == InvokeKind::kPropertyPutRef) {
    if (m.set) return CallValues(*m.set, &instance, args);
    if (m.let) return CallValues(*m.let, &instance, args);
    throw VbError(438, Quoted(438, m.name));
  }
  if (m.get) return CallValues(*m.get, &instance, args);
  if (m.sub) {
    CallValues(*m.sub, &instance, args);
    return Variant();
  }
  throw VbError(438, Quoted(438, m.name));
}

}  // namespace ketrova::script::vbscript
