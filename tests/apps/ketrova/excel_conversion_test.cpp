// Conversions into and out of workbooks with the ketrova tool, as a user runs
// them: a project made by "ketrova new", run by "ketrova run", the workbook
// read back by openpyxl and by the tool itself.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apps/ketrova/run_ketrova.h"
#include "platform/ado/text/temp_folder.h"

namespace ketrova {
namespace {

using Outcome = testing::KetrovaOutcome;

class ExcelConversionTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    std::filesystem::create_directory(Path("daten"));
    Write("daten/orte.csv",
          "Nr;Ort;Seit\r\n"
          "1;München;12.03.1961\r\n"
          "2;Köln;01.07.1975\r\n");
  }

  std::string Python(const std::string& script) {
    Write("script.py", script);
    std::string command =
        "cd '" + folder_.string() + "' && /usr/bin/python3 script.py > script.out 2> script.err";
    EXPECT_EQ(std::system(command.c_str()), 0) << Read("script.err");
    return Read("script.out");
  }

  // Every sheet's rows as "sheet|value|value...".
  std::string Dump(const std::string& file) {
    return Python("import openpyxl\nwb = openpyxl.load_workbook('" + file +
                  "')\nfor ws in wb.worksheets:\n    for row in ws.iter_rows(values_only=True):\n"
                  "        print(ws.title + '|' + '|'.join('-' if v is None else str(v) for v in "
                  "row))\n");
  }

  Outcome Ketrova(const std::string& arguments) { return testing::RunKetrova(folder_, arguments); }

  // "ketrova new" from the source into the workbook, then "ketrova run".
  void Convert(const std::string& source, const std::string& workbook) {
    Outcome o = Ketrova("new p.cpf --name P " + source + " --dest excel --dest-file " + workbook);
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, Path("p.cpf").string() + ": 1 Aufgabe(n)\n");
    o = Ketrova("run p.cpf --yes");
    EXPECT_EQ(o.status, 0) << o.out << o.err;
  }
};

TEST_F(ExcelConversionTest, CsvIntoANewWorkbook) {
  Convert("--source text --source-file daten", "neu.xlsx");
  EXPECT_EQ(Dump("neu.xlsx"),
            "orte.csv|Nr|Ort|Seit\n"
            "orte.csv|1|München|12.03.1961\n"
            "orte.csv|2|Köln|01.07.1975\n");
  // A second run finds the sheet and appends to it.
  Outcome o = Ketrova("run p.cpf --yes");
  EXPECT_EQ(o.status, 0) << o.out << o.err;
  EXPECT_EQ(Dump("neu.xlsx").size(), std::string("orte.csv|Nr|Ort|Seit\n").size() +
                                         2 * std::string("orte.csv|1|München|12.03.1961\n").size() +
                                         2 * std::string("orte.csv|2|Köln|01.07.1975\n").size());
}

TEST_F(ExcelConversionTest, CsvIntoAnExistingWorkbookKeepsItsOtherSheets) {
  Python(
      "import openpyxl\nwb = openpyxl.Workbook()\nws = wb.active\nws.title = 'Andere'\n"
      "ws.append(['A', 'B'])\nws.append([1.25, 'x'])\nws['A2'].number_format = '0.000'\n"
      "ws.column_dimensions['A'].width = 30\nwb.save('alt.xlsx')\n");
  const std::string before = Python(
      "import zipfile, sys\nsys.stdout.write(zipfile.ZipFile('alt.xlsx').read("
      "'xl/worksheets/sheet1.xml').decode())\n");
  Convert("--source text --source-file daten", "alt.xlsx");
  EXPECT_EQ(Dump("alt.xlsx"),
            "Andere|A|B\n"
            "Andere|1.25|x\n"
            "orte.csv|Nr|Ort|Seit\n"
            "orte.csv|1|München|12.03.1961\n"
            "orte.csv|2|Köln|01.07.1975\n");
  EXPECT_EQ(Python("import zipfile, sys\nsys.stdout.write(zipfile.ZipFile('alt.xlsx').read("
                   "'xl/worksheets/sheet1.xml').decode())\n"),
            before);
}

TEST_F(ExcelConversionTest, SqliteIntoAWorkbookAndTheWorkbookAsASource) {
  Python(
      "import sqlite3\ndb = sqlite3.connect('quelle.sqlite')\n"
      "db.execute('CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name TEXT, Betrag REAL)')\n"
      "db.execute(\"INSERT INTO Kunden VALUES (1, 'Müller', 12.5), (2, 'O''Neil', NULL)\")\n"
      "db.commit()\n");
  Convert("--source odbc --source-driver SQLite3 --source-database quelle.sqlite", "kunden.xlsx");
  EXPECT_EQ(Dump("kunden.xlsx"),
            "Kunden|Nr|Name|Betrag\n"
            "Kunden|1|Müller|12,5\n"
            "Kunden|2|O'Neil|-\n");

  // The workbook as a source: one job per sheet and defined name (the
  // conversion defined the name Kunden over its sheet, as the Jet driver did).
  Python(
      "import openpyxl\nfrom openpyxl.workbook.defined_name import DefinedName\n"
      "wb = openpyxl.load_workbook('kunden.xlsx')\n"
      "wb.defined_names.append(DefinedName('Erste', attr_text='Kunden!$A$1:$C$2'))\n"
      "wb.save('kunden.xlsx')\n");
  Outcome o = Ketrova(
      "new q.cpf --name Q --source excel --source-file kunden.xlsx --dest text --dest-file daten");
  EXPECT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.out, Path("q.cpf").string() + ": 3 Aufgabe(n)\n");
}

// The store dialog names new workbooks .XLS: such a target is written as
// Excel 97-2003 and read back by xlrd.
TEST_F(ExcelConversionTest, SqliteIntoANewXlsWorkbook) {
  Python(
      "import sqlite3\ndb = sqlite3.connect('quelle.sqlite')\n"
      "db.execute('CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name TEXT)')\n"
      "db.execute(\"INSERT INTO Kunden VALUES (1, 'Müller'), (2, 'Åsa Ümit')\")\n"
      "db.commit()\n");
  Convert("--source odbc --source-driver SQLite3 --source-database quelle.sqlite", "NEU.XLS");
  EXPECT_EQ(Python("import xlrd\nws = xlrd.open_workbook('NEU.XLS').sheet_by_index(0)\n"
                   "print(ws.name)\nfor r in range(ws.nrows): print(ws.row_values(r))\n"),
            "Kunden\n['Nr', 'Name']\n['1', 'Müller']\n['2', 'Åsa Ümit']\n");
}

// A project of two jobs into one workbook: each job's end writes the
// workbook, the next job writes into what the first wrote, and a second run
// appends to both sheets. Both formats: the workbook as .xlsx and as .XLS.
TEST_F(ExcelConversionTest, TwoJobsIntoOneWorkbookAndASecondRun) {
  Write("daten/leute.csv", "Name\r\nAnna\r\n");
  for (const std::string workbook : {"zwei.xlsx", "ZWEI.XLS"}) {
    SCOPED_TRACE(workbook);
    const std::string project = workbook + ".cpf";
    Outcome o = Ketrova("new " + project + " --name P --source text --source-file daten " +
                        "--dest excel --dest-file " + workbook);
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, Path(project).string() + ": 2 Aufgabe(n)\n");
    for (int run = 0; run < 2; ++run) {
      o = Ketrova("run " + project + " --yes");
      EXPECT_EQ(o.status, 0) << o.out << o.err;
      EXPECT_EQ(o.err.find("Excel-Arbeitsmappe"), std::string::npos) << o.err;
    }
    EXPECT_EQ(
        Python("import xlrd, openpyxl\nf = '" + workbook +
               "'\n"
               "if f.endswith('xlsx'):\n"
               "    wb = openpyxl.load_workbook(f)\n"
               "    sheets = [(ws.title, [[str(c.value) for c in r] for r in ws.iter_rows()]) "
               "for ws in wb.worksheets]\n"
               "else:\n"
               "    wb = xlrd.open_workbook(f)\n"
               "    sheets = [(ws.name, [[str(v) for v in ws.row_values(r)] for r in "
               "range(ws.nrows)]) for ws in wb.sheets()]\n"
               "for name, rows in sheets:\n"
               "    for r in rows: print(name + '|' + '|'.join(r))\n"),
        "leute.csv|Name\n"
        "leute.csv|Anna\n"
        "leute.csv|Anna\n"
        "orte.csv|Nr|Ort|Seit\n"
        "orte.csv|1|München|12.03.1961\n"
        "orte.csv|2|Köln|01.07.1975\n"
        "orte.csv|1|München|12.03.1961\n"
        "orte.csv|2|Köln|01.07.1975\n");
  }
}

}  // namespace
}  // namespace ketrova
