#include "platform/script/ado_binding.h"

#include <typeinfo>
#include <unordered_map>

#include "platform/ado/ado_errors.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/script/binding.h"

namespace ketrova::script {

namespace {

// Arguments a script leaves out arrive as Missing.
bool Given(Args a, std::size_t i) {
  return i < a.size() && !a[i].IsMissing() && !a[i].IsEmpty();
}

// A Field read as a value by a script that did not say .Value.
Variant PlainValue(const Variant& v) {
  if (!v.IsObject() || v.IsNothing()) return v;
  return v.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
}
Variant PlainValue(Variant&& v) {
  if (!v.IsObject() || v.IsNothing()) return std::move(v);
  return v.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
}

class ScriptView {
 public:
  virtual ~ScriptView() = default;
  virtual ObjectPtr Target() const = 0;
};

class FieldView : public BoundObject<FieldView>, public ScriptView {
 public:
  // `owner` keeps the record set alive while a script holds one of its
  // fields (SourceConnection.Execute(sql)(0)): a Field of a closed record set
  // has no value.
  FieldView(std::shared_ptr<ado::Field> field, ObjectPtr owner)
      : field_(std::move(field)), owner_(std::move(owner)) {}
  std::string TypeName() const override { return "Field"; }
  ObjectPtr Target() const override { return field_; }
  const ado::Field* Viewed() const { return field_.get(); }

  // The value, read and written once per field and record, goes straight to
  // the field; everything else through the member table.
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (dispId == kDispIdValue) {
      if (kind == InvokeKind::kPropertyGet && args.empty()) return ForScript(field_->Value());
      if ((kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef) &&
          args.size() == 1) {
        // The value put is the caller's to give away: nothing reads it after.
        field_->SetValue(PlainValue(std::move(args[0])));
        return {};
      }
    }
    return BoundObject<FieldView>::Invoke(dispId, kind, args);
  }

  static const MemberTable<FieldView>& Members() {
    using T = FieldView;
    static const auto table =
        MemberTable<T>()
            .Property(
                "Value", [](T& f, Args) { return f.field_->Value(); },
                [](T& f, Args, const Variant& v) { f.field_->SetValue(PlainValue(v)); })
            .Property("Name", [](T& f, Args) { return Variant(f.field_->Name()); })
            .Property("Type", [](T& f, Args) { return Variant::Long(f.field_->Type()); })
            .Property("DefinedSize",
                      [](T& f, Args) { return Variant::Long(f.field_->DefinedSize()); })
            .Property("ActualSize",
                      [](T& f, Args) { return Variant::Long(f.field_->ActualSize()); })
            .Property("NumericScale",
                      [](T& f, Args) { return Variant::Byte(f.field_->NumericScale()); })
            .Property("Precision", [](T& f, Args) { return Variant::Byte(f.field_->Precision()); })
            .Property("Attributes",
                      [](T& f, Args) { return Variant::Long(f.field_->Attributes()); })
            .Property("Status", [](T& f, Args) { return Variant::Long(f.field_->Status()); })
            .Property("OriginalValue", [](T& f, Args) { return f.field_->OriginalValue(); })
            .Property("UnderlyingValue", [](T& f, Args) { return f.field_->UnderlyingValue(); })
            .Default("Value");
    return table;
  }

 private:
  std::shared_ptr<ado::Field> field_;
  ObjectPtr owner_;
};

class FieldsView : public BoundObject<FieldsView>, public ScriptView {
 public:
  FieldsView(std::shared_ptr<ado::Fields> fields, ObjectPtr owner)
      : fields_(std::move(fields)), owner_(std::move(owner)) {}
  std::string TypeName() const override { return "Fields"; }
  ObjectPtr Target() const override { return fields_; }

  // The view of the field a script names by position or name. A conversion
  // names the same fields with the same texts record after record, so a name
  // leads straight to its view; the entry holds while the field is still at
  // its position (a record set opened again has new fields).
  ObjectPtr Item(const Variant& key) {
    if (key.IsString()) {
      auto it = byName_.find(key.AsString());
      if (it != byName_.end() && it->second.index < fields_->Count() &&
          fields_->ItemPtr(it->second.index) == it->second.field)
        return it->second.view;
    }
    Variant plain = PlainValue(key);
    ado::Field& field = fields_->Item(plain);
    std::int32_t index = 0;
    while (fields_->ItemPtr(index).get() != &field) ++index;
    ObjectPtr view = std::make_shared<FieldView>(fields_->ItemPtr(index), owner_);
    if (key.IsString()) {
      if (byName_.size() > 4 * static_cast<std::size_t>(fields_->Count()) + 16) byName_.clear();
      byName_[key.AsString()] = Named{index, fields_->ItemPtr(index), view};
    }
    return view;
  }

  static const MemberTable<FieldsView>& Members() {
    using T = FieldsView;
    static const auto table =
        MemberTable<T>()
            .Property("Count", [](T& f, Args) { return Variant::Long(f.fields_->Count()); })
            .Property("Item", 1, 1, [](T& f, Args a) { return Variant(f.Item(a[0])); })
            .Method("Append", 2, 4,
                    [](T& f, Args a) {
                      f.fields_->Append(a[0].ToString(),
                                        static_cast<ado::DataTypeEnum>(a[1].ToLong()),
                                        Given(a, 2) ? a[2].ToLong() : 0,
                                        Given(a, 3) ? a[3].ToLong() : ado::adFldUnspecified);
                      return Variant();
                    })
            .Method("Delete", 1, 1,
                    [](T& f, Args a) {
                      f.fields_->Delete(PlainValue(a[0]));
                      return Variant();
                    })
            .Default("Item")
            .Enumeration([](T& f) {
              std::vector<Variant> items;
              for (std::int32_t i = 0; i < f.fields_->Count(); ++i)
                items.emplace_back(std::make_shared<FieldView>(f.fields_->ItemPtr(i), f.owner_));
              return std::make_unique<VectorEnumerator>(std::move(items));
            });
    return table;
  }

 private:
  std::shared_ptr<ado::Fields> fields_;
  ObjectPtr owner_;
  struct Named {
    std::int32_t index;
    std::shared_ptr<ado::Field> field;
    ObjectPtr view;
  };
  std::unordered_map<std::string, Named> byName_;
};

class RecordsetView : public BoundObject<RecordsetView>, public ScriptView {
 public:
  explicit RecordsetView(std::shared_ptr<ado::Recordset> rs) : rs_(std::move(rs)) {}
  std::string TypeName() const override { return "Recordset"; }
  ObjectPtr Target() const override { return rs_; }

  FieldsView& FieldsOf() {
    auto current = rs_->FieldsPtr();
    if (!fields_ || fields_->Target() != current)
      fields_ = std::make_shared<FieldsView>(current, rs_);
    return *fields_;
  }

  // rs.Fields(name or position) may be kept by a call site: the field's view
  // stands while the same field object is at the same place among as many
  // fields (a record set opened again on the same shape keeps its fields; a
  // closed one has none, and its read raises as ever).
  bool HoldAnswer(int dispId, std::span<const Variant> args, const Variant& answer,
                  HeldAnswer& held) override {
    static const int fieldsId = Members().Find("Fields");
    if ((dispId != fieldsId && dispId != kDispIdValue) || args.size() != 1) return false;
    const auto* view = dynamic_cast<const FieldView*>(answer.AsObject().get());
    if (!view) return false;
    const ado::Fields& fields = rs_->GetFields();
    const auto count = static_cast<std::size_t>(fields.Count());
    for (std::size_t i = 0; i < count; ++i) {
      if (fields.begin()[static_cast<std::ptrdiff_t>(i)].get() != view->Viewed()) continue;
      held.answer = answer.AsObject();
      held.mark = view->Viewed();
      held.index = i;
      held.count = count;
      return true;
    }
    return false;
  }
  bool AnswerStands(const HeldAnswer& held) const override {
    const ado::Fields& fields = rs_->GetFields();
    return static_cast<std::size_t>(fields.Count()) == held.count && held.index < held.count &&
           fields.begin()[static_cast<std::ptrdiff_t>(held.index)].get() == held.mark;
  }

  static const MemberTable<RecordsetView>& Members() {
    using T = RecordsetView;
    static const auto table =
        MemberTable<T>()
            .Property("Fields", 0, 1,
                      [](T& r, Args a) {
                        FieldsView& fields = r.FieldsOf();
                        return a.empty() ? Variant(r.fields_) : Variant(fields.Item(a[0]));
                      })
            .Property("EOF", [](T& r, Args) { return Variant(r.rs_->Eof()); })
            .Property("BOF", [](T& r, Args) { return Variant(r.rs_->Bof()); })
            .Property("RecordCount", [](T& r, Args) { return Variant::Long(r.rs_->RecordCount()); })
            .Property("EditMode", [](T& r, Args) { return Variant::Long(r.rs_->EditMode()); })
            .Property("State", [](T& r, Args) { return Variant::Long(r.rs_->State()); })
            .Property(
                "Source", [](T& r, Args) { return Variant(r.rs_->Source()); },
                [](T& r, Args, const Variant& v) { r.rs_->SetSource(v.ToString()); })
            .Property(
                "MaxRecords", [](T& r, Args) { return Variant::Long(r.rs_->MaxRecords()); },
                [](T& r, Args, const Variant& v) { r.rs_->SetMaxRecords(v.ToLong()); })
            .Property(
                "CursorType", [](T& r, Args) { return Variant::Long(r.rs_->CursorType()); },
                [](T& r, Args, const Variant& v) { r.rs_->SetCursorType(v.ToLong()); })
            .Property(
                "LockType", [](T& r, Args) { return Variant::Long(r.rs_->LockType()); },
                [](T& r, Args, const Variant& v) { r.rs_->SetLockType(v.ToLong()); })
            .Property(
                "ActiveConnection",
                [](T& r, Args) {
                  auto c = r.rs_->ActiveConnection();
                  return Variant(ObjectPtr(c));
                },
                [](T& r, Args, const Variant& v) {
                  auto c = std::dynamic_pointer_cast<ado::Connection>(
                      v.IsObject() ? UnbindFromScript(v.AsObject()) : nullptr);
                  if (v.IsObject() && v.AsObject() && !c) throw VbError(13);
                  if (!v.IsObject()) {
                    c = std::make_shared<ado::Connection>();
                    c->Open(v.ToString());
                  }
                  r.rs_->SetActiveConnection(c);
                })
            .Method("MoveFirst", 0, 0,
                    [](T& r, Args) { return r.Done([&] { r.rs_->MoveFirst(); }); })
            .Method("MoveNext", 0, 0, [](T& r, Args) { return r.Done([&] { r.rs_->MoveNext(); }); })
            .Method("MoveLast", 0, 0, [](T& r, Args) { return r.Done([&] { r.rs_->MoveLast(); }); })
            .Method("MovePrevious", 0, 0,
                    [](T& r, Args) { return r.Done([&] { r.rs_->MovePrevious(); }); })
            .Method("AddNew", 0, 2, [](T& r, Args a) { return r.Done([&] { r.AddNew(a); }); })
            .Method("Update", 0, 2, [](T& r, Args a) { return r.Done([&] { r.Update(a); }); })
            .Method("UpdateBatch", 0, 1,
                    [](T& r, Args a) {
                      return r.Done([&] {
                        r.rs_->UpdateBatch(Given(a, 0) ? a[0].ToLong() : ado::adAffectAll);
                      });
                    })
            .Method("CancelUpdate", 0, 0,
                    [](T& r, Args) { return r.Done([&] { r.rs_->CancelUpdate(); }); })
            .Method("Close", 0, 0, [](T& r, Args) { return r.Done([&] { r.rs_->Close(); }); })
            .Method("Open", 0, 5, [](T& r, Args a) { return r.Done([&] { r.Open(a); }); })
            .Default("Fields");
    return table;
  }

 private:
  template <typename F>
  static Variant Done(F&& f) {
    f();
    return Variant();
  }

  // AddNew and Update with a field list and values: one name or an array of
  // names, one value or an array of values.
  void SetValues(Args a) {
    if (!Given(a, 0)) return;
    auto items = [](const Variant& v) {
      std::vector<Variant> out;
      if (v.IsArray())
        out = v.AsArray()->data;
      else
        out.push_back(v);
      return out;
    };
    std::vector<Variant> names = items(a[0]);
    std::vector<Variant> values = a.size() > 1 ? items(a[1]) : std::vector<Variant>{};
    if (names.size() != values.size())
      ado::ThrowAdoError(ado::AdoError::kArguments, "ADODB.Recordset");
    for (std::size_t i = 0; i < names.size(); ++i)
      rs_->GetFields().Item(PlainValue(names[i])).SetValue(PlainValue(values[i]));
  }
  // With values the new record is saved at once, as ADO does.
  void AddNew(Args a) {
    rs_->AddNew();
    if (!Given(a, 0)) return;
    SetValues(a);
    rs_->Update();
  }
  void Update(Args a) {
    SetValues(a);
    rs_->Update();
  }
  void Open(Args a) {
    Variant source = Given(a, 0) ? PlainValue(a[0]) : Variant::Missing();
    Variant connection = Variant::Missing();
    if (Given(a, 1))
      connection = a[1].IsObject() ? Variant(UnbindFromScript(a[1].AsObject())) : a[1];
    rs_->Open(source, connection, Given(a, 2) ? a[2].ToLong() : ado::adOpenUnspecified,
              Given(a, 3) ? a[3].ToLong() : ado::adLockUnspecified,
              Given(a, 4) ? a[4].ToLong() : -1);
  }

  std::shared_ptr<ado::Recordset> rs_;
  std::shared_ptr<FieldsView> fields_;
};

class ConnectionView : public BoundObject<ConnectionView>, public ScriptView {
 public:
  explicit ConnectionView(std::shared_ptr<ado::Connection> c) : c_(std::move(c)) {}
  std::string TypeName() const override { return "Connection"; }
  ObjectPtr Target() const override { return c_; }

  static const MemberTable<ConnectionView>& Members() {
    using T = ConnectionView;
    static const auto table =
        MemberTable<T>()
            .Property(
                "ConnectionString", [](T& c, Args) { return Variant(c.c_->ConnectionString); },
                [](T& c, Args, const Variant& v) { c.c_->ConnectionString = v.ToString(); })
            .Property(
                "CommandTimeout", [](T& c, Args) { return Variant::Long(c.c_->CommandTimeout()); },
                [](T& c, Args, const Variant& v) { c.c_->SetCommandTimeout(v.ToLong()); })
            .Property("State", [](T& c, Args) { return Variant::Long(c.c_->State()); })
            .Method("Open", 0, 4,
                    [](T& c, Args a) {
                      auto text = [&](std::size_t i) {
                        return Given(a, i) ? a[i].ToString() : std::string();
                      };
                      c.c_->Open(text(0), text(1), text(2), Given(a, 3) ? a[3].ToLong() : -1);
                      return Variant();
                    })
            .Method("Close", 0, 0,
                    [](T& c, Args) {
                      c.c_->Close();
                      return Variant();
                    })
            // Execute(text [, recordsAffected [, options]]): the record set
            // of the statement; recordsAffected is written back.
            .Method("Execute", 1, 3,
                    [](T& c, Args a) {
                      Variant affected;
                      auto rs = c.c_->Execute(PlainValue(a[0]).ToString(), &affected,
                                              Given(a, 2) ? a[2].ToLong() : -1);
                      if (a.size() > 1) a[1] = affected;
                      return Variant(ObjectPtr(rs));
                    })
            .Method("BeginTrans", 0, 0,
                    [](T& c, Args) { return Variant::Long(c.c_->BeginTrans()); })
            .Method("CommitTrans", 0, 0,
                    [](T& c, Args) {
                      c.c_->CommitTrans();
                      return Variant();
                    })
            .Method("RollbackTrans", 0, 0,
                    [](T& c, Args) {
                      c.c_->RollbackTrans();
                      return Variant();
                    })
            .Method("OpenSchema", 1, 3, [](T& c, Args a) {
              return Variant(ObjectPtr(c.c_->OpenSchema(a[0].ToLong())));
            });
    return table;
  }

 private:
  std::shared_ptr<ado::Connection> c_;
};

}  // namespace

// By exact type: this runs for every object a bound member answers, and a
// type comparison is far cheaper than a dynamic_cast.
bool NeedsScriptView(const Object& object) {
  const std::type_info& type = typeid(object);
  return type == typeid(ado::Recordset) || type == typeid(ado::Connection) ||
         type == typeid(ado::Fields) || type == typeid(ado::Field);
}

ObjectPtr BindForScript(ObjectPtr object) {
  if (!object) return object;
  const std::type_info& type = typeid(*object);
  if (type == typeid(ado::Recordset))
    return std::make_shared<RecordsetView>(std::static_pointer_cast<ado::Recordset>(object));
  if (type == typeid(ado::Connection))
    return std::make_shared<ConnectionView>(std::static_pointer_cast<ado::Connection>(object));
  if (type == typeid(ado::Fields))
    return std::make_shared<FieldsView>(std::static_pointer_cast<ado::Fields>(object), nullptr);
  if (type == typeid(ado::Field))
    return std::make_shared<FieldView>(std::static_pointer_cast<ado::Field>(object), nullptr);
  return object;
}

ObjectPtr UnbindFromScript(ObjectPtr object) {
  if (auto* view = dynamic_cast<ScriptView*>(object.get())) return view->Target();
  return object;
}

}  // namespace ketrova::script
