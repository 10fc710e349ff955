// An UPDATE through a record set changes exactly the row it read, also in a
// table without a primary key whose key is text and whose other columns hold
// floats (which MariaDB stores in single precision).
#include <gtest/gtest.h>

#include "backend.h"
#include "support/vb_error.h"

namespace ketrova::ado::testing {
namespace {

class RowIdentity : public BackendTest {};

TEST_P(RowIdentity, UpdateWithoutPrimaryKeyChangesTheRowItRead) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([Nr] VARCHAR(10), [Name] VARCHAR(20), [Betrag] FLOAT)");
  db->Execute("INSERT INTO [Ziel] VALUES ('K-1', 'alt', 0.1)");
  db->Execute("INSERT INTO [Ziel] VALUES ('K-2', 'alt', 0.3)");
  for (const char* key : {"K-1", "K-2"}) {
    auto rs = std::make_shared<Recordset>();
    rs->Open(Variant("SELECT * FROM [Ziel] WHERE [Ziel].[Nr] = '" + std::string(key) + "'"),
             Variant(ObjectPtr(db)), adOpenKeyset, adLockBatchOptimistic);
    ASSERT_FALSE(rs->Eof());
    EXPECT_EQ(rs->GetFields().Count(), 3);
    rs->GetFields().Item("Name").SetValue(Variant(std::string("neu ") + key));
    rs->GetFields().Item("Betrag").SetValue(Variant(2.5));
    rs->Update();
    rs->UpdateBatch();
    rs->Close();
  }
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Ziel] WHERE [Name] LIKE 'neu%'").ToLong(), 2);
  EXPECT_EQ(Scalar("SELECT [Name] FROM [Ziel] WHERE [Nr] = 'K-2'").ToText(), "neu K-2");
}

INSTANTIATE_TEST_SUITE_P(Backends, RowIdentity, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::ado::testing
