#include "platform/ado/file_engine/file_engine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/ado/enums.h"
#include "platform/ado/providers/text/text_names.h"
#include "platform/ado/text/temp_folder.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {
namespace {

class FileEngineTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    engine_ = std::make_unique<FileEngine>(
        [this](const std::string& name) -> std::optional<TableSource> {
          auto file = text_provider::ResolveTextFile(folder_, name);
          if (!file) return std::nullopt;
          return TableSource{"ketrova_csv", {file->string()}};
        },
        "Ketrova.Text");
  }

  // Rows as text, each value marked with its SQLite type: i: r: t: or NULL.
  std::vector<std::vector<std::string>> Query(const std::string& sql) {
    auto stmt = engine_->Prepare(sql);
    std::vector<std::vector<std::string>> rows;
    while (stmt->Step()) {
      std::vector<std::string> row;
      for (int i = 0; i < sqlite3_column_count(stmt->handle()); ++i) {
        auto* h = stmt->handle();
        switch (sqlite3_column_type(h, i)) {
          case SQLITE_NULL:
            row.push_back("NULL");
            break;
          case SQLITE_INTEGER:
            row.push_back("i:" + std::to_string(sqlite3_column_int64(h, i)));
            break;
          case SQLITE_FLOAT: {
            char buf[32];
            std::snprintf(buf, sizeof buf, "r:%g", sqlite3_column_double(h, i));
            row.push_back(buf);
            break;
          }
          default:
            row.push_back(std::string("t:") +
                          reinterpret_cast<const char*>(sqlite3_column_text(h, i)));
        }
      }
      rows.push_back(row);
    }
    return rows;
  }

  std::int64_t Count(const std::string& sql) {
    return std::stoll(Query(sql).at(0).at(0).substr(2));
  }

  VbError ErrorOf(const std::string& sql) {
    try {
      Query(sql);
    } catch (const VbError& e) {
      return e;
    }
    return VbError(0, "no error");
  }

  // The text-driver forms for a table of this folder.
  std::string From(const std::string& name, const std::string& alias) const {
    return " FROM     `" + folder_.string() + "`\\" + name + ".TXT    " + alias;
  }

  std::unique_ptr<FileEngine> engine_;
};

using Rows = std::vector<std::vector<std::string>>;

TEST_F(FileEngineTest, ReadsCountsAndFiltersThroughTheTextForms) {
  Write("Kunden.csv",
        "Nr;Name;Umsatz;Seit;PLZ\r\n"
        "1;Müller;12,5;31.12.2002;01067\r\n"
        "2;\"Grün; Söhne\";7.25;2003-01-15;80331\r\n"
        "3;;;;\r\n"
        "4;\"\";100;2001-05-01 08:30;50667\r\n");
  EXPECT_EQ(
      Query(" SELECT \r\n\t\"Nr\",\r\n\t\"Name\",\r\n\t\"Umsatz\",\r\n\t\"Seit\",\r\n\t\"PLZ\""
            "\r\n\r\n" +
            From("Kunden.csv", "Kunden")),
      (Rows{{"i:1", "t:Müller", "r:12.5", "t:2002-12-31", "t:01067"},
            {"i:2", "t:Grün; Söhne", "r:7.25", "t:2003-01-15", "t:80331"},
            {"i:3", "NULL", "NULL", "NULL", "NULL"},
            {"i:4", "t:", "r:100", "t:2001-05-01 08:30:00", "t:50667"}}));
  EXPECT_EQ(Count(" SELECT COUNT(*)\r\n" + From("Kunden.csv", "Kunden")), 4);
  // Filters as the system writes them: apostrophe names, two blanks, CR LF.
  EXPECT_EQ(Query(" SELECT * " + From("Kunden.csv", "Kunden") +
                  " WHERE ('Name'  LIKE '%Grün%'\r\n OR 'Umsatz'  > 50\r\n)"),
            (Rows{{"i:2", "t:Grün; Söhne", "r:7.25", "t:2003-01-15", "t:80331"},
                  {"i:4", "t:", "r:100", "t:2001-05-01 08:30:00", "t:50667"}}));
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [Kunden.csv] WHERE [Seit] > #12/31/2002#"), 1);
  EXPECT_EQ(Query("SELECT * FROM 'Kunden.csv' WHERE  'Kunden.csv'.'Nr' = 3"),
            (Rows{{"i:3", "NULL", "NULL", "NULL", "NULL"}}));
}

TEST_F(FileEngineTest, InsertedRowsReadBackIdentically) {
  Write("Ziel", "Nr;Text;Wert;Datum");  // a header file as table creation writes it
  auto insert = [&](auto... values) {
    auto stmt = engine_->Prepare("INSERT INTO \"Ziel\" VALUES (?, ?, ?, ?)");
    int i = 0;
    (
        [&](const auto& v) {
          ++i;
          using T = std::decay_t<decltype(v)>;
          if constexpr (std::is_same_v<T, std::nullptr_t>) {
            sqlite3_bind_null(stmt->handle(), i);
          } else if constexpr (std::is_same_v<T, int>) {
            sqlite3_bind_int(stmt->handle(), i, v);
          } else if constexpr (std::is_same_v<T, double>) {
            sqlite3_bind_double(stmt->handle(), i, v);
          } else {
            sqlite3_bind_text(stmt->handle(), i, v, -1, SQLITE_TRANSIENT);
          }
        }(values),
        ...);
    EXPECT_FALSE(stmt->Step());
  };
  insert(1, "123", 2.5, "2002-12-31");
  insert(2, "mit;Trenner \"und\" Zitat", nullptr, nullptr);
  insert(3, "zwei\r\nZeilen", -0.125, "2003-01-01 10:00:00");
  insert(4, "", 1e20, "Ärger");
  EXPECT_EQ(Read("Ziel"),
            "Nr;Text;Wert;Datum\r\n"
            "1;123;2.5;2002-12-31\r\n"
            "2;\"mit;Trenner \"\"und\"\" Zitat\";;\r\n"
            "3;\"zwei\r\nZeilen\";-0.125;2003-01-01 10:00:00\r\n"
            "4;\"\";1e+20;Ärger\r\n");
  const Rows expected{{"i:1", "t:123", "r:2.5", "t:2002-12-31"},
                      {"i:2", "t:mit;Trenner \"und\" Zitat", "NULL", "NULL"},
                      {"i:3", "t:zwei\r\nZeilen", "r:-0.125", "t:2003-01-01 10:00:00"},
                      {"i:4", "t:", "r:1e+20", "t:Ärger"}};
  // The connection keeps the table's Text columns; a new one infers the types
  // from the rows written.
  engine_ = std::make_unique<FileEngine>(
      [this](const std::string& name) -> std::optional<TableSource> {
        return TableSource{"ketrova_csv",
                           {text_provider::ResolveTextFile(folder_, name)->string()}};
      },
      "Ketrova.Text");
  EXPECT_EQ(Query("SELECT * FROM Ziel"), expected);
}

TEST_F(FileEngineTest, DeleteAndUpdateRewriteOnlyTheirLines) {
  // Line 3 is Windows-1252 and must keep its bytes; the file has LF breaks.
  Write("a.txt", "Nr;Name\n1;eins\n2;\xE4rger\n3;\"drei\nzeilig\"\n4;vier\n");
  EXPECT_EQ(engine_->Execute("DELETE FROM  `" + folder_.string() +
                             "`\\a.txt.TXT WHERE ('Nr'  = 1\r\n OR 'Nr'  = 3\r\n)"),
            2);
  EXPECT_EQ(Read("a.txt"), "Nr;Name\n2;\xE4rger\n4;vier\n");
  EXPECT_EQ(engine_->Execute("UPDATE \"a.txt\" SET Name = 'Vier; neu' WHERE Nr = 4"), 1);
  EXPECT_EQ(engine_->Execute("INSERT INTO \"a.txt\" VALUES (5, 'fünf')"), 1);
  EXPECT_EQ(Read("a.txt"), "Nr;Name\n2;\xE4rger\n4;\"Vier; neu\"\n5;fünf\n");
  EXPECT_EQ(engine_->Execute("DELETE FROM  `" + folder_.string() + "`\\a.txt.TXT"), 3);
  EXPECT_EQ(Read("a.txt"), "Nr;Name\n");
}

TEST_F(FileEngineTest, AppendedValuesFollowTheStyleOfTheirColumn) {
  Write("de.csv", "Betrag;Datum;Wert\r\n12,5;31.12.2002;1.5\r\n");
  engine_->Execute("INSERT INTO [de.csv] VALUES (0.25, '2003-01-02 10:30:00', 0.25)");
  EXPECT_EQ(Read("de.csv"),
            "Betrag;Datum;Wert\r\n12,5;31.12.2002;1.5\r\n0,25;02.01.2003 10:30:00;0.25\r\n");
}

TEST_F(FileEngineTest, AWriteReachesTheFileWhileAReadIsOpen) {
  Write("k.csv", "A\r\n1\r\n2\r\n");
  auto reading = engine_->Prepare("SELECT A FROM [k.csv]");
  ASSERT_TRUE(reading->Step());
  EXPECT_EQ(engine_->Execute("INSERT INTO [k.csv] VALUES (3)"), 1);
  EXPECT_EQ(Read("k.csv"), "A\r\n1\r\n2\r\n3\r\n");
}

TEST_F(FileEngineTest, LikeIgnoresCaseOfUmlautsToo) {
  Write("n.csv", "Name\r\nMÜLLER\r\nmüller\r\nMueller\r\nÆrø_x\r\n");
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [n.csv] WHERE ('Name'  LIKE '%üll%'\r\n)"), 2);
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [n.csv] WHERE Name LIKE 'm_ller'"), 2);
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [n.csv] WHERE Name LIKE '%RØ!_%' ESCAPE '!'"), 1);
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [n.csv] WHERE ('Name'  NOT LIKE '%ue%'\r\n)"), 3);
}

TEST_F(FileEngineTest, AScanDoesNotReadLinesAppendedDuringIt) {
  // A job whose source and target are the same file, on two connections.
  Write("k.csv", "A\r\n1\r\n2\r\n");
  FileEngine target(
      [this](const std::string& name) -> std::optional<TableSource> {
        return TableSource{"ketrova_csv",
                           {text_provider::ResolveTextFile(folder_, name)->string()}};
      },
      "Ketrova.Text");
  auto source = engine_->Prepare("SELECT A FROM [k.csv]");
  int rows = 0;
  while (source->Step() && rows < 10) {
    target.Execute("INSERT INTO [k.csv] VALUES (" + std::to_string(++rows + 10) + ")");
  }
  EXPECT_EQ(rows, 2);
  EXPECT_EQ(Read("k.csv"), "A\r\n1\r\n2\r\n11\r\n12\r\n");
}

TEST_F(FileEngineTest, AStatementMayOutliveItsEngine) {
  Write("k.csv", "A\r\n1\r\n");
  auto statement = engine_->Prepare("SELECT A FROM [k.csv]");
  ASSERT_TRUE(statement->Step());
  engine_.reset();
  statement.reset();  // finalizes itself, which completes the engine's close
}

TEST_F(FileEngineTest, TenThousandLines) {
  Write("gross.csv", "Nr;Name;Wert\r\n");
  for (int i = 1; i <= 10000; ++i) {
    engine_->Execute("INSERT INTO [gross.csv] VALUES (" + std::to_string(i) + ", 'Zeile ' || " +
                     std::to_string(i) + ", " + std::to_string(i) + " * 0.5)");
  }
  const std::string from = From("gross.csv", "gross");
  EXPECT_EQ(Count(" SELECT COUNT(*)\r\n" + from), 10000);
  EXPECT_EQ(Count(" SELECT COUNT(*)\r\n" + from + " WHERE ('Name'  LIKE '%99%'\r\n)"), 280);
  EXPECT_EQ(Query(" SELECT SUM(Nr), MAX(Wert) " + from), (Rows{{"i:50005000", "r:5000"}}));
  EXPECT_EQ(engine_->Execute("DELETE FROM  `" + folder_.string() +
                             "`\\gross.csv.TXT WHERE ('Nr'  > 5000\r\n)"),
            5000);
  EXPECT_EQ(Count(" SELECT COUNT(*)\r\n" + from), 5000);
}

TEST_F(FileEngineTest, SchemaIniGivesDelimiterHeaderAndTypes) {
  Write("schema.ini",
        "[ohne.txt]\r\nColNameHeader=False\r\nFormat=TabDelimited\r\n"
        "[typen.csv]\r\nFormat=CSVDelimited\r\nCol1=PLZ Text\r\nCol2=\"Betrag in Euro\" "
        "Currency\r\n");
  Write("ohne.txt", "1\tx\r\n2\ty\r\n");
  Write("typen.csv", "a,b\r\n01067,\"3,5\"\r\n80331,4\r\n");
  EXPECT_EQ(Query("SELECT F2, F1 FROM [ohne.txt]"), (Rows{{"t:x", "i:1"}, {"t:y", "i:2"}}));
  EXPECT_EQ(Query("SELECT PLZ, \"Betrag in Euro\" FROM [typen.csv]"),
            (Rows{{"t:01067", "t:3,5"}, {"t:80331", "r:4"}}));
}

TEST_F(FileEngineTest, BadFilesGiveClearErrorsOrTheDocumentedFallback) {
  // Too few fields are NULL; an empty surplus field (trailing delimiter) is no field.
  Write("kurz.csv", "A;B;C\r\n1;2\r\n3;4;5;\r\n");
  EXPECT_EQ(Query("SELECT * FROM [kurz.csv]"),
            (Rows{{"i:1", "i:2", "NULL"}, {"i:3", "i:4", "i:5"}}));
  // A first line of numbers and dates is data, not a header.
  Write("ohne.csv", "1;2,5;31.12.2002\r\n2;;01.01.2003\r\n");
  EXPECT_EQ(Query("SELECT F1, F2, F3 FROM [ohne#csv]"),
            (Rows{{"i:1", "r:2.5", "t:2002-12-31"}, {"i:2", "NULL", "t:2003-01-01"}}));
  Write("lang.csv", "A;B\r\n1;2\r\n3;4;5\r\n");
  VbError e = ErrorOf("SELECT * FROM [lang.csv]");
  EXPECT_EQ(e.Number, ado::kErrGeneral);
  EXPECT_EQ(e.Description,
            "Datei " + Path("lang.csv").string() + ", Zeile 3: zu viele Felder (3 statt 2)");
  Write("leer.csv", "");
  e = ErrorOf("SELECT * FROM [leer.csv]");
  EXPECT_EQ(e.Description, "Datei " + Path("leer.csv").string() +
                               ", Zeile 1: die Datei ist leer, die Kopfzeile mit den "
                               "Spaltennamen fehlt");
  e = ErrorOf("SELECT * FROM [fehlt.csv]");
  EXPECT_EQ(e.Number, ado::kErrUnknownTable);
  e = ErrorOf("SELECT Unbekannt FROM [kurz.csv]");
  EXPECT_EQ(e.Number, ado::kErrStatementRefused);
  EXPECT_EQ(e.Description, "no such column: Unbekannt");
}

TEST_F(FileEngineTest, LockedFileRefusesTheWriteAndKeepsItsContent) {
  Write("k.csv", "A\r\n1\r\n");
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [k.csv]"), 1);
  int fd = ::open(Path("k.csv").c_str(), O_RDONLY);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  VbError e = ErrorOf("INSERT INTO [k.csv] VALUES (2)");
  EXPECT_EQ(e.Description,
            "Datei " + Path("k.csv").string() + " ist von einem anderen Programm gesperrt");
  e = ErrorOf("DELETE FROM [k.csv]");
  EXPECT_EQ(e.Number, ado::kErrGeneral);
  ::close(fd);
  EXPECT_EQ(Read("k.csv"), "A\r\n1\r\n");
  // The connection stays usable.
  EXPECT_EQ(engine_->Execute("INSERT INTO [k.csv] VALUES (2)"), 1);
  EXPECT_EQ(Read("k.csv"), "A\r\n1\r\n2\r\n");

  // An office program's lock is a POSIX record lock held by another process.
  int ready[2], done[2];
  ASSERT_EQ(::pipe(ready), 0);
  ASSERT_EQ(::pipe(done), 0);
  pid_t child = ::fork();
  if (child == 0) {
    int lock_fd = ::open(Path("k.csv").c_str(), O_RDWR);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    char c = ::fcntl(lock_fd, F_SETLK, &lock) == 0 ? 'y' : 'n';
    (void)!::write(ready[1], &c, 1);
    (void)!::read(done[0], &c, 1);
    ::_exit(0);
  }
  char c = 0;
  ASSERT_EQ(::read(ready[0], &c, 1), 1);
  ASSERT_EQ(c, 'y');
  e = ErrorOf("INSERT INTO [k.csv] VALUES (3)");
  (void)!::write(done[1], "x", 1);
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(e.Description,
            "Datei " + Path("k.csv").string() + " ist von einem anderen Programm gesperrt");
  EXPECT_EQ(Read("k.csv"), "A\r\n1\r\n2\r\n");
}

TEST_F(FileEngineTest, ReadOnlyFileIsReadButNotWritten) {
  Write("r.csv", "A\r\n1\r\n");
  std::filesystem::permissions(
      Path("r.csv"), std::filesystem::perms::owner_read | std::filesystem::perms::group_read);
  EXPECT_EQ(Count("SELECT COUNT(*) FROM [r.csv]"), 1);
  const std::string refused = "Datei " + Path("r.csv").string() + " ist schreibgeschützt";
  EXPECT_EQ(ErrorOf("INSERT INTO [r.csv] VALUES (2)").Description, refused);
  EXPECT_EQ(ErrorOf("DELETE FROM [r.csv] WHERE A = 1").Description, refused);
  std::filesystem::permissions(Path("r.csv"), std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
  EXPECT_EQ(Read("r.csv"), "A\r\n1\r\n");
}

TEST_F(FileEngineTest, AFileChangedFromOutsideIsReadAnew) {
  Write("k.csv", "A;B\r\nx;1\r\n");
  EXPECT_EQ(Query("SELECT * FROM [k.csv]"), (Rows{{"t:x", "i:1"}}));
  Write("k.csv", "A;B;C\r\nx;1;2\r\n");
  EXPECT_EQ(Query("SELECT * FROM [k.csv]"), (Rows{{"t:x", "i:1", "i:2"}}));
}

}  // namespace
}  // namespace ketrova::file_engine
