// The text provider through record access, with the statements that jobs
// write for a text store, CR LF and TAB included.
#include "platform/ado/providers/text/text_provider.h"

#include <gtest/gtest.h>

#include "platform/ado/connection.h"
#include "platform/ado/enums.h"
#include "platform/ado/fields.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::text_provider {
namespace {

using ado::Connection;
using ado::Recordset;

class TextProviderTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    RegisterTextProvider();
  }

  std::shared_ptr<Connection> Open() {
    auto db = std::make_shared<Connection>();
    db->Open("Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=" + folder_.string() +
             ";Extensions=asc,csv,tab,txt;Persist Security Info=False;FIL=TEXT;"
             "MaxBufferSize=2048;TT=CHARACTER;DC=\";\";FLN=1");
    return db;
  }

  // " `folder`\" + name + ".TXT" as the store builds it for a text side.
  std::string Path(const std::string& name) const {
    return " `" + folder_.string() + "`\\" + name + ".TXT";
  }
  // The select of a text side over the given columns.
  std::string Select(const std::string& name, const std::string& alias,
                     const std::vector<std::string>& columns) const {
    std::string list;
    for (const auto& c : columns) list += "\r\n\t\"" + c + "\",";
    list.pop_back();
    return " SELECT " + list + "\r\n" + "\r\n" + " FROM " + "   " + Path(name) + " " + "   " +
           alias;
  }
  std::string CountSql(const std::string& name, const std::string& alias) const {
    return " SELECT COUNT(*)\r\n FROM    " + Path(name) + " " + "   " + alias;
  }

  static std::vector<std::string> Texts(Recordset& rs) {
    std::vector<std::string> rows;
    for (; !rs.Eof(); rs.MoveNext()) {
      std::string row;
      for (std::int32_t i = 0; i < rs.GetFields().Count(); ++i) {
        Variant v = rs.GetFields().Item(i).Value();
        row +=
            (i ? "|" : "") + (v.IsNull() ? std::string("NULL") : v.TypeName() + ":" + v.ToText());
      }
      rows.push_back(row);
    }
    return rows;
  }

  std::int32_t Count(Connection& db, const std::string& sql) {
    auto rs = db.Execute(sql);
    return rs->GetFields().Item(0).Value().ToLong();
  }
};

const char kKunden[] =
    "Nr;Name;Ort;Umsatz;Seit\r\n"
    "1;Müller;\"Köln; Innenstadt\";12,5;31.12.2002\r\n"
    "2;\"O'Neil \"\"der Große\"\"\";Aachen;7;2003-01-15\r\n"
    "3;\"Zwei\r\nZeilen\";;;\r\n";

TEST_F(TextProviderTest, ListsTheFilesOfTheFolderAsTables) {
  Write("Kunden.csv", kKunden);
  Write("Ziel", "A;B");
  Write("alt.TXT", "A\r\n");
  Write("schema.ini", "");
  Write("notiz.xml", "<x/>");
  auto rs = Open()->OpenSchema(ado::adSchemaTables);
  std::vector<std::string> names;
  for (; !rs->Eof(); rs->MoveNext()) {
    names.push_back(rs->GetFields().Item("TABLE_NAME").Value().ToText() + "/" +
                    rs->GetFields().Item("TABLE_TYPE").Value().ToText());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"Kunden.csv/TABLE", "Ziel/TABLE", "alt.TXT/TABLE"}));
}

TEST_F(TextProviderTest, ReadsCountsAndFiltersASource) {
  Write("Kunden.csv", kKunden);
  auto db = Open();
  const std::string select =
      Select("Kunden.csv", "Kunden", {"Nr", "Name", "Ort", "Umsatz", "Seit"});
  auto rs = std::make_shared<Recordset>();
  rs->Open(select, Variant(ObjectPtr(db)), ado::adOpenForwardOnly, ado::adLockReadOnly);
  EXPECT_EQ(rs->GetFields().Item("Nr").Type(), ado::adInteger);
  EXPECT_EQ(rs->GetFields().Item("Name").Type(), ado::adVarWChar);
  EXPECT_EQ(rs->GetFields().Item("Name").DefinedSize(), 255);
  EXPECT_EQ(rs->GetFields().Item("Umsatz").Type(), ado::adDouble);
  EXPECT_EQ(rs->GetFields().Item("Seit").Type(), ado::adDate);
  EXPECT_EQ(Texts(*rs),
            (std::vector<std::string>{
                "Long:1|String:Müller|String:Köln; Innenstadt|Double:12,5|Date:31.12.2002",
                "Long:2|String:O'Neil \"der Große\"|String:Aachen|Double:7|Date:15.01.2003",
                "Long:3|String:Zwei\r\nZeilen|NULL|NULL|NULL"}));
  EXPECT_EQ(Count(*db, CountSql("Kunden.csv", "Kunden")), 3);
  // Filters as a job writes them: the apostrophe names the column.
  // The catalogue reads a table's columns with the store's apostrophes.
  auto shape = std::make_shared<Recordset>();
  shape->SetMaxRecords(1);
  shape->Open("SELECT * FROM 'Kunden.csv'", Variant(ObjectPtr(db)), ado::adOpenForwardOnly, -1);
  EXPECT_EQ(shape->GetFields().Count(), 5);
  EXPECT_EQ(Texts(*shape).size(), 1u);
  auto filtered = db->Execute(select + " WHERE ('Name'  LIKE '%Mü%'\r\n OR 'Umsatz'  < 10\r\n)");
  EXPECT_EQ(Texts(*filtered).size(), 2u);
  filtered = db->Execute(select + " WHERE ('Seit'  > #2003-01-01#\r\n)");
  ASSERT_EQ(Texts(*filtered).size(), 1u);
}

TEST_F(TextProviderTest, AppendsEveryRecordOfATextDestination) {
  Write("Ziel", "Nr;Name;Betrag;Datum");  // the header file that table creation writes
  auto db = Open();
  const std::string open = Select("Ziel", "Ziel", {"Nr", "Name", "Betrag", "Datum"});
  struct Source {
    int nr;
    const char* name;
    Variant betrag;
    Variant datum;
  };
  const Source rows[] = {
      {1, "Grün; Söhne", Variant(12.5), Variant::FromDate(ado::OleDateFromParts({2002, 12, 31}))},
      {2, "Zeile\r\nzwei", Variant::Null(), Variant::Null()},
      {3, "", Variant(0.1), Variant::FromDate(ado::OleDateFromParts({2003, 1, 2, 10, 30, 0}))}};
  for (const auto& row : rows) {
    // The engine's pattern: open the target per record, add, assign, write.
    auto rs = std::make_shared<Recordset>();
    rs->Open(open, Variant(ObjectPtr(db)), ado::adOpenKeyset, ado::adLockBatchOptimistic);
    rs->AddNew();
    rs->GetFields().Item("Nr").SetValue(Variant(row.nr));
    rs->GetFields().Item("Name").SetValue(Variant(row.name));
    rs->GetFields().Item("Betrag").SetValue(row.betrag);
    rs->GetFields().Item("Datum").SetValue(row.datum);
    rs->Update();
    rs->UpdateBatch(ado::adAffectAll);
    rs->Close();
  }
  EXPECT_EQ(Read("Ziel"),
            "Nr;Name;Betrag;Datum\r\n"
            "1;\"Grün; Söhne\";12,5;31.12.2002\r\n"
            "2;\"Zeile\r\nzwei\";;\r\n"
            "3;\"\";0,1;02.01.2003 10:30:00\r\n");
  // Record access gave the values as texts to the Text columns of the header
  // file; read back on a new connection they are typed from the rows again.
  auto again = Open()->Execute(open);
  EXPECT_EQ(Texts(*again),
            (std::vector<std::string>{"Long:1|String:Grün; Söhne|Double:12,5|Date:31.12.2002",
                                      "Long:2|String:Zeile\r\nzwei|NULL|NULL",
                                      "Long:3|String:|Double:0,1|Date:02.01.2003 10:30:00"}));
}

TEST_F(TextProviderTest, DeletesWithAndWithoutAFilter) {
  Write("Kunden.csv", kKunden);
  auto db = Open();
  Variant affected;
  db->Execute("DELETE FROM " + Path("Kunden.csv") + " WHERE ('Ort'  = 'Aachen'\r\n)", &affected);
  EXPECT_EQ(affected.ToLong(), 1);
  EXPECT_EQ(Read("Kunden.csv"),
            "Nr;Name;Ort;Umsatz;Seit\r\n"
            "1;Müller;\"Köln; Innenstadt\";12,5;31.12.2002\r\n"
            "3;\"Zwei\r\nZeilen\";;;\r\n");
  db->Execute("DELETE FROM " + Path("Kunden.csv"), &affected);
  EXPECT_EQ(affected.ToLong(), 2);
  EXPECT_EQ(Read("Kunden.csv"), "Nr;Name;Ort;Umsatz;Seit\r\n");
  EXPECT_EQ(Count(*db, CountSql("Kunden.csv", "Kunden")), 0);
}

TEST_F(TextProviderTest, TenThousandLinesWithUmlautsQuotesAndBreaks) {
  std::string text = "Nr;Name;Notiz\r\n";
  for (int i = 1; i <= 10000; ++i) {
    text += std::to_string(i) + ";";
    file_engine::AppendCsvField(text, "Jürgen \"" + std::to_string(i % 7) + "\"", ';', false);
    text += ";";
    if (i % 3 == 0) file_engine::AppendCsvField(text, "a;b\r\nc", ';', false);
    text += "\r\n";
  }
  Write("gross.csv", text);
  auto db = Open();
  EXPECT_EQ(Count(*db, CountSql("gross.csv", "gross")), 10000);
  EXPECT_EQ(Count(*db, CountSql("gross.csv", "gross") + " WHERE ('Name'  LIKE '%\"3\"%'\r\n)"),
            1429);
  EXPECT_EQ(Count(*db, CountSql("gross.csv", "gross") + " WHERE ('Notiz'  LIKE '%;b%'\r\n)"), 3333);
  Variant affected;
  db->Execute("DELETE FROM " + Path("gross.csv") + " WHERE ('Notiz'  LIKE '%;b%'\r\n)", &affected);
  EXPECT_EQ(affected.ToLong(), 3333);
  auto rs = Open()->Execute(Select("gross.csv", "gross", {"Nr", "Name", "Notiz"}));
  auto rows = Texts(*rs);
  ASSERT_EQ(rows.size(), 6667u);
  EXPECT_EQ(rows[2], "Long:4|String:Jürgen \"4\"|NULL");
}

TEST_F(TextProviderTest, CreateTableWritesTheHeaderAndTheSchema) {
  auto db = Open();
  db->Execute("CREATE TABLE [Neu.csv] ([Nr] INTEGER, [Name] VARCHAR(40), [Am] DATETIME)");
  EXPECT_EQ(Read("Neu.csv"), "Nr;Name;Am\r\n");
  EXPECT_EQ(Read("schema.ini"),
            "[Neu.csv]\r\nColNameHeader=True\r\nFormat=Delimited(;)\r\nCharacterSet=65001\r\n"
            "Col1=Nr Long\r\nCol2=Name Text Width 40\r\nCol3=Am DateTime\r\n");
  db->Execute("INSERT INTO [Neu.csv] VALUES (1, '42', #2002-12-31#)");
  auto rs = Open()->Execute("SELECT * FROM [Neu.csv]");
  EXPECT_EQ(rs->GetFields().Item("Name").DefinedSize(), 40);
  EXPECT_EQ(Texts(*rs), (std::vector<std::string>{"Long:1|String:42|Date:31.12.2002"}));
}

TEST_F(TextProviderTest, FailuresAreNegativeAndNameWhatFailed) {
  auto db = std::make_shared<Connection>();
  try {
    db->Open("Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=" + folder_.string() + "/fehlt");
    FAIL() << "a missing folder must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, ado::kErrGeneral);
    EXPECT_NE(e.Description.find("fehlt"), std::string::npos);
  }
  db = Open();
  try {
    db->Execute(CountSql("Fehlt.csv", "Fehlt"));
    FAIL() << "a missing file must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, ado::kErrUnknownTable);
  }
}

}  // namespace
}  // namespace ketrova::text_provider
