#include <gtest/gtest.h>

#include "platform/ado/file_engine/column_types.h"
#include "platform/ado/file_engine/schema_ini.h"
#include "platform/ado/text/temp_folder.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {
namespace {

class SchemaIniTest : public testing::TempFolderTest {};

TEST_F(SchemaIniTest, WritingASectionKeepsTheOthers) {
  Write("schema.ini",
        "[a.csv]\r\nFormat=TabDelimited\r\n\r\n[B.CSV]\r\nColNameHeader=False\r\n[c.txt]\r\n"
        "Format=Delimited(|)\r\n");
  SchemaEntry entry;
  entry.file = "b.csv";
  entry.delimiter = ',';
  entry.columns = {{"Nr", ColumnType::kInteger, 0}, {"Vor Name", ColumnType::kText, 30}};
  WriteSchemaIni(folder_, entry);
  EXPECT_EQ(Read("schema.ini"),
            "[a.csv]\r\nFormat=TabDelimited\r\n\r\n"
            "[b.csv]\r\nFormat=CSVDelimited\r\nCol1=Nr Long\r\nCol2=\"Vor Name\" Text Width 30\r\n"
            "[c.txt]\r\nFormat=Delimited(|)\r\n");
  auto read = ReadSchemaIni(folder_, "B.csv");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->delimiter, ',');
  ASSERT_EQ(read->columns.size(), 2u);
  EXPECT_EQ(read->columns[1].name, "Vor Name");
  EXPECT_EQ(read->columns[1].width, 30);
  EXPECT_EQ(ReadSchemaIni(folder_, "c.txt")->delimiter, '|');
  EXPECT_FALSE(ReadSchemaIni(folder_, "d.txt"));
}

TEST_F(SchemaIniTest, UnreadableEntriesNameFileAndLine) {
  Write("schema.ini", "[a.csv]\r\nFormat=FixedLength\r\n");
  try {
    ReadSchemaIni(folder_, "a.csv");
    FAIL() << "FixedLength is not supported";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, "Datei " + Path("schema.ini").string() +
                                 ", Zeile 2: Format FixedLength wird nicht unterstützt");
  }
}

TEST(ColumnTypesTest, InferenceNeedsEveryUnquotedValueOfTheSample) {
  TypeInference inference(6);
  const char* rows[][6] = {{"1", "1,5", "31.12.2002", "01067", "True", "7"},
                           {"-20", "3", "2003-01-01 10:30", "80331", "false", "x"},
                           {"", "1e3", "", "", "", ""}};
  for (auto& row : rows) {
    for (std::size_t i = 0; i < 6; ++i) inference.Add(i, row[i], false);
  }
  inference.Add(5, "8", true);
  EXPECT_EQ(inference.Result(), (std::vector<ColumnType>{ColumnType::kInteger, ColumnType::kDouble,
                                                         ColumnType::kDateTime, ColumnType::kText,
                                                         ColumnType::kBoolean, ColumnType::kText}));
  EXPECT_TRUE(inference.DecimalComma(1));
  EXPECT_TRUE(inference.GermanDates(2));
  // A leading zero marks a code unless a schema types the column.
  EXPECT_FALSE(ParseInteger("007"));
  EXPECT_EQ(ParseInteger("007", false), 7);
  EXPECT_FALSE(ParseDateText("30.02.2003"));
  EXPECT_EQ(FormatNumber(0.1, true), "0,1");
}

TEST(ColumnTypesTest, TextLongerThan255CharactersIsAMemo) {
  // Characters count, not bytes: 255 umlauts are 510 bytes and still text.
  std::string umlauts;
  for (int i = 0; i < 255; ++i) umlauts += "ä";
  TypeInference inference(3);
  inference.Add(0, umlauts, false);
  inference.Add(1, umlauts + "x", true);
  inference.Add(2, "kurz", false);
  inference.Add(2, std::string(300, 'x'), false);
  EXPECT_EQ(inference.Result(),
            (std::vector<ColumnType>{ColumnType::kText, ColumnType::kMemo, ColumnType::kMemo}));
}

}  // namespace
}  // namespace ketrova::file_engine
