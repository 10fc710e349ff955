// ADOX over the record-access providers: Catalog, Tables, Table, Columns,
// Column, Indexes, Index, with ADOX's member names.
//
// A Catalog reads tables, columns and indexes from the store of its active
// connection when they are first asked for. Objects made by the caller (a new
// Table, Column or Index) are plain values until appended: Tables.Append turns
// a new table into CREATE TABLE (with its primary key) and CREATE INDEX;
// Columns.Append on a table of the store into ALTER TABLE ... ADD; and
// Indexes.Append on such a table into CREATE INDEX, all in the store's own
// dialect. Item takes a name (case ignored) or a 0-based position; an unknown
// one raises 3265. Create objects with std::make_shared.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ado/connection.h"
#include "platform/ado/enums.h"
#include "platform/ado/properties.h"
#include "support/object.h"

namespace ketrova::adox {

using ado::DataTypeEnum;

class Table;
class Index;

class Column : public Object {
 public:
  Column();
  std::string TypeName() const override { return "Column"; }
  std::string Name;
  DataTypeEnum Type = ado::adVarWChar;
  std::int32_t Attributes = 0;  // adColFixed 1, adColNullable 2
  std::int32_t DefinedSize = 0;
  std::uint8_t NumericScale = 0;
  std::int32_t Precision = 0;
  // "Autoincrement", "Increment", "Seed", "Nullable", "Jet OLEDB:Allow Zero Length".
  ado::Properties& GetProperties() { return *properties_; }
  std::shared_ptr<ado::Properties> PropertiesPtr() const { return properties_; }
  bool AutoIncrement() const;

 private:
  std::shared_ptr<ado::Properties> properties_;
};
using ColumnPtr = std::shared_ptr<Column>;

// The columns of a table, or of an index.
class Columns : public Object {
 public:
  std::string TypeName() const override { return "Columns"; }
  std::int32_t Count();
  Column& Item(std::string_view name);
  Column& Item(const char* name) { return Item(std::string_view(name)); }
  Column& Item(const std::string& name) { return Item(std::string_view(name)); }
  Column& Item(std::int32_t index);
  Column& Item(const Variant& key);
  Column* Find(std::string_view name);
  // Appends a Column object (its own type and size count) or, for a name, a
  // new column of `type` and `definedSize`. On a table of the store this
  // executes ALTER TABLE ... ADD at once.
  void Append(const Variant& column, DataTypeEnum type = ado::adVarWChar,
              std::int32_t definedSize = 0);
  const std::vector<ColumnPtr>& Items();

 private:
  friend class Table;
  friend class Tables;
  friend class Index;
  Table* table_ = nullptr;  // owner when these are a table's columns
  bool loaded_ = true;
  std::vector<ColumnPtr> items_;
};

class Index : public Object {
 public:
  Index();
  std::string TypeName() const override { return "Index"; }
  std::string Name;
  bool Clustered = false;
  std::int32_t IndexNulls = 0;  // adIndexNullsAllow
  bool PrimaryKey = false;
  bool Unique = false;
  Columns& GetColumns() { return *columns_; }
  std::shared_ptr<Columns> ColumnsPtr() const { return columns_; }

 private:
  std::shared_ptr<Columns> columns_;
};
using IndexPtr = std::shared_ptr<Index>;

class Indexes : public Object {
 public:
  std::string TypeName() const override { return "Indexes"; }
  std::int32_t Count();
  Index& Item(std::string_view name);
  Index& Item(const char* name) { return Item(std::string_view(name)); }
  Index& Item(const std::string& name) { return Item(std::string_view(name)); }
  Index& Item(std::int32_t index);
  Index& Item(const Variant& key);
  // Appends an Index object or, for a name, a new index on `columns` (a
  // column name). On a table of the store this executes CREATE INDEX at once.
  void Append(const Variant& index, const Variant& columns = Variant::Missing());
  const std::vector<IndexPtr>& Items();

 private:
  friend class Table;
  friend class Tables;
  Table* table_ = nullptr;
  bool loaded_ = true;
  std::vector<IndexPtr> items_;
};

class Table : public Object {
 public:
  Table();
  std::string TypeName() const override { return "Table"; }
  std::string Name;
  std::string Type = "TABLE";
  Columns& GetColumns();
  Indexes& GetIndexes();
  std::shared_ptr<Columns> ColumnsPtr();
  std::shared_ptr<Indexes> IndexesPtr();
  // True once the table exists in the store (read from it or appended).
  bool InStore() const { return static_cast<bool>(connection_); }

 private:
  friend class Tables;
  friend class Columns;
  friend class Indexes;
  void Load();
  ado::ConnectionPtr connection_;  // set when the table exists in the store
  std::shared_ptr<Columns> columns_;
  std::shared_ptr<Indexes> indexes_;
};
using TablePtr = std::shared_ptr<Table>;

class Tables : public Object {
 public:
  std::string TypeName() const override { return "Tables"; }
  std::int32_t Count();
  Table& Item(std::string_view name);
  Table& Item(const char* name) { return Item(std::string_view(name)); }
  Table& Item(const std::string& name) { return Item(std::string_view(name)); }
  Table& Item(std::int32_t index);
  Table& Item(const Variant& key);
  TablePtr ItemPtr(std::string_view name);
  // Creates a new Table object (or a table named by text) in the store.
  void Append(const Variant& table);
  void Refresh();

 private:
  friend class Catalog;
  void Load();
  ado::ConnectionPtr connection_;
  bool loaded_ = false;
  std::vector<TablePtr> items_;
};

class Catalog : public Object {
 public:
  Catalog();
  std::string TypeName() const override { return "Catalog"; }

  ado::ConnectionPtr ActiveConnection() const { return connection_; }
  // A Connection object, or a connection string that the catalog opens itself.
  void SetActiveConnection(const Variant& connection);
  void SetActiveConnection(ado::ConnectionPtr connection);
  Tables& GetTables();
  std::shared_ptr<Tables> TablesPtr() { return tables_; }

  // Creates an empty database for a connection string and makes it the active
  // connection. Only file databases that a provider creates on open (SQLite)
  // can be created; any other raises the provider's error.
  ado::ConnectionPtr Create(const std::string& connectionString);

 private:
  ado::ConnectionPtr connection_;
  std::shared_ptr<Tables> tables_;
};

}  // namespace ketrova::adox
