#include "platform/ado/adox/catalog.h"

#include "platform/ado/ado_errors.h"
#include "platform/ado/adox/ddl.h"
#include "support/collection.h"
#include "support/vb_error.h"

namespace ketrova::adox {
namespace {

[[noreturn]] void NotFound(const char* source) {
  ado::ThrowAdoError(ado::AdoError::kItemNotFound, source);
}

template <typename T>
T* FindByName(const std::vector<std::shared_ptr<T>>& items, std::string_view name) {
  for (const auto& i : items)
    if (KeyEquals(i->Name, name)) return i.get();
  return nullptr;
}

template <typename T>
T& AtPosition(const std::vector<std::shared_ptr<T>>& items, std::int32_t index,
              const char* source) {
  if (index < 0 || static_cast<std::size_t>(index) >= items.size()) NotFound(source);
  return *items[static_cast<std::size_t>(index)];
}

ColumnPtr ColumnFromInfo(const ado::ColumnInfo& info) {
  auto c = std::make_shared<Column>();
  c->Name = info.name;
  c->Type = info.type;
  c->DefinedSize = static_cast<std::int32_t>(info.definedSize);
  c->Precision = info.precision == 255 ? 0 : info.precision;
  c->NumericScale = info.numericScale == 255 ? 0 : info.numericScale;
  c->Attributes = info.nullable ? ado::adColNullable : 0;
  c->GetProperties().Set("Autoincrement", Variant(info.autoIncrement));
  c->GetProperties().Set("Nullable", Variant(info.nullable));
  return c;
}

}  // namespace

Column::Column() : properties_(std::make_shared<ado::Properties>()) {
  properties_->Set("Autoincrement", Variant(false));
  properties_->Set("Increment", Variant::Long(1));
  properties_->Set("Seed", Variant::Long(1));
  properties_->Set("Nullable", Variant(true));
  properties_->Set("Jet OLEDB:Allow Zero Length", Variant(false));
}

bool Column::AutoIncrement() const {
  ado::Property* p = properties_->Find("Autoincrement");
  if (!p) return false;
  try {
    return p->Value.ToBool();
  } catch (const VbError&) {
    return false;
  }
}

// Columns

const std::vector<ColumnPtr>& Columns::Items() {
  if (!loaded_ && table_) table_->Load();
  return items_;
}

std::int32_t Columns::Count() {
  return static_cast<std::int32_t>(Items().size());
}

Column* Columns::Find(std::string_view name) {
  return FindByName(Items(), name);
}

Column& Columns::Item(std::string_view name) {
  if (Column* c = Find(name)) return *c;
  NotFound("ADOX.Columns");
}

Column& Columns::Item(std::int32_t index) {
  return AtPosition(Items(), index, "ADOX.Columns");
}

Column& Columns::Item(const Variant& key) {
  if (key.IsString()) return Item(std::string_view(key.AsString()));
  return Item(key.ToLong());
}

void Columns::Append(const Variant& column, DataTypeEnum type, std::int32_t definedSize) {
  ColumnPtr c;
  if (column.IsObject()) {
    c = std::dynamic_pointer_cast<Column>(column.AsObject());
    if (!c) ado::ThrowAdoError(ado::AdoError::kArguments, "ADOX.Columns");
  } else {
    c = std::make_shared<Column>();
    c->Name = column.ToText();
    c->Type = type;
    c->DefinedSize = definedSize;
  }
  if (Find(c->Name)) ado::ThrowAdoError(ado::AdoError::kDuplicateColumn, "ADOX.Columns");
  if (table_ && table_->InStore()) {
    ado::Connection& connection = *table_->connection_;
    connection.Execute(AddColumnSql(connection.GetProvider(), table_->Name, *c));
    connection.ForgetTableShapes();
  }
  items_.push_back(std::move(c));
}

// Index and Indexes

Index::Index() : columns_(std::make_shared<Columns>()) {}

const std::vector<IndexPtr>& Indexes::Items() {
  if (!loaded_ && table_) table_->Load();
  return items_;
}

std::int32_t Indexes::Count() {
  return static_cast<std::int32_t>(Items().size());
}

Index& Indexes::Item(std::string_view name) {
  if (Index* i = FindByName(Items(), name)) return *i;
  NotFound("ADOX.Indexes");
}

Index& Indexes::Item(std::int32_t index) {
  return AtPosition(Items(), index, "ADOX.Indexes");
}

Index& Indexes::Item(const Variant& key) {
  if (key.IsString()) return Item(std::string_view(key.AsString()));
  return Item(key.ToLong());
}

void Indexes::Append(const Variant& index, const Variant& columns) {
  IndexPtr i;
  if (index.IsObject()) {
    i = std::dynamic_pointer_cast<Index>(index.AsObject());
    if (!i) ado::ThrowAdoError(ado::AdoError::kArguments, "ADOX.Indexes");
  } else {
    i = std::make_shared<Index>();
    i->Name = index.ToText();
    if (!columns.IsMissing() && !columns.IsEmpty())
      i->GetColumns().Append(Variant(columns.ToText()));
  }
  if (FindByName(Items(), i->Name))
    ado::ThrowAdoError(ado::AdoError::kDuplicateIndex, "ADOX.Indexes");
  if (table_ && table_->InStore()) {
    ado::Connection& connection = *table_->connection_;
    connection.Execute(CreateIndexSql(connection.GetProvider(), table_->Name, *i));
    connection.ForgetTableShapes();
  }
  items_.push_back(std::move(i));
}

// Table

Table::Table() : columns_(std::make_shared<Columns>()), indexes_(std::make_shared<Indexes>()) {
  columns_->table_ = this;
  indexes_->table_ = this;
}

Columns& Table::GetColumns() {
  return *columns_;
}
Indexes& Table::GetIndexes() {
  return *indexes_;
}
std::shared_ptr<Columns> Table::ColumnsPtr() {
  return columns_;
}
std::shared_ptr<Indexes> Table::IndexesPtr() {
  return indexes_;
}

void Table::Load() {
  if (!connection_) return;
  if (!columns_->loaded_) {
    columns_->loaded_ = true;
    columns_->items_.clear();
    for (const auto& info : connection_->GetProvider().TableColumns(Name))
      columns_->items_.push_back(ColumnFromInfo(info));
  }
  if (!indexes_->loaded_) {
    indexes_->loaded_ = true;
    indexes_->items_.clear();
    if (Type == "VIEW") return;
    for (const auto& info : connection_->GetProvider().TableIndexes(Name)) {
      auto i = std::make_shared<Index>();
      i->Name = info.name;
      i->Unique = info.unique;
      i->PrimaryKey = info.primaryKey;
      i->Clustered = info.clustered;
      i->IndexNulls = info.ignoreNulls ? 1 : 0;
      for (const auto& col : info.columns) i->GetColumns().Append(Variant(col));
      indexes_->items_.push_back(std::move(i));
    }
  }
}

// Tables

void Tables::Load() {
  if (loaded_) return;
  if (!connection_) ado::ThrowAdoError(ado::AdoError::kObjectClosed, "ADOX.Tables");
  items_.clear();
  for (const auto& info : connection_->GetProvider().Tables()) {
    auto t = std::make_shared<Table>();
    t->Name = info.name;
    t->Type = info.type;
    t->connection_ = connection_;
    t->columns_->loaded_ = false;
    t->indexes_->loaded_ = false;
    items_.push_back(std::move(t));
  }
  loaded_ = true;
}

void Tables::Refresh() {
  loaded_ = false;
  Load();
}

std::int32_t Tables::Count() {
  Load();
  return static_cast<std::int32_t>(items_.size());
}

TablePtr Tables::ItemPtr(std::string_view name) {
  Load();
  for (const auto& t : items_)
    if (KeyEquals(t->Name, name)) return t;
  NotFound("ADOX.Tables");
}

Table& Tables::Item(std::string_view name) {
  return *ItemPtr(name);
}

Table& Tables::Item(std::int32_t index) {
  Load();
  return AtPosition(items_, index, "ADOX.Tables");
}

Table& Tables::Item(const Variant& key) {
  if (key.IsString()) return Item(std::string_view(key.AsString()));
  return Item(key.ToLong());
}

void Tables::Append(const Variant& table) {
  Load();
  TablePtr t;
  if (table.IsObject()) {
    t = std::dynamic_pointer_cast<Table>(table.AsObject());
    if (!t) ado::ThrowAdoError(ado::AdoError::kArguments, "ADOX.Tables");
  } else {
    t = std::make_shared<Table>();
    t->Name = table.ToText();
  }
  if (t->InStore() || FindByName(items_, t->Name))
    throw VbError(-2147217857, "Die Tabelle '" + t->Name + "' ist bereits vorhanden.",
                  "ADOX.Tables");
  ado::Provider& provider = connection_->GetProvider();
  const Index* primaryKey = nullptr;
  for (const auto& i : t->GetIndexes().Items())
    if (i->PrimaryKey) primaryKey = i.get();
  connection_->Execute(CreateTableSql(provider, t->Name, t->GetColumns().Items(), primaryKey));
  // The table exists from here on; a failing index leaves it standing, as a
  // failure of one step of ADOX's Append did.
  t->connection_ = connection_;
  items_.push_back(t);
  for (const auto& i : t->GetIndexes().Items()) {
    if (i.get() == primaryKey) continue;
    connection_->Execute(CreateIndexSql(provider, t->Name, *i));
  }
  connection_->ForgetTableShapes();
}

// Catalog

Catalog::Catalog() : tables_(std::make_shared<Tables>()) {}

void Catalog::SetActiveConnection(ado::ConnectionPtr connection) {
  connection_ = std::move(connection);
  tables_->connection_ = connection_;
  tables_->loaded_ = false;
  tables_->items_.clear();
}

void Catalog::SetActiveConnection(const Variant& connection) {
  if (connection.IsObject()) {
    auto c = std::dynamic_pointer_cast<ado::Connection>(connection.AsObject());
    if (!c) ado::ThrowAdoError(ado::AdoError::kArguments, "ADOX.Catalog");
    SetActiveConnection(c);
    return;
  }
  auto c = std::make_shared<ado::Connection>();
  c->Open(connection.ToText());
  SetActiveConnection(c);
}

Tables& Catalog::GetTables() {
  tables_->Load();
  return *tables_;
}

ado::ConnectionPtr Catalog::Create(const std::string& connectionString) {
  auto c = std::make_shared<ado::Connection>();
  c->Open(connectionString);
  SetActiveConnection(c);
  return c;
}

}  // namespace ketrova::adox
