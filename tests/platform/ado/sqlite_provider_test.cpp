// The native SQLite provider beside the SQLite3 ODBC driver on the same file:
// both ways must describe, read and store alike and fail with the same texts.
// Then what only the native one does: grouped commits that another connection
// sees within 100 ms, a refused statement in a group failing alone, values
// read by their storage class, and statements that are prepared but not run.
#include "platform/ado/providers/sqlite/sqlite_provider.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "platform/ado/connection.h"
#include "platform/ado/providers/odbc/odbc_provider.h"
#include "platform/ado/recordset.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

class SqliteProviderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::random_device rd;
    folder = std::filesystem::temp_directory_path() /
             ("ketrova-sqlite-" + std::to_string(rd()) + std::to_string(rd()));
    std::filesystem::create_directories(folder);
    file = (folder / "test.db").string();
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  std::string ConnectionString() const { return "Driver={SQLite3};Database=" + file; }
  std::unique_ptr<SqliteProvider> Native() {
    return std::make_unique<SqliteProvider>(file, ParseConnection(ConnectionString()));
  }
  std::unique_ptr<OdbcProvider> Odbc() {
    return std::make_unique<OdbcProvider>(ParseConnection(ConnectionString()));
  }
  // A count through a connection of SQLite's own, as another program sees it.
  int OutsideCount(const std::string& table) {
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    sqlite3_stmt* stmt = nullptr;
    int n = -1;
    if (sqlite3_prepare_v2(db, ("SELECT COUNT(*) FROM " + table).c_str(), -1, &stmt, nullptr) ==
            SQLITE_OK &&
        sqlite3_step(stmt) == SQLITE_ROW)
      n = sqlite3_column_int(stmt, 0);
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return n;
  }
  static std::vector<Row> All(Provider& p, const std::string& sql) {
    auto result = p.Execute(sql);
    std::vector<Row> rows;
    while (result.cursor->Fetch(rows, 100) > 0) {
    }
    return rows;
  }
  static std::string Shape(const ColumnInfo& c) {
    return c.name + " " + std::to_string(c.type) + " " + c.typeName + " " +
           std::to_string(c.definedSize) + " " + std::to_string(c.precision) + " " +
           std::to_string(c.numericScale) + " " + c.baseTable + "." + c.baseColumn +
           (c.keyColumn ? " key" : "") + (c.autoIncrement ? " auto" : "") +
           (c.nullable ? "" : " notnull");
  }
  static std::string Text(const Variant& v) {
    if (v.IsArray()) return "bytes:" + std::to_string(v.AsArray()->data.size());
    return std::to_string(v.Type()) + ":" + (v.IsNull() ? "NULL" : v.ToText());
  }

  std::filesystem::path folder;
  std::string file;
};

constexpr const char* kManyTypes =
    "CREATE TABLE t(a INTEGER, b VARCHAR(40), c TEXT, d DOUBLE, e DATETIME, f CURRENCY, "
    "g YESNO, h LONGTEXT, i DECIMAL(10,2), j BLOB, k LONG, l DATE, m BOOLEAN, n REAL, "
    "o NUMERIC(19,4), p SMALLINT, q BIGINT, r, s INTEGER PRIMARY KEY AUTOINCREMENT, "
    "u TIMESTAMP, v CHAR(5), w VARCHAR(300), x MEMO, y TIME, z TINYINT, aa FLOAT, "
    "ab INT UNSIGNED, ac VARBINARY(10))";

TEST_F(SqliteProviderTest, DescribesReadsAndListsAsTheOdbcDriver) {
  {
    auto odbc = Odbc();
    odbc->Execute(kManyTypes);
    odbc->Execute("CREATE TABLE m(x, y, z, PRIMARY KEY(y, x))");
    odbc->Execute("CREATE INDEX mi ON m(z, x)");
    odbc->Execute("CREATE VIEW vt AS SELECT a, b FROM t");
    odbc->Execute(
        "INSERT INTO t(a,b,c,d,e,f,g,h,i,k,l,m,n,o,p,q,r,u,v,w,x,y,z,aa,ab,ac) VALUES(1,'Grüße',"
        "'y',1.5,'2024-01-02 03:04:05.000',2.5,1,'z',3.25,4,'2024-01-02',0,2.5,4.5,3,"
        "9000000000,'r','2020-01-01 00:00:00',' abc','w','x','13:14:15',7,0.25,8,X'0102')");
  }
  auto odbc = Odbc();
  auto native = Native();
  for (const char* sql :
       {"SELECT * FROM t", "SELECT COUNT(*) FROM t", "SELECT a+1, 'x' AS l FROM t",
        "SELECT * FROM t x WHERE x.a = 1", "SELECT * FROM vt", "SELECT * FROM m"}) {
    SCOPED_TRACE(sql);
    auto expected = odbc->Execute(sql);
    auto actual = native->Execute(sql);
    const auto& ec = expected.cursor->Columns();
    const auto& ac = actual.cursor->Columns();
    ASSERT_EQ(ec.size(), ac.size());
    for (std::size_t i = 0; i < ec.size(); ++i) EXPECT_EQ(Shape(ac[i]), Shape(ec[i]));
    std::vector<Row> er, ar;
    expected.cursor->Fetch(er, 10);
    actual.cursor->Fetch(ar, 10);
    ASSERT_EQ(er.size(), ar.size());
    for (std::size_t r = 0; r < er.size(); ++r)
      for (std::size_t i = 0; i < er[r].size(); ++i)
        EXPECT_EQ(Text(ar[r][i]), Text(er[r][i])) << ec[i].name;
  }
  for (const char* table : {"t", "m", "vt"}) {
    SCOPED_TRACE(table);
    auto ec = odbc->TableColumns(table);
    auto ac = native->TableColumns(table);
    ASSERT_EQ(ec.size(), ac.size());
    for (std::size_t i = 0; i < ec.size(); ++i) EXPECT_EQ(Shape(ac[i]), Shape(ec[i]));
    auto ei = odbc->TableIndexes(table);
    auto ai = native->TableIndexes(table);
    ASSERT_EQ(ei.size(), ai.size());
    for (std::size_t i = 0; i < ei.size(); ++i) {
      EXPECT_EQ(ai[i].name, ei[i].name);
      EXPECT_EQ(ai[i].unique, ei[i].unique);
      EXPECT_EQ(ai[i].primaryKey, ei[i].primaryKey);
      EXPECT_EQ(ai[i].columns, ei[i].columns);
    }
  }
  auto et = odbc->Tables();
  auto at = native->Tables();
  ASSERT_EQ(et.size(), at.size());
  for (std::size_t i = 0; i < et.size(); ++i) {
    EXPECT_EQ(at[i].name, et[i].name);
    EXPECT_EQ(at[i].type, et[i].type);
  }
  for (const auto& c : odbc->TableColumns("t"))
    EXPECT_EQ(native->ColumnTypeSql(c), odbc->ColumnTypeSql(c));
}

TEST_F(SqliteProviderTest, StoresBoundValuesAsTheOdbcDriver) {
  const char* create =
      "CREATE TABLE %s(i INTEGER, t VARCHAR(10), d DOUBLE, ts DATETIME, "
      "cu CURRENCY, bo YESNO, de DECIMAL(10,2), x, da DATE, bl BLOB, nu)";
  std::vector<Variant> values = {Variant::Long(42),
                                 Variant(std::string("Grüße")),
                                 Variant(1.5),
                                 Variant::FromDate(45293.12853009259),
                                 Variant::FromCurrency(2.5),
                                 Variant(true),
                                 DecimalFromText("3.25"),
                                 Variant(0.1),
                                 Variant::FromDate(45418.0),
                                 Variant(std::string("text")),
                                 Variant::Null()};
  auto write = [&](Provider& p, const std::string& table) {
    char sql[300];
    std::snprintf(sql, sizeof sql, create, table.c_str());
    p.Execute(sql);
    p.Execute("INSERT INTO " + table + " VALUES(?,?,?,?,?,?,?,?,?,?,?)", values);
    p.Flush();
  };
  write(*Odbc(), "viaodbc");
  write(*Native(), "native");
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
  auto dump = [&](const std::string& table) {
    std::string out;
    sqlite3_stmt* stmt = nullptr;
    std::string sql = "SELECT * FROM " + table;
    EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(stmt), SQLITE_ROW);
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
      out += std::to_string(sqlite3_column_type(stmt, i)) + ":";
      const unsigned char* t = sqlite3_column_text(stmt, i);
      out += t ? reinterpret_cast<const char*>(t) : "NULL";
      out += "|";
    }
    sqlite3_finalize(stmt);
    return out;
  };
  EXPECT_EQ(dump("native"), dump("viaodbc"));
  sqlite3_close(db);
}

TEST_F(SqliteProviderTest, FailsWithTheDriversTexts) {
  Odbc()->Execute("CREATE TABLE n(a INTEGER NOT NULL, b VARCHAR(5) UNIQUE)");
  auto odbc = Odbc();
  auto native = Native();
  for (const char* sql :
       {"INSERT INTO n(a) VALUES(NULL)", "SELECT * FROM n WHERE", "SELECT nope FROM n",
        "SELECT * FROM nirgends", "CREATE TABLE n(x)", "SELECT 1; SELECT 2"}) {
    SCOPED_TRACE(sql);
    std::int32_t expectedNumber = 0, actualNumber = 0;
    std::string expected, actual;
    try {
      odbc->Execute(sql);
    } catch (const VbError& e) {
      expectedNumber = e.Number;
      expected = e.Description + "|" + e.Source;
    }
    try {
      native->Execute(sql);
    } catch (const VbError& e) {
      actualNumber = e.Number;
      actual = e.Description + "|" + e.Source;
    }
    EXPECT_NE(expected, "");
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(actualNumber, expectedNumber);
  }
  // The open of a file that cannot be, in the driver's words.
  file = (folder / "fehlt" / "x.db").string();
  try {
    Native();
    ADD_FAILURE() << "opened";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, "[SQLite]connect failed");
    EXPECT_EQ(e.Number, kErrGeneral);
  }
}

TEST_F(SqliteProviderTest, GroupsWritesThatOthersSeeWithin100Ms) {
  auto native = Native();
  native->Execute("CREATE TABLE g(nr INTEGER NOT NULL, name TEXT)");
  // A refused record inside a group fails alone; the rows around it stay.
  std::vector<Variant> row = {Variant::Long(1), Variant(std::string("eins"))};
  native->Execute("INSERT INTO g VALUES(?, ?)", row);
  row = {Variant::Null(), Variant(std::string("zwei"))};
  EXPECT_THROW(native->Execute("INSERT INTO g VALUES(?, ?)", row), VbError);
  row = {Variant::Long(3), Variant(std::string("drei"))};
  native->Execute("INSERT INTO g VALUES(?, ?)", row);
  // Nothing more happens on the connection: the group still reaches the file.
  std::this_thread::sleep_for(std::chrono::milliseconds(250));
  EXPECT_EQ(OutsideCount("g"), 2);
  // Another connection of the process writing the same file has the group
  // committed first instead of waiting behind it.
  native->Execute("INSERT INTO g VALUES(4, 'vier')");
  auto second = Native();
  second->Execute("INSERT INTO g VALUES(5, 'fünf')");
  second->Flush();
  EXPECT_EQ(OutsideCount("g"), 4);
}

TEST_F(SqliteProviderTest, WithoutGroupingEveryWriteIsInTheFileAtOnce) {
  SetGroupedCommits(false);
  auto native = Native();
  SetGroupedCommits(true);
  native->Execute("CREATE TABLE g(nr INTEGER)");
  native->Execute("INSERT INTO g VALUES(1)");
  EXPECT_EQ(OutsideCount("g"), 1);
}

TEST_F(SqliteProviderTest, ReadsAValueAsWhatItIsStored) {
  auto native = Native();
  native->Execute("CREATE TABLE k(id INTEGER, betrag DOUBLE, tag DATETIME, d DECIMAL(8,2))");
  native->Execute("INSERT INTO k VALUES('EXTENT_2008', 'viel', 'gestern', 'n/a')");
  native->Execute("INSERT INTO k VALUES(2.5, '3,5', '2024-02-03', '1.25')");
  auto rows = All(*native, "SELECT * FROM k");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(Text(rows[0][0]), "8:EXTENT_2008");
  EXPECT_EQ(Text(rows[0][1]), "8:viel");
  EXPECT_EQ(Text(rows[0][2]), "8:gestern");
  EXPECT_EQ(Text(rows[0][3]), "8:n/a");
  EXPECT_EQ(rows[1][0].Type(), vbDouble);
  EXPECT_EQ(rows[1][0].AsDouble(), 2.5);
  EXPECT_EQ(Text(rows[1][1]), "8:3,5");
  EXPECT_EQ(rows[1][2].Type(), vbDate);
  EXPECT_EQ(rows[1][3].Type(), vbDecimal);
}

TEST_F(SqliteProviderTest, AWriteThroughRecordSetRunsItsStatementOnlyWhenAsked) {
  auto connection = std::make_shared<Connection>();
  connection->Open(ConnectionString());
  connection->Execute("CREATE TABLE z(nr INTEGER, name TEXT)");
  connection->Execute("INSERT INTO z VALUES(1, 'eins')");
  Provider& provider = connection->GetProvider();
  const std::uint64_t before = provider.QueriesRun();
  for (int i = 2; i <= 4; ++i) {
    auto rs = std::make_shared<Recordset>();
    rs->Open(Variant(std::string("SELECT * FROM z WHERE nr = -99999")),
             Variant(ObjectPtr(connection)), adOpenKeyset, adLockBatchOptimistic);
    rs->AddNew();
    rs->GetFields().Item("nr").SetValue(Variant::Long(i));
    rs->Update();
    rs->UpdateBatch();
    rs->Close();
  }
  EXPECT_EQ(provider.QueriesRun(), before);
  // An error of the statement is the open's.
  auto bad = std::make_shared<Recordset>();
  EXPECT_THROW(bad->Open(Variant(std::string("SELECT * FROM [z]   z WHERE")),
                         Variant(ObjectPtr(connection)), adOpenKeyset, adLockBatchOptimistic),
               VbError);
  // Asking for rows runs it.
  auto rs = std::make_shared<Recordset>();
  rs->Open(Variant(std::string("SELECT * FROM z WHERE nr = 3")), Variant(ObjectPtr(connection)),
           adOpenKeyset, adLockBatchOptimistic);
  EXPECT_FALSE(rs->Eof());
  EXPECT_EQ(rs->GetFields().Item("nr").Value().ToLong(), 3);
  EXPECT_EQ(provider.QueriesRun(), before + 1);
}

TEST_F(SqliteProviderTest, ASearchByAWrittenKeyFindsWhatTheLiteralSays) {
  auto native = Native();
  native->Execute("CREATE TABLE s(nr INTEGER, code TEXT)");
  native->Execute("INSERT INTO s VALUES(5, 'it''s'), (-7, '5'), (8, 'a = ''b''')");
  auto count = [&](const std::string& sql) { return All(*native, sql).size(); };
  // Each text is prepared once with the literal as a parameter; the answer
  // is the literal's.
  EXPECT_EQ(count("SELECT * FROM s WHERE s.nr = 5"), 1u);
  EXPECT_EQ(count("SELECT * FROM s WHERE s.nr = -7"), 1u);
  EXPECT_EQ(count("SELECT * FROM s WHERE s.nr = '5'"), 1u);  // INTEGER affinity
  EXPECT_EQ(count("SELECT * FROM s WHERE s.code = 'it''s'"), 1u);
  EXPECT_EQ(count("SELECT * FROM s WHERE s.code = 'a = ''b'''"), 1u);
  EXPECT_EQ(count("SELECT * FROM s WHERE s.code = 5"), 1u);  // TEXT affinity: '5'
  EXPECT_EQ(count("SELECT * FROM s WHERE s.code = 55"), 0u);
  EXPECT_EQ(count("SELECT * FROM s WHERE s.nr >= 5"), 2u);
  EXPECT_EQ(All(*native, "SELECT * FROM s WHERE s.code = 'it''s'")[0][0].ToLong(), 5);
  // What is no literal keeps the text's own error.
  try {
    count("SELECT * FROM s WHERE s.nr = K-1");
    ADD_FAILURE() << "ran";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, "[SQLite]no such column: K (1)");
  }
  EXPECT_THROW(count("SELECT * FROM s WHERE s.nr = "), VbError);
}

// An update by key opens its target once per record with the key's literal:
// each text finds and writes its own row (keys in quotes included), and a
// change of the table's shape between two opens shows in the next one.
TEST_F(SqliteProviderTest, AnUpdateByKeyWritesEachKeysRowAndSeesAShapeChange) {
  auto connection = std::make_shared<Connection>();
  connection->Open(ConnectionString());
  connection->Execute("CREATE TABLE k(nr INTEGER, code TEXT, n INTEGER)");
  connection->Execute("INSERT INTO k VALUES(1, 'a', 0), (2, 'it''s', 0), (3, 'x'' OR 1 = ''1', 0)");
  auto update = [&](const std::string& where, int value) {
    auto rs = std::make_shared<Recordset>();
    rs->Open(Variant("SELECT * FROM k WHERE k." + where), Variant(ObjectPtr(connection)),
             adOpenKeyset, adLockBatchOptimistic);
    EXPECT_FALSE(rs->Eof()) << where;
    rs->GetFields().Item("n").SetValue(Variant::Long(value));
    rs->Update();
    rs->UpdateBatch();
    const std::int32_t fields = rs->GetFields().Count();
    rs->Close();
    return fields;
  };
  EXPECT_EQ(update("nr = 1", 10), 3);
  EXPECT_EQ(update("nr = 2", 20), 3);
  EXPECT_EQ(update("code = 'x'' OR 1 = ''1'", 30), 3);
  EXPECT_EQ(update("code = 'it''s'", 40), 3);
  connection->Execute("ALTER TABLE k ADD COLUMN m INTEGER");
  EXPECT_EQ(update("nr = 1", 50), 4);
  auto native = Native();
  std::string rows;
  for (const Row& row : All(*native, "SELECT nr, n, m FROM k ORDER BY nr"))
    rows += row[0].ToText() + ":" + row[1].ToText() + ":" + Text(row[2]) + " ";
  EXPECT_EQ(rows, "1:50:1:NULL 2:40:1:NULL 3:30:1:NULL ");
}

}  // namespace
}  // namespace ketrova::ado
