// The report of a failed record, on in-memory record sets.
#include "engine/debug_report.h"

#include <gtest/gtest.h>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "platform/ado/recordset.h"

namespace ketrova {
namespace {

std::string Blanks(int n) {
  return std::string(static_cast<std::size_t>(n), ' ');
}

std::shared_ptr<ado::Recordset> Record(const std::string& source,
                                       const std::vector<std::string>& names,
                                       const std::vector<Variant>& values) {
  auto rs = std::make_shared<ado::Recordset>();
  for (const std::string& name : names) rs->GetFields().Append(name, ado::adVarWChar, 100);
  rs->Open();
  rs->AddNew();
  for (std::size_t i = 0; i < values.size(); ++i)
    rs->GetFields().Item(names[i]).SetValue(values[i]);
  rs->Update();
  rs->SetSource(source);
  return rs;
}

TEST(DebugReportTest, ListsStatementsFieldsAndAssignments) {
  CConverter project;
  CJob& job = project.Jobs().Add();
  CJobItemColumn& mapped = job.JobDest().Columns().Add();
  mapped.TargetColumn = "Nr";
  mapped.SourceColumn = "Nr";
  job.JobDest().Columns().Add().TargetColumn = "Unbelegt";

  const std::string longName = "Sehr_langer_Feldname_abcd";  // 25 characters
  auto source = Record("SELECT * FROM Kunden", {"Nr", "Name", "Bemerkung", longName},
                       {Variant("7"), Variant("Müller"), Variant::Null(),
                        Variant("abcdefghijklmnopqrstuvwxyz12345")});
  auto dest = Record("SELECT * FROM Ziel", {"Nr", "Name", "Zusatz"},
                     {Variant("7"), Variant("abcdefghijklmnopqrstuvwxyz1234"), Variant("")});

  std::vector<std::string> report = DebugReport(job, source.get(), dest.get());
  ASSERT_EQ(report.size(), 5u);
  EXPECT_EQ(report[0], "Quellabfrage:\r\nSELECT * FROM Kunden\r\n");
  const std::string notInTarget =
      "\r\n\t (Dieses Feld konnte in der Zieltabelle nicht gefunden werden.)";
  // The name's column narrows by the name's length; a long name is cut.
  EXPECT_EQ(report[1],
            "Quellfelder:\r\n"
            "\t Name : Nr" +
                Blanks(28) +
                "\t Wert : 7\r\n"
                "\t Name : Name" +
                Blanks(24) +
                "\t Wert : Müller\r\n"
                "\t Name : Bemerkung" +
                Blanks(14) + "\t Wert : <NULL>" + notInTarget +
                "\r\n"
                "\t Name : Sehr_la\t Wert : abcdefghijklmnopqrstuvwxyz1234 ..." +
                notInTarget + "\r\n");
  EXPECT_EQ(report[2], "Zielabfrage:\r\nSELECT * FROM Ziel\r\n");
  EXPECT_EQ(
      report[3],
      "Zielfelder:\r\n"
      "\t Name : Nr" +
          Blanks(28) +
          "\t Wert : 7\r\n"
          "\t Name : Name" +
          Blanks(24) +
          "\t Wert : abcdefghijklmnopqrstuvwxyz1234\r\n"
          "\t Name : Zusatz" +
          Blanks(20) +
          "\t Wert : \r\n\t (Dieses Feld konnte in der Quelltabelle nicht gefunden werden.)\r\n");
  EXPECT_EQ(report[4],
            "Feldzuweisungen:\r\n\t Ziel.Nr" + Blanks(40) + " =  Quelle.Nr" + Blanks(38) + "\r\n");
}

TEST(DebugReportTest, MissingOrClosedRecordSetsGiveShorterBlocks) {
  CConverter project;
  CJob& job = project.Jobs().Add();
  auto closed = std::make_shared<ado::Recordset>();
  std::vector<std::string> report = DebugReport(job, nullptr, closed.get());
  ASSERT_EQ(report.size(), 5u);
  EXPECT_EQ(report[0], "Quellabfrage:\r\n");
  EXPECT_EQ(report[1], "Quellfelder:\r\n");
  EXPECT_EQ(report[2], "Zielabfrage:\r\n\r\n");
  EXPECT_EQ(report[3], "Zielfelder:\r\n");
  EXPECT_EQ(report[4], "Feldzuweisungen:\r\n");
}

}  // namespace
}  // namespace ketrova
