#include "platform/ado/fields.h"

#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/ado/ado_errors.h"
#include "platform/ado/recordset.h"
#include "support/collection.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

bool IsTextType(DataTypeEnum t) {
  switch (t) {
    case adBSTR:
    case adGUID:
    case adChar:
    case adWChar:
    case adVarChar:
    case adVarWChar:
    case adLongVarChar:
    case adLongVarWChar:
      return true;
    default:
      return false;
  }
}

std::int32_t CodePoints(const std::string& s) {
  std::int32_t n = 0;
  for (unsigned char c : s)
    if ((c & 0xC0) != 0x80) ++n;
  return n;
}

// A truth word ("Wahr", "Falsch", "True", "False"), which a script's text of a
// Boolean gives.
bool IsTruthWord(const Variant& v) {
  if (!v.IsString()) return false;
  std::string word = LowerCase(Trim(v.AsString()));
  return word == "wahr" || word == "falsch" || word == "true" || word == "false";
}

// The value as the field's type holds it; VB's conversions decide what fits.
Variant ConvertForField(Variant v, DataTypeEnum type) {
  if (v.IsNull() || v.IsEmpty()) return Variant::Null();
  if (v.IsArray()) return v;
  switch (type) {
    case adSmallInt:
      return v.ConvertTo(vbInteger);
    case adTinyInt:
      // MariaDB's and MySQL's BOOLEAN is a TINYINT: the text of a Boolean
      // goes in as the Boolean's number, as into a YESNO field.
      if (IsTruthWord(v)) return Variant(v.ToBool()).ConvertTo(vbInteger);
      return v.ConvertTo(vbInteger);
    case adUnsignedTinyInt:
      return v.ConvertTo(vbByte);
    case adInteger:
    case adUnsignedSmallInt:
      return v.ConvertTo(vbLong);
    case adUnsignedInt:
    case adBigInt:
    case adUnsignedBigInt: {
      double d = RoundHalfEven(v.ToDouble());
      if (d >= std::numeric_limits<std::int32_t>::min() &&
          d <= std::numeric_limits<std::int32_t>::max())
        return Variant::Long(static_cast<std::int32_t>(d));
      return Variant(d);
    }
    case adSingle:
      return v.ConvertTo(vbSingle);
    case adDouble:
      return v.ConvertTo(vbDouble);
    case adCurrency:
      return v.ConvertTo(vbCurrency);
    case adDecimal:
    case adNumeric:
    case adVarNumeric:
      return v.ConvertTo(vbDecimal);
    case adBoolean:
      return v.ConvertTo(vbBoolean);
    case adDate:
    case adDBDate:
    case adDBTime:
    case adDBTimeStamp:
    case adFileTime:
      return v.ConvertTo(vbDate);
    case adBinary:
    case adVarBinary:
    case adLongVarBinary:
      return v;
    default:
      if (IsTextType(type)) return v.IsString() ? std::move(v) : Variant(v.ToText());
      return v;
  }
}

}  // namespace

Field::Field(Recordset* owner, std::size_t index, ColumnInfo info, int attributes)
    : owner_(owner), index_(index), info_(std::move(info)), attributes_(attributes) {}

std::shared_ptr<Properties> Field::PropertiesPtr() const {
  // Made when first asked for: a record set opened per record seldom is.
  if (!properties_) {
    properties_ = std::make_shared<Properties>();
    properties_->Set("BASECOLUMNNAME", Variant(info_.baseColumn));
    properties_->Set("BASETABLENAME", Variant(info_.baseTable));
    properties_->Set("ISAUTOINCREMENT", Variant(info_.autoIncrement));
    properties_->Set("Autoincrement", Variant(info_.autoIncrement));
    properties_->Set("KEYCOLUMN", Variant(info_.keyColumn));
  }
  return properties_;
}

Variant Field::Value() const {
  if (!owner_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Fields");
  return owner_->FieldValue(index_);
}

void Field::SetValue(Variant value) {
  if (!owner_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Fields");
  Variant converted;
  try {
    converted = ConvertForField(std::move(value), info_.type);
  } catch (const VbError& e) {
    throw VbError(kErrMultipleStep,
                  std::string(AdoErrorOf(AdoError::kMultipleStep).text) + " (" + info_.name + ": " +
                      e.Description + ")",
                  "ADODB.Field");
  }
  owner_->SetFieldValue(index_, std::move(converted));
}

Variant Field::OriginalValue() const {
  if (!owner_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Fields");
  return owner_->FieldOriginalValue(index_);
}

Variant Field::UnderlyingValue() const {
  return OriginalValue();
}

std::int32_t Field::ActualSize() const {
  Variant v = Value();
  if (v.IsNull() || v.IsEmpty()) return 0;
  if (v.IsString()) return CodePoints(v.AsString());
  if (v.IsArray()) return static_cast<std::int32_t>(v.AsArray()->data.size());
  return static_cast<std::int32_t>(info_.definedSize);
}

Field& Fields::Item(std::int32_t index) const {
  if (index < 0 || index >= Count()) ThrowAdoError(AdoError::kItemNotFound, "ADODB.Fields");
  return *items_[static_cast<std::size_t>(index)];
}

Field* Fields::Find(std::string_view name) const {
  // Names are mostly given as the store spells them.
  for (const auto& f : items_)
    if (f->Name() == name) return f.get();
  for (const auto& f : items_)
    if (KeyEquals(f->Name(), name)) return f.get();
  return nullptr;
}

Field& Fields::Item(std::string_view name) const {
  if (Field* f = Find(name)) return *f;
  ThrowAdoError(AdoError::kItemNotFound, "ADODB.Fields");
}

Field& Fields::Item(const Variant& key) const {
  if (key.IsString()) return Item(std::string_view(key.AsString()));
  return Item(key.ToLong());
}

void Fields::Append(const std::string& name, DataTypeEnum type, std::int32_t definedSize,
                    int attributes) {
  if (owner_ && owner_->State() == adStateOpen)
    ThrowAdoError(AdoError::kNotInContext, "ADODB.Fields");
  if (Find(name)) ThrowAdoError(AdoError::kAlreadyInCollection, "ADODB.Fields");
  ColumnInfo info;
  info.name = name;
  info.type = type;
  info.definedSize = definedSize;
  info.precision = 255;
  info.numericScale = 255;
  info.nullable =
      attributes == adFldUnspecified || (attributes & (adFldIsNullable | adFldMayBeNull));
  items_.push_back(std::make_shared<Field>(owner_, items_.size(), info,
                                           attributes == adFldUnspecified ? 0 : attributes));
  ++version_;
}

void Fields::Delete(const Variant& key) {
  if (owner_ && owner_->State() == adStateOpen)
    ThrowAdoError(AdoError::kNotInContext, "ADODB.Fields");
  Field& f = Item(key);
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(f.index_));
  for (std::size_t i = 0; i < items_.size(); ++i) items_[i]->index_ = i;
  ++version_;
}

namespace {

bool SameColumn(const ColumnInfo& a, const ColumnInfo& b) {
  return a.name == b.name && a.type == b.type && a.sqlType == b.sqlType &&
         a.typeName == b.typeName && a.definedSize == b.definedSize && a.precision == b.precision &&
         a.numericScale == b.numericScale && a.nullable == b.nullable &&
         a.autoIncrement == b.autoIncrement && a.keyColumn == b.keyColumn &&
         a.baseTable == b.baseTable && a.baseColumn == b.baseColumn;
}

}  // namespace

void Fields::Reset(const std::vector<ColumnInfo>& columns, const std::vector<int>& attributes) {
  ++version_;
  Detach();
  if (columns.empty()) {
    // Kept aside: a record set opened again on the same shape (once per
    // record) gets the same Field objects back, and what scripts resolved on
    // them holds.
    if (!items_.empty()) spare_ = std::move(items_);
    items_.clear();
    return;
  }
  bool same = spare_.size() == columns.size();
  for (std::size_t i = 0; same && i < columns.size(); ++i)
    same = spare_[i]->attributes_ == attributes[i] && SameColumn(spare_[i]->info_, columns[i]);
  if (same) {
    items_ = std::move(spare_);
    spare_.clear();
    for (auto& f : items_) {
      f->owner_ = owner_;
      f->properties_.reset();
    }
    return;
  }
  spare_.clear();
  items_.clear();
  for (std::size_t i = 0; i < columns.size(); ++i)
    items_.push_back(std::make_shared<Field>(owner_, i, columns[i], attributes[i]));
}

void Fields::Restore() {
  assert(items_.empty() && !spare_.empty());
  ++version_;
  items_ = std::move(spare_);
  spare_.clear();
  for (auto& f : items_) {
    f->owner_ = owner_;
    f->properties_.reset();
  }
}

void Fields::Detach() {
  for (auto& f : items_) f->owner_ = nullptr;
}

namespace {
class FieldsEnumerator : public Enumerator {
 public:
  explicit FieldsEnumerator(std::vector<FieldPtr> items) : items_(std::move(items)) {}
  bool Next(Variant& item) override {
    if (next_ >= items_.size()) return false;
    item = Variant(ObjectPtr(items_[next_++]));
    return true;
  }

 private:
  std::vector<FieldPtr> items_;
  std::size_t next_ = 0;
};
}  // namespace

std::unique_ptr<Enumerator> Fields::NewEnum() {
  return std::make_unique<FieldsEnumerator>(items_);
}

}  // namespace ketrova::ado
