// The SQLite virtual-table module "ketrova_csv": a delimited text file as a
// table of the file SQL engine.
//
//   CREATE VIRTUAL TABLE "Kunden" USING ketrova_csv('/data/Kunden.csv')
//
// Rows stream from the file on every scan; nothing of it is held in memory.
// The rowid of a row is the byte offset of its record. INSERT appends a record
// at the end of the file; DELETE and UPDATE rewrite the file through a
// temporary file that replaces it. Changes are collected during a statement
// and written when it commits, so a failed statement writes nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/file_engine/csv_reader.h"
#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/text_table.h"

struct sqlite3;

namespace ketrova::file_engine {

inline constexpr const char* kCsvModuleName = "ketrova_csv";

// Registers the module on a connection.
void RegisterCsvModule(sqlite3* db);

// The VbError number of the last failure inside the module on this thread, 0
// when the last failure was SQLite's own. The engine reads and resets it.
std::int32_t TakeModuleErrorNumber();
void SetModuleErrorNumber(std::int32_t number);

}  // namespace ketrova::file_engine

namespace ketrova::file_engine {

// Field i of a record in a column of `type`, as the module gives it to SQLite:
// nothing for a missing field or an empty one without quotes, the text of a
// quoted one, else the field read as the column's type, or its text where it
// does not read as that. A converted text (a date's ISO form) is kept in
// `scratch`; the cell borrows from it or from the record.
EngineCell CsvCell(const CsvRecord& record, std::size_t i, ColumnType type, std::string& scratch);

// A scan of every record of one of the module's tables, read without SQLite:
// the records and failures a full scan of the virtual table gives, in the same
// order, for record access to read a plain SELECT of the file at less cost.
class CsvTableScan {
 public:
  // Null when `table` is no table of the module on `db`. The scan keeps what
  // it needs of the table, which may be dropped while it reads.
  static std::unique_ptr<CsvTableScan> Open(sqlite3* db, const std::string& table);

  // Steps to the next record, the first one on the first call; false at the
  // end. Lines appended to the file after the first call are not read. Raises
  // VbError as the virtual table's scan fails: a record with too many fields,
  // a quote that is never closed, a file that cannot be read.
  bool Next();
  // Column i of the current record, as CsvCell gives it.
  EngineCell Cell(std::size_t i) { return CsvCell(record_, i, layout_.types[i], scratch_); }
  std::size_t ColumnCount() const { return layout_.names.size(); }

 private:
  explicit CsvTableScan(TextTableLayout layout) : layout_(std::move(layout)) {}

  TextTableLayout layout_;
  std::unique_ptr<CsvReader> reader_;
  CsvRecord record_;
  std::int64_t end_ = 0;
  std::string scratch_;
};

// Names of the module's tables on `db` whose file was changed from outside so
// that its columns or their types are no longer what the table declares (or
// whose file is gone). The engine drops them, to be made anew on next use.
std::vector<std::string> StaleCsvTables(sqlite3* db);

}  // namespace ketrova::file_engine
