// CRecordset on a real SQLite file through the ODBC driver, called by member
// name as a script calls it.
#include "engine/recordset_facade.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/ado/text/temp_folder.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

class RecordsetFacadeTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    db = std::make_shared<ado::Connection>();
    db->Open("Driver={SQLite3};Database=" + Path("facade.db").string());
    db->Execute("CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name VARCHAR(40))");
    db->Execute("INSERT INTO Kunden VALUES (1, 'Müller')");
    db->Execute("INSERT INTO Kunden VALUES (2, 'Öztürk')");
  }
  void TearDown() override {
    rs.reset();
    db->Close();
    TempFolderTest::TearDown();
  }

  // Opens the facade on `sql` the way a script does: OpenRS with the cursor
  // and lock given as numbers.
  void Open(const std::string& sql, int cursor = 1, int lock = 3) {
    std::vector<Variant> args = {Variant(sql), Variant(ObjectPtr(db)), Variant(cursor),
                                 Variant(lock)};
    rs->Call("OpenRS", args);
  }
  Variant Get(const char* name) { return rs->Get(name); }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    auto all = db->Execute("SELECT Name FROM Kunden ORDER BY Nr");
    for (; !all->Eof(); all->MoveNext())
      names.push_back(all->GetFields().Item("Name").Value().ToText());
    return names;
  }
  static Variant List(std::vector<Variant> items) {
    auto array = std::make_shared<SafeArray>();
    array->bounds.push_back({0, static_cast<std::int32_t>(items.size())});
    array->data = std::move(items);
    return Variant(array);
  }

  std::shared_ptr<ado::Connection> db;
  std::shared_ptr<CRecordset> rs = std::make_shared<CRecordset>();
};

TEST_F(RecordsetFacadeTest, WalksTheRecordsByName) {
  Open("SELECT Nr, Name FROM Kunden ORDER BY Nr");
  EXPECT_FALSE(Get("BOF").AsBool());
  EXPECT_EQ(Get("RecordCount").ToLong(), 2);
  std::vector<std::string> seen;
  for (rs->Call("MoveFirst"); !Get("EOF").AsBool(); rs->Call("MoveNext"))
    seen.push_back(rs->Fields()->Item("Name").Value().ToText());
  EXPECT_EQ(seen, (std::vector<std::string>{"Müller", "Öztürk"}));
  rs->Call("MovePrevious");
  EXPECT_EQ(rs->Fields()->Item("Nr").Value().ToLong(), 2);
  EXPECT_TRUE(Get("Fields").IsObject());
  rs->Call("CloseRecordset");
  EXPECT_EQ(rs->Recordset()->State(), ado::adStateClosed);
}

TEST_F(RecordsetFacadeTest, AddNewWithListsSavesAtOnceAndUpdateAssignsFirst) {
  Open("SELECT Nr, Name FROM Kunden");
  std::vector<Variant> add = {List({Variant("Nr"), Variant("Name")}),
                              List({Variant(3), Variant("Jäger")})};
  rs->Call("AddNew", add);
  EXPECT_EQ(Get("EditMode").ToLong(), ado::adEditNone);
  EXPECT_EQ(Names(), (std::vector<std::string>{"Müller", "Öztürk", "Jäger"}));

  rs->Call("MoveFirst");
  std::vector<Variant> update = {Variant("Name"), Variant("Mueller")};
  rs->Call("Update", update);
  EXPECT_EQ(Names(), (std::vector<std::string>{"Mueller", "Öztürk", "Jäger"}));
}

TEST_F(RecordsetFacadeTest, ListsOfDifferentLengthChangeNothing) {
  Open("SELECT Nr, Name FROM Kunden");
  std::vector<Variant> update = {List({Variant("Nr"), Variant("Name")}), List({Variant(7)})};
  try {
    rs->Call("Update", update);
    FAIL() << "no error";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, 3001);
  }
  EXPECT_EQ(Get("EditMode").ToLong(), ado::adEditNone);
  EXPECT_EQ(Names(), (std::vector<std::string>{"Müller", "Öztürk"}));
}

TEST_F(RecordsetFacadeTest, BatchLockKeepsChangesUntilUpdateBatch) {
  Open("SELECT Nr, Name FROM Kunden", 1, 4);
  rs->Call("AddNew");
  rs->Fields()->Item("Nr").SetValue(Variant(5));
  rs->Fields()->Item("Name").SetValue(Variant("Weiß"));
  rs->Call("Update");
  EXPECT_EQ(Names().size(), 2u);
  rs->Call("UpdateBatch");
  EXPECT_EQ(Names().back(), "Weiß");
}

TEST_F(RecordsetFacadeTest, MaxRecordsLimitsTheOpenAndErrorsReachTheCaller) {
  rs->Put("MaxRecords", Variant(1));
  EXPECT_EQ(Get("MaxRecords").ToLong(), 1);
  Open("SELECT Nr FROM Kunden ORDER BY Nr", 3, 1);
  rs->Call("MoveNext");
  EXPECT_TRUE(Get("EOF").AsBool());
  rs->Call("CloseRecordset");
  EXPECT_THROW(rs->Call("MoveNext"), VbError);
  EXPECT_THROW(Open("SELECT * FROM Fehlt"), VbError);
}

}  // namespace
}  // namespace ketrova
