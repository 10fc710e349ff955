// The Excel provider: one workbook as a store, opened by
// "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=<file>;Extended Properties="Excel 8.0;";".
//
// The workbook's format is taken from its content, not its name: a zip
// container is .xlsx, a compound document Excel 97-2003 (.xls); both are
// read and written, and a new workbook named .xls is written so. Its sheets ("Kunden$") and defined
// names are the tables (workbook.h); statements run on the file SQL engine (file_engine.h). CREATE
// TABLE [X] makes a sheet X whose header row holds the column names; INSERT appends rows below the
// last row, UPDATE changes cells in place and DELETE removes rows, the rows below moving up (the
// old Jet driver refused DELETE on workbooks; here a "delete before insert" empties the sheet below
// its header).
//
// A workbook that does not exist opens, so that a target can be made by its
// first CREATE TABLE; reading a table of it raises an error naming the file.
// Changes are written at the end of each job (Flush) and when the connection
// closes, through a temporary file renamed over the original; a connection
// that changed nothing never writes. A file that cannot be written is
// refused at the first change already, since a failure at close cannot be
// reported.
//
// RegisterExcelProvider() must be called once at program start.
#pragma once

#include <memory>
#include <string>

#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/file_engine/unsaved_writes.h"
#include "platform/ado/provider.h"

namespace ketrova::excel {

class Workbook;

void RegisterExcelProvider();

class ExcelProvider : public ado::Provider {
 public:
  // Raises VbError kErrGeneral naming the file when it is no readable workbook.
  explicit ExcelProvider(const ado::ConnectionSpec& spec);
  // Writes the workbook's changes; a failure then cannot be reported but on
  // the terminal.
  ~ExcelProvider() override;

  std::string Dialect() const override { return "excel"; }
  std::string IdentifierQuote() const override { return "\""; }

  ado::ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                             std::int64_t maxRows = 0) override;
  void BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;

  std::vector<ado::TableInfo> Tables() override;
  std::vector<ado::ColumnInfo> TableColumns(const std::string& table) override;
  std::vector<ado::IndexInfo> TableIndexes(const std::string&) override { return {}; }
  std::string ColumnTypeSql(const ado::ColumnInfo& column) const override;

  // Writes the changes now. Raises VbError naming the file; the writes since
  // the last flush are then lost (FateOfGroup) and dropped.
  void Flush() override;
  std::uint64_t LastWriteGroup() const override { return unsaved_.LastWrite(); }
  GroupFate FateOfGroup(std::uint64_t group, std::string& text) const override {
    return unsaved_.Fate(group, text);
  }

 private:
  void CreateTable(const std::string& sql);

  std::unique_ptr<Workbook> workbook_;
  std::unique_ptr<file_engine::FileEngine> engine_;
  file_engine::UnsavedWrites unsaved_{"Excel"};
};

}  // namespace ketrova::excel
