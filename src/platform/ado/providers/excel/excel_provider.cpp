#include "platform/ado/providers/excel/excel_provider.h"

#include <algorithm>
#include <iostream>

#include "platform/ado/file_engine/create_table.h"
#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/engine_ddl.h"
#include "platform/ado/providers/excel/excel_module.h"
#include "platform/ado/providers/excel/workbook.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr const char* kSource = "Ketrova.Excel";

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

void ExcelProvider::Flush() {
  try {
    unsaved_.Save([this] { workbook_->Save(); });
  } catch (const VbError&) {
    // The rows are answered as lost: they must not reach the file later.
    workbook_->DiscardChanges();
    throw;
  }
}

ado::ExecuteResult ExcelProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                          std::int64_t maxRows) {
  if (file_engine::StartsWithWords(sql, {"CREATE", "TABLE"})) {
    CreateTable(sql);
    ado::ExecuteResult result;
    result.rowsAffected = 0;
    return result;
  }
  ado::ExecuteResult result = file_engine::ExecuteStatement(*engine_, sql, params, maxRows);
  unsaved_.Wrote(result.rowsAffected);
  return result;
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
  return file_engine::EngineTableColumns(*engine_, table);
}

std::string ExcelProvider::ColumnTypeSql(const ado::ColumnInfo& column) const {
  return file_engine::EngineTypeSql(column.type);
}

// CREATE TABLE makes a sheet; every column of a sheet made so holds text.
void ExcelProvider::CreateTable(const std::string& sql) {
  const auto created = file_engine::ParseCreateTable(sql, kSource);
  std::vector<std::string> columns;
  for (const auto& column : created.columns) columns.push_back(column.name);
  const std::string& table = created.name;
  workbook_->CheckWritableFile();
  workbook_->CreateSheet(table, columns);
  engine_->ForgetTable(table);
}

}  // namespace ketrova::excel
