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

TEST_F(ExcelTest, XlsWorkbooksAreNotWrittenYetAndStayAsTheyWere) {
  Python(kXlsScript);
  const std::string original = Read("alt.xls");
  {
    auto db = Open("alt.xls");
    try {
      db->Execute("INSERT INTO [Kunden$] VALUES (4, 'vier', 1, NULL, NULL, NULL)");
      ADD_FAILURE();
    } catch (const VbError& e) {
      EXPECT_EQ(e.Description, "Die Excel-Arbeitsmappe '" + Path("alt.xls").string() +
                                   "' kann nicht geschrieben werden: das Format Excel 97-2003 "
                                   "(.xls) wird noch nicht geschrieben");
    }
  }
  EXPECT_EQ(Read("alt.xls"), original);
}

}  // namespace
}  // namespace ketrova
