#include "stores/odbc_sources.h"

#include <sql.h>
#include <sqlext.h>

#include <array>

#include "stores/list_controls.h"
#include "support/registry.h"
#include "support/utf8.h"

namespace ketrova {

namespace {

constexpr const char* kDataSourcesKey = "Software\\ODBC\\ODBC.INI\\ODBC Data Sources\\";

std::string ReadBoth(const std::string& key, const std::string& valueName) {
  CRegistry registry;
  std::string value = registry.GetRegSetting(valueName, 0, HKEY_CURRENT_USER, key);
  if (value.empty()) value = registry.GetRegSetting(valueName, 0, HKEY_LOCAL_MACHINE, key);
  return value;
}

}  // namespace

std::string GetODBCRegistryValue(const std::string& szDSN, const std::string& szValueName,
                                 const std::string& defaultValue) {
  std::string value = ReadBoth("Software\\ODBC\\ODBC.INI\\" + szDSN, szValueName);
  return value.empty() ? defaultValue : value;
}

std::string ODBCDataSourceDriver(const std::string& szDSN) {
  return ReadBoth(kDataSourcesKey, szDSN);
}

void FillODBCDataSources(ListControl& cboDSN, ListControl* cboDrivers) {
  cboDSN.Clear();
  if (cboDrivers) cboDrivers->Clear();
  cboDSN.AddItem("(Keine)");
  // Without a driver manager that answers, the list holds only "(Keine)".
  SQLHENV env = SQL_NULL_HENV;
  if (SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env))) {
    bool ready = SQL_SUCCEEDED(
        SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0));
    std::array<SQLCHAR, 1024> name{};
    std::array<SQLCHAR, 1024> driver{};
    SQLSMALLINT nameLength = 0;
    SQLSMALLINT driverLength = 0;
    while (ready && SQLDataSources(env, SQL_FETCH_NEXT, name.data(), name.size(), &nameLength,
                                   driver.data(), driver.size(), &driverLength) == SQL_SUCCESS) {
      std::string dsn(reinterpret_cast<const char*>(name.data()));
      if (Trim(dsn).empty()) continue;
      cboDSN.AddItem(dsn);
      if (cboDrivers) cboDrivers->AddItem(reinterpret_cast<const char*>(driver.data()));
    }
    SQLFreeHandle(SQL_HANDLE_ENV, env);
  }
  if (cboDSN.ListCount() > 0 && cboDrivers && cboDrivers->ListCount() > 1) {
    int i = 0;
    while (i < cboDrivers->ListCount() - 1) {
      if (cboDrivers->List(i) == cboDrivers->List(i + 1))
        cboDrivers->RemoveItem(i);
      else
        ++i;
    }
  }
  cboDSN.SetListIndex(0);
}

}  // namespace ketrova
