// Fields and Field: the columns of a record set and the values of its current
// record, with ADO's members. A Field reads and writes through its record set;
// after the record set is gone, any value access raises 3704.
//
// Fields.Item takes a 0-based position or a name (case ignored); an unknown one
// raises 3265. Append and Delete work only on a record set that is closed and
// has no connection (the in-memory record set), as in ADO.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ado/enums.h"
#include "platform/ado/properties.h"
#include "platform/ado/provider.h"
#include "support/object.h"

namespace ketrova::ado {

class Recordset;

class Field : public Object {
 public:
  Field(Recordset* owner, std::size_t index, ColumnInfo info, int attributes);
  std::string TypeName() const override { return "Field"; }

  const std::string& Name() const { return info_.name; }
  DataTypeEnum Type() const { return info_.type; }
  std::int32_t DefinedSize() const { return static_cast<std::int32_t>(info_.definedSize); }
  // Length of the current value: characters for text, bytes for binary and for
  // fixed-size types; 0 for Null.
  std::int32_t ActualSize() const;
  std::uint8_t NumericScale() const { return info_.numericScale; }
  std::uint8_t Precision() const { return info_.precision; }
  std::int32_t Status() const { return adFieldOK; }
  std::int32_t Attributes() const { return attributes_; }

  Variant Value() const;
  // Converts to the field's type, as a provider does on assignment; a value
  // that does not convert raises -2147217887 with the conversion's reason.
  // A text handed over (moved) into a text field is kept, not copied.
  void SetValue(Variant value);
  // The value as read from the store (before the pending change).
  Variant OriginalValue() const;
  // The value as the store holds it now (the last read; no round trip).
  Variant UnderlyingValue() const;
  Properties& GetProperties() { return *PropertiesPtr(); }
  std::shared_ptr<Properties> PropertiesPtr() const;

  const ColumnInfo& Info() const { return info_; }

 private:
  friend class Recordset;
  friend class Fields;
  Recordset* owner_;
  std::size_t index_;
  ColumnInfo info_;
  int attributes_;
  mutable std::shared_ptr<Properties> properties_;
};

using FieldPtr = std::shared_ptr<Field>;

class Fields : public Object {
 public:
  explicit Fields(Recordset* owner) : owner_(owner) {}
  std::string TypeName() const override { return "Fields"; }

  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  Field& Item(std::int32_t index) const;
  Field& Item(std::string_view name) const;
  Field& Item(const char* name) const { return Item(std::string_view(name)); }
  Field& Item(const std::string& name) const { return Item(std::string_view(name)); }
  // The item for a Variant key: a number is a position, anything else a name.
  Field& Item(const Variant& key) const;
  Field* Find(std::string_view name) const;
  FieldPtr ItemPtr(std::int32_t index) const { return items_.at(static_cast<std::size_t>(index)); }

  // Adds a field to an in-memory record set before it is opened. A duplicate
  // name raises 3367; an open or connected record set raises 3219.
  void Append(const std::string& name, DataTypeEnum type, std::int32_t definedSize = 0,
              int attributes = adFldUnspecified);
  void Delete(const Variant& key);

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }
  std::unique_ptr<Enumerator> NewEnum() override;

 private:
  friend class Recordset;
  void Reset(const std::vector<ColumnInfo>& columns, const std::vector<int>& attributes);
  // The fields kept aside at the last Reset to none back, as a Reset to their
  // own columns would bring them; the caller knows they are those.
  void Restore();
  // Rises with every change of the fields and of those kept aside.
  std::uint64_t Version() const { return version_; }
  void Detach();
  Recordset* owner_;
  std::vector<FieldPtr> items_;
  std::vector<FieldPtr> spare_;  // the fields of the last open, detached
  std::uint64_t version_ = 0;
};

}  // namespace ketrova::ado
