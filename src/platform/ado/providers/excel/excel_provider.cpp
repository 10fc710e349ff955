#include "platform/ado/providers/excel/excel_provider.h"

#include <sqlite3.h>

#include <algorithm>
#include <iostream>

#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/providers/excel/excel_module.h"
#include "platform/ado/providers/excel/workbook.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr const char* kSource = "Ketrova.Excel";

bool StartsWithWords(std::string_view sql, std::initializer_list<std::string_view> words) {
  std::size_t p = 0;
  for (auto word : words) {
    while (p < sql.size() && std::isspace(static_cast<unsigned char>(sql[p]))) ++p;
    if (AsciiUpper(sql.substr(p, word.size())) != word) return false;
    p += word.size();
    if (p < sql.size() && !std::isspace(static_cast<unsigned char>(sql[p]))) return false;
  }
  return true;
}

}  // namespace

void RegisterExcelProvider() {
  ado::RegisterProvider(ado::ProviderKind::kExcel, [](const ado::ConnectionSpec& spec) {
    return std::unique_ptr<ado::Provider>(std::make_unique<ExcelProvider>(spec));
  });
}

ExcelProvider::ExcelProvider(const ado::ConnectionSpec& spec) {
  std::string file = spec.dataSource;
  std::replace(file.begin(), file.end(), '\\', '/');
  if (file.empty()) throw VbError(ado::kErrGeneral, "Es ist keine Excel-Datei angegeben", kSource);
  workbook_ = std::make_unique<Workbook>(file);
  Workbook* workbook = workbook_.get();
  engine_ = std::make_unique<file_engine::FileEngine>(
      [workbook](const std::string& name) -> std::optional<file_engine::TableSource> {
        auto table = workbook->Resolve(name);
        if (!table && !workbook->exists()) {
          throw VbError(ado::kErrUnknownTable,
                        "Die Excel-Datei '" + workbook->file().string() + "' wurde nicht gefunden",
                        kSource);
        }
        if (!table) return std::nullopt;
        return file_engine::TableSource{kExcelModuleName, {std::to_string(*table)}};
      },
      kSource);
  RegisterExcelModule(engine_->db(), workbook);
}

ExcelProvider::~ExcelProvider() {
  // The statements go before the workbook they read.
  engine_.reset();
  try {
    workbook_->Save();
  } catch (const VbError& e) {
    // Nobody is left to hear it but the user's terminal.
    std::cerr << e.Description << "\n";
  }
}

void ExcelProvider::Save() {
  workbook_->Save();
}

ado::ExecuteResult ExcelProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                          std::int64_t maxRows) {
  if (StartsWithWords(sql, {"CREATE", "TABLE"})) {
    CreateTable(sql);
    ado::ExecuteResult result;
    result.rowsAffected = 0;
    return result;
  }
  return file_engine::ExecuteStatement(*engine_, sql, params, maxRows);
}

void ExcelProvider::BeginTrans() {
  engine_->Execute("BEGIN");
}
void ExcelProvider::CommitTrans() {
  engine_->Execute("COMMIT");
}
void ExcelProvider::RollbackTrans() {
  engine_->Execute("ROLLBACK");
}

std::vector<ado::TableInfo> ExcelProvider::Tables() {
  std::vector<ado::TableInfo> tables;
  for (auto& name : workbook_->TableNames()) tables.push_back({"", "", std::move(name), "TABLE"});
  return tables;
}

std::vector<ado::ColumnInfo> ExcelProvider::TableColumns(const std::string& table) {
  engine_->EnsureTable(table);
  auto statement = engine_->Prepare("SELECT * FROM " + file_engine::QuoteSqlIdentifier(table));
  sqlite3_stmt* h = statement->handle();
  std::vector<ado::ColumnInfo> columns;
  for (int i = 0; i < sqlite3_column_count(h); ++i) {
    auto c = file_engine::ColumnFromDeclaredType(sqlite3_column_name(h, i),
                                                 sqlite3_column_decltype(h, i));
    if (c.type == ado::adLongVarWChar) c.definedSize = 0;
    c.baseTable = table;
    c.baseColumn = c.name;
    columns.push_back(std::move(c));
  }
  return columns;
}

std::string ExcelProvider::ColumnTypeSql(const ado::ColumnInfo& column) const {
  return file_engine::EngineTypeSql(column.type);
}

// CREATE TABLE makes a sheet. The statement is read by SQLite itself, on a
// scratch database, so that every form of column list is understood; every
// column of a sheet made so holds text.
void ExcelProvider::CreateTable(const std::string& sql) {
  sqlite3* scratch = nullptr;
  if (sqlite3_open(":memory:", &scratch) != SQLITE_OK) {
    sqlite3_close(scratch);
    throw VbError(ado::kErrGeneral, "CREATE TABLE: kein Speicher", kSource);
  }
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> guard(scratch, sqlite3_close);
  char* err = nullptr;
  if (sqlite3_exec(scratch, file_engine::RewriteFileSql(sql).c_str(), nullptr, nullptr, &err) !=
      SQLITE_OK) {
    std::string msg = err ? err : "CREATE TABLE";
    sqlite3_free(err);
    throw VbError(ado::kErrStatementRefused, msg, kSource);
  }
  sqlite3_stmt* h = nullptr;
  sqlite3_prepare_v2(scratch, "SELECT name FROM sqlite_master WHERE type = 'table'", -1, &h,
                     nullptr);
  std::string table;
  if (sqlite3_step(h) == SQLITE_ROW)
    table = reinterpret_cast<const char*>(sqlite3_column_text(h, 0));
  sqlite3_finalize(h);
  std::vector<std::string> columns;
  std::string pragma = "PRAGMA table_info(" + file_engine::QuoteSqlIdentifier(table) + ")";
  sqlite3_prepare_v2(scratch, pragma.c_str(), -1, &h, nullptr);
  while (sqlite3_step(h) == SQLITE_ROW)
    columns.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(h, 1)));
  sqlite3_finalize(h);
  workbook_->CheckWritableFile();
  workbook_->CreateSheet(table, columns);
  engine_->ForgetTable(table);
}

}  // namespace ketrova::excel
