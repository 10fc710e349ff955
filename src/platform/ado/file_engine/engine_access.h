// What record access needs of the file SQL engine, for every file provider:
// running a statement with Variant parameters, and its result as a Cursor,
// with column descriptions from the declared types of the file tables
// (TEXT, MEMO, INTEGER, DOUBLE, CURRENCY, DATETIME, BIT) and values converted
// to Variants block by block. Dates travel through the engine as ISO text.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/provider.h"

namespace ketrova::file_engine {

// A value as the engine's SQL hands it over, in one of SQLite's storage
// classes. The text is borrowed.
struct EngineCell {
  enum class Kind { kNull, kInteger, kReal, kText };
  Kind kind = Kind::kNull;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text;
};

// The Variant record access reads for a value of the engine in a column of
// `type`: a boolean, double or currency by the column's type, an integer as
// Long where it fits, a date from its ISO text.
Variant VariantFromCell(const EngineCell& cell, ado::DataTypeEnum type);

class EngineCursor : public ado::Cursor {
 public:
  // Takes a statement that has not been stepped; steps its first row at once
  // to learn the types of computed columns.
  EngineCursor(std::unique_ptr<Statement> statement, std::int64_t maxRows);

  const std::vector<ado::ColumnInfo>& Columns() const override { return columns_; }
  std::size_t Fetch(std::vector<ado::Row>& rows, std::size_t count) override;

 private:
  Variant Value(int column) const;

  std::unique_ptr<Statement> statement_;
  std::vector<ado::ColumnInfo> columns_;
  std::int64_t remaining_;  // rows still allowed, -1 for no limit
  bool has_row_ = false;
};

// "yyyy-mm-dd" or "yyyy-mm-dd hh:mm:ss" as an OLE date; false for anything else.
bool OleDateFromIso(std::string_view text, double& ole);
// The text of an OLE date as the file engine keeps dates.
std::string IsoDate(double ole);

// The columns of a table of the engine, as record access describes them.
// Raises VbError kErrUnknownTable when the name resolves to no table.
std::vector<ado::ColumnInfo> EngineTableColumns(FileEngine& engine, const std::string& table);

// The ADO description of a column declared with a file engine type name.
ado::ColumnInfo ColumnFromDeclaredType(const std::string& name, const char* declared);
// The ADO description of result column i of a prepared statement, from its
// declared type and origin; a computed column is described as text.
ado::ColumnInfo DescribeResultColumn(sqlite3_stmt* statement, int i);

// The declaration of an ADO type in the engine's terms ("INTEGER", "TEXT" ...).
std::string EngineTypeSql(ado::DataTypeEnum type);

// Runs one statement: a cursor when it gives rows, else the rows it changed.
ado::ExecuteResult ExecuteStatement(FileEngine& engine, const std::string& sql,
                                    std::span<const Variant> params, std::int64_t maxRows);

}  // namespace ketrova::file_engine
