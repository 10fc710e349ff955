// One workbook file as the Excel provider sees it: its tables, the layout of
// each, its rows, and the changes made to it until they are saved.
//
// Tables are the worksheets, named "<sheet>$", and the defined names that
// cover one rectangle of one sheet, named as defined. A name resolves without
// regard to case and with or without single quotes around it; a sheet is also
// found by its bare name when no defined name has it, so that a sheet made by
// CREATE TABLE [X] answers to both [X$] and [X]. As the Jet driver did,
// CREATE TABLE [X] also defines the name X over the sheet's table, kept in step
// with its rows when the file is written; a defined name that bears its
// sheet's name stands for the sheet, which it can be written through, and is
// listed as a table of its own, so that a later run finds the table it made.
//
// Layout: the first row holding a value is the header (of a range: its first
// row); blank and repeated names become F<n> by position, a "." in a name
// becomes "#". Types come from the first 25 data rows: numbers shown as dates
// are DATETIME, shown as currency CURRENCY, other numbers DOUBLE, TRUE/FALSE
// BIT, everything else and every mixed column TEXT, or MEMO when a text is
// longer than 255 characters. A value that does not fit its column's type is
// given as text, so that nothing is lost.
//
// Changes are kept in memory: rows changed in place, rows removed (the rows
// below move up when the file is written), rows appended below the last row.
// Reading a sheet merges them with its file, so that a connection sees its own
// writes. Save() writes the file, through a temporary file renamed over it,
// only when something was changed. Named ranges are read only.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/ado/file_engine/column_types.h"
#include "platform/ado/providers/excel/sheet_rows.h"

namespace ketrova::excel {

class XlsxPackage;
class XlsFile;

enum class WorkbookFormat { kMissing, kXlsx, kXls, kEncrypted, kOther };

// The format by the file's first bytes and, for a compound document, its
// streams: a zip container is Office Open XML, a compound document holding a
// "Workbook" stream BIFF8, one holding "EncryptedPackage" an encrypted .xlsx.
WorkbookFormat DetectWorkbookFormat(const std::filesystem::path& file);

struct TableLayout {
  std::vector<std::string> names;
  std::vector<file_engine::ColumnType> types;
  std::vector<std::uint32_t> styles;  // the format of the column's first value
  int first_column = 1;               // the sheet column of the first table column
  std::int64_t header_row = 0;        // 0: no header row in the file yet
  std::int64_t first_row = 1;         // rows of a range: [first_row, last_row]
  std::int64_t last_row = INT64_MAX;
};

// One row of a table: its id (the sheet row, or a number past every sheet
// row for a row appended since) and a value per column.
struct TableRow {
  std::int64_t id = 0;
  std::vector<CellValue> values;
};

class Workbook;

// The rows of a table in order, the workbook's changes included.
class TableScan {
 public:
  TableScan(const Workbook& workbook, std::size_t table);
  bool Next(TableRow& row);

 private:
  const Workbook& workbook_;
  std::size_t table_;
  const TableLayout& layout_;
  std::unique_ptr<RowReader> reader_;
  RawRow raw_;
  bool file_done_ = false;
  std::int64_t appended_after_ = 0;
};

class Workbook {
 public:
  static constexpr std::int64_t kAppendedIds = std::int64_t{1} << 40;

  // Opens the file when it exists. Raises VbError naming the file when it
  // is no workbook, is encrypted, or is in a format not read yet.
  explicit Workbook(std::filesystem::path file);
  ~Workbook();

  const std::filesystem::path& file() const { return file_; }
  bool exists() const { return format_ != WorkbookFormat::kMissing; }
  bool date1904() const;
  NumberKind StyleKind(std::uint32_t style) const;

  // The table names as the catalogue lists them.
  std::vector<std::string> TableNames() const;
  std::optional<std::size_t> Resolve(std::string_view name) const;
  const std::string& TableName(std::size_t table) const { return tables_.at(table).name; }
  bool IsRange(std::size_t table) const { return tables_.at(table).range.has_value(); }
  const TableLayout& Layout(std::size_t table) const;

  // Makes an empty sheet with a header row; raises VbError when the name is
  // taken or not a valid sheet name. Answers the table's index.
  std::size_t CreateSheet(const std::string& name, const std::vector<std::string>& columns);

  // Raises VbError when the file cannot be written (read only, in a read-only
  // folder, or in a format not written).
  void CheckWritableFile();
  // Changes to a sheet table. Raises VbError for a range or a file that
  // cannot be written.
  void CheckWritable(std::size_t table);
  std::int64_t Append(std::size_t table, std::vector<CellValue> values);
  void Replace(std::size_t table, std::int64_t id, std::vector<CellValue> values);
  void Remove(std::size_t table, std::int64_t id);

  // The key a cell gives for lookups by value: two cells that compare equal
  // in the SQL engine must give the same key (different cells may, too).
  using CellKey = std::string (*)(const Workbook& workbook, const CellValue& cell,
                                  file_engine::ColumnType type);
  // Whether lookups by key in a table go through an index: for a sheet being
  // written, whose rows an update by key otherwise reads once per record.
  bool Indexed(std::size_t table) const;
  // The rows of an indexed table whose column may hold the key, a superset
  // the caller compares, in row order and with the changes. The first lookup
  // in a column reads the sheet once and keeps its rows in memory; changes
  // keep the index in step until the next Save.
  std::vector<TableRow> RowsByKey(std::size_t table, std::size_t column, const std::string& key,
                                  CellKey key_of);

  bool changed() const { return changed_; }
  // An Excel 97-2003 workbook, and one made by this connection under a name
  // ending in ".xls", is written as Excel 97-2003: the whole workbook anew,
  // each sheet's cells with their number formats, and the defined names that
  // cover a rectangle (see xls_writer.h for what is not kept).
  bool WritesXls() const;
  // Writes the changes, when there are any, and reads the file afresh: the
  // tables keep their indexes and layouts, the changes are gone into the
  // file, so that a later Save writes only what was changed since. Raises
  // VbError naming the file; the changes are then kept.
  void Save();
  // After a Save that failed: the changes since the last good one are
  // dropped, so that the tables read what the file holds again. A sheet made
  // since then stays, empty, and is written by the next Save.
  void DiscardChanges();

 private:
  friend class TableScan;
  friend class XlsxWriter;

  struct Sheet {
    std::string name;
    std::size_t source = SIZE_MAX;  // index in the package's sheets; SIZE_MAX for a new one
    std::map<std::int64_t, std::vector<CellValue>> replaced;
    std::set<std::int64_t> removed;
    std::map<std::int64_t, std::vector<CellValue>> appended;
    std::int64_t next_id = kAppendedIds;
    bool dirty = false;
    // Once looked up by key: the rows the file holds, as table values, and
    // per indexed column the rows by their key. An index may name rows whose
    // value has changed since or that are gone: lookups check them.
    std::optional<std::map<std::int64_t, std::vector<CellValue>>> held;
    struct KeyIndex {
      std::size_t column = 0;
      file_engine::ColumnType type = file_engine::ColumnType::kText;
      CellKey key_of = nullptr;
      std::unordered_map<std::string, std::vector<std::int64_t>> rows;
    };
    std::vector<KeyIndex> indexes;
  };
  struct Table {
    std::string name;
    std::size_t sheet = 0;
    std::optional<CellRange> range;  // a defined name
    mutable std::optional<TableLayout> layout;
    bool alias = false;  // a defined name that stands for its sheet
  };

  std::unique_ptr<RowReader> OpenSheet(std::size_t sheet) const;
  TableLayout ReadLayout(const Table& table) const;
  Sheet& WritableSheet(std::size_t table);
  void SaveXls();
  void IndexRow(Sheet& sheet, std::int64_t id, const std::vector<CellValue>& values);
  // Opens the file's format: its sheets and defined names.
  void OpenFile();
  // After a Save: the file read anew under the tables as they stand.
  void Reopen();

  std::filesystem::path file_;
  WorkbookFormat format_ = WorkbookFormat::kMissing;
  std::unique_ptr<XlsxPackage> xlsx_;
  std::unique_ptr<XlsFile> xls_;
  // Readers of a scan still running may read the file as it was before a
  // Save: what they read from stays alive with the workbook.
  std::vector<std::unique_ptr<XlsxPackage>> old_xlsx_;
  std::vector<std::unique_ptr<XlsFile>> old_xls_;
  std::vector<Sheet> sheets_;
  std::vector<Table> tables_;
  bool changed_ = false;
  bool checked_writable_ = false;
};

}  // namespace ketrova::excel
