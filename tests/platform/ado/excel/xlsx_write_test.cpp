// Writing .xlsx workbooks: new ones, and existing ones written by openpyxl
// whose other sheets must stay as they were; each read back by openpyxl and
// by the provider itself.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "excel_test_support.h"
#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

using testing::ExcelTest;

// Prints every sheet as "sheet|row|value:type|..." lines, with dates marked,
// and the raw XML of the sheet "Andere" with its number formats and widths.
constexpr const char* kDumpScript = R"PY(
import sys, openpyxl
wb = openpyxl.load_workbook(sys.argv[1] if len(sys.argv) > 1 else "ziel.xlsx")
for ws in wb.worksheets:
    for row in ws.iter_rows():
        cells = []
        for c in row:
            if c.value is None:
                cells.append("-")
            elif c.is_date:
                cells.append(c.value.strftime("%Y-%m-%d") + ":date")
            else:
                cells.append(str(c.value) + ":" + type(c.value).__name__)
        print(ws.title + "|" + "|".join(cells))
)PY";

// A workbook with a sheet to write into (a number, a text and a date
// column) and another sheet with formats and a column width to be kept.
constexpr const char* kTargetScript = R"PY(
import datetime, openpyxl
wb = openpyxl.Workbook()
ws = wb.active
ws.title = "Andere"
ws.append(["Wert", "Text"])
ws.append([1.5, "ä"])
ws["A2"].number_format = "0.000"
ws.column_dimensions["B"].width = 42
ziel = wb.create_sheet("Ziel")
ziel.append(["Nr", "Name", "Datum"])
ziel.append([1, "eins", datetime.datetime(2001, 1, 1)])
ziel.append([2, "zwei", datetime.datetime(2002, 2, 2)])
ziel["C2"].number_format = "dd.mm.yyyy"
ziel["C3"].number_format = "dd.mm.yyyy"
wb.save("ziel.xlsx")
)PY";

class XlsxWriteTest : public ExcelTest {
 protected:
  std::vector<std::string> Dump(const std::string& file) {
    Write("dump.py", kDumpScript);
    std::string out = Python("import runpy, sys\nsys.argv = ['dump.py', '" + file +
                             "']\nrunpy.run_path('dump.py')\n");
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < out.size()) {
      auto end = out.find('\n', start);
      lines.push_back(out.substr(start, end - start));
      start = end + 1;
    }
    return lines;
  }
  // The bytes of one part of the package.
  std::string Part(const std::string& file, const std::string& part) {
    return Python("import zipfile, sys\nsys.stdout.write(zipfile.ZipFile('" + file + "').read('" +
                  part + "').decode())\n");
  }
  std::string Error(const std::function<void()>& action) {
    try {
      action();
    } catch (const VbError& e) {
      EXPECT_LT(e.Number, 0);
      return e.Description;
    }
    return "kein Fehler";
  }
};

TEST_F(XlsxWriteTest, CreateTableMakesASheetWithTextCellsInANewWorkbook) {
  {
    auto db = Open("neu.xlsx");
    db->Execute("CREATE TABLE [Kunden] ([Nr] TEXT, [Name] TEXT, [Seit] TEXT)");
    // Both names resolve to the new sheet; the catalogue lists it.
    db->Execute(
        " INSERT INTO [Kunden$]\r\n VALUES \r\n (\r\n\t'1',\r\n\t'Müller & Söhne',\r\n\tNULL)\r\n");
    auto rs = std::make_shared<ado::Recordset>();
    rs->Open(Variant(" SELECT *  FROM    [Kunden]"), Variant(db), ado::adOpenForwardOnly,
             ado::adLockOptimistic);
    rs->AddNew();
    rs->GetFields().Item("Nr").SetValue(Variant(2.5));
    rs->GetFields().Item("Name").SetValue(Variant(std::string("  <Leer> _x0041_ ")));
    rs->GetFields().Item("Seit").SetValue(Variant::FromDate(37621));
    rs->Update();
    rs->Close();
    // The sheet and the name defined over its table, as the Jet driver made
    // them, so that the next run finds the table.
    auto schema = db->OpenSchema(ado::adSchemaTables);
    std::vector<std::string> tables;
    for (; !schema->Eof(); schema->MoveNext())
      tables.push_back(schema->GetFields().Item("TABLE_NAME").Value().ToText());
    EXPECT_EQ(tables, (std::vector<std::string>{"Kunden", "Kunden$"}));
    EXPECT_FALSE(std::filesystem::exists(Path("neu.xlsx"))) << "written before the close";
  }
  // Values reach a text column as the record set's text of them; a text
  // that looks like an escape is escaped itself (openpyxl shows the escape).
  EXPECT_EQ(Dump("neu.xlsx"), (std::vector<std::string>{
                                  "Kunden|Nr:str|Name:str|Seit:str",
                                  "Kunden|1:str|Müller & Söhne:str|-",
                                  "Kunden|2,5:str|  <Leer> _x005F_x0041_ :str|31.12.2002:str",
                              }));
  EXPECT_EQ(Python("import openpyxl\nwb = openpyxl.load_workbook('neu.xlsx')\n"
                   "print(wb.defined_names['Kunden'].attr_text)\n"),
            "'Kunden'!$A$1:$C$3\n");
  auto db = Open("neu.xlsx");
  EXPECT_EQ(Select(*db, "Kunden"), Select(*db, "Kunden$"));
  EXPECT_EQ(Select(*db, "Kunden$"),
            (std::vector<std::string>{"String:1|String:Müller & Söhne|NULL",
                                      "String:2,5|String:  <Leer> _x0041_ |String:31.12.2002"}));
}

TEST_F(XlsxWriteTest, AppendsAndUpdatesByKeyKeepingTheOtherSheet) {
  Python(kTargetScript);
  const std::string other = Part("ziel.xlsx", "xl/worksheets/sheet1.xml");
  {
    auto db = Open("ziel.xlsx");
    db->Execute(
        " INSERT INTO [Ziel$]\r\n VALUES \r\n (\r\n\t3,\r\n\t'drei',\r\n\t'2003-03-03')\r\n");
    // The update as a job writes it, and through a record set found by key.
    db->Execute(" UPDATE [Ziel$]\r\n SET \r\n [Name] = 'ZWEI' \r\n\r\n WHERE \r\n\tZiel$.[Nr] = 2");
    auto rs = std::make_shared<ado::Recordset>();
    rs->Open(Variant("SELECT * FROM [Ziel$] WHERE  [Ziel$].[Nr] = 1"), Variant(db),
             ado::adOpenForwardOnly, ado::adLockOptimistic);
    ASSERT_FALSE(rs->Eof());
    rs->GetFields().Item("Datum").SetValue(Variant::FromDate(40000));
    rs->Update();
    rs->Close();
    // The connection sees its own writes before they are saved.
    EXPECT_EQ(Select(*db, "Ziel"),
              (std::vector<std::string>{"Double:1|String:eins|Date:06.07.2009",
                                        "Double:2|String:ZWEI|Date:02.02.2002",
                                        "Double:3|String:drei|Date:03.03.2003"}));
  }
  EXPECT_EQ(Dump("ziel.xlsx"), (std::vector<std::string>{
                                   "Andere|Wert:str|Text:str",
                                   "Andere|1.5:float|ä:str",
                                   "Ziel|Nr:str|Name:str|Datum:str",
                                   "Ziel|1:int|eins:str|2009-07-06:date",
                                   "Ziel|2:int|ZWEI:str|2002-02-02:date",
                                   "Ziel|3:int|drei:str|2003-03-03:date",
                               }));
  EXPECT_EQ(Part("ziel.xlsx", "xl/worksheets/sheet1.xml"), other);
}

TEST_F(XlsxWriteTest, CreateTableAddsASheetToAnExistingWorkbook) {
  Python(kTargetScript);
  const std::string other = Part("ziel.xlsx", "xl/worksheets/sheet1.xml");
  {
    auto db = Open("ziel.xlsx");
    db->Execute("CREATE TABLE [Neu] ([A] TEXT, [B] TEXT)");
    db->Execute("INSERT INTO [Neu$] VALUES ('x', 'y')");
    EXPECT_EQ(Error([&] { db->Execute("CREATE TABLE [Ziel] ([A] TEXT)"); }),
              "Das Tabellenblatt 'Ziel' existiert bereits");
  }
  auto dump = Dump("ziel.xlsx");
  EXPECT_EQ(dump.back(), "Neu|x:str|y:str");
  EXPECT_EQ(dump.size(), 7u);
  EXPECT_EQ(Part("ziel.xlsx", "xl/worksheets/sheet1.xml"), other);
  auto db = Open("ziel.xlsx");
  EXPECT_EQ(Select(*db, "Neu$"), (std::vector<std::string>{"String:x|String:y"}));
}

TEST_F(XlsxWriteTest, DeleteRemovesRowsAndTheRowsBelowMoveUp) {
  Python(kTargetScript);
  {
    auto db = Open("ziel.xlsx");
    db->Execute("DELETE FROM [Ziel$] WHERE [Nr] = 1");
  }
  EXPECT_EQ(Dump("ziel.xlsx")[3], "Ziel|2:int|zwei:str|2002-02-02:date");
  {
    // Delete before insert: the sheet keeps its header.
    auto db = Open("ziel.xlsx");
    db->Execute("DELETE FROM [Ziel$]");
    db->Execute("INSERT INTO [Ziel$] VALUES (9, 'neun', NULL)");
  }
  auto dump = Dump("ziel.xlsx");
  EXPECT_EQ(std::vector<std::string>(dump.begin() + 2, dump.end()),
            (std::vector<std::string>{"Ziel|Nr:str|Name:str|Datum:str", "Ziel|9:int|neun:str|-"}));
}

TEST_F(XlsxWriteTest, AConnectionThatWritesNothingNeverRewritesTheFile) {
  Python(kTargetScript);
  struct stat before {};
  ASSERT_EQ(::stat(Path("ziel.xlsx").c_str(), &before), 0);
  {
    auto db = Open("ziel.xlsx");
    Select(*db, "Ziel$");
    db->Execute("UPDATE [Ziel$] SET [Name] = 'x' WHERE [Nr] = 99");
  }
  struct stat after {};
  ASSERT_EQ(::stat(Path("ziel.xlsx").c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(XlsxWriteTest, RefusedWritesLeaveTheFileAsItWas) {
  Python(kTargetScript);
  const std::string original = Read("ziel.xlsx");
  {
    auto db = Open("ziel.xlsx");
    EXPECT_EQ(
        Error([&] {
          db->Execute("INSERT INTO [Ziel$] VALUES (4, '" + std::string(32768, 'y') + "', NULL)");
        }),
        "Der Text für die Spalte 'Name' ist mit 32768 Zeichen länger, als eine "
        "Excel-Zelle fasst (32767 Zeichen)");
  }
  EXPECT_EQ(Read("ziel.xlsx"), original);

  std::filesystem::permissions(Path("ziel.xlsx"), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  {
    auto db = Open("ziel.xlsx");
    EXPECT_EQ(Error([&] { db->Execute("INSERT INTO [Ziel$] VALUES (4, 'vier', NULL)"); }),
              "Die Excel-Arbeitsmappe '" + Path("ziel.xlsx").string() + "' ist schreibgeschützt");
  }
  EXPECT_EQ(Read("ziel.xlsx"), original);
  std::filesystem::permissions(Path("ziel.xlsx"), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);

  std::filesystem::permissions(folder_, std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  if (::access(folder_.c_str(), W_OK) == 0) GTEST_SKIP() << "root writes into any folder";
  {
    auto db = Open("ziel.xlsx");
    EXPECT_EQ(Error([&] { db->Execute("CREATE TABLE [X] ([A] TEXT)"); }),
              "Die Excel-Arbeitsmappe '" + Path("ziel.xlsx").string() +
                  "' kann nicht geschrieben werden: der Ordner ist schreibgeschützt");
  }
  EXPECT_EQ(Read("ziel.xlsx"), original);
}

// At a job's end the workbook is written; a later save writes only what was
// changed since, and a failure then reaches the caller.
TEST_F(XlsxWriteTest, FlushWritesTheChangesOnceAndReportsAFailure) {
  auto db = Open("neu.xlsx");
  db->Execute("CREATE TABLE [A] ([Nr] TEXT, [Name] TEXT)");
  db->Execute("INSERT INTO [A$] VALUES ('1', 'eins')");
  db->Execute("INSERT INTO [A$] VALUES ('2', 'zwei')");
  db->Flush();
  EXPECT_EQ(Dump("neu.xlsx"), (std::vector<std::string>{"A|Nr:str|Name:str", "A|1:str|eins:str",
                                                        "A|2:str|zwei:str"}));
  struct stat first {};
  ASSERT_EQ(::stat(Path("neu.xlsx").c_str(), &first), 0);
  db->Flush();
  struct stat again {};
  ASSERT_EQ(::stat(Path("neu.xlsx").c_str(), &again), 0);
  EXPECT_EQ(first.st_ino, again.st_ino) << "written without a change";

  db->Execute("INSERT INTO [A] VALUES ('3', 'drei')");
  db->Execute("UPDATE [A$] SET [Name] = 'ZWEI' WHERE [A$].[Nr] = '2'");
  db->Execute("CREATE TABLE [B] ([X] TEXT)");
  db->Execute("INSERT INTO [B$] VALUES ('b')");
  db->Flush();
  EXPECT_EQ(Dump("neu.xlsx"),
            (std::vector<std::string>{"A|Nr:str|Name:str", "A|1:str|eins:str", "A|2:str|ZWEI:str",
                                      "A|3:str|drei:str", "B|X:str", "B|b:str"}));
  EXPECT_EQ(Python("import openpyxl\nwb = openpyxl.load_workbook('neu.xlsx')\n"
                   "for d in wb.defined_names.definedName: print(d.name, d.attr_text)\n"),
            "A 'A'!$A$1:$B$4\nB 'B'!$A$1:$A$2\n");
  EXPECT_EQ(Select(*db, "A").size(), 3u);

  // The file replaced by a folder before the next save.
  db->Execute("INSERT INTO [A$] VALUES ('4', 'vier')");
  const std::uint64_t group = db->LastWriteGroup();
  std::string text;
  EXPECT_EQ(db->FateOfWriteGroup(group, text), ado::Provider::GroupFate::kOpen);
  std::filesystem::remove(Path("neu.xlsx"));
  std::filesystem::create_directory(Path("neu.xlsx"));
  const std::string error = Error([&] { db->Flush(); });
  EXPECT_EQ(error.rfind("Die Excel-Arbeitsmappe '" + Path("neu.xlsx").string() +
                            "' kann nicht geschrieben werden: ",
                        0),
            0u)
      << error;
  // The row the save could not keep is answered as lost, for the reject file.
  EXPECT_EQ(db->FateOfWriteGroup(group, text), ado::Provider::GroupFate::kLost);
  EXPECT_EQ(text, error);
  std::filesystem::remove(Path("neu.xlsx"));
}

// Updates by key in a sheet of some thousand rows find their rows through an
// index of the sheet, rows appended, changed and removed since included.
TEST_F(XlsxWriteTest, UpdatesByKeyInALargeSheet) {
  Python(R"PY(
import openpyxl
wb = openpyxl.Workbook()
ws = wb.active
ws.title = "Gross"
ws.append(["Nr", "Code", "Name"])
for i in range(1, 3001):
    ws.append([i, "K%05d" % i, "n%d" % i])
wb.save("gross.xlsx")
)PY");
  {
    auto db = Open("gross.xlsx");
    Variant affected;
    for (int i = 1; i <= 3000; i += 3) {
      db->Execute(" UPDATE [Gross$]\r\n SET \r\n [Name] = 'neu" + std::to_string(i) +
                      "' \r\n\r\n WHERE \r\n\t[Gross$].[Nr] = " + std::to_string(i),
                  &affected);
      ASSERT_EQ(affected.ToLong(), 1) << i;
    }
    db->Execute("INSERT INTO [Gross$] VALUES (3001, 'K03001', 'angehängt')");
    db->Execute("UPDATE [Gross$] SET [Name] = 'geändert' WHERE [Gross$].[Nr] = 3001", &affected);
    EXPECT_EQ(affected.ToLong(), 1);
    // A key given as text, a text key, a key changed and a row removed.
    db->Execute("UPDATE [Gross$] SET [Name] = 'sieben' WHERE [Nr] = '7'", &affected);
    EXPECT_EQ(affected.ToLong(), 1);
    db->Execute("UPDATE [Gross$] SET [Nr] = 9999 WHERE [Code] = 'K00002'", &affected);
    EXPECT_EQ(affected.ToLong(), 1);
    db->Execute("UPDATE [Gross$] SET [Name] = 'x' WHERE [Nr] = 2", &affected);
    EXPECT_EQ(affected.ToLong(), 0);
    db->Execute("DELETE FROM [Gross$] WHERE [Nr] = 10");
    db->Execute("UPDATE [Gross$] SET [Name] = 'x' WHERE [Nr] = 10", &affected);
    EXPECT_EQ(affected.ToLong(), 0);
    auto rs = db->Execute("SELECT [Name] FROM [Gross$] WHERE [Nr] = 9999");
    EXPECT_EQ(Rows(*rs), (std::vector<std::string>{"String:n2"}));
  }
  auto lines = Dump("gross.xlsx");
  ASSERT_EQ(lines.size(), 3001u);
  EXPECT_EQ(lines[1], "Gross|1:int|K00001:str|neu1:str");
  EXPECT_EQ(lines[2], "Gross|9999:int|K00002:str|n2:str");
  EXPECT_EQ(lines[7], "Gross|7:int|K00007:str|sieben:str");
  EXPECT_EQ(lines[9], "Gross|9:int|K00009:str|n9:str");
  EXPECT_EQ(lines[10], "Gross|11:int|K00011:str|n11:str");
  EXPECT_EQ(lines[2997], "Gross|2998:int|K02998:str|neu2998:str");
  EXPECT_EQ(lines[2998], "Gross|2999:int|K02999:str|n2999:str");
  EXPECT_EQ(lines[2999], "Gross|3000:int|K03000:str|n3000:str");
  EXPECT_EQ(lines[3000], "Gross|3001:int|K03001:str|geändert:str");
}

}  // namespace
}  // namespace ketrova
