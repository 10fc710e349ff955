// The report of a failed record: five blocks of text, each written to the
// run's log as one line: the source statement, the source fields with their
// values, the target statement, the target fields, and the job's field
// assignments. A record set that is null or closed gives shorter blocks,
// never a failure.
#pragma once

#include <string>
#include <vector>

namespace ketrova {

namespace ado {
class Recordset;
}  // namespace ado

class CJob;

std::vector<std::string> DebugReport(CJob& objJob, ado::Recordset* objRSSource,
                                     ado::Recordset* objRSDest);

}  // namespace ketrova
