#include "store_backend.h"

#include "stores/odbc_sources.h"

namespace ketrova::testing {

void StoreTest::SetUp() {
  BackendTest::SetUp();
  ui = std::make_shared<ui::ScriptedUserInterface>();
  ui::SetCurrent(ui);
  project.DestDataBase().DatabaseDirection = dbdTarget;
}

void StoreTest::TearDown() {
  project.SourceDataBase().SetActive(false);
  project.DestDataBase().SetActive(false);
  ui::SetCurrent(nullptr);
  BackendTest::TearDown();
}

void StoreTest::Configure(CDatabase& store, const std::string& file) {
  if (Dialect() == "sqlite") {
    store.DatabaseType = dbtODBC;
    store.DriverName = "SQLite3";
    store.DatabaseName = (folder / file).string();
  } else if (Dialect() == "postgresql") {
    store.DatabaseType = dbtODBC;
    store.DataSourceName = "ketrova_pg";
    store.DatabaseName = database;
  } else {
    store.DatabaseType = dbtMySQL;
    store.ServerName = "127.0.0.1";
    store.PortAdress = GetODBCRegistryValue("ketrova_maria", "Port");
    store.UserName = "ketrova";
    store.Password = "ketrova";
    store.DatabaseName = database;
  }
}

void StoreTest::Exec(CDatabase& store, const std::string& sql) {
  EXPECT_EQ(ExecuteSQL(*store.Connection, sql), "") << sql;
}

}  // namespace ketrova::testing
