// Paradox tables written by pxlib (an independent implementation of the file
// format, through px_tool) read by the provider; tables the provider writes
// read back by pxlib and checked against the documented header layout.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/ado/connection_string.h"
#include "platform/ado/enums.h"
#include "platform/ado/providers/xbase/file_bytes.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"
#include "xbase_folder_test.h"

namespace ketrova::xbase_provider {
namespace {

constexpr const char* kColumns =
    "[Nr], [Name], [Geboren], [Anzahl], [Menge], [Preis], [Wert], [Aktiv], [Notiz], [Zeit], "
    "[Stempel], [Betrag]";
constexpr const char* kLongMemo =
    "Eine lange Notiz, die nicht in den Datensatz passt: Grüße aus Köln.";

class ParadoxTest : public XbaseFolderTest {
 protected:
  void SetUp() override {
    XbaseFolderTest::SetUp();
    Run(std::string(KETROVA_PX_TOOL) + " fixture .");
  }

  std::string Dump(const std::string& file) {
    return Run(std::string(KETROVA_PX_TOOL) + " dump '" + file + "'");
  }

  // The message reading all of `table` fails with (rows are streamed: a
  // record count the header contradicts shows at the end).
  std::string Failure(const std::string& table) {
    try {
      Rows(*Open("Paradox 5.x"), "SELECT * FROM [" + table + "]");
    } catch (const VbError& e) {
      return e.Description;
    }
    return "kein Fehler";
  }
};

TEST_F(ParadoxTest, ReadsEveryFieldTypeWithJetsTypes) {
  auto db = Open("Paradox 5.x");
  EXPECT_EQ(Rows(*db, std::string("SELECT ") + kColumns + " FROM [kunden]"),
            (std::vector<std::string>{
                "1|Müller|17.05.1970|-12|123456|19,99|-0,5|Wahr|" + std::string(kLongMemo) +
                    "|13:45:30|03.02.2001 04:05:06|-1234,56",
                "2|Null|Null|Null|Null|Null|Null|Null|Null|Null|Null|Null",
                "3|Z|28.02.1800|0|-2147483647|-0,01|1E+100|Falsch|kurz|00:00:00|Null|7,5"}));
  // The binary BLOb from its block of the .MB file, the bytes field whole.
  EXPECT_EQ(Rows(*db,
                 "SELECT length([Bild]), hex(substr([Bild], 1, 4)), hex([Kennung]) "
                 "FROM [kunden] WHERE [Nr] = 1"),
            (std::vector<std::string>{"300|00070E15|010203FF"}));

  XbaseProvider provider(
      ado::ParseConnection("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + folder_.string() +
                           ";Extended Properties=Paradox 5.x"));
  std::vector<std::string> described;
  for (const auto& c : provider.TableColumns("kunden"))
    described.push_back(c.name + " " + std::to_string(c.type) + " " +
                        std::to_string(c.definedSize) + (c.autoIncrement ? " +" : ""));
  EXPECT_EQ(described,
            (std::vector<std::string>{"Nr 3 4 +", "Name 202 20", "Geboren 7 8", "Anzahl 2 2",
                                      "Menge 3 4", "Preis 5 8", "Wert 5 8", "Aktiv 11 2",
                                      "Notiz 203 536870910", "Bild 205 1073741823", "Zeit 7 8",
                                      "Stempel 7 8", "Betrag 131 17", "Kennung 204 4"}));
}

TEST_F(ParadoxTest, RecordsComeInTheOrderOfTheBlockChain) {
  // viele.db holds records 1-145 in block 1 and 146-200 in block 2; swap the
  // blocks in the file and link them the other way round.
  std::string bytes = Read("viele.db");
  const std::size_t header = LittleEndian(bytes, 2, 2), block = bytes[5] * 1024u;
  ASSERT_EQ(bytes.size(), header + 2 * block);
  std::string first = bytes.substr(header, block), second = bytes.substr(header + block, block);
  PutLittleEndian(second, 0, 0, 2), PutLittleEndian(second, 2, 2, 2);  // now block 1: the last
  PutLittleEndian(first, 0, 1, 2), PutLittleEndian(first, 2, 0, 2);    // now block 2: the first
  bytes.replace(header, block, second);
  bytes.replace(header + block, block, first);
  PutLittleEndian(bytes, 0x0E, 2, 2), PutLittleEndian(bytes, 0x10, 1, 2);
  Write("viele.db", bytes);

  auto rows = Rows(*Open("Paradox 5.x"), "SELECT [Nr], [Text] FROM [viele]");
  ASSERT_EQ(rows.size(), 200u);
  EXPECT_EQ(rows[0], "1|Satz 1");
  EXPECT_EQ(rows[145], "146|Satz 146");
  EXPECT_EQ(rows[199], "200|Satz 200");
}

TEST_F(ParadoxTest, OlderVersionsAndTheirCodePagesAreRead) {
  // viele.db is Paradox 7: its 0x20 bytes of Paradox 4's header part, then
  // two fields' types, 12 bytes of pointers and a table name of 261 bytes.
  const std::string v7 = Read("viele.db");
  ASSERT_EQ(v7[0x39], 0x0C);
  const std::size_t name = 0x78 + 4 + 12;
  std::string v5 =
      v7.substr(0, name) + v7.substr(name, 79) + v7.substr(name + 261, 0x800 - name - 261);
  v5.resize(0x800, '\0');
  v5[0x39] = 0x0B;
  PutLittleEndian(v5, 0x6A, 850, 2);
  std::string v3 = v5.substr(0, 0x58) + v5.substr(0x78);
  v3.resize(0x800, '\0');
  v3[0x39] = 0x03;                  // no code page: DOS's 437
  PutLittleEndian(v3, 0x25, 0, 4);  // not encrypted, as Paradox 3 says it
  for (auto* table : {&v5, &v3}) {
    *table += v7.substr(0x800);
    (*table)[0x800 + 6 + 4 + 1] = '\x81';  // "ü" in both code pages
  }
  Write("fuenf.db", v5);
  Write("drei.db", v3);
  auto db = Open("Paradox 5.x");
  for (const char* table : {"fuenf", "drei"}) {
    EXPECT_EQ(
        Rows(*db, std::string("SELECT [Nr], [Text] FROM [") + table + "] WHERE [Nr] IN (1, 200)"),
        (std::vector<std::string>{"1|Sütz 1", "200|Satz 200"}))
        << table;
  }
}

TEST_F(ParadoxTest, ChangedRowsAreWrittenForPxlibAndBackForUs) {
  const std::string memo(300, 'x');
  {
    auto db = Open("Paradox 5.x");
    db->Execute(
        "UPDATE [kunden] SET [Name] = 'Schmidt', [Menge] = -5, [Betrag] = 99.25 "
        "WHERE [Nr] = 3");
    db->Execute("DELETE FROM [kunden] WHERE [Nr] = 2");
    db->Execute(
        "INSERT INTO [kunden] ([Nr], [Name], [Notiz], [Stempel], [Zeit], [Aktiv]) "
        "VALUES (4, 'Öztürk', '" +
        memo +
        "', '2024-02-29 12:00:00', "
        "'1899-12-30 08:15:00', 1)");
    // Values that do not fit are refused at the statement.
    for (const char* bad :
         {"UPDATE [kunden] SET [Name] = 'einundzwanzig Zeichen!'",
          "UPDATE [kunden] SET [Anzahl] = 40000", "UPDATE [kunden] SET [Betrag] = 1.125",
          "UPDATE [kunden] SET [Geboren] = '2020-01-01 10:00:00'"}) {
      EXPECT_THROW(db->Execute(bad), VbError) << bad;
    }
    db->Flush();
  }
  // pxlib shows a Null whole number or date as -2147483648 and a Null float as
  // 0, and BLObs of the .MB file as empty (it does not read them here).
  EXPECT_EQ(
      Dump("kunden.db"),
      "records 3, fields 14, blocks 1\n"
      "1|Müller|719299|-12|123456|19.99|-0.5|1||0 bytes|49530000|63116856306000|-1234.56|"
      "4 bytes\n"
      "3|Schmidt|657130|0|-5|-0.01|1e+100|0|kurz|Null|0|0|99.25|Null\n"
      "4|Öztürk|-2147483648|Null|-2147483648|0|0|1||Null|29700000|63844891200000|Null|Null\n");
  auto db = Open("Paradox 5.x");
  EXPECT_EQ(
      Rows(*db, "SELECT [Nr], [Notiz], length([Bild]), [Stempel] FROM [kunden]"),
      (std::vector<std::string>{"1|" + std::string(kLongMemo) + "|300|03.02.2001 04:05:06",
                                "3|kurz|Null|Null", "4|" + memo + "|Null|29.02.2024 12:00:00"}));
}

TEST_F(ParadoxTest, KeyedTableIsWrittenInKeyOrderWithItsIndexMarkedOutOfDate) {
  std::string bytes = Read("kunden.db");
  bytes[4] = 0;                        // keyed
  PutLittleEndian(bytes, 0x23, 1, 2);  // on the first field
  Write("kunden.db", bytes);
  {
    auto db = Open("Paradox 5.x");
    db->Execute("INSERT INTO [kunden] ([Nr], [Name]) VALUES (10, 'zehn')");
    db->Execute("INSERT INTO [kunden] ([Nr], [Name]) VALUES (0, 'null')");
    // Left out, the autoincrement field counts on from the highest number.
    db->Execute("INSERT INTO [kunden] ([Name]) VALUES ('elf')");
  }
  std::string written = Read("kunden.db");
  EXPECT_EQ(LittleEndian(written, 0x06, 4), 6u);   // records
  EXPECT_EQ(LittleEndian(written, 0x49, 4), 11u);  // autoincrement
  EXPECT_EQ(written[0x2D], bytes[0x2D] + 1);       // change counter
  EXPECT_EQ(written[0x4F], 1);                     // index update required
  EXPECT_EQ(Rows(*Open("Paradox 5.x"), "SELECT [Nr] FROM [kunden]"),
            (std::vector<std::string>{"0", "1", "2", "3", "10", "11"}));
}

TEST_F(ParadoxTest, NewTableFollowsTheDocumentedLayout) {
  {
    auto db = Open("Paradox 5.x");
    db->Execute(
        "CREATE TABLE [Neu.Liste] ([Nr] INTEGER, [Name] TEXT(20), [Betrag] DOUBLE, "
        "[Seit] DATETIME, [Notiz] MEMO, [Aktiv] BIT, [Geld] CURRENCY, [Text] TEXT)");
    db->Execute(
        "INSERT INTO [Neu.Liste] ([Nr], [Name], [Betrag], [Seit], [Notiz], [Aktiv], "
        "[Geld], [Text]) VALUES (1, 'Bäcker', 2.5, '2001-02-03 04:05:06', 'kurz', 0, "
        "19.99, 'ß')");
    db->Execute("INSERT INTO [Neu.Liste] ([Nr], [Name]) VALUES (-7, 'Öl')");
    EXPECT_THROW(
        db->Execute("INSERT INTO [Neu.Liste] ([Name]) VALUES ('" + std::string(21, 'x') + "')"),
        VbError);
  }
  const std::string h = Read("Neu_Liste.db");
  EXPECT_EQ(LittleEndian(h, 0x00, 2), 4u + 20 + 8 + 8 + 20 + 1 + 8 + 255);  // record size
  EXPECT_EQ(LittleEndian(h, 0x02, 2), 0x800u);                              // header size
  EXPECT_EQ(h[0x04], 2);                                                    // table without key
  EXPECT_EQ(h[0x05], 2);                                                    // 2 KB blocks
  EXPECT_EQ(LittleEndian(h, 0x06, 4), 2u);                                  // records
  EXPECT_EQ(LittleEndian(h, 0x0C, 2), 1u);                                  // blocks
  EXPECT_EQ(LittleEndian(h, 0x0E, 2), 1u);                                  // first block
  EXPECT_EQ(LittleEndian(h, 0x10, 2), 1u);                                  // last block
  EXPECT_EQ(LittleEndian(h, 0x21, 2), 8u);                                  // fields
  EXPECT_EQ(LittleEndian(h, 0x25, 4), 0xFF00FF00u);                         // not encrypted
  EXPECT_EQ(h[0x39], 0x0C);                                                 // Paradox 7
  EXPECT_EQ(LittleEndian(h, 0x6A, 2), 1252u);                               // code page
  EXPECT_EQ(h.substr(0x78, 16), std::string("\x04\x04\x01\x14\x06\x08\x15\x08\x0C\x14\x09\x01"
                                            "\x05\x08\x01\xFF",
                                            16));
  EXPECT_EQ(h.size(), 0x800u + 2048);
  EXPECT_EQ(Dump("Neu_Liste.db"),
            "records 2, fields 8, blocks 1\n"
            "1|Bäcker|2.5|63116856306000|kurz|0|19.99|ß\n"
            "-7|Öl|0|0|Null|Null|0|Null\n");
  EXPECT_EQ(Rows(*Open("Paradox 5.x"), "SELECT * FROM [Neu.Liste]"),
            (std::vector<std::string>{"1|Bäcker|2,5|03.02.2001 04:05:06|kurz|Falsch|19,99|ß",
                                      "-7|Öl|Null|Null|Null|Null|Null|Null"}));
}

TEST_F(ParadoxTest, DamagedFilesFailNamingTheFileAndStayUntouched) {
  const std::string good = Read("kunden.db");
  const std::string prefix = "Die Paradox-Datei '" + Path("kunden.db").string() + "' ";
  auto expect = [&](const std::string& bytes, const std::string& what) {
    Write("kunden.db", bytes);
    EXPECT_EQ(Failure("kunden"), prefix + what);
    EXPECT_EQ(Read("kunden.db"), bytes);
  };
  expect(good.substr(0, 0x800 + 100), "ist abgeschnitten (Block 1)");
  expect(good.substr(0, 0x40), "ist zu kurz für einen Paradox-Kopf");
  std::string bytes = good;
  PutLittleEndian(bytes, 0x06, 5, 4);
  expect(bytes, "enthält 3 Datensätze, ihr Kopf nennt 5");
  bytes = good;
  bytes[0x78] = 0x30;
  expect(bytes, "hat im Feld 'Nr' den unbekannten Feldtyp 48");
  bytes = good;
  bytes[0x04] = 1;
  expect(bytes, "ist keine Paradox-Tabelle (Dateityp 1)");
  bytes = good;
  PutLittleEndian(bytes, 0x5C, 0x12345678, 4);
  expect(bytes, "ist mit einem Kennwort verschlüsselt");
  bytes = good;
  PutLittleEndian(bytes, 0x0E, 7, 2);
  expect(bytes, "hat eine beschädigte Blockkette (Block 7)");
  Write("kunden.db", good);
  std::filesystem::remove(Path("kunden.mb"));
  expect(good, "verweist auf eine BLOb-Datei (.MB), die fehlt");
}

}  // namespace
}  // namespace ketrova::xbase_provider
