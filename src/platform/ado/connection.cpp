#include "platform/ado/connection.h"

#include <cctype>

#include "platform/ado/ado_errors.h"
#include "platform/ado/recordset.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

ColumnInfo SchemaColumn(const char* name, DataTypeEnum type, std::int64_t size) {
  ColumnInfo c;
  c.name = name;
  c.type = type;
  c.definedSize = size;
  c.precision = 255;
  c.numericScale = 255;
  return c;
}

}  // namespace

Connection::~Connection() {
  // A connection let go while open is closed; a destructor has no one to tell
  // of a failure.
  try {
    Close();
  } catch (const VbError&) {
  }
}

void Connection::Open(const std::string& connectionString, const std::string& user,
                      const std::string& password, int options) {
  if (provider_) ThrowAdoError(AdoError::kObjectOpen, "ADODB.Connection");
  if (!connectionString.empty()) ConnectionString = connectionString;
  provider_ = OpenProvider(ConnectionString, user, password);
  provider_->SetCommandTimeout(commandTimeout_);
  tableColumns_.clear();
  ++shapeGeneration_;
}

void Connection::Close() {
  if (!provider_) return;
  if (inTransaction_) {
    // A transaction left open is rolled back; when that fails, the driver's
    // own rollback at disconnect stands behind it.
    try {
      provider_->RollbackTrans();
    } catch (const VbError&) {
    }
    inTransaction_ = false;
  }
  // Record sets still open keep their own reference until they close.
  provider_.reset();
  tableColumns_.clear();
  ++shapeGeneration_;
}

void Connection::SetCommandTimeout(std::int32_t seconds) {
  commandTimeout_ = seconds;
  if (provider_) provider_->SetCommandTimeout(seconds);
}

Provider& Connection::GetProvider() const {
  if (!provider_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Connection");
  return *provider_;
}

void Connection::Flush() {
  if (provider_) provider_->Flush();
}

std::uint64_t Connection::LastWriteGroup() const {
  return provider_ ? provider_->LastWriteGroup() : 0;
}

Provider::GroupFate Connection::FateOfWriteGroup(std::uint64_t group, std::string& text) const {
  return provider_ ? provider_->FateOfGroup(group, text) : Provider::GroupFate::kCommitted;
}

std::shared_ptr<Provider> Connection::SharedProvider() const {
  GetProvider();
  return provider_;
}

RecordsetPtr Connection::Execute(const std::string& text, Variant* recordsAffected, int options) {
  Provider& provider = GetProvider();
  if (IsDdlStatement(text)) ForgetTableShapes();
  ExecuteResult result = provider.Execute(text);
  if (recordsAffected)
    *recordsAffected = Variant::Long(static_cast<std::int32_t>(result.rowsAffected));
  auto rs = std::make_shared<Recordset>();
  if (result.cursor && !(options != -1 && (options & adExecuteNoRecords))) {
    auto self = std::static_pointer_cast<Connection>(shared_from_this());
    rs->OpenOnCursor(self, text, std::move(result.cursor));
  }
  return rs;
}

std::int32_t Connection::BeginTrans() {
  GetProvider().BeginTrans();
  inTransaction_ = true;
  return 1;
}

void Connection::CommitTrans() {
  GetProvider().CommitTrans();
  inTransaction_ = false;
}

void Connection::RollbackTrans() {
  GetProvider().RollbackTrans();
  inTransaction_ = false;
}

RecordsetPtr Connection::OpenSchema(int schema) {
  Provider& provider = GetProvider();
  if (schema != adSchemaTables) ThrowAdoError(AdoError::kNotSupported, "ADODB.Connection");
  std::vector<ColumnInfo> columns = {
      SchemaColumn("TABLE_CATALOG", adVarWChar, 128), SchemaColumn("TABLE_SCHEMA", adVarWChar, 128),
      SchemaColumn("TABLE_NAME", adVarWChar, 128),    SchemaColumn("TABLE_TYPE", adVarWChar, 32),
      SchemaColumn("TABLE_GUID", adGUID, 16),         SchemaColumn("DESCRIPTION", adVarWChar, 255),
      SchemaColumn("TABLE_PROPID", adUnsignedInt, 4), SchemaColumn("DATE_CREATED", adDate, 8),
      SchemaColumn("DATE_MODIFIED", adDate, 8)};
  std::vector<Row> rows;
  auto textOrNull = [](const std::string& s) { return s.empty() ? Variant::Null() : Variant(s); };
  for (const auto& t : provider.Tables()) {
    rows.push_back({textOrNull(t.catalog), textOrNull(t.schema), Variant(t.name), Variant(t.type),
                    Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(),
                    Variant::Null()});
  }
  auto rs = std::make_shared<Recordset>();
  rs->OpenInMemory(columns, std::move(rows));
  return rs;
}

void Connection::ForgetTableShapes() {
  tableColumns_.clear();
  ++shapeGeneration_;
  if (provider_) provider_->ForgetTableShapes();
}

const std::vector<ColumnInfo>& Connection::BaseTableColumns(const std::string& table) {
  auto it = tableColumns_.find(table);
  if (it != tableColumns_.end()) return it->second;
  auto columns = GetProvider().TableColumns(table);
  return tableColumns_.emplace(table, std::move(columns)).first->second;
}

}  // namespace ketrova::ado
