// What the provider needs of a table file, dBase or Paradox: its fields as
// Jet describes them, its rows in memory, a check of a row against the
// fields, and a write of given rows over the file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/ado/provider.h"
#include "support/variant.h"

namespace ketrova::xbase_provider {

struct TableField {
  std::string name;
  char type = 'C';  // the format's own letter for the field type
  int width = 0;    // bytes in the record
  int decimals = 0;
  ado::ColumnInfo info;  // as Jet reports the field
};

// How Jet reports one field type of a format: the ADO type, the size (kWidth:
// the field's width), the precision, whether the field's decimals are the
// scale, whether it counts up by itself.
struct FieldKind {
  static constexpr std::int64_t kWidth = -1;
  char letter;
  ado::DataTypeEnum type;
  std::int64_t size;
  std::uint8_t precision = 0;
  bool scaled = false;
  bool autoIncrement = false;
};

// The column of a field by its format's kinds; type adEmpty for a letter
// that none of them has.
ado::ColumnInfo DescribeField(std::span<const FieldKind> kinds, const std::string& name, char type,
                              int width, int decimals);

// Rows read block by block from a table's file.
class RowStream {
 public:
  virtual ~RowStream() = default;
  // Appends the next rows; false at the end. Raises kErrGeneral naming the
  // file (a damaged file; at the end, a record count the header contradicts).
  virtual bool Next(std::vector<ado::Row>& rows) = 0;
};

class TableFile {
 public:
  virtual ~TableFile() = default;

  virtual const std::filesystem::path& file() const = 0;
  virtual const std::vector<TableField>& fields() const = 0;
  virtual std::vector<ado::Row>& rows() = 0;

  // Whether rows() holds the table. A table not loaded is read through
  // Stream() until something changes it, and then loaded by Load().
  virtual bool loaded() const { return true; }
  virtual void Load() {}
  virtual std::unique_ptr<RowStream> Stream() const { return nullptr; }

  // Fills what the format fills itself in a new row (a Paradox autoincrement
  // field left Null gets the next number).
  virtual void CompleteNewRow(ado::Row&) {}
  // Raises kErrStatementRefused naming the field when a value of the row
  // does not fit it (length, digits, code page).
  virtual void Check(const ado::Row& row) const = 0;
  // Writes `rows` as the table's records through temporary files renamed
  // over the originals; raises kErrGeneral naming the file.
  virtual void Write(const std::vector<ado::Row>& rows) const = 0;
};

}  // namespace ketrova::xbase_provider
