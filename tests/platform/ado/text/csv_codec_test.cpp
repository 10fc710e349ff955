#include <gtest/gtest.h>

#include <vector>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_reader.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "platform/ado/text/temp_folder.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {
namespace {

struct Row {
  std::vector<std::string> fields;
  std::vector<bool> quoted;
  std::int64_t line;
};

class CsvCodecTest : public testing::TempFolderTest {
 protected:
  std::vector<Row> ReadAll(const std::string& name, CsvDialect dialect = {}) {
    CsvReader reader(Path(name), dialect);
    CsvRecord record;
    std::vector<Row> rows;
    while (reader.Next(record)) {
      Row row{{record.fields.begin(), record.fields.begin() + record.count}, {}, record.line};
      for (std::size_t i = 0; i < record.count; ++i) row.quoted.push_back(record.quoted[i]);
      rows.push_back(row);
    }
    return rows;
  }

  // The description of the VbError that reading the file raises.
  std::string ReadError(const std::string& name) {
    try {
      ReadAll(name);
    } catch (const VbError& e) {
      EXPECT_EQ(e.Number, ado::kErrGeneral);
      return e.Description;
    }
    return "no error";
  }
};

TEST_F(CsvCodecTest, ReadsQuotedFieldsWithDelimitersQuotesAndLineBreaks) {
  Write("a.csv",
        "\xEF\xBB\xBFName;Notiz;Ort\r\n"
        "\"Müller; Hans\";\"Er sagte \"\"Grüß Gott\"\"\";Köln\r\n"
        "\"zwei\r\nZeilen\";;\"\"\r\n"
        "\r\n"
        "letzte;ohne;Umbruch");
  auto rows = ReadAll("a.csv");
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].fields, (std::vector<std::string>{"Name", "Notiz", "Ort"}));
  EXPECT_EQ(rows[1].fields,
            (std::vector<std::string>{"Müller; Hans", "Er sagte \"Grüß Gott\"", "Köln"}));
  EXPECT_EQ(rows[2].fields, (std::vector<std::string>{"zwei\r\nZeilen", "", ""}));
  // An empty field and an empty quoted field differ: the first is NULL later.
  EXPECT_EQ(rows[2].quoted, (std::vector<bool>{true, false, true}));
  EXPECT_EQ(rows[2].line, 3);
  EXPECT_EQ(rows[3].line, 6);  // the quoted break and the blank line count
  EXPECT_EQ(rows[3].fields, (std::vector<std::string>{"letzte", "ohne", "Umbruch"}));
}

TEST_F(CsvCodecTest, DecodesEachLineAsUtf8OrWindows1252) {
  // Line 2 is Windows-1252 (ä, €), line 3 UTF-8 appended later.
  Write("mixed.txt", "A;B\n\xE4rger;5 \x80\n\xC3\xA4rger;5 \xE2\x82\xAC\n");
  auto rows = ReadAll("mixed.txt");
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[1].fields, (std::vector<std::string>{"ärger", "5 €"}));
  EXPECT_EQ(rows[2].fields, rows[1].fields);
}

TEST_F(CsvCodecTest, NamesFileAndLineOfBadInput) {
  Write("bad.csv", "A;B\nx;y\nz;\x81\n");
  EXPECT_EQ(ReadError("bad.csv"), "Datei " + Path("bad.csv").string() +
                                      ", Zeile 3: Byte 0x81 ist weder UTF-8 noch Windows-1252");
  Write("open.csv", "A;B\nx;y\n\"offen;z\nw;v\n");
  EXPECT_EQ(ReadError("open.csv"), "Datei " + Path("open.csv").string() +
                                       ", Zeile 3: Anführungszeichen wird nicht geschlossen");
  EXPECT_NE(ReadError("missing.csv").find("missing.csv kann nicht gelesen werden"),
            std::string::npos);
}

TEST_F(CsvCodecTest, WrittenFieldsReadBackIdentically) {
  const std::vector<std::string> values = {
      "schlicht", "mit;Trenner", "mit \"Zitat\"", "zwei\r\nZeilen", " Rand ", "Ärger €", ""};
  std::string line;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i) line += ';';
    AppendCsvField(line, values[i], ';', values[i].empty());
  }
  EXPECT_EQ(line,
            "schlicht;\"mit;Trenner\";\"mit \"\"Zitat\"\"\";\"zwei\r\nZeilen\";\" Rand \";Ärger "
            "€;\"\"");
  Write("w.csv", line + "\r\n");
  auto rows = ReadAll("w.csv");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].fields, values);
}

TEST_F(CsvCodecTest, AppendCompletesAMissingLineBreak) {
  Write("h", "A;B");
  AppendToFile(Path("h"), "1;2\r\n", "\r\n");
  AppendToFile(Path("h"), "3;4\r\n", "\r\n");
  EXPECT_EQ(Read("h"), "A;B\r\n1;2\r\n3;4\r\n");
}

TEST_F(CsvCodecTest, FailedRewriteLeavesTheFileAsItWas) {
  Write("k.csv", "A\r\n1\r\n");
  EXPECT_THROW(RewriteFile(Path("k.csv"),
                           [](const auto& sink) {
                             sink("A\r\n");
                             throw VbError(ado::kErrGeneral, "abgebrochen");
                           }),
               VbError);
  EXPECT_EQ(Read("k.csv"), "A\r\n1\r\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_),
                          std::filesystem::directory_iterator()),
            1);  // no temporary file left behind
  RewriteFile(Path("k.csv"), [](const auto& sink) { sink("A\r\n2\r\n"); });
  EXPECT_EQ(Read("k.csv"), "A\r\n2\r\n");
}

}  // namespace
}  // namespace ketrova::file_engine
