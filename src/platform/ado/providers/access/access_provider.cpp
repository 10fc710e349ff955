#include "platform/ado/providers/access/access_provider.h"

#include <sqlite3.h>

#include <algorithm>

#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/providers/access/jet_query.h"
#include "platform/ado/providers/access/mdb_module.h"
#include "platform/ado/value_text.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::access_provider {

namespace {

constexpr const char* kSource = "Ketrova.Access";

std::string FirstWord(std::string_view sql) {
  std::size_t i = 0;
  while (i < sql.size() && std::isspace(static_cast<unsigned char>(sql[i]))) ++i;
  std::size_t k = i;
  while (k < sql.size() && std::isalpha(static_cast<unsigned char>(sql[k]))) ++k;
  return AsciiUpper(sql.substr(i, k - i));
}

Variant ByteArray(const std::string& bytes) {
  auto array = std::make_shared<SafeArray>();
  array->elementType = vbByte;
  array->bounds.push_back({0, static_cast<std::int32_t>(bytes.size())});
  array->data.reserve(bytes.size());
  for (char b : bytes) array->data.push_back(Variant::Byte(static_cast<std::uint8_t>(b)));
  return Variant(array);
}

// A value of the engine's cursor as the subtype of the column's Jet type.
Variant AsJetType(const Variant& v, ado::DataTypeEnum type) {
  if (v.IsNull()) return v;
  switch (type) {
    case ado::adUnsignedTinyInt:
      return Variant::Byte(static_cast<std::uint8_t>(v.ToLong()));
    case ado::adSmallInt:
      return Variant::Integer(static_cast<std::int16_t>(v.ToLong()));
    case ado::adSingle:
      return Variant::Single(static_cast<float>(v.ToDouble()));
    case ado::adNumeric: {
      Variant d = ado::DecimalFromText(v.ToString());
      return d.IsEmpty() ? v : d;
    }
    case ado::adVarBinary:
    case ado::adLongVarBinary:
      return v.Type() == vbString ? ByteArray(v.AsString()) : v;
    default:
      return v;
  }
}

}  // namespace

// The engine's cursor with the columns and values of Jet's types, where a
// column comes straight from a table of the file.
class AccessCursor : public ado::Cursor {
 public:
  AccessCursor(std::unique_ptr<ado::Cursor> inner, AccessProvider& provider)
      : inner_(std::move(inner)), columns_(inner_->Columns()) {
    for (auto& c : columns_) {
      if (const JetColumn* jet = provider.BaseColumn(c)) {
        std::string name = c.name;
        c = jet->info;
        c.name = std::move(name);
      }
      types_.push_back(c.type);
    }
  }
  const std::vector<ado::ColumnInfo>& Columns() const override { return columns_; }
  std::size_t Fetch(std::vector<ado::Row>& rows, std::size_t count) override {
    const std::size_t first = rows.size();
    std::size_t added = inner_->Fetch(rows, count);
    for (std::size_t r = first; r < rows.size(); ++r)
      for (std::size_t i = 0; i < rows[r].size() && i < types_.size(); ++i)
        rows[r][i] = AsJetType(rows[r][i], types_[i]);
    return added;
  }

 private:
  std::unique_ptr<ado::Cursor> inner_;
  std::vector<ado::ColumnInfo> columns_;
  std::vector<ado::DataTypeEnum> types_;
};

void RegisterAccessProvider() {
  ado::RegisterProvider(ado::ProviderKind::kAccess, [](const ado::ConnectionSpec& spec) {
    return std::unique_ptr<ado::Provider>(std::make_unique<AccessProvider>(spec));
  });
}

AccessProvider::AccessProvider(const ado::ConnectionSpec& spec) {
  std::string file = spec.dataSource;
  std::replace(file.begin(), file.end(), '\\', '/');
  database_ = std::make_unique<MdbDatabase>(file);
  engine_ = std::make_unique<file_engine::FileEngine>(
      [this](const std::string& name) { return Resolve(name); }, kSource);
  RegisterMdbModule(engine_->db(), database_.get());
}

std::optional<file_engine::TableSource> AccessProvider::Resolve(const std::string& name) {
  auto entry = database_->Find(name);
  if (!entry) return std::nullopt;
  if (entry->type == "VIEW") {
    // The view is made here; the engine's CREATE VIRTUAL TABLE IF NOT EXISTS
    // that follows finds the name taken and does nothing.
    std::string select = BuildQuerySql(entry->name, database_->QueryRows(entry->name));
    std::string sql = "CREATE VIEW IF NOT EXISTS main." + file_engine::QuoteSqlIdentifier(name) +
                      " AS " + file_engine::RewriteFileSql(select);
    char* err = nullptr;
    if (sqlite3_exec(engine_->db(), sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
      std::string msg = err ? err : "CREATE VIEW";
      sqlite3_free(err);
      throw VbError(ado::kErrStatementRefused,
                    "Die Access-Abfrage '" + entry->name + "' kann nicht übernommen werden: " + msg,
                    kSource);
    }
  }
  return file_engine::TableSource{kMdbModuleName, {entry->name}};
}

void AccessProvider::CheckWritable() const {
  throw VbError(ado::kErrStatementRefused,
                "Die Access-Datei '" + database_->file() +
                    "' kann unter Linux nur gelesen werden. Als Ziel dienen eine "
                    "ODBC-Datenquelle, SQLite oder PostgreSQL.",
                kSource);
}

ado::ExecuteResult AccessProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                           std::int64_t maxRows) {
  const std::string word = FirstWord(sql);
  if (word != "SELECT" && word != "WITH") CheckWritable();
  ado::ExecuteResult result = file_engine::ExecuteStatement(*engine_, sql, params, maxRows);
  if (result.cursor)
    result.cursor = std::make_unique<AccessCursor>(std::move(result.cursor), *this);
  return result;
}

std::vector<ado::TableInfo> AccessProvider::Tables() {
  std::vector<ado::TableInfo> out;
  for (auto& e : database_->Catalogue()) out.push_back({"", "", e.name, e.type});
  return out;
}

const JetColumn* AccessProvider::BaseColumn(const ado::ColumnInfo& column) {
  if (column.baseTable.empty() || column.baseColumn.empty()) return nullptr;
  std::string key = AsciiUpper(column.baseTable);
  auto it = columns_.find(key);
  if (it == columns_.end()) {
    auto entry = database_->Find(column.baseTable);
    if (!entry || entry->type == "VIEW") return nullptr;
    it = columns_.emplace(key, database_->Columns(entry->name)).first;
  }
  for (const auto& c : it->second)
    if (AsciiUpper(c.info.name) == AsciiUpper(column.baseColumn)) return &c;
  return nullptr;
}

std::vector<ado::ColumnInfo> AccessProvider::TableColumns(const std::string& table) {
  auto entry = database_->Find(table);
  if (!entry) {
    throw VbError(ado::kErrUnknownTable, "Die Tabelle '" + table + "' wurde nicht gefunden",
                  kSource);
  }
  std::vector<ado::ColumnInfo> out;
  if (entry->type != "VIEW") {
    std::vector<std::string> keys;
    for (const auto& index : database_->Indexes(entry->name))
      if (index.primaryKey) keys = index.columns;
    for (const auto& c : database_->Columns(entry->name)) {
      ado::ColumnInfo info = c.info;
      info.keyColumn = std::find(keys.begin(), keys.end(), info.name) != keys.end();
      out.push_back(std::move(info));
    }
    return out;
  }
  // A query: the columns of its result, as the engine prepares it.
  ado::ExecuteResult result = Execute("SELECT * FROM [" + entry->name + "]", {}, /*maxRows=*/1);
  for (auto c : result.cursor->Columns()) {
    c.baseTable = entry->name;
    c.baseColumn = c.name;
    out.push_back(std::move(c));
  }
  return out;
}

std::vector<ado::IndexInfo> AccessProvider::TableIndexes(const std::string& table) {
  auto entry = database_->Find(table);
  if (!entry || entry->type == "VIEW") return {};
  return database_->Indexes(entry->name);
}

std::string AccessProvider::ColumnTypeSql(const ado::ColumnInfo& column) const {
  return file_engine::EngineTypeSql(column.type);
}

}  // namespace ketrova::access_provider
