// Reading .xlsx workbooks that openpyxl writes, and parts it cannot write
// (inline and rich strings, cached formula values) written with zipfile.
#include <gtest/gtest.h>

#include "excel_test_support.h"
#include "platform/ado/adox/catalog.h"
#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

using testing::ExcelTest;

// Every cell kind openpyxl writes: numbers, text, a currency format, dates in
// a date format, booleans, a long text, a mixed column, a blank and a
// repeated header, an empty row inside the data, merged cells, sheets with
// blanks, umlauts and "$" in their names, a defined name and a print area.
constexpr const char* kKundenScript = R"PY(
import datetime, openpyxl
from openpyxl.workbook.defined_name import DefinedName
wb = openpyxl.Workbook()
ws = wb.active
ws.title = "Kunden"
ws.append(["Nr", "Name", "Betrag", "Seit", "Aktiv", "Notiz", "Gemischt", None, "Name", "Nr."])
ws.append([1, "Müller", 12.5, datetime.datetime(2002, 12, 31), True, "x" * 300, 1, "a", "b", 7])
ws.append([2, "O'Neil", 7, datetime.datetime(1961, 3, 12, 10, 30), False, "kurz", "zwei", None, None, 8])
ws.append([])
ws.append([3, None, -1.25, None, None, None, None, None, None, 9])
for row in range(2, 6):
    ws.cell(row=row, column=3).number_format = '#,##0.00 "€"'
    ws.cell(row=row, column=4).number_format = 'DD.MM.YYYY hh:mm'
ws2 = wb.create_sheet("Meine Kunden$ Ä")
ws2.append(["Ort", "PLZ"])
ws2.append(["Köln", 50667])
ws2.append(["Aachen", 52062])
ws2.append(["Bonn", 53111])
ws2.merge_cells("A6:B6")
ws2["A6"] = "zusammen"
wb.create_sheet("Leer")
wb.defined_names.append(DefinedName("Bereich", attr_text="'Meine Kunden$ Ä'!$A$1:$B$3"))
ws.print_area = "A1:C3"
wb.save("kunden.xlsx")
)PY";

TEST_F(ExcelTest, ListsSheetsAndDefinedNamesAsTables) {
  Python(kKundenScript);
  auto db = Open("kunden.xlsx");
  adox::Catalog catalog;
  auto rs = db->OpenSchema(ado::adSchemaTables);
  std::vector<std::string> tables;
  for (; !rs->Eof(); rs->MoveNext()) {
    tables.push_back(rs->GetFields().Item("TABLE_NAME").Value().ToText() + ":" +
                     rs->GetFields().Item("TABLE_TYPE").Value().ToText());
  }
  // A password follows the string's own closing ";"; a workbook that is not
  // encrypted opens with it all the same.
  auto with_password = std::make_shared<ado::Connection>();
  with_password->Open(ConnectionString(Path("kunden.xlsx")) + ";PWD=geheim");
  EXPECT_EQ(Select(*with_password, "Meine Kunden$ Ä$").size(), 4u);
  EXPECT_EQ(tables, (std::vector<std::string>{"Bereich:TABLE", "Kunden$:TABLE", "Leer$:TABLE",
                                              "Meine Kunden$ Ä$:TABLE"}));
}

TEST_F(ExcelTest, ColumnsTakeTheDriversNamesTypesAndSizes) {
  Python(kKundenScript);
  auto db = Open("kunden.xlsx");
  auto rs = db->Execute(" SELECT *  FROM [Kunden$]");
  std::vector<std::string> columns;
  for (std::int32_t i = 0; i < rs->GetFields().Count(); ++i) {
    auto& f = rs->GetFields().Item(i);
    columns.push_back(f.Name() + ":" + std::to_string(f.Type()) + ":" +
                      std::to_string(f.DefinedSize()));
  }
  EXPECT_EQ(columns, (std::vector<std::string>{"Nr:5:8", "Name:202:255", "Betrag:6:8", "Seit:7:8",
                                               "Aktiv:11:2", "Notiz:203:65535", "Gemischt:202:255",
                                               "F8:202:255", "F9:202:255", "Nr#:5:8"}));
}

TEST_F(ExcelTest, ReadsEveryCellKindAndPassesOverEmptyRows) {
  Python(kKundenScript);
  auto db = Open("kunden.xlsx");
  auto rows = Select(*db, "Kunden$");
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0], "Double:1|String:Müller|Currency:12,5|Date:31.12.2002|Boolean:Wahr|String:" +
                         std::string(300, 'x') + "|String:1|String:a|String:b|Double:7");
  EXPECT_EQ(rows[1],
            "Double:2|String:O'Neil|Currency:7|Date:12.03.1961 10:30:00|Boolean:Falsch|"
            "String:kurz|String:zwei|NULL|NULL|Double:8");
  EXPECT_EQ(rows[2], "Double:3|NULL|Currency:-1,25|NULL|NULL|NULL|NULL|NULL|NULL|Double:9");
}

TEST_F(ExcelTest, NamesWithBlanksUmlautsAndDollarsResolveWithOrWithoutQuotes) {
  Python(kKundenScript);
  auto db = Open("kunden.xlsx");
  auto sheet = Select(*db, "Meine Kunden$ Ä$");
  EXPECT_EQ(sheet,
            (std::vector<std::string>{"String:Köln|Double:50667", "String:Aachen|Double:52062",
                                      "String:Bonn|Double:53111", "String:zusammen|NULL"}));
  EXPECT_EQ(Select(*db, "'Meine Kunden$ Ä$'"), sheet);
  EXPECT_EQ(Select(*db, "meine kunden$ ä$").size(), 4u);
  // The defined name covers the header and two rows.
  EXPECT_EQ(Select(*db, "Bereich"),
            (std::vector<std::string>{"String:Köln|Double:50667", "String:Aachen|Double:52062"}));
  // An empty sheet is one column without rows.
  auto rs = db->Execute(" SELECT *  FROM [Leer$]");
  EXPECT_EQ(rs->GetFields().Count(), 1);
  EXPECT_EQ(rs->GetFields().Item(0).Name(), "F1");
  EXPECT_TRUE(rs->Eof());
}

TEST_F(ExcelTest, FiltersAndCountsRunOnTheSqlEngine) {
  Python(kKundenScript);
  auto db = Open("kunden.xlsx");
  auto rs = db->Execute("SELECT COUNT(*) FROM [Kunden$] WHERE [Kunden$].[Betrag] > 0");
  EXPECT_EQ(rs->GetFields().Item(0).Value().ToLong(), 2);
  rs = db->Execute("SELECT [Name] FROM [Kunden$] WHERE [Seit] >= #01/01/2000#");
  EXPECT_EQ(Rows(*rs), (std::vector<std::string>{"String:Müller"}));
}

TEST_F(ExcelTest, DatesFollowTheWorkbooksDateSystem) {
  Python(R"PY(
import datetime, openpyxl
from openpyxl.utils.datetime import CALENDAR_MAC_1904
for name, epoch in (("mac.xlsx", CALENDAR_MAC_1904), ("win.xlsx", None)):
    wb = openpyxl.Workbook()
    if epoch:
        wb.epoch = epoch
    ws = wb.active
    ws.title = "Daten"
    ws.append(["Tag"])
    ws.append([datetime.datetime(2020, 2, 29)])
    ws.append([datetime.datetime(1900, 1, 15)]) if not epoch else ws.append([datetime.datetime(1904, 1, 2)])
    for row in (2, 3):
        ws.cell(row=row, column=1).number_format = "yyyy-mm-dd"
    wb.save(name)
)PY");
  EXPECT_EQ(Select(*Open("mac.xlsx"), "Daten$"),
            (std::vector<std::string>{"Date:29.02.2020", "Date:02.01.1904"}));
  EXPECT_EQ(Select(*Open("win.xlsx"), "Daten$"),
            (std::vector<std::string>{"Date:29.02.2020", "Date:15.01.1900"}));
}

// Inline strings, rich text in the shared strings (with a phonetic run that is
// not part of the text), formulas with cached values of each kind, an error,
// element names with a namespace prefix and cells without references.
TEST_F(ExcelTest, ReadsInlineAndRichStringsAndCachedFormulaValues) {
  Python(R"PY(
import zipfile
ns = 'xmlns:x="http://schemas.openxmlformats.org/spreadsheetml/2006/main" xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"'
sheet = ('<?xml version="1.0" encoding="UTF-8"?><x:worksheet ' + ns + '><x:sheetData>'
  '<x:row r="1"><x:c r="A1" t="s"><x:v>0</x:v></x:c><x:c t="inlineStr"><x:is><x:t>Wert</x:t></x:is></x:c></x:row>'
  '<x:row r="2"><x:c r="A2" t="s"><x:v>1</x:v></x:c><x:c r="B2"><x:f>1+1</x:f><x:v>2</x:v></x:c></x:row>'
  '<x:row r="3"><x:c r="A3" t="inlineStr"><x:is><x:r><x:t xml:space="preserve">Teil </x:t></x:r><x:r><x:t>zwei_x000D_</x:t></x:r></x:is></x:c><x:c r="B3" t="e"><x:f>1/0</x:f><x:v>#DIV/0!</x:v></x:c></x:row>'
  '<x:row r="4"><x:c r="A4" t="str"><x:f>"a"&amp;"b"</x:f><x:v>ab</x:v></x:c><x:c r="B4"><x:v>2.5E-3</x:v></x:c></x:row>'
  '</x:sheetData></x:worksheet>')
sst = ('<?xml version="1.0" encoding="UTF-8"?><sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">'
  '<si><t>Text</t></si>'
  '<si><r><rPr><b/></rPr><t>fett</t></r><r><t xml:space="preserve"> und normal</t></r><rPh sb="0" eb="1"><t>FU</t></rPh></si></sst>')
book = ('<?xml version="1.0" encoding="UTF-8"?><x:workbook ' + ns + '><x:sheets>'
  '<x:sheet name="Roh" sheetId="1" r:id="rId1"/></x:sheets></x:workbook>')
rels = ('<?xml version="1.0" encoding="UTF-8"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
  '<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="sheets/roh.xml"/>'
  '<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings" Target="/xl/strings.xml"/>'
  '</Relationships>')
root = ('<?xml version="1.0" encoding="UTF-8"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
  '<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/book.xml"/>'
  '</Relationships>')
types = ('<?xml version="1.0" encoding="UTF-8"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
  '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
  '<Default Extension="xml" ContentType="application/xml"/></Types>')
with zipfile.ZipFile("roh.xlsx", "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("[Content_Types].xml", types)
    z.writestr("_rels/.rels", root)
    z.writestr("xl/book.xml", book)
    z.writestr("xl/_rels/book.xml.rels", rels)
    z.writestr("xl/sheets/roh.xml", sheet)
    z.writestr("xl/strings.xml", sst)
)PY");
  auto db = Open("roh.xlsx");
  auto rs = db->Execute(" SELECT *  FROM [Roh$]");
  EXPECT_EQ(rs->GetFields().Item(0).Name(), "Text");
  EXPECT_EQ(rs->GetFields().Item(1).Name(), "Wert");
  // An error value does not make a column text; it reads as its text.
  EXPECT_EQ(Rows(*rs), (std::vector<std::string>{"String:fett und normal|Double:2",
                                                 "String:Teil zwei\r|String:#DIV/0!",
                                                 "String:ab|Double:0,0025"}));
}

// Writers do not always keep the recorded used range true: cells outside it,
// in rows below those the types are taken from, are read all the same.
TEST_F(ExcelTest, ReadsCellsOutsideTheRecordedUsedRange) {
  Python(R"PY(
import openpyxl, re, zipfile
wb = openpyxl.Workbook()
ws = wb.active
ws.title = "Kurz"
ws.append(["Nr", "Name"])
for i in range(1, 41):
    ws.append([i, "n%d" % i])
ws["D41"] = "weit draußen"
ws["B60"] = "tief unten"
wb.save("lang.xlsx")
with zipfile.ZipFile("lang.xlsx") as z:
    parts = {n: z.read(n) for n in z.namelist()}
sheet = "xl/worksheets/sheet1.xml"
parts[sheet] = re.sub(rb'<dimension ref="[^"]*"/>', b'<dimension ref="A1:B3"/>', parts[sheet])
assert b'ref="A1:B3"' in parts[sheet]
with zipfile.ZipFile("lang.xlsx", "w", zipfile.ZIP_DEFLATED) as z:
    for n, data in parts.items():
        z.writestr(n, data)
)PY");
  auto db = Open("lang.xlsx");
  auto rs = db->Execute(" SELECT *  FROM [Kurz$]");
  ASSERT_EQ(rs->GetFields().Count(), 4);
  EXPECT_EQ(rs->GetFields().Item(3).Name(), "F4");
  auto rows = Rows(*rs);
  ASSERT_EQ(rows.size(), 41u);
  EXPECT_EQ(rows[39], "Double:40|String:n40|NULL|String:weit draußen");
  EXPECT_EQ(rows[40], "NULL|String:tief unten|NULL|NULL");
}

TEST_F(ExcelTest, BadFilesGiveGermanErrorsNamingThem) {
  auto message = [&](const std::string& name) {
    try {
      Open(name);
    } catch (const VbError& e) {
      EXPECT_LT(e.Number, 0);
      return e.Description;
    }
    return std::string("kein Fehler");
  };
  Write("text.xlsx", "Nr;Name\r\n1;a\r\n");
  EXPECT_EQ(message("text.xlsx"),
            "Die Datei '" + Path("text.xlsx").string() + "' ist keine Excel-Arbeitsmappe");
  // A zip that is no workbook.
  Python("import zipfile\nwith zipfile.ZipFile('leer.xlsx', 'w') as z: z.writestr('a.txt', 'a')\n");
  EXPECT_EQ(message("leer.xlsx"), "Die Datei '" + Path("leer.xlsx").string() +
                                      "' ist keine lesbare Excel-Arbeitsmappe (workbook)");
  // An encrypted package: a compound document with an EncryptedPackage stream.
  std::string cfb("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  cfb.resize(512, '\0');
  for (char c : std::string("EncryptedPackage")) cfb += std::string{c, '\0'};
  cfb.resize(2048, '\0');
  Write("geheim.xlsx", cfb);
  EXPECT_EQ(message("geheim.xlsx"),
            "Die Excel-Arbeitsmappe '" + Path("geheim.xlsx").string() +
                "' ist mit einem Kennwort verschlüsselt und kann nicht gelesen werden");
  // A missing source opens (it may be a target yet to be made); reading it
  // names the file.
  auto db = Open("fehlt.xlsx");
  try {
    db->Execute(" SELECT *  FROM [Kunden$]");
    ADD_FAILURE();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description,
              "Die Excel-Datei '" + Path("fehlt.xlsx").string() + "' wurde nicht gefunden");
  }
}

}  // namespace
}  // namespace ketrova
