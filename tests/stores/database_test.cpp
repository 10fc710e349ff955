#include "stores/database.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "core/converter.h"
#include "platform/ado/text/temp_folder.h"
#include "stores/list_controls.h"
#include "stores/odbc_sources.h"

namespace ketrova {
namespace {

// The parameters a store type reads and the connection string they give.
struct ConnectionCase {
  std::int32_t type;
  const char* file = "";
  const char* server = "";
  const char* database = "";
  const char* user = "";
  const char* password = "";
  const char* port = "";
  const char* dsn = "";
  const char* driver = "";
  const char* expected = "";
};

const ConnectionCase kConnectionCases[] = {
    {.type = dbtAccess,
     .file = "x.mdb",
     .database = "d",
     .user = "u",
     .password = "p",
     .expected = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=x.mdb;User ID=u;PWD=p;Database=d"},
    {.type = dbtOracle, .expected = ""},
    {.type = dbtText,
     .file = "C:\\Daten\\",
     .expected = "Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=C:\\Daten;Extensions=asc,csv,"
                 "tab,txt;Persist Security Info=False;FIL=TEXT;MaxBufferSize=2048;TT=CHARACTER;"
                 "DC=\";\";FLN=1"},
    {.type = dbtExcel,
     .file = "a.xls",
     .expected = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.xls;Extended Properties=\"Excel "
                 "8.0;\";"},
    {.type = dbtMySQL,
     .server = "localhost",
     .database = "z",
     .user = "root",
     .port = "3306",
     .expected = "Provider=MSDASQL;Persist Security Info=False;Extended Properties=\"DRIVER={MySQL "
                 "ODBC 3.51 Driver};Server=localhost;Database=z;UID=root;PASSWORD=;OPTION=35 "
                 ";PORT=3306\";User ID=root;Database=z"},
    {.type = dbtMySQL,
     .server = "db",
     .database = "z",
     .user = "u",
     .password = "p",
     .port = "3307",
     .expected = "Provider=MSDASQL;Persist Security Info=False;Extended Properties=\"DRIVER={MySQL "
                 "ODBC 3.51 Driver};Server=db;Database=z;UID=u;PASSWORD=p;OPTION=35 "
                 ";PORT=3307\";User ID=u;PWD=p;Database=z"},
    {.type = dbtODBC,
     .server = "s",
     .driver = "SQLite3",
     .expected = "ODBC;Driver={SQLite3};Server=s"},
    {.type = dbtODBC,
     .server = "s",
     .dsn = "lager",
     .driver = "SQLite3",
     .expected = "Provider=MSDASQL.1;Data Source=lager;Persist Security Info=False"},
    {.type = dbtSQLServer,
     .server = "srv",
     .database = "Lager",
     .user = "sa",
     .password = "geheim",
     .expected = "Provider=SQLOLEDB.1;Initial Catalog=Lager;Data Source=srv;Persist Security "
                 "Info=False;User ID=sa;PWD=geheim;Database=Lager"},
    // Interbase and Oracle have only the common tail, as have the types
    // without a string of their own.
    {.type = dbtInterbase,
     .server = "srv",
     .database = "Lager",
     .user = "sa",
     .password = "geheim",
     .expected = ";User ID=sa;PWD=geheim;Database=Lager"},
    {.type = dbtOracle,
     .server = "srv",
     .database = "Lager",
     .user = "sa",
     .expected = ";User ID=sa;Database=Lager"},
    {.type = dbtUndefined,
     .database = "z",
     .user = "u",
     .password = "p",
     .expected = ";User ID=u;PWD=p;Database=z"},
    {.type = dbtXML,
     .database = "z",
     .user = "u",
     .password = "p",
     .expected = ";User ID=u;PWD=p;Database=z"},
    {.type = dbtWatcom,
     .server = "db",
     .database = "z",
     .user = "u",
     .password = "p",
     .port = "3307",
     .expected = ";User ID=u;PWD=p;Database=z"},
    {.type = dbtParadox,
     .file = "/daten/paradox",
     .expected = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/daten/paradox;Extended "
                 "Properties=Paradox 5.x;Persist Security Info=False"},
    {.type = dbtOutlook,
     .dsn = "mail",
     .expected = "Provider=Microsoft.Jet.OLEDB.4.0;Exchange "
                 "4.0;MAPILEVEL=;PROFILE=Outlook;TABLETYPE=1;DATABASE=c:\\temp"},
};

TEST(DatabaseTest, ConnectionStringsAreBuiltFromTheParameters) {
  CConverter project;
  CDatabase& db = project.SourceDataBase();
  for (const ConnectionCase& c : kConnectionCases) {
    db.Clear();
    db.DatabaseType = c.type;
    db.DatabaseFileName = c.file;
    db.ServerName = c.server;
    db.DatabaseName = c.database;
    db.UserName = c.user;
    db.Password = c.password;
    db.PortAdress = c.port;
    db.DataSourceName = c.dsn;
    db.DriverName = c.driver;
    EXPECT_EQ(db.ConnectionString(), c.expected) << "type " << c.type << ", " << c.expected;
    if (c.type == dbtText) {
      EXPECT_EQ(db.GetFileBasedDriverPath(), " `C:\\Daten`\\");
    }
  }
}

// An ODBC configuration of its own (the machine's odbc.ini), so that the
// data sources a test writes are those the registry and the driver manager read.
class OdbcConfigTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    if (const char* ini = std::getenv("ODBCINI")) oldIni_ = ini;
    setenv("ODBCINI", Path("odbc.ini").c_str(), 1);
    Write("odbc.ini",
          "[lager_sqlite]\nDriver=SQLite3\nDatabase=/tmp/lager.sqlite\n\n"
          "[lager_lite]\nDriver=SQLite3\nDatabase=/tmp/lite.sqlite\n\n"
          "[lager_pg]\nDriver=PostgreSQL Unicode\n\n"
          "[lager_maria]\nDriver=MariaDB Unicode\n\n"
          "[lager_tds]\nDriver=FreeTDS\n\n"
          "[lager_mysql]\nDriver=MySQL ODBC 8.0 Unicode Driver\n\n"
          "[lager_paradox]\nDriver=Microsoft Paradox Driver (*.db )\n"
          "DefaultDir=/daten/paradox\nFIL=Paradox 5.X\n\n");
  }
  void TearDown() override {
    if (oldIni_)
      setenv("ODBCINI", oldIni_->c_str(), 1);
    else
      unsetenv("ODBCINI");
    TempFolderTest::TearDown();
  }

  std::optional<std::string> oldIni_;
};

TEST_F(OdbcConfigTest, AParadoxDataSourceGetsItsSettingsFromTheConfiguration) {
  CConverter project;
  CDatabase& db = project.SourceDataBase();
  db.DatabaseType = dbtODBC;
  db.DataSourceName = "lager_paradox";
  EXPECT_EQ(db.ConnectionString(),
            "Provider=MSDASQL;Persist Security Info=False;Data Source=lager_paradox;Extended "
            "Properties=\";DSN=lager_paradox;DBQ=/daten/paradox;FIL=Paradox "
            "5.X;MaxBufferSize=500;PageTimeout=600\"");
  EXPECT_EQ(db.DatabaseTypeNative(), dbtParadox);
  EXPECT_TRUE(db.IsFileBased());
  EXPECT_EQ(GetODBCRegistryValue("lager_paradox", "MaxBufferSize", "500"), "500");
  EXPECT_EQ(GetODBCRegistryValue("lager_paradox", "FIL"), "Paradox 5.X");
}

TEST_F(OdbcConfigTest, NativeTypesOfDataSources) {
  CConverter project;
  CDatabase& db = project.SourceDataBase();
  db.DatabaseType = dbtODBC;
  // Only a driver description that names a known store tells it; the drivers
  // installed here do not, so they count as Access.
  const std::pair<const char*, std::int32_t> sources[] = {
      {"lager_sqlite", dbtAccess},  {"lager_pg", dbtAccess},   {"lager_maria", dbtAccess},
      {"lager_tds", dbtAccess},     {"lager_mysql", dbtMySQL}, {"lager_paradox", dbtParadox},
      {"unbekannt.dbf", dbtParadox}};
  for (const auto& [dsn, type] : sources) {
    db.DataSourceName = dsn;
    EXPECT_EQ(db.DatabaseTypeNative(), type) << dsn;
  }
  EXPECT_EQ(ODBCDataSourceDriver("LAGER_PG"), "PostgreSQL Unicode");
  EXPECT_EQ(ODBCDataSourceDriver("nirgends"), "");
}

TEST_F(OdbcConfigTest, DataSourcesAndTheirDriversAreListed) {
  TextList dsn;
  TextList drivers;
  FillODBCDataSources(dsn, &drivers);
  ASSERT_GE(dsn.ListCount(), 8);
  EXPECT_EQ(dsn.List(0), "(Keine)");
  EXPECT_EQ(dsn.listIndex, 0);
  EXPECT_NE(ComboFindText("lager_paradox", dsn), -1);
  EXPECT_NE(ComboFindText("lager_maria", dsn), -1);
  // The two SQLite sources stand side by side: their driver is listed once.
  int sqlite = ComboFindText("SQLite3", drivers);
  ASSERT_NE(sqlite, -1);
  EXPECT_NE(drivers.List(sqlite + 1), "SQLite3");
  EXPECT_NE(ComboFindText("Microsoft Paradox Driver (*.db )", drivers), -1);

  TextList only;
  FillODBCDataSources(only, nullptr);
  EXPECT_EQ(only.ListCount(), dsn.ListCount());
}

TEST(DatabaseTest, SettingTheConnectionStringParsesTheBuiltOneInUpperCase) {
  CConverter project;
  CDatabase& db = project.DestDataBase();
  db.DatabaseType = dbtSQLServer;
  db.DatabaseName = "Lager";
  db.ServerName = "srv";
  db.UserName = "sa";
  db.SetConnectionString("ignored");
  EXPECT_EQ(db.DataSourceName, "SRV");
  EXPECT_EQ(db.DatabaseName, "LAGER");
  EXPECT_EQ(db.UserName, "SA");
  EXPECT_EQ(db.DriverName, "SQLOLEDB.1");
  EXPECT_EQ(db.ServerName, "");
}

TEST(DatabaseTest, ConnectStringParts) {
  std::string text = "no pairs here";
  EXPECT_EQ(GetConnectStringPart(text, 0), "");
  EXPECT_EQ(text, "NO PAIRS HERE");
  text = "Provider=MSDASQL;Extended Properties=\"DSN=a;UID=u\";Database=d";
  EXPECT_EQ(GetConnectStringPart(text, 0), "A");
  EXPECT_EQ(GetConnectStringPart(text, 2), "U\"");  // the closing quote stays
  EXPECT_EQ(GetConnectStringPart(text, 1), "D");
  EXPECT_EQ(GetConnectStringPart(text, 4), "MSDASQL");
  EXPECT_EQ(GetConnectStringPart(text, 9), "");
}

TEST(DatabaseTest, NativeTypeFromTheConnectionString) {
  EXPECT_EQ(GetDatabaseTypeFromConnectString("", 2), 2);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("", -1), 1);
  EXPECT_EQ(
      GetDatabaseTypeFromConnectString("Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=x", 2),
      10);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("DSN=x.dbf", 2), 5);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("DSN=A.B.DB", 2), 2);  // extension B.DB
  EXPECT_EQ(GetDatabaseTypeFromConnectString("Data Source=c:\\x.mdb", 9), 2);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("ODBC;Driver={MSACCESS};Database=x", 9), 2);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("ODBC;Driver={XML Driver};Database=x", 2), 11);
  EXPECT_EQ(
      GetDatabaseTypeFromConnectString("ODBC;Driver={Adaptive Server Anywhere};Database=x", 2), 0);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("ODBC;Driver={INTRBASE};Database=x", 2), 3);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("ODBC;Driver={Oracle};Database=x", 2), 4);
  EXPECT_EQ(GetDatabaseTypeFromConnectString("ODBC;Driver={dBase};Database=x", 2), 5);
  // The Jet provider tells only Outlook and Excel; Paradox stays with the default.
  EXPECT_EQ(
      GetDatabaseTypeFromConnectString(
          "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/p;Extended Properties=Paradox 5.x", 9),
      9);
  EXPECT_EQ(GetDatabaseTypeFromConnectString(
                "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.xls;Extended Properties=\"Excel "
                "8.0;\";",
                2),
            7);
  CConverter project;
  CDatabase& db = project.SourceDataBase();
  EXPECT_EQ(db.DatabaseTypeNative(), dbtAccess);

  // The strings the store types build, with a database so that they are read.
  db.DatabaseName = "lager";
  db.DatabaseFileName = "/daten/lager";
  const std::pair<std::int32_t, std::int32_t> types[] = {
      {dbtAccess, dbtAccess}, {dbtSQLServer, dbtSQLServer}, {dbtParadox, dbtAccess},
      {dbtMySQL, dbtMySQL},   {dbtExcel, dbtExcel},         {dbtOutlook, dbtOutlook},
      {dbtText, dbtText},     {dbtOracle, dbtAccess}};
  for (const auto& [type, native] : types) {
    db.DatabaseType = type;
    EXPECT_EQ(db.DatabaseTypeNative(), native) << type;
  }
}

TEST(DatabaseTest, NamesByStoreType) {
  CConverter project;
  CDatabase& db = project.SourceDataBase();
  db.DatabaseType = dbtText;
  std::string name = "Kunden.csv";
  EXPECT_EQ(db.CheckTableName(name, false), "Kunden.csv.TXT");
  name = "Kunden.csv";
  EXPECT_EQ(db.CheckTableName(name, true), "Kunden");
  EXPECT_EQ(name, "Kunden");
  EXPECT_TRUE(db.IsFileBased());
  EXPECT_FALSE(db.CanUseConnection());
  EXPECT_EQ(db.DatabaseTypeString(), "Allgemeine Textdatei");
  db.DatabaseType = dbtAccess;
  name = "Kunden.csv";
  EXPECT_EQ(db.CheckTableName(name, false), "Kunden.csv");
  EXPECT_FALSE(db.IsFileBased());
  EXPECT_EQ(db.ValidColumnName("typ"), "TYP_Field");
  EXPECT_EQ(db.ValidColumnName("Typ2"), "Typ2");
  db.DatabaseType = dbtXML;
  EXPECT_EQ(db.DatabaseTypeString(), "");
  EXPECT_FALSE(db.CanUseTransctions());
}

TEST(DatabaseTest, ObjectByNameComparesIdentifiers) {
  CConverter project;
  CDatabase& source = project.SourceDataBase();
  source.DatabaseType = dbtAccess;
  CDatabaseObject& mueller = source.Objects().Add();
  mueller.Name = "Müller";
  mueller.Fields().Add().Name = "Nr";  // read, so no store is asked
  std::string error;
  CDatabaseObject* found = source.ObjectByName("MUELLER", error, false);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->Database, &source);
  EXPECT_EQ(source.ObjectByName("Meier", error, false), nullptr);

  CDatabase& dest = project.DestDataBase();
  dest.DatabaseType = dbtAccess;
  std::unique_ptr<CDatabaseObject> clone;
  CDatabaseObject* fromSource = dest.ObjectByName("Müller", error, true, &clone);
  ASSERT_NE(fromSource, nullptr);
  EXPECT_EQ(fromSource, clone.get());
  EXPECT_EQ(dest.Objects().Count(), 0);
}

TEST(DatabaseTest, CatalogueListsKeepTheirKeys) {
  CConverter project;
  CDatabaseObjects& objects = project.SourceDataBase().Objects();
  objects.Add().Name = "a";
  CDatabaseObject& b = objects.Add();
  b.Fields().Add().Name = "Feld";
  EXPECT_EQ(b.Fields().Item(1).ColumnWidth, "50");
  EXPECT_EQ(b.Fields().Item(1).FieldType, 13);
  EXPECT_EQ(b.ColumnByName(" FELD "), &b.Fields().Item(1));
  objects.Remove(1);
  EXPECT_EQ(objects.Item("2").Index, 2);
  std::unique_ptr<CDatabaseObject> copy = b.Clone();
  EXPECT_EQ(copy->Fields().Item("1").Name, "Feld");
  EXPECT_EQ(copy->Database, nullptr);
}

}  // namespace
}  // namespace ketrova
