// A plain SELECT of a text file is read without SQLite's program: which
// statements qualify, and that such a read gives exactly what the program
// gives — columns, values with their subtypes, failures and where they come.
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/providers/text/text_names.h"
#include "platform/ado/text/temp_folder.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {
namespace {

// A value with its subtype, exactly: numbers and dates to the last bit.
std::string Exact(const Variant& v) {
  char buf[40];
  switch (v.Type()) {
    case vbDouble:
      std::snprintf(buf, sizeof buf, "%.17g", v.ToDouble());
      return std::string("double ") + buf;
    case vbDate:
      std::snprintf(buf, sizeof buf, "%.17g", v.AsDate().value);
      return std::string("date ") + buf;
    case vbString:
      return "string " + v.AsString();
    default:
      return std::to_string(v.Type()) + " " + (v.IsNull() ? "NULL" : v.ToString());
  }
}

class CsvScanTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    engine_ = MakeEngine();
  }

  std::unique_ptr<FileEngine> MakeEngine() const {
    return std::make_unique<FileEngine>(
        [this](const std::string& name) -> std::optional<TableSource> {
          auto file = text_provider::ResolveTextFile(folder_, name);
          if (!file) return std::nullopt;
          return TableSource{"ketrova_csv", {file->string()}};
        },
        "Ketrova.Text");
  }

  std::optional<std::vector<int>> PlanOf(const std::string& sql) {
    auto statement = engine_->Prepare(sql);
    const PlainScan* plan = engine_->PlainScanOf(*statement);
    if (plan == nullptr) return std::nullopt;
    return plan->columns;
  }

  // Everything a read gives: the rows fetched, and the failure that ended it.
  struct Read {
    std::vector<ado::ColumnInfo> columns;
    std::vector<ado::Row> rows;
    std::optional<VbError> failure;
  };
  Read ReadAll(const std::string& sql, std::int64_t maxRows = 0) {
    Read read;
    try {
      auto result = ExecuteStatement(*engine_, sql, {}, maxRows);
      read.columns = result.cursor->Columns();
      while (result.cursor->Fetch(read.rows, 3) > 0) {
      }
    } catch (const VbError& e) {
      read.failure = e;
    }
    return read;
  }

  // The same statement read directly and through SQLite's program (a
  // condition that holds for every row keeps it from being a plain scan).
  void ExpectSameRead(const std::string& select, std::int64_t maxRows = 0) {
    SCOPED_TRACE(select);
    ASSERT_TRUE(PlanOf(select)) << "not read directly";
    ASSERT_FALSE(PlanOf(select + " WHERE 1 = 1"));
    const Read direct = ReadAll(select, maxRows);
    const Read program = ReadAll(select + " WHERE 1 = 1", maxRows);
    ASSERT_EQ(direct.columns.size(), program.columns.size());
    for (std::size_t i = 0; i < direct.columns.size(); ++i) {
      const ado::ColumnInfo& a = direct.columns[i];
      const ado::ColumnInfo& b = program.columns[i];
      EXPECT_EQ(a.name, b.name);
      EXPECT_EQ(a.type, b.type) << a.name;
      EXPECT_EQ(a.typeName, b.typeName) << a.name;
      EXPECT_EQ(a.definedSize, b.definedSize) << a.name;
      EXPECT_EQ(a.baseTable, b.baseTable) << a.name;
      EXPECT_EQ(a.baseColumn, b.baseColumn) << a.name;
    }
    ASSERT_EQ(direct.rows.size(), program.rows.size());
    for (std::size_t r = 0; r < direct.rows.size(); ++r) {
      ASSERT_EQ(direct.rows[r].size(), program.rows[r].size());
      for (std::size_t i = 0; i < direct.rows[r].size(); ++i) {
        const Variant& a = direct.rows[r][i];
        const Variant& b = program.rows[r][i];
        EXPECT_EQ(Exact(a), Exact(b)) << "row " << r << " column " << i;
      }
    }
    ASSERT_EQ(direct.failure.has_value(), program.failure.has_value());
    if (direct.failure) {
      EXPECT_EQ(direct.failure->Number, program.failure->Number);
      EXPECT_EQ(direct.failure->Description, program.failure->Description);
      EXPECT_EQ(direct.failure->Source, program.failure->Source);
    }
  }

  std::unique_ptr<FileEngine> engine_;
};

TEST_F(CsvScanTest, OnlyAStatementThatReadsColumnsAsTheyStandIsAPlainScan) {
  Write("k.csv", "A;B;C\r\n1;x;2,5\r\n");
  const std::string from = " FROM     `" + folder_.string() + "`\\k.csv.TXT    k";
  EXPECT_EQ(PlanOf("SELECT * FROM [k.csv]"), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(PlanOf(" SELECT \r\n\t\"C\",\r\n\t\"A\"\r\n\r\n" + from), (std::vector<int>{2, 0}));
  EXPECT_EQ(PlanOf("SELECT B AS Name FROM [k.csv]"), (std::vector<int>{1}));
  for (const char* more :
       {"SELECT * FROM [k.csv] WHERE A = 1", "SELECT * FROM [k.csv] ORDER BY A",
        "SELECT * FROM [k.csv] LIMIT 1", "SELECT DISTINCT A FROM [k.csv]",
        "SELECT A + 1 FROM [k.csv]", "SELECT 1, A FROM [k.csv]", "SELECT COUNT(*) FROM [k.csv]",
        "SELECT B, COUNT(*) FROM [k.csv] GROUP BY B", "SELECT x.A, y.B FROM [k.csv] x, [k.csv] y",
        "SELECT A FROM [k.csv] UNION ALL SELECT A FROM [k.csv]"}) {
    EXPECT_FALSE(PlanOf(more)) << more;
  }
}

TEST_F(CsvScanTest, ValuesAndTypesAreThoseOfSqlitesProgram) {
  Write("schema.ini",
        "[typen.csv]\r\nFormat=Delimited(;)\r\nColNameHeader=True\r\n"
        "Col1=Nr Integer\r\nCol2=Preis Currency\r\nCol3=Wert Double\r\nCol4=Datum DateTime\r\n"
        "Col5=Ok Bit\r\nCol6=Name Text Width 20\r\nCol7=Notiz Memo\r\n");
  Write("typen.csv",
        "Nr;Preis;Wert;Datum;Ok;Name;Notiz\r\n"
        "1;12,3456;7.25;31.12.2002;Wahr;Müller;lang\r\n"
        "2,5;abc;\"3\";2003-01-15 08:30;0;\"Grün; Söhne\";\r\n"
        "\"7\";;1e3;kein Datum;vielleicht;\"\";x\r\n"
        "99999999999;0;-0,5;2001-05-01;True;Straße;\r\n"
        "4;5\r\n"
        "\r\n"
        "5;6;7;01.02.2003;Falsch;z;z;\r\n");
  ExpectSameRead("SELECT * FROM [typen.csv]");
  ExpectSameRead("SELECT Name, Nr, Datum FROM [typen.csv]");
  ExpectSameRead("SELECT * FROM [typen.csv]", 2);
  // Types inferred from the rows, Windows-1252 bytes, no line break at the end.
  Write("geraten.csv",
        "Nr;Betrag;Tag;Text\r\n1;2,50;31.12.2002;B\xE4r\r\n2;3;2003-01-01;\"a\"\"b\"\r\n"
        "03;x;;\"zwei\r\nZeilen\"\r\n4;4,5;01.01.2004;ende");
  ExpectSameRead("SELECT * FROM [geraten.csv]");
}

TEST_F(CsvScanTest, FailuresComeAsTheProgramsAndAfterTheSameRows) {
  Write("lang.csv", "A;B\r\n1;2\r\n3;4\r\n5;6\r\n7;8;9\r\n10;11\r\n");
  ExpectSameRead("SELECT * FROM [lang.csv]");
  const Read read = ReadAll("SELECT * FROM [lang.csv]");
  EXPECT_EQ(read.rows.size(), 3u);
  ASSERT_TRUE(read.failure);
  EXPECT_EQ(read.failure->Number, ado::kErrGeneral);
  EXPECT_EQ(read.failure->Description,
            "Datei " + Path("lang.csv").string() + ", Zeile 5: zu viele Felder (3 statt 2)");
  EXPECT_EQ(read.failure->Source, "Ketrova.Text");
  // A quote never closed, behind the rows the types are settled from.
  std::string rows = "A;B\r\n";
  for (int i = 0; i < 30; ++i) rows += std::to_string(i) + ";x\r\n";
  Write("offen.csv", rows + "\"3;4\r\n");
  ExpectSameRead("SELECT * FROM [offen.csv]");
  Write("utf8.csv", rows + "M\xC3\xBCller;1\r\nM\xFCller;2\r\n");
  Write("schema.ini", "[utf8.csv]\r\nCharacterSet=65001\r\n");
  ExpectSameRead("SELECT * FROM [utf8.csv]");
  EXPECT_TRUE(ReadAll("SELECT * FROM [utf8.csv]").failure);
}

TEST_F(CsvScanTest, AScanKeepsToTheFileAsItWasWhenItBegan) {
  Write("k.csv", "A\r\n1\r\n2\r\n3\r\n");
  auto result = ExecuteStatement(*engine_, "SELECT A FROM [k.csv]", {}, 0);
  std::vector<ado::Row> rows;
  ASSERT_EQ(result.cursor->Fetch(rows, 1), 1u);
  // Lines appended during the scan are not read; a table dropped and made
  // anew meanwhile does not end it.
  MakeEngine()->Execute("INSERT INTO [k.csv] VALUES (4)");
  engine_->ForgetTable("k.csv");
  EXPECT_EQ(ReadAll("SELECT A FROM [k.csv]").rows.size(), 4u);
  while (result.cursor->Fetch(rows, 10) > 0) {
  }
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2][0].ToLong(), 3);
}

}  // namespace
}  // namespace ketrova::file_engine
