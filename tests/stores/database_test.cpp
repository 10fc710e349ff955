#include "stores/database.h"

#include <gtest/gtest.h>

#include "core/converter.h"

namespace ketrova {
namespace {

TEST(DatabaseTest, ConnectionStringsAreBuiltFromTheParameters) {
  CConverter project;
  CDatabase& db = project.SourceDataBase();
  db.DatabaseType = dbtAccess;
  db.DatabaseFileName = "x.mdb";
  db.UserName = "u";
  db.Password = "p";
  db.DatabaseName = "d";
  EXPECT_EQ(db.ConnectionString(),
            "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=x.mdb;User ID=u;PWD=p;Database=d");

  db.Clear();
  db.DatabaseType = dbtOracle;
  EXPECT_EQ(db.ConnectionString(), "");

  db.DatabaseType = dbtText;
  db.DatabaseFileName = "C:\\Daten\\";
  EXPECT_EQ(db.ConnectionString(),
            "Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=C:\\Daten;Extensions=asc,csv,tab,"
            "txt;Persist Security Info=False;FIL=TEXT;MaxBufferSize=2048;TT=CHARACTER;DC=\";\";"
            "FLN=1");
  EXPECT_EQ(db.GetFileBasedDriverPath(), " `C:\\Daten`\\");

  db.Clear();
  db.DatabaseType = dbtExcel;
  db.DatabaseFileName = "a.xls";
  EXPECT_EQ(db.ConnectionString(),
            "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.xls;Extended Properties=\"Excel "
            "8.0;\";");

  db.Clear();
  db.DatabaseType = dbtMySQL;
  db.ServerName = "localhost";
  db.DatabaseName = "z";
  db.UserName = "root";
  db.PortAdress = "3306";
  EXPECT_EQ(db.ConnectionString(),
            "Provider=MSDASQL;Persist Security Info=False;Extended Properties=\"DRIVER={MySQL "
            "ODBC 3.51 Driver};Server=localhost;Database=z;UID=root;PASSWORD=;OPTION=35 "
            ";PORT=3306\";User ID=root;Database=z");

  db.Clear();
  db.DatabaseType = dbtODBC;
  db.DriverName = "SQLite3";
  db.ServerName = "s";
  EXPECT_EQ(db.ConnectionString(), "ODBC;Driver={SQLite3};Server=s");
  db.DataSourceName = "lager";
  EXPECT_EQ(db.ConnectionString(),
            "Provider=MSDASQL.1;Data Source=lager;Persist Security Info=False");
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
  EXPECT_EQ(GetDatabaseTypeFromConnectString(
                "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.xls;Extended Properties=\"Excel "
                "8.0;\";",
                2),
            7);
  CConverter project;
  EXPECT_EQ(project.SourceDataBase().DatabaseTypeNative(), dbtAccess);
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
