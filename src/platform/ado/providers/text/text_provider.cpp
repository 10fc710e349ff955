#include "platform/ado/providers/text/text_provider.h"

#include <sqlite3.h>

#include <algorithm>
#include <fstream>

#include "platform/ado/file_engine/create_table.h"
#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/schema_ini.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/providers/text/text_names.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::text_provider {

namespace {

constexpr const char* kSource = "Ketrova.Text";

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

file_engine::ColumnType TypeOfDeclaration(std::string declared, int& width) {
  width = 0;
  auto paren = declared.find('(');
  if (paren != std::string::npos) {
    width = std::atoi(declared.c_str() + paren + 1);
    declared.resize(paren);
  }
  while (!declared.empty() && declared.back() == ' ') declared.pop_back();
  auto blank = declared.find(' ');
  if (blank != std::string::npos) declared.resize(blank);
  return file_engine::ParseTypeName(declared).value_or(file_engine::ColumnType::kText);
}

}  // namespace

void RegisterTextProvider() {
  ado::RegisterProvider(ado::ProviderKind::kText, [](const ado::ConnectionSpec& spec) {
    return std::unique_ptr<ado::Provider>(std::make_unique<TextProvider>(spec));
  });
}

TextProvider::TextProvider(const ado::ConnectionSpec& spec) {
  std::string folder = spec.dataSource;
  std::replace(folder.begin(), folder.end(), '\\', '/');
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  folder_ = folder;
  std::error_code ec;
  if (folder.empty() || !std::filesystem::is_directory(folder_, ec)) {
    throw VbError(ado::kErrGeneral,
                  "Der Ordner '" + spec.dataSource + "' der Textdateien wurde nicht gefunden",
                  kSource);
  }
  engine_ = std::make_unique<file_engine::FileEngine>(
      [this](const std::string& name) -> std::optional<file_engine::TableSource> {
        auto file = ResolveTextFile(folder_, name);
        if (!file) return std::nullopt;
        return file_engine::TableSource{file_engine::kCsvModuleName, {file->string()}};
      },
      kSource);
}

ado::ExecuteResult TextProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                         std::int64_t maxRows) {
  ado::ExecuteResult result;
  if (StartsWithWords(sql, {"CREATE", "TABLE"})) {
    CreateTable(sql);
    result.rowsAffected = 0;
    return result;
  }
  return file_engine::ExecuteStatement(*engine_, sql, params, maxRows);
}

void TextProvider::BeginTrans() {
  engine_->Execute("BEGIN");
}
void TextProvider::CommitTrans() {
  engine_->Execute("COMMIT");
}
void TextProvider::RollbackTrans() {
  engine_->Execute("ROLLBACK");
}

std::vector<ado::TableInfo> TextProvider::Tables() {
  std::vector<ado::TableInfo> tables;
  for (auto& name : ListTextTables(folder_)) tables.push_back({"", "", std::move(name), "TABLE"});
  return tables;
}

std::vector<ado::ColumnInfo> TextProvider::TableColumns(const std::string& table) {
  engine_->EnsureTable(table);
  auto statement = engine_->Prepare("SELECT * FROM " + file_engine::QuoteSqlIdentifier(table));
  sqlite3_stmt* h = statement->handle();
  std::vector<ado::ColumnInfo> columns;
  for (int i = 0; i < sqlite3_column_count(h); ++i) {
    auto c = file_engine::ColumnFromDeclaredType(sqlite3_column_name(h, i),
                                                 sqlite3_column_decltype(h, i));
    c.baseTable = table;
    c.baseColumn = c.name;
    columns.push_back(std::move(c));
  }
  return columns;
}

std::string TextProvider::ColumnTypeSql(const ado::ColumnInfo& column) const {
  return file_engine::EngineTypeSql(column.type);
}

// CREATE TABLE writes a file holding the header line, and the columns' types
// into schema.ini.
void TextProvider::CreateTable(const std::string& sql) {
  const file_engine::DeclaredTable declared = file_engine::ParseCreateTable(sql, kSource);
  const std::string& table = declared.name;
  file_engine::SchemaEntry entry;
  for (const auto& c : declared.columns) {
    file_engine::SchemaColumn column;
    column.name = c.name;
    column.type = TypeOfDeclaration(c.declared, column.width);
    entry.columns.push_back(std::move(column));
  }

  // The file: the name without folder and without the ".TXT" the system adds.
  std::string name = table.substr(table.find_last_of("\\/") + 1);
  if (name.size() > 4 && AsciiUpper(name.substr(name.size() - 4)) == ".TXT" &&
      name.substr(0, name.size() - 4).find('.') != std::string::npos) {
    name.resize(name.size() - 4);
  }
  const auto file = folder_ / name;
  if (ResolveTextFile(folder_, name)) {
    throw VbError(ado::kErrStatementRefused, "Die Tabelle '" + name + "' existiert bereits",
                  kSource);
  }
  entry.file = name;
  entry.header = true;
  entry.delimiter = ';';
  entry.charset = file_engine::Charset::kUtf8;
  std::string header;
  for (std::size_t i = 0; i < entry.columns.size(); ++i) {
    if (i > 0) header.push_back(';');
    file_engine::AppendCsvField(header, entry.columns[i].name, ';', false);
  }
  header += "\r\n";
  {
    std::ofstream out(file, std::ios::binary);
    if (!out || !(out << header)) {
      throw VbError(ado::kErrGeneral, "Datei " + file.string() + " kann nicht angelegt werden",
                    kSource);
    }
  }
  file_engine::WriteSchemaIni(folder_, entry);
  engine_->ForgetTable(table);
}

}  // namespace ketrova::text_provider
