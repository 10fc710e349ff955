// Writes grouped into transactions of the provider's own: a refused statement
// in the middle of a group fails alone, the rest reaches other connections
// within the group's 100 ms without another call, a cursor open across the
// group's commit reads on, a user's transaction is not mixed up with a group,
// an update by key (a write under an open read) lets the WAL be checkpointed,
// and without grouping every write is seen at once.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "backend.h"
#include "support/vb_error.h"

namespace ketrova::ado::testing {
namespace {

class GroupedWrites : public BackendTest {
 protected:
  // Rows of a table as a connection of its own sees them (for SQLite the
  // library's, since a connection of the process would commit the group).
  std::int64_t OutsideCount(const std::string& table) {
    if (Dialect() == "sqlite") {
      sqlite3* raw = nullptr;
      EXPECT_EQ(sqlite3_open((folder / "test.db").c_str(), &raw), SQLITE_OK);
      sqlite3_stmt* stmt = nullptr;
      std::string sql = "SELECT COUNT(*) FROM " + table;
      EXPECT_EQ(sqlite3_prepare_v2(raw, sql.c_str(), -1, &stmt, nullptr), SQLITE_OK);
      EXPECT_EQ(sqlite3_step(stmt), SQLITE_ROW);
      std::int64_t n = sqlite3_column_int64(stmt, 0);
      sqlite3_finalize(stmt);
      sqlite3_close(raw);
      return n;
    }
    auto other = std::make_shared<Connection>();
    other->Open(ConnectionString());
    return other->Execute("SELECT COUNT(*) FROM [" + table + "]")
        ->GetFields()
        .Item(0)
        .Value()
        .ToLong();
  }
  void Wait() { std::this_thread::sleep_for(std::chrono::milliseconds(300)); }
  void Refused(const std::string& sql) {
    SCOPED_TRACE(sql);
    EXPECT_THROW(db->Execute(sql), VbError);
  }
};

TEST_P(GroupedWrites, ARefusedWriteFailsAloneAndTheGroupReachesOthersWithin100Ms) {
  DropTable("G");
  db->Execute("CREATE TABLE [G] ([Nr] INTEGER NOT NULL, [Name] VARCHAR(5))");
  db->Execute("INSERT INTO [G] VALUES (1, 'eins')");
  Refused("INSERT INTO [G] VALUES (NULL, 'null')");
  Refused("INSERT INTO [G] VALUES (");
  Refused("INSERT INTO [G] ([Gibts]) VALUES (2)");
  if (Dialect() != "sqlite") {
    // SQLite keeps a text longer than declared and a text in an INTEGER column.
    Refused("INSERT INTO [G] VALUES (2, 'zu lang')");
    Refused("INSERT INTO [G] VALUES ('zwei', 'zwei')");
  }
  // The record loop's way: a record set's AddNew and Update.
  auto rs = std::make_shared<Recordset>();
  rs->Open(Variant(std::string("SELECT * FROM [G]")), Variant(ObjectPtr(db)), adOpenKeyset,
           adLockOptimistic);
  rs->AddNew();
  rs->GetFields().Item("Nr").SetValue(Variant::Long(3));
  rs->GetFields().Item("Name").SetValue(Variant(std::string("drei")));
  rs->Update();
  rs->AddNew();
  rs->GetFields().Item("Name").SetValue(Variant(std::string("vier")));
  EXPECT_THROW(rs->Update(), VbError);
  rs->CancelUpdate();
  rs->Close();
  db->Execute("UPDATE [G] SET [Name] = 'neu' WHERE [Nr] = 1");
  db->Execute("INSERT INTO [G] VALUES (5, 'fünf')");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [G]").ToLong(), 3);
  // Nothing more happens on the connection: the group still reaches the others.
  Wait();
  EXPECT_EQ(OutsideCount("G"), 3);
}

TEST_P(GroupedWrites, ACursorOpenAcrossTheCommitReadsOn) {
  DropTable("L");
  DropTable("G");
  db->Execute("CREATE TABLE [L] ([Nr] INTEGER)");
  db->Execute("CREATE TABLE [G] ([Nr] INTEGER)");
  for (int i = 1; i <= 200; ++i) db->Execute("INSERT INTO [L] VALUES (" + std::to_string(i) + ")");
  db->Flush();
  EXPECT_EQ(OutsideCount("L"), 200);
  // More rows than a block of the server's cursor, with writes and the
  // group's time between the blocks.
  auto rs = db->Execute("SELECT [Nr] FROM [L] ORDER BY [Nr]");
  std::int64_t read = 0, sum = 0;
  for (; !rs->Eof(); rs->MoveNext()) {
    ++read;
    sum += rs->GetFields().Item(0).Value().ToLong();
    if (read % 50 == 0) {
      db->Execute("INSERT INTO [G] VALUES (" + std::to_string(read) + ")");
      Wait();
    }
  }
  EXPECT_EQ(read, 200);
  EXPECT_EQ(sum, 200 * 201 / 2);
  rs->Close();
  Wait();
  EXPECT_EQ(OutsideCount("G"), 4);
}

// An update by key writes while its SELECT is open. A commit under that read
// would leave the connection's snapshot behind it, and SQLite could then never
// checkpoint the WAL: it would grow by every page the run changes.
TEST_P(GroupedWrites, AnUpdateByKeyLeavesTheWalToBeCheckpointed) {
  if (Dialect() != "sqlite") GTEST_SKIP() << "the WAL is SQLite's";
  DropTable("G");
  db->Execute("CREATE TABLE [G] ([Nr] INTEGER, [Text] TEXT)");
  const std::string text(400, 'a');
  for (int i = 1; i <= 2000; ++i)
    db->Execute("INSERT INTO [G] VALUES (" + std::to_string(i) + ", '" + text + "')");
  db->Flush();
  // Checkpoints after every commit that leaves more than a few pages in the WAL.
  db->Execute("PRAGMA wal_autocheckpoint=10")->Eof();
  const std::string wal = (folder / "test.db-wal").string();
  std::uintmax_t largest = 0;
  // An update by key's records: each one's SELECT is open while it writes.
  auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(700);
  for (int pass = 1; std::chrono::steady_clock::now() < until; ++pass) {
    for (int i = 1; i <= 2000; i += 3) {
      auto rs = std::make_shared<Recordset>();
      rs->Open(Variant("SELECT * FROM [G] WHERE [Nr] = " + std::to_string(i)),
               Variant(ObjectPtr(db)), adOpenKeyset, adLockOptimistic);
      ASSERT_FALSE(rs->Eof());
      rs->GetFields().Item("Text").SetValue(Variant(std::string(400, 'a' + pass % 26)));
      rs->Update();
      rs->Close();
    }
    largest = std::max(largest, std::filesystem::file_size(wal));
  }
  // Every group changes most of the table's ~1 MB; a WAL checkpointed after
  // each holds one group, one that cannot be grows by all of them.
  EXPECT_LT(largest, std::uintmax_t{3} << 20);
  // A read that stays open puts the commit off only briefly.
  auto rs = db->Execute("SELECT * FROM [G] WHERE [Nr] = 1");
  ASSERT_FALSE(rs->Eof());
  db->Execute("INSERT INTO [G] VALUES (-1, 'neu')");
  Wait();
  EXPECT_EQ(OutsideCount("G WHERE [Nr] = -1"), 1);
  rs->Close();
}

TEST_P(GroupedWrites, AUserTransactionIsNotMixedWithAGroup) {
  DropTable("G");
  db->Execute("CREATE TABLE [G] ([Nr] INTEGER)");
  db->Execute("INSERT INTO [G] VALUES (1)");
  db->BeginTrans();
  db->Execute("INSERT INTO [G] VALUES (2)");
  db->RollbackTrans();
  db->Execute("INSERT INTO [G] VALUES (3)");
  db->Flush();
  EXPECT_EQ(OutsideCount("G"), 2);
}

TEST_P(GroupedWrites, WithoutGroupingEveryWriteIsSeenAtOnce) {
  DropTable("G");
  db->Execute("CREATE TABLE [G] ([Nr] INTEGER)");
  db->Close();
  SetGroupedCommits(false);
  db->Open(ConnectionString());
  SetGroupedCommits(true);
  db->Execute("INSERT INTO [G] VALUES (1)");
  EXPECT_EQ(OutsideCount("G"), 1);
}

INSTANTIATE_TEST_SUITE_P(Backends, GroupedWrites, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::ado::testing
