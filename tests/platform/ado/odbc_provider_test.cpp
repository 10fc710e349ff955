// The ODBC provider over the driver manager without a server: a driver
// library that does not exist, and the SQLite3 driver named by its library
// (which the factory would open natively), through the narrow calls.
#include "platform/ado/providers/odbc/odbc_provider.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/ado/connection_string.h"
#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

namespace fs = std::filesystem;

ConnectionSpec OdbcSpec(const std::string& odbcString) {
  ConnectionSpec spec;
  spec.kind = ProviderKind::kOdbc;
  spec.original = spec.odbcString = odbcString;
  return spec;
}

TEST(OdbcProvider, ADriverLibraryThatIsMissingIsTheDriverManagersDiagnostic) {
  try {
    OdbcProvider provider(OdbcSpec("Driver=/nonexistent/libketrova_fehlt.so;Database=x"));
    FAIL() << "a driver that cannot be loaded must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, kErrGeneral);
    EXPECT_NE(e.Description.find("libketrova_fehlt.so"), std::string::npos) << e.Description;
  }
}

class OdbcThroughSqlite : public ::testing::Test {
 protected:
  void SetUp() override {
    folder = fs::temp_directory_path() /
             ("ketrova_odbc_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
              "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder);
    fs::create_directories(folder);
    const char* library = "/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so";
    if (!fs::exists(library)) GTEST_SKIP() << "the SQLite3 ODBC driver is not installed";
    provider = std::make_unique<OdbcProvider>(
        OdbcSpec(std::string("Driver=") + library + ";Database=" + (folder / "t.db").string()));
  }
  void TearDown() override {
    provider.reset();
    fs::remove_all(folder);
  }

  std::vector<Row> All(const std::string& sql) {
    auto result = provider->Execute(sql);
    std::vector<Row> rows;
    while (result.cursor->Fetch(rows, 100) > 0) {
    }
    return rows;
  }

  fs::path folder;
  std::unique_ptr<OdbcProvider> provider;
};

TEST_F(OdbcThroughSqlite, StatementsCatalogueAndTransactionsOnTheNarrowCalls) {
  ASSERT_TRUE(provider->Narrow());
  provider->Execute("CREATE TABLE [Kunden] ([ID] INTEGER PRIMARY KEY, [Name] VARCHAR(40))");
  provider->Execute("CREATE UNIQUE INDEX [NachName] ON [Kunden] ([Name])");
  Variant params[] = {Variant(1), Variant(std::string("Müller"))};
  EXPECT_EQ(provider->Execute("INSERT INTO [Kunden] VALUES (?, ?)", params).rowsAffected, 1);
  provider->BeginTrans();
  provider->Execute("INSERT INTO [Kunden] VALUES (2, 'Weg')");
  provider->RollbackTrans();

  auto rows = All("SELECT [ID], [Name] FROM [Kunden]");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][1].ToText(), "Müller");

  auto columns = provider->TableColumns("kunden");
  ASSERT_EQ(columns.size(), 2u);
  EXPECT_TRUE(columns[0].keyColumn);
  bool unique = false;
  for (const auto& index : provider->TableIndexes("Kunden"))
    if (index.name == "NachName") unique = index.unique;
  EXPECT_TRUE(unique);
  EXPECT_THROW(provider->CommitTrans(), VbError);
}

TEST_F(OdbcThroughSqlite, ADiagnosticLongerThanTheFirstReadArrivesWhole) {
  // A trigger's own message is passed on as the driver got it; the SQLite3
  // driver keeps 512 bytes of a message, one more than the first read takes.
  std::string message(600, 'x');
  provider->Execute("CREATE TABLE [T] ([A] INTEGER)");
  provider->Execute("CREATE TRIGGER [Nein] BEFORE INSERT ON [T] BEGIN SELECT RAISE(ABORT, '" +
                    message + "'); END");
  try {
    provider->Execute("INSERT INTO [T] VALUES (1)");
    FAIL() << "the trigger refuses every row";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, kErrStatementRefused);
    EXPECT_EQ(e.Description, ("[SQLite]" + message).substr(0, 512));
  }
  // The refused statement leaves the connection usable.
  EXPECT_EQ(All("SELECT COUNT(*) FROM [T]").at(0).at(0).ToLong(), 0);
}

}  // namespace
}  // namespace ketrova::ado
