// The xBase provider on dBase files that python3-dbf (an independent writer
// and reader) makes and checks: every field type read, new tables and
// changed rows written so that python3-dbf reads them back.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "platform/ado/command_output.h"
#include "platform/ado/connection.h"
#include "platform/ado/enums.h"
#include "platform/ado/fields.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"
#include "xbase_folder_test.h"

namespace ketrova::xbase_provider {
namespace {

// Two tables in python3-dbf's own formats: dBase III with a .dbt memo file
// in code page 1252 (one record deleted, not packed), and Visual FoxPro with
// its binary types and a .fpt memo file in code page 850.
constexpr const char* kMakeTables = R"(
import dbf, datetime
t = dbf.Table('kunden.dbf', 'nr N(5,0); name C(30); betrag N(10,2); seit D; aktiv L; notiz M',
              dbf_type='db3', codepage='cp1252')
t.open(dbf.READ_WRITE)
t.append((1, 'Müller', 12.5, datetime.date(2002, 12, 31), True, 'Zeile 1\r\nZeile 2 äöü'))
t.append((2, 'Weg damit', 1, None, None, None))
t.append((3, 'Köln', -7.25, None, False, None))
dbf.delete(t[1])
t.close()
t = dbf.Table('fox.dbf', 'nr I; preis Y; wann T; wert B; name C(10); notiz M',
              dbf_type='vfp', codepage='cp850')
t.open(dbf.READ_WRITE)
t.append((7, 12.25, datetime.datetime(2020, 2, 29, 13, 45, 10), 3.25, 'Straße', 'Memo ü'))
t.close()
)";

class XbaseProviderTest : public XbaseFolderTest {
 protected:
  // Runs python3 with dbf on a script in the test's folder; answers stdout.
  std::string Python(const std::string& script) {
    Write("skript.py", script);
    return Run("/usr/bin/python3 skript.py");
  }
};

TEST_F(XbaseProviderTest, ReadsEveryFieldTypeOfDbaseAndFoxProFiles) {
  Python(kMakeTables);
  auto db = Open();
  auto rs = db->OpenSchema(ado::adSchemaTables);
  std::vector<std::string> tables;
  for (; !rs->Eof(); rs->MoveNext())
    tables.push_back(rs->GetFields().Item("TABLE_NAME").Value().ToText());
  EXPECT_EQ(tables, (std::vector<std::string>{"fox", "kunden"}));

  auto kunden = db->Execute("SELECT * FROM [kunden]");
  auto& f = kunden->GetFields();
  EXPECT_EQ(f.Item("NAME").Type(), ado::adVarWChar);
  EXPECT_EQ(f.Item("NAME").DefinedSize(), 30);
  EXPECT_EQ(f.Item("BETRAG").Type(), ado::adDouble);
  EXPECT_EQ(f.Item("SEIT").Type(), ado::adDate);
  EXPECT_EQ(f.Item("AKTIV").Type(), ado::adBoolean);
  EXPECT_EQ(f.Item("NOTIZ").Type(), ado::adLongVarWChar);
  // The deleted record is skipped; code page 1252 becomes UTF-8.
  EXPECT_EQ(Rows(*db, "SELECT * FROM [kunden]"),
            (std::vector<std::string>{"1|Müller|12,5|31.12.2002|Wahr|Zeile 1\r\nZeile 2 äöü",
                                      "3|Köln|-7,25|Null|Falsch|Null"}));
  EXPECT_EQ(Rows(*db, "SELECT [NR], [PREIS], [WANN], [WERT], [NAME], [NOTIZ] FROM [fox]"),
            (std::vector<std::string>{"7|12,25|29.02.2020 13:45:10|3,25|Straße|Memo ü"}));
  auto fox = db->Execute("SELECT * FROM [fox]");
  EXPECT_EQ(fox->GetFields().Item("NR").Type(), ado::adInteger);
  EXPECT_EQ(fox->GetFields().Item("PREIS").Type(), ado::adCurrency);
  EXPECT_EQ(fox->GetFields().Item("WANN").Type(), ado::adDate);
}

TEST_F(XbaseProviderTest, NewTableAndChangedRowsAreWrittenForOtherReaders) {
  Python(kMakeTables);
  {
    auto db = Open();
    db->Execute("CREATE TABLE [Neu.Liste] ([Nr] TEXT, [Name] TEXT(20), [Betrag] DOUBLE)");
    db->Execute("INSERT INTO [Neu.Liste] ([Nr], [Name], [Betrag]) VALUES ('1', 'Bäcker', 2.5)");
    db->Execute("INSERT INTO [Neu.Liste] ([Nr], [Name], [Betrag]) VALUES ('2', 'Öl', NULL)");
    // Update and delete by key, the memo of another row kept.
    db->Execute("UPDATE [kunden] SET [NAME] = 'Kölner Dom' WHERE [NR] = 3");
    db->Execute("INSERT INTO [kunden] ([NR], [NAME], [NOTIZ]) VALUES (4, 'Neu', 'lang ü')");
    EXPECT_EQ(Rows(*db, "SELECT [Nr], [Name] FROM [Neu.Liste]"),
              (std::vector<std::string>{"1|Bäcker", "2|Öl"}));
    // Too long for its field, or a fraction in a field of whole numbers:
    // refused, nothing changed.
    EXPECT_THROW(db->Execute("UPDATE [kunden] SET [NAME] = '" + std::string(31, 'x') + "'"),
                 VbError);
    EXPECT_THROW(db->Execute("UPDATE [kunden] SET [NR] = 2.5"), VbError);
    // A job's end flushes the connection: other readers see the rows before
    // the connection closes.
    const char* kCount = "import dbf\nt = dbf.Table('Neu_Liste.dbf')\nt.open()\nprint(len(t))\n";
    EXPECT_EQ(Python(kCount), "0\n");
    db->Flush();
    EXPECT_EQ(Python(kCount), "2\n");
  }  // closing writes the files
  EXPECT_TRUE(std::filesystem::exists(Path("Neu_Liste.dbf")));
  std::string out = Python(R"(
import dbf
for name in ('Neu_Liste.dbf', 'kunden.dbf'):
    t = dbf.Table(name)
    t.open()
    for r in t:
        print('|'.join(str(v).strip() if v is not None else 'None' for v in r))
    t.close()
)");
  EXPECT_EQ(out,
            "1|Bäcker|2.5\n"
            "2|Öl|None\n"
            "1|Müller|12.5|2002-12-31|True|Zeile 1\r\nZeile 2 äöü\n"
            "3|Kölner Dom|-7.25|None|False|\n"
            "4|Neu|None|None|None|lang ü\n");
  auto db = Open();
  EXPECT_EQ(Rows(*db, "SELECT [NR], [NAME] FROM [kunden]"),
            (std::vector<std::string>{"1|Müller", "3|Kölner Dom", "4|Neu"}));
}

TEST_F(XbaseProviderTest, DamagedFilesFailNamingTheFileAndStayUntouched) {
  Python(kMakeTables);
  std::string good = Read("kunden.dbf");
  auto expectFails = [&](const std::string& what) {
    auto db = Open();
    try {
      db->Execute("SELECT * FROM [kunden]");
      ADD_FAILURE() << what;
    } catch (const VbError& e) {
      EXPECT_NE(e.Description.find("Die dBase-Datei '" + Path("kunden.dbf").string() + "' " + what),
                std::string::npos)
          << e.Description;
    }
  };
  Write("kunden.dbf", good.substr(0, good.size() - 100));
  expectFails("ist unvollständig: der Kopf nennt 3 Datensätze, die Datei hält 1");
  std::string unknown = good;
  unknown[32 + 11] = 'Q';  // the type of the first field
  Write("kunden.dbf", unknown);
  expectFails("hat im Feld 'NR' den unbekannten Feldtyp 'Q'");
  std::string seven = good;
  seven[0] = '\x8C';  // dBase 7 with memo: 48-byte field descriptors we do not read
  Write("kunden.dbf", seven);
  expectFails("ist eine Tabelle von dBase 7; gelesen werden dBase III und IV und FoxPro");
  Write("kunden.dbf", good);
  std::filesystem::remove(Path("kunden.dbt"));
  expectFails("hat Memofelder, aber ihre Memodatei (.dbt) fehlt");
  EXPECT_EQ(Read("kunden.dbf"), good);
}

TEST_F(XbaseProviderTest, OdbcDataSourcesOfParadoxAndDbaseDriversOpenTheFolder) {
  Python(kMakeTables);
  for (const std::string driver :
       {"Driver={Microsoft dBase Driver (*.dbf)}", "DSN=Alt;FIL=Paradox 5.X",
        "Driver={Microsoft Paradox Driver (*.db )}"}) {
    auto spec = ado::ParseConnection("Provider=MSDASQL.1;Extended Properties=\"" + driver +
                                     ";DBQ=" + folder_.string() + "\"");
    EXPECT_EQ(spec.kind, ado::ProviderKind::kXbase) << driver;
    EXPECT_EQ(spec.dataSource, folder_.string()) << driver;
  }
  auto db = std::make_shared<Connection>();
  db->Open("ODBC;Driver={Microsoft dBase Driver (*.dbf)};DBQ=" + folder_.string());
  EXPECT_EQ(Rows(*db, "SELECT COUNT(*) FROM [kunden]"), (std::vector<std::string>{"2"}));
  // The driver decides the format of a new table.
  db->Execute("CREATE TABLE [D] ([A] TEXT(5))");
  auto paradox = std::make_shared<Connection>();
  paradox->Open("ODBC;Driver={Microsoft Paradox Driver (*.db )};DBQ=" + folder_.string());
  paradox->Execute("CREATE TABLE [P] ([A] TEXT(5))");
  EXPECT_TRUE(std::filesystem::exists(Path("D.dbf")));
  EXPECT_TRUE(std::filesystem::exists(Path("P.db")));
}

// The rows written since the last flush form one group for the record loop:
// open until the flush, committed when it saved them, lost with the store's
// text when it could not; the table is then again what its file holds, so
// that a lost row does not turn up at a later save.
TEST_F(XbaseProviderTest, RowsAFlushCouldNotSaveAreLostWithItsText) {
  auto db = Open();
  db->Execute("CREATE TABLE [Liste] ([Nr] TEXT)");
  db->Execute("INSERT INTO [Liste] ([Nr]) VALUES ('0')");
  db->Flush();
  db->Execute("INSERT INTO [Liste] ([Nr]) VALUES ('1')");
  const std::uint64_t group = db->LastWriteGroup();
  ASSERT_NE(group, 0u);
  std::string text;
  EXPECT_EQ(db->FateOfWriteGroup(group, text), ado::Provider::GroupFate::kOpen);

  // A folder where the save's temporary file must go: no save, even for root.
  const auto blocker = Path("Liste.ketrova-neu.dbf");
  std::filesystem::create_directories(blocker / "belegt");
  EXPECT_THROW(db->Flush(), VbError);
  EXPECT_EQ(db->FateOfWriteGroup(group, text), ado::Provider::GroupFate::kLost);
  EXPECT_NE(text.find("Liste"), std::string::npos) << text;
  EXPECT_EQ(Rows(*db, "SELECT [Nr] FROM [Liste]"), (std::vector<std::string>{"0"}));

  std::filesystem::remove_all(blocker);
  db->Execute("INSERT INTO [Liste] ([Nr]) VALUES ('2')");
  const std::uint64_t next = db->LastWriteGroup();
  EXPECT_GT(next, group);
  db->Flush();
  EXPECT_EQ(db->FateOfWriteGroup(next, text), ado::Provider::GroupFate::kCommitted);
  EXPECT_EQ(Rows(*db, "SELECT [Nr] FROM [Liste]"), (std::vector<std::string>{"0", "2"}));
}

}  // namespace
}  // namespace ketrova::xbase_provider
