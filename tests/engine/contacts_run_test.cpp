// A contact folder on one side of a run and a database on the other: the
// folder read into a table the run creates, and the table written back into
// a new folder, with the jobs and scripts made as after both store dialogs.
// On SQLite as a unit test and on PostgreSQL as a server test.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "core/converter.h"
#include "engine_fixture.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/contacts/contact_store.h"
#include "stores/database.h"

namespace ketrova::testing {
namespace {

namespace fs = std::filesystem;
using ado::testing::BackendName;
using ado::testing::TestBackends;
using RowList = std::vector<std::string>;

void WriteCard(const fs::path& file, const std::string& body) {
  std::ofstream(file, std::ios::binary) << "BEGIN:VCARD\r\nVERSION:3.0\r\n"
                                        << body << "END:VCARD\r\n";
}

std::string ReadAll(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class ContactsRunTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    if (IsSkipped()) return;
    // The MySQL store writes by statements of its own, a path of its own.
    if (Dialect() == "mysql") GTEST_SKIP() << "contacts with a server: tested on PostgreSQL";
    if (Dialect() == "sqlite")
      project->DestDataBase().DatabaseName = (folder / "kontakte.sqlite").string();
  }
  void TearDown() override {
    contacts::SetContactRootOverride({});
    EngineTest::TearDown();
  }
  // One job per source table or folder, with generated scripts.
  void MakeJobs(CConverter& converter) {
    converter.SourceDataBase().DatabaseDirection = dbdSource;
    converter.DestDataBase().DatabaseDirection = dbdTarget;
    ASSERT_EQ(converter.ApplyDatabaseSource(false), "");
    ASSERT_EQ(converter.ApplyDatabaseDest(false), "");
    ASSERT_EQ(converter.Jobs().Count(), 1);
  }
  RowList Table(const std::string& sql) {
    if (Dialect() != "sqlite") return Rows(sql);
    auto connection = std::make_shared<ado::Connection>();
    connection->Open("Driver={SQLite3};Database=" + project->DestDataBase().DatabaseName);
    RowList rows;
    ado::RecordsetPtr rs = connection->Execute(sql);
    for (; !rs->Eof(); rs->MoveNext()) {
      std::string row;
      for (std::int32_t i = 0; i < rs->GetFields().Count(); ++i)
        row += (i ? "|" : "") + rs->GetFields().Item(i).Value().ToText();
      rows.push_back(row);
    }
    rs->Close();
    connection->Close();
    return rows;
  }
};

TEST_P(ContactsRunTest, AFolderGoesIntoATableAndBackIntoANewFolder) {
  DropTable("Kunden");
  const fs::path source = work / "quelle";
  fs::create_directories(source / "Privat" / "Kunden");
  WriteCard(source / "Privat" / "Kunden" / "a.vcf",
            "UID:a\r\nN:Müller;Jürgen;;;\r\nFN:Jürgen Müller\r\nORG:Bäckerei Süß\r\n"
            "TEL;TYPE=WORK:+49 30 1234\r\nEMAIL;TYPE=INTERNET:j@example.org\r\n"
            "ADR;TYPE=WORK:;;Hauptstraße 1;Köln;;50667;Deutschland\r\n"
            "X-KETROVA-USER1:k1\r\nNOTE:Zeile eins\\nZeile zwei\\, mit Komma\r\n");
  WriteCard(source / "Privat" / "Kunden" / "b.vcf",
            "UID:b\r\nN:O'Neil;Siobhán;;;\r\nFN:Siobhán O'Neil\r\nTEL;TYPE=CELL:0170 5\r\n"
            "X-KETROVA-USER1:k2\r\n");
  contacts::SetContactRootOverride(source.string());
  CDatabase& from = project->SourceDataBase();
  from.DatabaseType = dbtOutlook;
  MakeJobs(*project);
  EXPECT_EQ(project->Jobs().Item(1).JobDest().ItemObjectName, "Kunden");
  EXPECT_EQ(Run(), "") << Log();
  EXPECT_EQ(engine->ErrorCount(), 0) << Log();
  EXPECT_EQ(engine->Rejects().Count(), 0) << engine->Rejects().Note();
  EXPECT_EQ(Table("SELECT [LastName], [FirstName], [CompanyName], [BusinessTelephoneNumber], "
                  "[MobileTelephoneNumber], [Email1Address], [BusinessAddressStreet], "
                  "[BusinessAddressPostalCode], [User1], [FileAs] FROM [Kunden] ORDER BY [User1]"),
            (RowList{"Müller|Jürgen|Bäckerei Süß|+49 30 1234||j@example.org|Hauptstraße 1|50667|"
                     "k1|Müller, Jürgen",
                     "O'Neil|Siobhán|||0170 5||||k2|O'Neil, Siobhán"}));

  // And back: the table as the source, a new folder of another root as the target.
  const fs::path target = work / "ziel";
  fs::create_directories(target / "Privat" / "Kontakte");
  contacts::SetContactRootOverride(target.string());
  CConverter back;
  back.FileName = (work / "zurueck.cpf").string();
  back.CheckMainScriptOnStart();
  back.CheckMainScriptOnEnd();
  CDatabase& table = back.SourceDataBase();
  const CDatabase& written = project->DestDataBase();
  table.DatabaseType = written.DatabaseType;
  table.DataSourceName = written.DataSourceName;
  table.DriverName = written.DriverName;
  table.DatabaseName = written.DatabaseName;
  back.DestDataBase().DatabaseType = dbtOutlook;
  MakeJobs(back);
  engine = std::make_unique<CEngine>();
  engine->Converter = &back;
  std::string none;
  EXPECT_EQ(engine->Execute(none), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(engine->Rejects().Count(), 0) << engine->Rejects().Note();
  const fs::path folder = target / "Privat" / "Kontakte" / "Kunden";
  ASSERT_TRUE(fs::is_directory(folder));
  std::set<std::string> cards;
  for (const auto& entry : fs::directory_iterator(folder)) cards.insert(ReadAll(entry.path()));
  ASSERT_EQ(cards.size(), 2u);
  std::string all;
  for (const std::string& card : cards) all += card;
  for (const char* line :
       {"N:Müller;Jürgen;;;\r\n", "ORG:Bäckerei Süß;\r\n", "TEL;TYPE=WORK,VOICE:+49 30 1234\r\n",
        "EMAIL;TYPE=INTERNET:j@example.org\r\n",
        "ADR;TYPE=WORK:;;Hauptstraße 1;Köln;;50667;Deutschland\r\n", "X-KETROVA-USER1:k1\r\n",
        "N:O'Neil;Siobhán;;;\r\n", "TEL;TYPE=CELL:0170 5\r\n"})
    EXPECT_NE(all.find(line), std::string::npos) << line << "\n" << all;
  engine.reset();
}

INSTANTIATE_TEST_SUITE_P(Backends, ContactsRunTest, ::testing::ValuesIn(TestBackends()),
                         BackendName);

}  // namespace
}  // namespace ketrova::testing
