// The run-time half of CDatabase: transactions and the narrow record interface
// through which the engine and the catalogue reach a store.
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"

namespace ketrova {

std::string CDatabase::BeginTrans() { return {}; }
std::string CDatabase::CommitTrans() { return {}; }
std::string CDatabase::RollbackTrans() { return {}; }

std::string CDatabase::RecordSetOpen(std::shared_ptr<ado::Recordset>&, const std::string&,
                                     const std::string&, std::int32_t, std::int32_t,
                                     std::int32_t) {
  return {};
}

std::string CDatabase::RecordSetClose(std::shared_ptr<ado::Recordset>&) { return {}; }
bool CDatabase::RecordsetEOF() { return false; }
bool CDatabase::RecordsetMoveNext() { return false; }
std::int32_t CDatabase::RecordsetRecordCount() { return 0; }
std::string CDatabase::CreateObject(const std::string&, const std::string&) { return {}; }
std::string CDatabase::DeleteRecords(const std::string&, const std::string&) { return {}; }
bool CDatabase::ObjectExists(const std::string&) { return false; }

void CDatabase::RecordSetWrite(std::shared_ptr<ado::Recordset>&, std::string&,
                               std::string& szError) {
  szError.clear();
}

std::string CDatabase::CreateTableFromSource(std::string&) { return {}; }

std::string ExecuteSQL(ado::Connection&, const std::string&) { return {}; }
void CloseRecordset(ado::Recordset*) {}
void CloseConnection(ado::Connection*) {}

}  // namespace ketrova
