#include "engine/recordset_facade.h"

#include <vector>

#include "platform/ado/ado_errors.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

using Self = CRecordset;
using script::Args;

Variant Arg(Args a, std::size_t i) {
  return i < a.size() ? a[i] : Variant::Missing();
}

// The items of an argument that may be one value or an array of them.
std::vector<Variant> Items(const Variant& v) {
  if (v.IsArray()) return v.AsArray()->data;
  return {v};
}

int IntOr(const Variant& v, int fallback) {
  return v.IsMissing() ? fallback : v.ToLong();
}

}  // namespace

const script::MemberTable<CRecordset>& CRecordset::Members() {
  static const auto table =
      script::MemberTable<Self>()
          .Property("EOF", [](Self& s, Args) { return Variant(s.Eof()); })
          .Property("BOF", [](Self& s, Args) { return Variant(s.Bof()); })
          .Property("RecordCount", [](Self& s, Args) { return Variant::Long(s.RecordCount()); })
          .Property("EditMode", [](Self& s, Args) { return Variant::Long(s.EditMode()); })
          .Property("Fields", [](Self& s, Args) { return Variant(ObjectPtr(s.Fields())); })
          .Property(
              "MaxRecords", [](Self& s, Args) { return Variant::Long(s.MaxRecords()); },
              [](Self& s, Args, const Variant& v) { s.SetMaxRecords(v.ToLong()); })
          .Method("MoveFirst", 0, 0, [](Self& s, Args) { return s.MoveFirst(), Variant(); })
          .Method("MoveNext", 0, 0, [](Self& s, Args) { return s.MoveNext(), Variant(); })
          .Method("MoveLast", 0, 0, [](Self& s, Args) { return s.MoveLast(), Variant(); })
          .Method("MovePrevious", 0, 0, [](Self& s, Args) { return s.MovePrevious(), Variant(); })
          .Method("Update", 0, 2,
                  [](Self& s, Args a) { return s.Update(Arg(a, 0), Arg(a, 1)), Variant(); })
          .Method("UpdateBatch", 0, 1,
                  [](Self& s, Args a) { return s.UpdateBatch(Arg(a, 0)), Variant(); })
          .Method("AddNew", 0, 2,
                  [](Self& s, Args a) { return s.AddNew(Arg(a, 0), Arg(a, 1)), Variant(); })
          .Method("CloseRecordset", 0, 0,
                  [](Self& s, Args) { return s.CloseRecordset(), Variant(); })
          .Method("OpenRS", 0, 5, [](Self& s, Args a) {
            s.OpenRS(Arg(a, 0), Arg(a, 1), Arg(a, 2), Arg(a, 3), Arg(a, 4));
            return Variant();
          });
  return table;
}

void CRecordset::Assign(const Variant& fields, const Variant& values) {
  if (fields.IsMissing()) return;
  std::vector<Variant> names = Items(fields);
  std::vector<Variant> items = Items(values);
  // ADO refuses lists of different lengths before it touches a field.
  if (values.IsMissing() || names.size() != items.size())
    ado::ThrowAdoError(ado::AdoError::kArguments, "ADODB.Recordset");
  for (std::size_t i = 0; i < names.size(); ++i)
    recordset_->GetFields().Item(names[i]).SetValue(items[i]);
}

void CRecordset::Update(const Variant& fields, const Variant& values) {
  Assign(fields, values);
  recordset_->Update();
}

void CRecordset::UpdateBatch(const Variant& affectRecords) {
  recordset_->UpdateBatch(IntOr(affectRecords, ado::adAffectAll));
}

void CRecordset::AddNew(const Variant& fieldList, const Variant& values) {
  recordset_->AddNew();
  if (fieldList.IsMissing()) return;
  Assign(fieldList, values);
  recordset_->Update();
}

void CRecordset::OpenRS(const Variant& source, const Variant& activeConnection,
                        const Variant& cursorType, const Variant& lockType,
                        const Variant& options) {
  recordset_->Open(source, activeConnection, IntOr(cursorType, ado::adOpenUnspecified),
                   IntOr(lockType, ado::adLockUnspecified), IntOr(options, -1));
}

}  // namespace ketrova
