// The xBase provider: a folder of dBase and Paradox tables as a store, opened
// by "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=<folder>;Extended
// Properties=Paradox 5.x" (or "dBase ..."), and by an ODBC data source whose
// driver is a Paradox or dBase driver, on its DBQ folder.
//
// Every .dbf and .db file of the folder is a table named by its file name
// without the extension (a .dbf first where both exist). A table is read
// whole when a statement first names it (dbf_file.h, paradox_file.h) and
// served to the file SQL engine as a virtual table of the module
// "ketrova_dbf"; INSERT, UPDATE and DELETE change that copy, so that later
// statements see them, and each changed table is written back by Flush (a
// job's end) and when the connection closes. CREATE TABLE writes a new file
// at once: a Paradox 7 table (.db) on a connection that names Paradox, else
// a dBase III table (.dbf); "." and blanks in a name become "_" in the file
// name. Declared types: TEXT(n) gives alpha n / C(n) (255 / C(254) without a
// size), INTEGER long / N(11), DOUBLE number / N(20,8), CURRENCY money /
// N(20,4), DATETIME timestamp / D, BIT logical / L, MEMO memo / M.
//
// RegisterXbaseProvider() must be called once at program start.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/file_engine/unsaved_writes.h"
#include "platform/ado/provider.h"
#include "platform/ado/providers/xbase/dbf_file.h"
#include "platform/ado/providers/xbase/dbf_module.h"

namespace ketrova::xbase_provider {

void RegisterXbaseProvider();

// One table as the engine sees it: the file's rows, those deleted marked.
struct LoadedTable {
  std::unique_ptr<TableFile> file;
  std::vector<bool> live;
  bool changed = false;
};

class XbaseProvider : public ado::Provider {
 public:
  // Raises VbError kErrGeneral when the folder does not exist.
  explicit XbaseProvider(const ado::ConnectionSpec& spec);
  // Writes the tables that changed.
  ~XbaseProvider() override;

  std::string Dialect() const override { return "xbase"; }
  std::string IdentifierQuote() const override { return "["; }

  ado::ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                             std::int64_t maxRows = 0) override;
  void BeginTrans() override {}
  void CommitTrans() override {}
  void RollbackTrans() override {}

  std::vector<ado::TableInfo> Tables() override;
  std::vector<ado::ColumnInfo> TableColumns(const std::string& table) override;
  std::vector<ado::IndexInfo> TableIndexes(const std::string&) override { return {}; }
  std::string ColumnTypeSql(const ado::ColumnInfo& column) const override;

  // Writes every changed table now: at a job's end, before the run waits on
  // the user, and when the connection closes. Raises kErrGeneral; the writes
  // since the last flush are then lost (FateOfGroup) and the tables are again
  // what their files hold.
  void Flush() override;
  std::uint64_t LastWriteGroup() const override { return unsaved_.LastWrite(); }
  GroupFate FateOfGroup(std::uint64_t group, std::string& text) const override {
    return unsaved_.Fate(group, text);
  }

 private:
  std::filesystem::path FileOf(const std::string& name) const;
  void CreateTable(const std::string& sql);
  // Drops the changes a failed save could not write.
  void ForgetUnsaved();

  std::filesystem::path folder_;
  bool paradox_ = false;  // new tables as Paradox .db (else dBase III .dbf)
  std::map<std::string, std::unique_ptr<LoadedTable>> tables_;  // by upper-case file path
  TableLoader loader_;  // reads a table on first use; the module's way to tables_
  std::unique_ptr<file_engine::FileEngine> engine_;
  file_engine::UnsavedWrites unsaved_{"dBase/Paradox"};
};

}  // namespace ketrova::xbase_provider
