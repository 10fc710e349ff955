// Statement generation: the exact SQL texts of a job's sides.
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "platform/ado/recordset.h"

namespace ketrova {

std::string CJobItem::GetSelectColumn(const std::string&, const std::string&) const { return {}; }
std::string CJobItem::GetListFields() const { return {}; }
std::string CJobItem::GetSourceSQL() const { return {}; }
std::string CJobItem::GetFilter(const std::string& szBaseSQL) const { return szBaseSQL; }
std::string CJobItem::GenerateSQLCount() const { return {}; }
std::string CJobItem::GenerateSQLDelete() const { return {}; }

std::string CJobItem::GenerateSQLInsertRecord(std::string& szError) {
  szError.clear();
  return {};
}

std::string CJob::GenerateUpdateInsertSQLFieldValues(ado::Recordset&, bool, std::int32_t) {
  return {};
}

}  // namespace ketrova
