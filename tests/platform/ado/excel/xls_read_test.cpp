// Excel 97-2003 workbooks: reading those xlwt writes, changing them, and
// writing new ones, read back by xlrd and by the provider itself.
#include <gtest/gtest.h>

#include "excel_test_support.h"
#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

using testing::ExcelTest;

constexpr const char* kXlsScript = R"PY(
import datetime, xlwt
wb = xlwt.Workbook(encoding="utf-8")
ws = wb.add_sheet("Kunden")
datum = xlwt.easyxf(num_format_str="DD.MM.YYYY")
euro = xlwt.easyxf(num_format_str='#,##0.00 "€"')
for c, name in enumerate(["Nr", "Name", "Betrag", "Seit", "", "Name"]):
    ws.write(0, c, name)
ws.write(1, 0, 1); ws.write(1, 1, "Müller"); ws.write(1, 2, 12.5, euro)
ws.write(1, 3, datetime.datetime(2002, 12, 31), datum); ws.write(1, 4, "x")
ws.write(2, 0, 2); ws.write(2, 1, "O'Neil"); ws.write(2, 2, 7, euro)
ws.write(2, 3, datetime.datetime(1961, 3, 12), datum); ws.write(2, 5, "y" * 300)
ws.write(4, 0, 3)
ws2 = wb.add_sheet("Meine Kunden Ä")
ws2.write(0, 0, "Ort")
ws2.write(1, 0, "Köln")
ws2.write(2, 0, "ü" * 20000)
ws2.write_merge(3, 4, 0, 0, "zusammen")
ws2.col(0).width = 9000
wb.save("alt.xls")
)PY";

TEST_F(ExcelTest, ReadsXlsWorkbooksByTheirContent) {
  Python(kXlsScript);
  // The format goes by the content: the same file named .xlsx reads alike.
  std::filesystem::copy_file(Path("alt.xls"), Path("alt-falsch-benannt.xlsx"));
  for (const char* name : {"alt.xls", "alt-falsch-benannt.xlsx"}) {
    auto db = Open(name);
    auto schema = db->OpenSchema(ado::adSchemaTables);
    std::vector<std::string> tables;
    for (; !schema->Eof(); schema->MoveNext())
      tables.push_back(schema->GetFields().Item("TABLE_NAME").Value().ToText());
    EXPECT_EQ(tables, (std::vector<std::string>{"Kunden$", "Meine Kunden Ä$"}));

    auto rs = db->Execute(" SELECT *  FROM [Kunden$]");
    std::vector<std::string> columns;
    for (std::int32_t i = 0; i < rs->GetFields().Count(); ++i) {
      auto& f = rs->GetFields().Item(i);
      columns.push_back(f.Name() + ":" + std::to_string(f.Type()));
    }
    EXPECT_EQ(columns, (std::vector<std::string>{"Nr:5", "Name:202", "Betrag:6", "Seit:7", "F5:202",
                                                 "F6:203"}));
    EXPECT_EQ(Rows(*rs), (std::vector<std::string>{
                             "Double:1|String:Müller|Currency:12,5|Date:31.12.2002|String:x|NULL",
                             "Double:2|String:O'Neil|Currency:7|Date:12.03.1961|NULL|String:" +
                                 std::string(300, 'y'),
                             "Double:3|NULL|NULL|NULL|NULL|NULL"}));
    // A text far longer than one record, in UTF-16 since "ü" is no ASCII.
    EXPECT_EQ(Select(*db, "Meine Kunden Ä$"), (std::vector<std::string>{"String:Köln",
                                                                        "String:" +
                                                                            [] {
                                                                              std::string t;
                                                                              for (int i = 0;
                                                                                   i < 20000; ++i)
                                                                                t += "ü";
                                                                              return t;
                                                                            }(),
                                                                        "String:zusammen"}));
  }
}

// Changing a workbook xlwt wrote: the whole workbook is written anew, its
// other sheet's values, column widths and merged areas, the number formats
// and the names made by CREATE TABLE kept; a second run into it appends to what the first wrote.
TEST_F(ExcelTest, ChangesExistingXlsWorkbooks) {
  Python(kXlsScript);
  for (int run = 1; run <= 2; ++run) {
    auto db = Open("alt.xls");
    db->Execute("INSERT INTO [Kunden$] VALUES (" + std::to_string(3 + run) +
                ", 'neu', 3.5, '2020-01-0" + std::to_string(run) + "', NULL, NULL)");
    db->Execute("UPDATE [Kunden$] SET [Name] = 'ZWEI' WHERE [Kunden$].[Nr] = 2");
    if (run == 1) db->Execute("CREATE TABLE [Neu] ([A] TEXT, [B] TEXT)");
    db->Execute("INSERT INTO [Neu] VALUES ('" + std::to_string(run) + "', 'ä')");
  }
  std::string out = Python(R"PY(
import xlrd
wb = xlrd.open_workbook("alt.xls", formatting_info=True)
sheet, *area = wb.name_map["neu"][0].area2d()
print(wb.sheet_names(), sorted(wb.name_map), sheet.name, area)
ws = wb.sheet_by_name("Kunden")
for r in range(ws.nrows):
    print(ws.row_values(r)[:4], [ws.cell_type(r, c) for c in range(4)])
fmt = lambda c: wb.format_map[wb.xf_list[c.xf_index].format_key].format_str
print(fmt(ws.cell(1, 2)), fmt(ws.cell(5, 2)), fmt(ws.cell(5, 3)))
other = wb.sheet_by_name("Meine Kunden Ä")
print(other.nrows, other.cell_value(1, 0), len(other.cell_value(2, 0)), other.merged_cells,
      other.colinfo_map[0].width)
print([wb.sheet_by_name("Neu").row_values(r) for r in range(3)])
)PY");
  EXPECT_EQ(out,
            "['Kunden', 'Meine Kunden Ä', 'Neu'] ['neu'] Neu [0, 3, 0, 2]\n"
            "['Nr', 'Name', 'Betrag', 'Seit'] [1, 1, 1, 1]\n"
            "[1.0, 'Müller', 12.5, 37621.0] [2, 1, 2, 3]\n"
            "[2.0, 'ZWEI', 7.0, 22352.0] [2, 1, 2, 3]\n"
            "['', '', '', ''] [0, 0, 0, 0]\n"
            "[3.0, '', '', ''] [2, 0, 0, 0]\n"
            "[4.0, 'neu', 3.5, 43831.0] [2, 1, 2, 3]\n"
            "[5.0, 'neu', 3.5, 43832.0] [2, 1, 2, 3]\n"
            "#,##0.00 \"€\" #,##0.00 \"€\" DD.MM.YYYY\n"
            "5 Köln 20000 [(3, 5, 0, 1)] 9000\n"
            "[['A', 'B'], ['1', 'ä'], ['2', 'ä']]\n");
  auto db = Open("alt.xls");
  EXPECT_EQ(Select(*db, "Neu"), Select(*db, "Neu$"));
  auto rs = db->Execute("SELECT [Betrag], [Seit] FROM [Kunden$] WHERE [Nr] = 5");
  EXPECT_EQ(Rows(*rs), (std::vector<std::string>{"Currency:3,5|Date:02.01.2020"}));
}

// A new workbook named .xls is written as Excel 97-2003: many strings, so
// that the shared strings run over several records, one of them longer than a
// record, umlauts, empty cells and two sheets; read back by xlrd and by the
// provider itself.
TEST_F(ExcelTest, NewXlsWorkbooksAreWrittenAsExcel97) {
  const std::string long_text = std::string(5000, 'x') + "ä" + std::string(5000, 'y');
  {
    auto db = Open("neu.xls");
    db->Execute("CREATE TABLE [Kunden] ([Nr] TEXT, [Name] TEXT, [Notiz] TEXT)");
    db->Execute("CREATE TABLE [Orte] ([Ort] TEXT)");
    for (int i = 1; i <= 1500; ++i) {
      db->Execute("INSERT INTO [Kunden$] VALUES ('" + std::to_string(i) + "', 'Müller " +
                  std::to_string(i) + "', " + (i == 700 ? "'" + long_text + "'" : "NULL") + ")");
    }
    db->Execute("INSERT INTO [Orte] VALUES ('Köln')");
  }
  std::string out = Python(R"PY(
import xlrd
wb = xlrd.open_workbook("neu.xls")
print(wb.sheet_names())
ws = wb.sheet_by_name("Kunden")
print(ws.nrows, ws.ncols, ws.row_values(0), ws.row_values(1), ws.row_values(1500))
print(len(ws.cell_value(700, 2)), ws.cell_value(700, 2)[4998:5003], ws.cell_type(1, 2))
print(wb.sheet_by_name("Orte").row_values(1))
)PY");
  EXPECT_EQ(out,
            "['Kunden', 'Orte']\n"
            "1501 3 ['Nr', 'Name', 'Notiz'] ['1', 'Müller 1', ''] ['1500', 'Müller 1500', '']\n"
            "10001 xxäyy 0\n"
            "['Köln']\n");
  auto db = Open("neu.xls");
  auto rows = Select(*db, "Kunden$");
  ASSERT_EQ(rows.size(), 1500u);
  EXPECT_EQ(rows[699], "String:700|String:Müller 700|String:" + long_text);
  EXPECT_EQ(Select(*db, "Orte$"), (std::vector<std::string>{"String:Köln"}));
}

}  // namespace
}  // namespace ketrova
