#include "platform/ado/file_engine/engine_access.h"

#include <sqlite3.h>

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {

bool Is(const char* declared, std::string_view word) {
  return declared != nullptr && std::string_view(declared) == word;
}

void BindText(sqlite3_stmt* h, int i, const std::string& text) {
  sqlite3_bind_text(h, i, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void Bind(sqlite3_stmt* h, std::span<const Variant> params) {
  for (std::size_t n = 0; n < params.size(); ++n) {
    const Variant& v = params[n];
    const int i = static_cast<int>(n) + 1;
    switch (v.Type()) {
      case vbEmpty:
      case vbNull:
        sqlite3_bind_null(h, i);
        break;
      case vbBoolean:
        BindText(h, i, v.AsBool() ? "True" : "False");
        break;
      case vbByte:
      case vbInteger:
      case vbLong:
        sqlite3_bind_int64(h, i, v.ToLong());
        break;
      case vbSingle:
      case vbDouble:
      case vbCurrency:
      case vbDecimal:
        sqlite3_bind_double(h, i, v.ToDouble());
        break;
      case vbDate:
        BindText(h, i, IsoDate(v.AsDate().value));
        break;
      default:
        BindText(h, i, v.ToString());
        break;
    }
  }
}

Variant IntegerVariant(sqlite3_int64 v) {
  if (v >= std::numeric_limits<std::int32_t>::min() &&
      v <= std::numeric_limits<std::int32_t>::max()) {
    return Variant::Long(static_cast<std::int32_t>(v));
  }
  return Variant(static_cast<double>(v));
}

// The rows of a plain scan of a delimited text file, read by the module's
// reader directly: the values and failures SQLite's program for the same
// statement would give, without the program.
class CsvScanCursor : public ado::Cursor {
 public:
  CsvScanCursor(FileEngine& engine, Statement& statement, const PlainScan& plan,
                std::unique_ptr<CsvTableScan> scan, std::int64_t maxRows)
      : plan_(plan),
        scan_(std::move(scan)),
        source_(engine.source()),
        remaining_(maxRows > 0 ? maxRows : -1) {
    for (int i = 0; i < static_cast<int>(plan_.columns.size()); ++i)
      columns_.push_back(DescribeResultColumn(statement.handle(), i));
    for (int column : plan_.columns)
      assert(column >= 0 && static_cast<std::size_t>(column) < scan_->ColumnCount());
    has_row_ = remaining_ != 0 && Step();
  }

  const std::vector<ado::ColumnInfo>& Columns() const override { return columns_; }

  std::size_t Fetch(std::vector<ado::Row>& rows, std::size_t count) override {
    std::size_t added = 0;
    while (added < count && has_row_) {
      ado::Row row;
      row.reserve(columns_.size());
      for (std::size_t i = 0; i < columns_.size(); ++i)
        row.push_back(VariantFromCell(scan_->Cell(static_cast<std::size_t>(plan_.columns[i])),
                                      columns_[i].type));
      rows.push_back(std::move(row));
      ++added;
      if (remaining_ > 0) --remaining_;
      has_row_ = remaining_ != 0 && Step();
    }
    return added;
  }

 private:
  // A failure reaches the caller as the engine reports the module's.
  bool Step() {
    try {
      return scan_->Next();
    } catch (const VbError& e) {
      throw VbError(e.Number != 0 ? e.Number : ado::kErrStatementRefused,
                    e.Description.empty() ? sqlite3_errstr(SQLITE_ERROR) : e.Description, source_);
    } catch (const std::exception& e) {
      throw VbError(ado::kErrGeneral, e.what(), source_);
    }
  }

  PlainScan plan_;
  std::unique_ptr<CsvTableScan> scan_;
  std::string source_;
  std::vector<ado::ColumnInfo> columns_;
  std::int64_t remaining_;  // rows still allowed, -1 for no limit
  bool has_row_ = false;
};

}  // namespace

bool OleDateFromIso(std::string_view text, double& ole) {
  if (text.size() != 10 && text.size() != 19) return false;  // no fractions in our files
  const std::optional<ado::DateParts> parts = ado::IsoDateParts(text);
  if (!parts) return false;
  ole = ado::OleDateFromParts(*parts);
  return true;
}

std::string IsoDate(double ole) {
  ado::DateParts p = ado::PartsFromOleDate(ole);
  char buf[64];
  if (p.hour == 0 && p.minute == 0 && p.second == 0) {
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", p.year, p.month, p.day);
  } else {
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                  p.minute, p.second);
  }
  return buf;
}

std::vector<ado::ColumnInfo> EngineTableColumns(FileEngine& engine, const std::string& table) {
  engine.EnsureTable(table);
  auto statement = engine.Prepare("SELECT * FROM " + QuoteSqlIdentifier(table));
  sqlite3_stmt* h = statement->handle();
  std::vector<ado::ColumnInfo> columns;
  for (int i = 0; i < sqlite3_column_count(h); ++i) {
    auto c = ColumnFromDeclaredType(sqlite3_column_name(h, i), sqlite3_column_decltype(h, i));
    c.baseTable = table;
    c.baseColumn = c.name;
    columns.push_back(std::move(c));
  }
  return columns;
}

ado::ColumnInfo ColumnFromDeclaredType(const std::string& name, const char* full) {
  ado::ColumnInfo c;
  c.name = name;
  c.typeName = full ? full : "";
  // "TEXT(50)": the type word, and a width that counts for text.
  std::string word = c.typeName.substr(0, c.typeName.find('('));
  const char* declared = full ? word.c_str() : nullptr;
  const int width =
      c.typeName.size() > word.size() ? std::atoi(c.typeName.c_str() + word.size() + 1) : 0;
  if (Is(declared, "INTEGER")) {
    c.type = ado::adInteger;
    c.definedSize = 4;
    c.precision = 10;
  } else if (Is(declared, "DOUBLE")) {
    c.type = ado::adDouble;
    c.definedSize = 8;
    c.precision = 15;
  } else if (Is(declared, "CURRENCY")) {
    c.type = ado::adCurrency;
    c.definedSize = 8;
    c.precision = 19;
  } else if (Is(declared, "DATETIME")) {
    c.type = ado::adDate;
    c.definedSize = 8;
  } else if (Is(declared, "BIT")) {
    c.type = ado::adBoolean;
    c.definedSize = 2;
  } else if (Is(declared, "MEMO")) {
    c.type = ado::adLongVarWChar;
    c.definedSize = 65535;
  } else {
    c.type = ado::adVarWChar;
    c.definedSize = width > 0 ? width : 255;
  }
  return c;
}

ado::ColumnInfo DescribeResultColumn(sqlite3_stmt* h, int i) {
  ado::ColumnInfo c =
      ColumnFromDeclaredType(sqlite3_column_name(h, i), sqlite3_column_decltype(h, i));
  if (const char* table = sqlite3_column_table_name(h, i)) c.baseTable = table;
  if (const char* origin = sqlite3_column_origin_name(h, i)) c.baseColumn = origin;
  return c;
}

Variant VariantFromCell(const EngineCell& cell, ado::DataTypeEnum type) {
  switch (cell.kind) {
    case EngineCell::Kind::kNull:
      return Variant::Null();
    case EngineCell::Kind::kInteger: {
      const std::int64_t v = cell.integer;
      if (type == ado::adBoolean) return Variant(v != 0);
      if (type == ado::adDouble) return Variant(static_cast<double>(v));
      if (type == ado::adCurrency) return Variant::FromCurrency(static_cast<double>(v));
      return IntegerVariant(v);
    }
    case EngineCell::Kind::kReal:
      if (type == ado::adCurrency) return Variant::FromCurrency(cell.real);
      return Variant(cell.real);
    case EngineCell::Kind::kText: {
      double ole = 0;
      if (type == ado::adDate && OleDateFromIso(cell.text, ole)) return Variant::FromDate(ole);
      return Variant(cell.text);
    }
  }
  return Variant::Null();
}

EngineCursor::EngineCursor(std::unique_ptr<Statement> statement, std::int64_t maxRows)
    : statement_(std::move(statement)), remaining_(maxRows > 0 ? maxRows : -1) {
  sqlite3_stmt* h = statement_->handle();
  has_row_ = remaining_ != 0 && statement_->Step();
  const int n = sqlite3_column_count(h);
  for (int i = 0; i < n; ++i) {
    ado::ColumnInfo c = DescribeResultColumn(h, i);
    if (sqlite3_column_decltype(h, i) == nullptr && has_row_) {
      // A computed column (COUNT(*), an expression) takes the type of its first value.
      const int first = sqlite3_column_type(h, i);
      if (first == SQLITE_INTEGER || first == SQLITE_FLOAT) {
        ado::ColumnInfo typed =
            ColumnFromDeclaredType(c.name, first == SQLITE_INTEGER ? "INTEGER" : "DOUBLE");
        typed.baseTable = std::move(c.baseTable);
        typed.baseColumn = std::move(c.baseColumn);
        c = std::move(typed);
      }
      c.typeName.clear();
    }
    columns_.push_back(std::move(c));
  }
}

Variant EngineCursor::Value(int i) const {
  sqlite3_stmt* h = statement_->handle();
  EngineCell cell;
  switch (sqlite3_column_type(h, i)) {
    case SQLITE_NULL:
      break;
    case SQLITE_INTEGER:
      cell.kind = EngineCell::Kind::kInteger;
      cell.integer = sqlite3_column_int64(h, i);
      break;
    case SQLITE_FLOAT:
      cell.kind = EngineCell::Kind::kReal;
      cell.real = sqlite3_column_double(h, i);
      break;
    default:
      cell.kind = EngineCell::Kind::kText;
      cell.text = std::string_view(reinterpret_cast<const char*>(sqlite3_column_text(h, i)),
                                   static_cast<std::size_t>(sqlite3_column_bytes(h, i)));
      break;
  }
  return VariantFromCell(cell, columns_[static_cast<std::size_t>(i)].type);
}

std::size_t EngineCursor::Fetch(std::vector<ado::Row>& rows, std::size_t count) {
  std::size_t added = 0;
  const int n = static_cast<int>(columns_.size());
  while (added < count && has_row_) {
    ado::Row row;
    row.reserve(columns_.size());
    for (int i = 0; i < n; ++i) row.push_back(Value(i));
    rows.push_back(std::move(row));
    ++added;
    if (remaining_ > 0) --remaining_;
    has_row_ = remaining_ != 0 && statement_->Step();
  }
  return added;
}

std::string EngineTypeSql(ado::DataTypeEnum type) {
  switch (type) {
    case ado::adTinyInt:
    case ado::adSmallInt:
    case ado::adInteger:
    case ado::adBigInt:
    case ado::adUnsignedTinyInt:
    case ado::adUnsignedSmallInt:
    case ado::adUnsignedInt:
    case ado::adUnsignedBigInt:
      return "INTEGER";
    case ado::adSingle:
    case ado::adDouble:
    case ado::adNumeric:
    case ado::adDecimal:
    case ado::adVarNumeric:
      return "DOUBLE";
    case ado::adCurrency:
      return "CURRENCY";
    case ado::adDate:
    case ado::adDBDate:
    case ado::adDBTime:
    case ado::adDBTimeStamp:
      return "DATETIME";
    case ado::adBoolean:
      return "BIT";
    case ado::adLongVarChar:
    case ado::adLongVarWChar:
      return "MEMO";
    default:
      break;
  }
  return "TEXT";
}

ado::ExecuteResult ExecuteStatement(FileEngine& engine, const std::string& sql,
                                    std::span<const Variant> params, std::int64_t maxRows) {
  ado::ExecuteResult result;
  auto statement = engine.Prepare(sql);
  Bind(statement->handle(), params);
  if (sqlite3_column_count(statement->handle()) > 0) {
    // A plain SELECT of a text file, the usual source of a job, skips SQLite.
    if (params.empty()) {
      if (const PlainScan* plan = engine.PlainScanOf(*statement)) {
        if (auto scan = CsvTableScan::Open(engine.db(), plan->table)) {
          result.cursor =
              std::make_unique<CsvScanCursor>(engine, *statement, *plan, std::move(scan), maxRows);
          return result;
        }
      }
    }
    result.cursor = std::make_unique<EngineCursor>(std::move(statement), maxRows);
    return result;
  }
  while (statement->Step()) {
  }
  result.rowsAffected = sqlite3_changes64(engine.db());
  return result;
}

}  // namespace ketrova::file_engine
