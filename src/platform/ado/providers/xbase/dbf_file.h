// A dBase table (.dbf of dBase III and IV, FoxPro and Visual FoxPro) with its
// memo file (.dbt, .fpt), read whole into memory and written back whole.
//
// Header, field descriptors and raw records go through shapelib's DBF API
// (libshp); the field values, the memo files and the code page are handled
// here, since shapelib knows neither memo files nor the binary FoxPro types.
//
// Field types read: C, N, F, D, L, M (memo in .dbt or .fpt), and FoxPro's I,
// B, Y (currency), T (date-time), G and P (binary memo). Text is converted
// from the code page of the header's language driver byte (CP437, CP850,
// CP1252 and a few more; CP437 when the byte is 0) to UTF-8. Deleted
// records are skipped and dropped when the file is written again.
//
// Failures raise VbError kErrGeneral with a German text naming the file: a
// file too short for its header's record count, a record length that does
// not fit the fields, an unknown field type, a missing memo file, a value
// that does not fit its field or its code page. Nothing is written to a file
// that was not read completely.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/ado/provider.h"
#include "platform/ado/providers/xbase/table_file.h"
#include "support/variant.h"

namespace ketrova::xbase_provider {

class DbfFile : public TableFile {
 public:
  // Reads the whole table. Raises kErrGeneral (see above).
  static DbfFile Read(const std::filesystem::path& file);
  // A new, empty table of dBase III (with a .dbt memo file when a field is M)
  // in code page 1252.
  static DbfFile Create(const std::filesystem::path& file, std::vector<TableField> fields);

  const std::filesystem::path& file() const override { return file_; }
  const std::vector<TableField>& fields() const override { return fields_; }
  std::vector<ado::Row>& rows() override { return rows_; }

  // Checks lengths, numbers and the code page; Write checks every row again.
  void Check(const ado::Row& row) const override;
  // Writes the table and its memo file.
  void Write(const std::vector<ado::Row>& rows) const override;

 private:
  std::filesystem::path file_;
  std::vector<TableField> fields_;
  std::vector<ado::Row> rows_;
  int version_ = 0x03;
  int languageDriver_ = 0x03;
  std::string codePage_ = "CP1252";
};

// The ADO description of a dBase field type, as Jet reports it.
ado::ColumnInfo DescribeDbfField(const std::string& name, char type, int width, int decimals);

}  // namespace ketrova::xbase_provider
