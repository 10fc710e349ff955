// An Access database file (.mdb of Jet 3 and 4, .accdb of ACE) read through
// mdbtools' libmdb: its catalogue, the columns of its tables with the ADO
// types that Jet reports for them, their indexes, and their rows.
//
// The file is never written: libmdb opens it read-only. Every failure of the
// file raises VbError kErrGeneral with a German text that names the file.
// MdbDatabase and MdbRowReader each own one libmdb handle; a reader opens a
// handle of its own, because libmdb keeps the current page in the handle and
// two scans on one handle would overwrite each other's page.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ado/provider.h"

struct S_MdbTableDef;

namespace ketrova::access_provider {

// The ADO description of a column, with what the reader needs to decode it.
struct JetColumn {
  ado::ColumnInfo info;
  int mdbType = 0;  // libmdb's MDB_TEXT, MDB_LONGINT ...
  int scale = 0;    // for MDB_NUMERIC
  int precision = 0;
};

struct CatalogueEntry {
  std::string name;
  std::string type;  // "TABLE", "SYSTEM TABLE", "ACCESS TABLE", "VIEW"
};

// One value of a row as the reader decoded it.
struct JetValue {
  enum class Kind { kNull, kInteger, kReal, kText, kBlob } kind = Kind::kNull;
  std::int64_t integer = 0;
  double real = 0;
  std::string bytes;  // text in UTF-8, or the bytes of a blob
};

class MdbDatabase {
 public:
  // Raises kErrGeneral when the file is missing, unreadable, not an Access
  // file or truncated.
  explicit MdbDatabase(std::string file);
  ~MdbDatabase();
  MdbDatabase(const MdbDatabase&) = delete;
  MdbDatabase& operator=(const MdbDatabase&) = delete;

  const std::string& file() const { return file_; }
  bool jet3() const;

  // Tables (user and system) and saved queries, in the order of the file.
  std::vector<CatalogueEntry> Catalogue() const;
  // The exact spelling of a table or query, found without regard to case, or
  // by the identifier made of its name (support/text.h) when that is unique.
  std::optional<CatalogueEntry> Find(const std::string& name) const;

  // Columns of a table in order. Raises kErrUnknownTable for a name that is
  // no table; kErrGeneral for a column type this reader does not know.
  std::vector<JetColumn> Columns(const std::string& table) const;
  std::vector<ado::IndexInfo> Indexes(const std::string& table) const;

  // The rows of the system table MSysQueries for one query, in file order,
  // as (Attribute, Name1, Name2, Expression, Flag).
  struct QueryRow {
    int attribute = 0;
    std::string name1, name2, expression;
    int flag = 0;
  };
  std::vector<QueryRow> QueryRows(const std::string& query) const;

 private:
  friend class MdbRowReader;
  std::string file_;
  void* mdb_ = nullptr;  // libmdb's MdbHandle, a type that cannot be declared here
};

// A forward scan over the rows of one table, on a handle of its own. Deleted
// rows are skipped by libmdb.
class MdbRowReader {
 public:
  MdbRowReader(const MdbDatabase& database, const std::string& table);
  ~MdbRowReader();
  MdbRowReader(const MdbRowReader&) = delete;
  MdbRowReader& operator=(const MdbRowReader&) = delete;

  const std::vector<JetColumn>& columns() const { return columns_; }
  // Moves to the next row; false at the end.
  bool Next();
  // The value of a column of the current row (0-based).
  JetValue Value(std::size_t column) const;
  // A running number of the current row, 1 for the first.
  std::int64_t RowNumber() const { return row_number_; }

 private:
  std::string file_;
  void* mdb_ = nullptr;  // MdbHandle
  S_MdbTableDef* table_ = nullptr;
  std::vector<JetColumn> columns_;
  // Booleans live in the null mask; libmdb writes their value as text into a
  // bound buffer, as it does for the header of OLE and memo values.
  std::vector<std::vector<char>> bound_;
  std::int64_t row_number_ = 0;
};

}  // namespace ketrova::access_provider
