// What a connection and a record set keep between opens of the same statement
// (prepared statements, their columns, the resolved target table, the INSERT
// text) must give way when a table changes shape, and a statement kept for
// reuse must hold nothing of its last result.
#include <gtest/gtest.h>

#include "backend.h"
#include "platform/ado/enums.h"

namespace ketrova::ado::testing {
namespace {

class ShapeCache : public BackendTest {
 protected:
  // The engine's statement for a target, opened on the same record set as the
  // engine does once per record.
  void Open(const std::string& sql = " SELECT * \r\n FROM    [Ziel]    Ziel") {
    rs->Open(sql, Variant(ObjectPtr(db)), adOpenKeyset, adLockBatchOptimistic);
  }
  void Insert(int id, const std::string& name) {
    Open();
    rs->AddNew();
    rs->GetFields().Item("ID").SetValue(Variant(id));
    rs->GetFields().Item("Name").SetValue(Variant(name));
    rs->Update();
    rs->UpdateBatch(adAffectAll);
    rs->Close();
  }
  std::vector<std::string> FieldNames() {
    std::vector<std::string> names;
    for (const auto& f : rs->GetFields()) names.push_back(f->Name());
    return names;
  }

  RecordsetPtr rs = std::make_shared<Recordset>();
};

TEST_P(ShapeCache, ATableAlteredOrRecreatedBetweenTwoOpensShowsItsNewShape) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([ID] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(20))");
  Insert(1, "eins");

  db->Execute("ALTER TABLE [Ziel] ADD [Ort] VARCHAR(20)");
  Open();
  EXPECT_EQ(FieldNames(), (std::vector<std::string>{"ID", "Name", "Ort"}));
  rs->Close();
  Insert(2, "zwei");

  // Recreated with its columns in another order: the same INSERT by name must
  // land in the new places.
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([Name] VARCHAR(20), [Menge] INTEGER, [ID] INTEGER NOT NULL)");
  Insert(3, "drei");
  Open();
  EXPECT_EQ(FieldNames(), (std::vector<std::string>{"Name", "Menge", "ID"}));
  ASSERT_FALSE(rs->Eof());
  EXPECT_EQ(rs->GetFields().Item("ID").Value().ToText(), "3");
  EXPECT_EQ(rs->GetFields().Item("Name").Value().ToText(), "drei");
  EXPECT_TRUE(rs->GetFields().Item("Menge").Value().IsNull());
  rs->Close();
}

TEST_P(ShapeCache, DeclaredDecimalsFollowARecreatedTable) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([ID] INTEGER NOT NULL PRIMARY KEY, [Betrag] DECIMAL(10,2))");
  Open();
  EXPECT_EQ(rs->GetFields().Item("Betrag").NumericScale(), 2);
  rs->Close();
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([ID] INTEGER NOT NULL PRIMARY KEY, [Betrag] DECIMAL(12,4))");
  Open();
  EXPECT_EQ(rs->GetFields().Item("Betrag").NumericScale(), 4);
  EXPECT_EQ(rs->GetFields().Item("Betrag").Precision(), 12);
  rs->Close();
}

// As a reload of the schema does it: the tables are listed, then the shapes
// are forgotten.
TEST_P(ShapeCache, AChangeThroughAnotherConnectionShowsAfterTheSchemaIsReadAnew) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([ID] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(20))");
  Insert(1, "eins");
  auto other = std::make_shared<Connection>();
  other->Open(ConnectionString());
  other->Execute("ALTER TABLE [Ziel] ADD [Ort] VARCHAR(20)");
  other->Close();

  db->OpenSchema(adSchemaTables)->Close();
  db->ForgetTableShapes();
  Open();
  EXPECT_EQ(FieldNames(), (std::vector<std::string>{"ID", "Name", "Ort"}));
  rs->AddNew();
  rs->GetFields().Item("ID").SetValue(Variant(2));
  rs->GetFields().Item("Ort").SetValue(Variant("Köln"));
  rs->Update();
  rs->UpdateBatch(adAffectAll);
  rs->Close();
  EXPECT_EQ(Scalar("SELECT [Ort] FROM [Ziel] WHERE [ID] = 2").ToText(), "Köln");
}

TEST_P(ShapeCache, AResultLeftAfterItsFirstRowStartsAgainAtTheFirstRow) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([ID] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(20))");
  for (int id = 1; id <= 3; ++id) Insert(id, "n" + std::to_string(id));
  const std::string sql = "SELECT [ID] FROM [Ziel] ORDER BY [ID]";
  for (int round = 0; round < 3; ++round) {
    Open(sql);
    ASSERT_FALSE(rs->Eof());
    EXPECT_EQ(rs->GetFields().Item("ID").Value().ToText(), "1") << "round " << round;
    rs->Close();
    // A write between the reads, as the engine makes one per record.
    if (round == 1) Insert(4, "vier");
  }
  Open(sql);
  int count = 0;
  for (; !rs->Eof(); rs->MoveNext()) ++count;
  EXPECT_EQ(count, 4);
  rs->Close();
}

// A result left before its end must not keep its read open: what another
// connection writes in between is seen, and this one can still write.
TEST_P(ShapeCache, AResultLeftBeforeItsEndHoldsNoReadOpen) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([ID] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(20))");
  Insert(1, "eins");
  Insert(2, "zwei");
  const std::string sql = "SELECT [ID] FROM [Ziel] ORDER BY [ID]";
  Open(sql);
  ASSERT_FALSE(rs->Eof());
  rs->Close();
  auto other = std::make_shared<Connection>();
  other->Open(ConnectionString());
  other->Execute("INSERT INTO [Ziel] ([ID], [Name]) VALUES (3, 'drei')");
  other->Close();
  Insert(4, "vier");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Ziel]").ToText(), "4");
}

// An update by key opens a new statement text per record, on one table or on
// two of the same columns: each write must reach the table its statement names.
TEST_P(ShapeCache, StatementsOnTablesOfTheSameColumnsWriteEachToItsOwnTable) {
  for (const char* table : {"A", "B"}) {
    DropTable(table);
    db->Execute("CREATE TABLE [" + std::string(table) +
                "] ([ID] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(20))");
  }
  for (int id = 1; id <= 4; ++id) {
    std::string table = id % 2 ? "A" : "B";
    Open("SELECT * FROM [" + table + "] WHERE [ID] = " + std::to_string(id));
    ASSERT_TRUE(rs->Eof());
    rs->AddNew();
    rs->GetFields().Item("ID").SetValue(Variant(id));
    rs->GetFields().Item("Name").SetValue(Variant(table + std::to_string(id)));
    rs->Update();
    rs->UpdateBatch(adAffectAll);
    rs->Close();
  }
  Open("SELECT * FROM [A] WHERE [ID] = 3");
  ASSERT_FALSE(rs->Eof());
  rs->GetFields().Item("Name").SetValue(Variant("A3 neu"));
  rs->Update();
  rs->UpdateBatch(adAffectAll);
  rs->Close();
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [A] WHERE [ID] IN (1, 3)").ToText(), "2");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [B] WHERE [ID] IN (2, 4)").ToText(), "2");
  EXPECT_EQ(Scalar("SELECT [Name] FROM [A] WHERE [ID] = 3").ToText(), "A3 neu");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [B] WHERE [ID] = 3").ToText(), "0");
}

INSTANTIATE_TEST_SUITE_P(Backends, ShapeCache, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::ado::testing
