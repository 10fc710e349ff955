// Table creation on the destination from a job's columns, and the type names
// of each store.
#include "jobs/job_item.h"

namespace ketrova {

std::string CJobItem::GenerateTableStructure(std::string& szError, const std::string&) {
  szError.clear();
  return {};
}

std::string CJobItem::GetSQLTypeName(std::int32_t&, std::int32_t) { return {}; }

}  // namespace ketrova
