// CRecordset: a public record set of this component, for scripts and other
// components that want to work with records through an object of ours. It
// makes one ado::Recordset with itself and forwards every member to it; the
// engine works on ado::Recordset directly and never needs this class.
//
// Nothing is caught here: a failure of the record set reaches the caller as
// the VbError it raised. Scripts reach the members by name (EOF, BOF,
// RecordCount, EditMode, Fields, MaxRecords, MoveFirst, MoveNext, MoveLast,
// MovePrevious, Update, UpdateBatch, AddNew, CloseRecordset, OpenRS).
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/ado/recordset.h"
#include "platform/script/binding.h"

namespace ketrova {

class CRecordset : public script::BoundObject<CRecordset> {
 public:
  CRecordset() : recordset_(std::make_shared<ado::Recordset>()) {}
  std::string TypeName() const override { return "CRecordset"; }
  static const script::MemberTable<CRecordset>& Members();

  bool Eof() { return recordset_->Eof(); }
  bool Bof() { return recordset_->Bof(); }
  std::int32_t RecordCount() { return recordset_->RecordCount(); }
  ado::EditModeEnum EditMode() const { return recordset_->EditMode(); }
  std::shared_ptr<ado::Fields> Fields() const { return recordset_->FieldsPtr(); }
  std::int32_t MaxRecords() const { return recordset_->MaxRecords(); }
  void SetMaxRecords(std::int32_t n) { recordset_->SetMaxRecords(n); }
  void MoveFirst() { recordset_->MoveFirst(); }
  void MoveNext() { recordset_->MoveNext(); }
  void MoveLast() { recordset_->MoveLast(); }
  void MovePrevious() { recordset_->MovePrevious(); }

  // ADO's optional arguments: `fields` a name, a position or an array of
  // them, `values` the value or the array of values that go with them. With
  // them, Update assigns before it saves, and AddNew saves the new record at
  // once; Missing leaves them out.
  void Update(const Variant& fields = Variant::Missing(),
              const Variant& values = Variant::Missing());
  void UpdateBatch(const Variant& affectRecords = Variant::Missing());
  void AddNew(const Variant& fieldList = Variant::Missing(),
              const Variant& values = Variant::Missing());
  void CloseRecordset() { recordset_->Close(); }
  void OpenRS(const Variant& source = Variant::Missing(),
              const Variant& activeConnection = Variant::Missing(),
              const Variant& cursorType = Variant::Missing(),
              const Variant& lockType = Variant::Missing(),
              const Variant& options = Variant::Missing());

  // The wrapped record set.
  const std::shared_ptr<ado::Recordset>& Recordset() const { return recordset_; }

 private:
  void Assign(const Variant& fields, const Variant& values);

  std::shared_ptr<ado::Recordset> recordset_;
};

}  // namespace ketrova
