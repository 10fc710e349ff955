// Reading Excel 97-2003 workbooks that xlwt writes.
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
for c, name in enumerate(["Nr", "Name", "Betrag", "Seit", "", "Name"]):
    ws.write(0, c, name)
ws.write(1, 0, 1); ws.write(1, 1, "Müller"); ws.write(1, 2, 12.5)
ws.write(1, 3, datetime.datetime(2002, 12, 31), datum); ws.write(1, 4, "x")
ws.write(2, 0, 2); ws.write(2, 1, "O'Neil"); ws.write(2, 2, 7)
ws.write(2, 3, datetime.datetime(1961, 3, 12), datum); ws.write(2, 5, "y" * 300)
ws.write(4, 0, 3)
ws2 = wb.add_sheet("Meine Kunden Ä")
ws2.write(0, 0, "Ort")
ws2.write(1, 0, "Köln")
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
    EXPECT_EQ(columns, (std::vector<std::string>{"Nr:5", "Name:202", "Betrag:5", "Seit:7", "F5:202",
                                                 "F6:203"}));
    EXPECT_EQ(Rows(*rs), (std::vector<std::string>{
                             "Double:1|String:Müller|Double:12,5|Date:31.12.2002|String:x|NULL",
                             "Double:2|String:O'Neil|Double:7|Date:12.03.1961|NULL|String:" +
                                 std::string(300, 'y'),
                             "Double:3|NULL|NULL|NULL|NULL|NULL"}));
    EXPECT_EQ(Select(*db, "Meine Kunden Ä$"), (std::vector<std::string>{"String:Köln"}));
  }
}

TEST_F(ExcelTest, ExistingXlsWorkbooksAreNotChangedYet) {
  Python(kXlsScript);
  const std::string original = Read("alt.xls");
  {
    auto db = Open("alt.xls");
    try {
      db->Execute("INSERT INTO [Kunden$] VALUES (4, 'vier', 1, NULL, NULL, NULL)");
      ADD_FAILURE();
    } catch (const VbError& e) {
      EXPECT_EQ(e.Description, "Die Excel-Arbeitsmappe '" + Path("alt.xls").string() +
                                   "' kann nicht geschrieben werden: vorhandene Arbeitsmappen "
                                   "im Format Excel 97-2003 (.xls) werden noch nicht geändert");
    }
  }
  EXPECT_EQ(Read("alt.xls"), original);
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
