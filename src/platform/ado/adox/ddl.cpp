#include "platform/ado/adox/ddl.h"

#include "support/collection.h"

namespace ketrova::adox {
namespace {

std::string Quote(const ado::Provider& provider, const std::string& name) {
  std::string q = provider.IdentifierQuote();
  return q + name + (q == "[" ? "]" : q);
}

std::string ColumnList(const ado::Provider& provider, Columns& columns) {
  std::string list;
  for (const auto& c : columns.Items()) {
    if (!list.empty()) list += ", ";
    list += Quote(provider, c->Name);
  }
  return list;
}

bool InIndex(const Index* index, const std::string& name) {
  if (!index) return false;
  for (const auto& c : const_cast<Index*>(index)->GetColumns().Items())
    if (KeyEquals(c->Name, name)) return true;
  return false;
}

}  // namespace

ado::ColumnInfo ColumnDefinition(const Column& column) {
  ado::ColumnInfo info;
  info.name = column.Name;
  info.type = column.Type;
  info.definedSize = column.DefinedSize;
  info.precision = static_cast<std::uint8_t>(column.Precision > 255 ? 255 : column.Precision);
  info.numericScale = column.NumericScale;
  info.autoIncrement = column.AutoIncrement();
  info.nullable = true;
  return info;
}

std::string CreateTableSql(const ado::Provider& provider, const std::string& table,
                           const std::vector<ColumnPtr>& columns, const Index* primaryKey) {
  const std::string dialect = provider.Dialect();
  std::string sql = "CREATE TABLE " + Quote(provider, table) + " (";
  bool keyInline = false;
  std::vector<std::string> extra;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const Column& c = *columns[i];
    ado::ColumnInfo info = ColumnDefinition(c);
    std::string type = provider.ColumnTypeSql(info);
    if (info.autoIncrement && dialect == "sqlite") {
      // SQLite counts only on its INTEGER PRIMARY KEY: that column is the key.
      keyInline = true;
    } else if (info.autoIncrement && dialect == "mysql" && !InIndex(primaryKey, c.Name)) {
      extra.push_back("UNIQUE (" + Quote(provider, c.Name) + ")");
    }
    if (i) sql += ", ";
    sql += Quote(provider, c.Name) + " " + type;
    if (InIndex(primaryKey, c.Name) && !info.autoIncrement) sql += " NOT NULL";
  }
  if (primaryKey && !keyInline && const_cast<Index*>(primaryKey)->GetColumns().Count() > 0)
    sql += ", PRIMARY KEY (" + ColumnList(provider, const_cast<Index*>(primaryKey)->GetColumns()) +
           ")";
  for (const auto& e : extra) sql += ", " + e;
  sql += ")";
  return sql;
}

std::string AddColumnSql(const ado::Provider& provider, const std::string& table,
                         const Column& column) {
  return "ALTER TABLE " + Quote(provider, table) + " ADD " + Quote(provider, column.Name) + " " +
         provider.ColumnTypeSql(ColumnDefinition(column));
}

std::string CreateIndexSql(const ado::Provider& provider, const std::string& table,
                           const Index& index) {
  Columns& columns = const_cast<Index&>(index).GetColumns();
  if (index.PrimaryKey && provider.Dialect() != "sqlite")
    return "ALTER TABLE " + Quote(provider, table) + " ADD PRIMARY KEY (" +
           ColumnList(provider, columns) + ")";
  return std::string("CREATE ") + (index.Unique || index.PrimaryKey ? "UNIQUE " : "") + "INDEX " +
         Quote(provider, index.Name) + " ON " + Quote(provider, table) + " (" +
         ColumnList(provider, columns) + ")";
}

}  // namespace ketrova::adox
