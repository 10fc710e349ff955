// Connection: ADO's Connection over a Provider chosen from the connection
// string. Create it with std::make_shared (record sets keep it alive).
//
// Every statement commits on its own unless BeginTrans was called. Failures of
// the provider are raised as VbError with negative numbers and the driver's
// diagnostic; the connection stays usable after a failed statement.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/ado/enums.h"
#include "platform/ado/provider.h"
#include "support/object.h"

namespace ketrova::ado {

class Recordset;
using RecordsetPtr = std::shared_ptr<Recordset>;

class Connection : public Object {
 public:
  Connection() = default;
  ~Connection() override;
  std::string TypeName() const override { return "Connection"; }

  // Opens with `connectionString`, or with ConnectionString when it is empty.
  // Raises 3705 when already open.
  void Open(const std::string& connectionString = {}, const std::string& user = {},
            const std::string& password = {}, int options = -1);
  void Close();
  ObjectStateEnum State() const { return provider_ ? adStateOpen : adStateClosed; }

  std::string ConnectionString;
  std::int32_t CommandTimeout() const { return commandTimeout_; }
  void SetCommandTimeout(std::int32_t seconds);

  // Runs a statement. A statement with a result gives an open, forward-only,
  // read-only record set; others give a closed one. `recordsAffected`, when
  // given, takes the count of changed rows (-1 when unknown).
  RecordsetPtr Execute(const std::string& text, Variant* recordsAffected = nullptr,
                       int options = -1);

  // Commits what the provider has grouped of this connection's writes (see
  // provider.h); nothing to do when closed.
  void Flush();
  // The provider's group of the last write and what became of a group (see
  // provider.h); 0 and kCommitted when closed.
  std::uint64_t LastWriteGroup() const;
  Provider::GroupFate FateOfWriteGroup(std::uint64_t group, std::string& text) const;
  // Whether the provider finds its server gone (see provider.h).
  bool ConnectionLost() const { return provider_ && provider_->ConnectionLost(); }

  // Returns the nesting level (1).
  std::int32_t BeginTrans();
  void CommitTrans();
  void RollbackTrans();

  // adSchemaTables (20): TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE,
  // TABLE_GUID, DESCRIPTION, TABLE_PROPID, DATE_CREATED, DATE_MODIFIED. Other
  // schemas raise 3251.
  RecordsetPtr OpenSchema(int schema);

  // The open provider; raises 3704 when closed.
  Provider& GetProvider() const;
  std::shared_ptr<Provider> SharedProvider() const;

  // Columns of a base table, cached until the next DDL through this connection.
  const std::vector<ColumnInfo>& BaseTableColumns(const std::string& table);
  // Drops what this connection and its provider keep about the shape of
  // tables; called after DDL and when the schema is read anew.
  void ForgetTableShapes();
  // Rises with every ForgetTableShapes: what a record set derived from the
  // shape of a table holds only while it stands.
  std::uint64_t ShapeGeneration() const { return shapeGeneration_; }

 private:
  std::shared_ptr<Provider> provider_;
  std::int32_t commandTimeout_ = 30;
  bool inTransaction_ = false;
  std::map<std::string, std::vector<ColumnInfo>> tableColumns_;
  std::uint64_t shapeGeneration_ = 0;
};

using ConnectionPtr = std::shared_ptr<Connection>;

}  // namespace ketrova::ado
