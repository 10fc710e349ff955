// The report of a failed record in the run's log: both statements, the fields
// of both record sets with their values, and the field assignments.
#include "engine/debug_report.h"

#include "core/enums.h"
#include "engine/engine.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

int Length(std::string_view text) {
  return static_cast<int>(CodePointCount(text));
}

std::string Statement(const char* szTitle, CJobItem& side, ado::Recordset* rs) {
  std::string szText = std::string(szTitle) + "\r\n";
  ResumeNext([&] {
    CDatabase* db = side.Database();
    if (db && db->DatabaseTypeNative() == dbtOutlook) {
      szText += "<OUTLOOK>\r\n";
    } else {
      if (!rs) throw VbError(91);
      szText += rs->Source() + "\r\n";
    }
  });
  return szText;
}

// One line per field of `rs`, with a note for a field that `other` lacks.
std::string FieldBlock(const char* szTitle, ado::Recordset* rs, ado::Recordset* other,
                       const char* szMissing) {
  std::string szText = std::string(szTitle) + "\r\n";
  std::int32_t count = 0;
  ResumeNext([&] {
    if (!rs) throw VbError(91);
    count = rs->GetFields().Count();
  });
  for (std::int32_t i = 0; i < count; ++i) {
    ResumeNext([&] {
      ado::Field& field = rs->GetFields().Item(i);
      const std::string& name = field.Name();
      // The width shrinks with the name, so a long name is cut.
      std::string line = "\t" + PadRight(" Name : " + name, 40 - Length(name));
      Variant value = field.Value();
      std::string shown = Nvl(value, Variant(""));
      if (Length(shown) > 30) shown = SubText(shown, 0, 30) + " ...";
      line += "\t Wert : " + (value.IsNull() ? std::string("<NULL>") : shown);
      bool found = false;
      ResumeNext([&] { found = other && other->GetFields().Find(name) != nullptr; });
      if (!found) line += std::string("\r\n\t ") + szMissing;
      szText += line + "\r\n";
    });
  }
  return szText;
}

}  // namespace

std::vector<std::string> DebugReport(CJob& objJob, ado::Recordset* objRSSource,
                                     ado::Recordset* objRSDest) {
  CJobItem& source = objJob.JobSource();
  CJobItem& dest = objJob.JobDest();
  std::vector<std::string> blocks;
  blocks.push_back(Statement("Quellabfrage:", source, objRSSource));
  blocks.push_back(FieldBlock("Quellfelder:", objRSSource, objRSDest,
                              "(Dieses Feld konnte in der Zieltabelle nicht gefunden werden.)"));
  blocks.push_back(Statement("Zielabfrage:", dest, objRSDest));
  blocks.push_back(FieldBlock("Zielfelder:", objRSDest, objRSSource,
                              "(Dieses Feld konnte in der Quelltabelle nicht gefunden werden.)"));
  std::string szText = "Feldzuweisungen:\r\n";
  for (const auto& column : dest.Columns()) {
    if (column.TargetColumn.empty() || column.SourceColumn.empty()) continue;
    szText += "\t" + PadRight(" Ziel." + column.TargetColumn, 50 - Length(column.TargetColumn)) +
              " = " + PadRight(" Quelle." + column.SourceColumn, 50 - Length(column.SourceColumn)) +
              "\r\n";
  }
  blocks.push_back(std::move(szText));
  Err().Clear();
  return blocks;
}

void CEngine::PrintDebugInfo(CJob& objJob, ado::Recordset* objRSSource, ado::Recordset* objRSDest) {
  for (const std::string& block : DebugReport(objJob, objRSSource, objRSDest)) WriteLogLine(block);
}

}  // namespace ketrova
