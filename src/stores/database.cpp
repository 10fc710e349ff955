#include "stores/database.h"

#include <map>

#include "core/converter.h"
#include "core/project_values.h"
#include "core/xml_node.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "stores/odbc_sources.h"
#include "stores/outlook/outlook.h"
#include "support/files.h"
#include "support/text.h"

namespace ketrova {

namespace {

void EraseAll(std::string& text, std::string_view what) {
  std::size_t pos;
  while ((pos = text.find(what)) != std::string::npos) text.erase(pos, what.size());
}

std::string WithoutTrailingBackslash(std::string path) {
  if (!path.empty() && path.back() == '\\') path.pop_back();
  return path;
}

bool Contains(const std::string& haystack, std::string_view needle) {
  return FindString(needle, haystack) > 0;
}

}  // namespace

CDatabase::CDatabase()
    : Connection(std::make_shared<ado::Connection>()),
      objects_(std::make_unique<CDatabaseObjects>()) {
  recordset_ = std::make_shared<ado::Recordset>();
  objects_->Database = this;
}

CDatabase::~CDatabase() {
  Clear();
}

void CDatabase::SetConverter(CConverter* converter) {
  Converter = converter;
  objects_->SetConverter(converter);
}

std::string CDatabase::ConnectionString() {
  std::string s;
  switch (DatabaseType) {
    case dbtAccess:
      s = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + DatabaseFileName;
      break;
    case dbtSQLServer:
      s = "Provider=SQLOLEDB.1;Initial Catalog=" + DatabaseName + ";Data Source=" + ServerName +
          ";Persist Security Info=False";
      break;
    case dbtParadox:
      s = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + DatabaseFileName +
          ";Extended Properties=Paradox 5.x;Persist Security Info=False";
      break;
    case dbtMySQL:
      s = "Provider=MSDASQL;Persist Security Info=False;Extended Properties=\"DRIVER={MySQL ODBC "
          "3.51 Driver};Server=" +
          ServerName + ";Database=" + DatabaseName + ";UID=" + UserName + ";PASSWORD=" + Password +
          ";OPTION=35 ;PORT=" + PortAdress + "\"";
      break;
    case dbtExcel:
      s = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + DatabaseFileName +
          ";Extended Properties=\"Excel 8.0;\";";
      break;
    case dbtODBC:
      if (DataSourceName.empty()) {
        s = "ODBC;Driver={" + DriverName + "};Server=" + ServerName;
      } else {
        s = "Provider=MSDASQL.1;Data Source=" + DataSourceName + ";Persist Security Info=False";
        // The test looks at the string built so far, not at ConnectionString.
        if (DatabaseTypeNative(s) == dbtParadox) {
          s = "Provider=MSDASQL;Persist Security Info=False;Data Source=" + DataSourceName +
              ";Extended Properties=\";DSN=" + DataSourceName +
              ";DBQ=" + GetODBCRegistryValue(DataSourceName, "DefaultDir", "") +
              ";FIL=" + GetODBCRegistryValue(DataSourceName, "FIL", "") +
              ";MaxBufferSize=" + GetODBCRegistryValue(DataSourceName, "MaxBufferSize", "500") +
              ";PageTimeout=600\"";
        }
      }
      break;
    case dbtOutlook:
      s = "Provider=Microsoft.Jet.OLEDB.4.0;Exchange "
          "4.0;MAPILEVEL=;PROFILE=Outlook;TABLETYPE=1;DATABASE=c:\\temp";
      break;
    case dbtText:
      s = "Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=" +
          WithoutTrailingBackslash(DatabaseFileName) +
          ";Extensions=asc,csv,tab,txt;Persist Security Info=False;FIL=TEXT;MaxBufferSize=2048;"
          "TT=CHARACTER;DC=\";\";FLN=1";
      break;
    default:
      break;
  }
  if (!UserName.empty()) s += ";User ID=" + UserName;
  if (!Password.empty()) s += ";PWD=" + Password;
  if (!DatabaseName.empty()) s += ";Database=" + DatabaseName;
  connectionString_ = s;
  return s;
}

void CDatabase::SetConnectionString(const std::string&) {
  connectionString_ = ConnectionString();
  DataSourceName = GetConnectStringPart(connectionString_, 0);
  UserName = GetConnectStringPart(connectionString_, 2);
  Password = GetConnectStringPart(connectionString_, 3);
  DatabaseName = GetConnectStringPart(connectionString_, 1);
  DriverName = GetConnectStringPart(connectionString_, 4);
  ServerName = GetConnectStringPart(connectionString_, 5);
}

std::string CDatabase::DatabaseTypeString() const {
  switch (DatabaseType) {
    case dbtAccess:
      return "Microsoft Access";
    case dbtSQLServer:
      return "Microsoft SQL-Server";
    case dbtInterbase:
      return "Interbase";
    case dbtOracle:
      return "Oracle";
    case dbtParadox:
      return "Paradox";
    case dbtMySQL:
      return "MySQL";
    case dbtExcel:
      return "Microsoft Excel";
    case dbtODBC:
      return "ODBC-Datenbank";
    case dbtOutlook:
      return "Microsoft Outlook";
    case dbtText:
      return "Allgemeine Textdatei";
    default:
      return {};
  }
}

std::string CDatabase::GetFileBasedDriverPath() const {
  return " `" + WithoutTrailingBackslash(DatabaseFileName) + "`\\";
}

std::string CDatabase::CheckTableName(std::string& szObjectName, bool bCut) const {
  if (DatabaseType != dbtText) return szObjectName;
  if (bCut) {
    for (const char* extension : {".TXT", ".CSV", ".TAB", ".ASC"})
      szObjectName = GetSubString(szObjectName, extension, true);
  } else {
    std::string last =
        szObjectName.size() >= 4 ? szObjectName.substr(szObjectName.size() - 4) : szObjectName;
    if (!IsEqual(last, ".TXT")) szObjectName += ".TXT";
  }
  return szObjectName;
}

bool CDatabase::CanUseConnection() const {
  return DatabaseType != dbtOutlook && DatabaseType != dbtText && DatabaseType != dbtXML;
}

bool CDatabase::IsFileBased() {
  std::int32_t type = DatabaseType == dbtODBC ? DatabaseTypeNative() : DatabaseType;
  return type == dbtText || type == dbtXML || type == dbtExcel || type == dbtParadox;
}

std::int32_t CDatabase::DatabaseTypeNative(const std::string& szConnection) {
  if (!szConnection.empty()) return NativeTypeOfText(szConnection);
  if (nativeMemo_ && nativeMemo_->first == PartsOfConnection()) return nativeMemo_->second;
  const std::int32_t answer = NativeTypeOfText(ConnectionString());
  nativeMemo_.emplace(PartsOfConnection(), answer);
  return answer;
}

std::int32_t CDatabase::NativeTypeOfText(const std::string& text) {
  // Statements ask for the type per record; the look-up in the ODBC
  // configuration is made once per text until the store opens again.
  auto known = nativeTypes_.find(text);
  if (known != nativeTypes_.end()) return known->second;
  if (nativeTypes_.size() > 16) nativeTypes_.clear();
  return nativeTypes_[text] = NativeTypeOfCode(GetDatabaseTypeFromConnectString(text, 2));
}

std::int32_t CDatabase::NativeTypeOfCode(std::int32_t code) {
  switch (code) {
    case -1:
      return dbtUndefined;
    case 0:
      return dbtWatcom;
    case 1:
      return dbtSQLServer;
    case 2:
      return dbtAccess;
    case 3:
      return dbtInterbase;
    case 4:
      return dbtOracle;
    case 5:
      return dbtParadox;
    case 6:
      return dbtMySQL;
    case 7:
      return dbtExcel;
    case 8:
      return dbtOutlook;
    case 9:
      return dbtODBC;
    case 10:
      return dbtText;
    case 11:
      return dbtXML;
    default:
      return 0;
  }
}

void CDatabase::Clear() {
  DatabaseType = dbtUndefined;
  DatabaseDirection = dbdSource;
  connectionString_.clear();
  lastErrorMessage_.clear();
  errorNumber_ = 0;
  active_ = false;
  DataSourceName.clear();
  UserName.clear();
  Password.clear();
  DatabaseName.clear();
  DriverName.clear();
  ServerName.clear();
  PortAdress.clear();
  DatabaseFileName.clear();
  objects_->Clear();
}

void CDatabase::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "DATABASETYPE", std::to_string(DatabaseType));
  xml.WriteNodeAttribute(objRootNode, "DATABASEDIRECTION", std::to_string(DatabaseDirection));
  xml.WriteNodeAttribute(objRootNode, "CONNECTIONSTRING", ConnectionString());
  xml.WriteNodeAttribute(objRootNode, "DATASOURCENAME", DataSourceName);
  xml.WriteNodeAttribute(objRootNode, "USERNAME", UserName);
  xml.WriteNodeAttribute(objRootNode, "PASSWORD", Password);
  xml.WriteNodeAttribute(objRootNode, "DATABASENAME", DatabaseName);
  xml.WriteNodeAttribute(objRootNode, "DRIVERNAME", DriverName);
  xml.WriteNodeAttribute(objRootNode, "SERVERNAME", ServerName);
  xml.WriteNodeAttribute(objRootNode, "PORTADRESS", PortAdress);
  xml.WriteNodeAttribute(objRootNode, "FILENAME", DatabaseFileName);
  pugi::xml_node objects = xml.CreateElement("OBJECTS");
  objects_->Save(objects);
  xml.AppendChild(objRootNode, objects);
}

std::string CDatabase::Load(const std::string& szTreeNode, pugi::xml_node objNode) {
  CXMLADO& xml = Converter->XMLLib();
  pugi::xml_node node = xml.FindNode(szTreeNode, objNode);
  DatabaseType = TextToLong(xml.ReadAttribute(node, "DATABASETYPE", "1"));
  DatabaseDirection = TextToLong(xml.ReadAttribute(node, "DATABASEDIRECTION", "1"));
  // The stored string is not the source of truth; it is rebuilt when read.
  connectionString_ = xml.ReadAttribute(node, "CONNECTIONSTRING");
  DataSourceName = xml.ReadAttribute(node, "DATASOURCENAME");
  UserName = xml.ReadAttribute(node, "USERNAME");
  Password = xml.ReadAttribute(node, "PASSWORD");
  DatabaseName = xml.ReadAttribute(node, "DATABASENAME");
  DriverName = xml.ReadAttribute(node, "DRIVERNAME");
  ServerName = xml.ReadAttribute(node, "SERVERNAME");
  PortAdress = xml.ReadAttribute(node, "PORTADRESS");
  DatabaseFileName = xml.ReadAttribute(node, "FILENAME");
  // Searched from the root element: a store inside a job side, whose path is
  // relative, comes back without its catalogue.
  return objects_->Load(szTreeNode + "/Objects");
}

std::string CDatabase::ValidColumnName(const std::string& szColumnName) const {
  if (AsciiUpper(szColumnName) == "TYP") return "TYP_Field";
  return szColumnName;
}

std::string GetConnectStringPart(std::string& szConnection, int inPart) {
  szConnection = AsciiUpper(szConnection);
  EraseAll(szConnection, "EXTENDED PROPERTIES=\"");
  std::map<std::string, std::string> slots;
  static const std::map<std::string, std::string> keys = {
      {"DSN", "source"},           {"DATA SOURCE", "source"},
      {"DATABASE", "database"},    {"INITIAL CATALOG", "database"},
      {"DBQ", "database"},         {"UID", "user"},
      {"USER ID", "user"},         {"PWD", "password"},
      {"PASSWORD", "password"},    {"DRIVER", "driver"},
      {"SERVER", "server"},        {"PROVIDER", "provider"},
      {"DEFAULTDIR", "defaultdir"}};
  if (szConnection.find('=') != std::string::npos) {
    std::string token;
    for (std::size_t i = 0; i <= szConnection.size(); ++i) {
      if (i == szConnection.size() || szConnection[i] == ';') {
        std::size_t eq = token.find('=');
        if (!token.empty() && eq != std::string::npos) {
          auto it = keys.find(token.substr(0, eq));
          if (it != keys.end()) slots[it->second] = token.substr(eq + 1);
        }
        token.clear();
      } else {
        token += szConnection[i];
      }
    }
  }
  auto slot = [&](const char* name) { return slots[name]; };
  switch (inPart) {
    case 0:
      return slot("source");
    case 1:
      return slot("database").empty() ? slot("source") : slot("database");
    case 2:
      return slot("user");
    case 3:
      return slot("password");
    case 4:
      return slot("driver").empty() ? slot("provider") : slot("driver");
    case 5:
      return slot("server");
    case 6:
      return slot("provider");
    case 7:
      return slot("defaultdir").empty() ? slot("database") : slot("defaultdir");
    default:
      return {};
  }
}

std::int32_t GetDatabaseTypeFromConnectString(std::string szConnection, std::int32_t inDefault) {
  std::int32_t result = inDefault == -1 ? 1 : inDefault;
  std::string whole = szConnection;
  if (szConnection.empty()) return result;
  std::string text = GetConnectStringPart(szConnection, 1);
  if (text.empty()) return result;
  // A data source name stands for its driver's description.
  std::string driverDescription = ODBCDataSourceDriver(text);
  if (!driverDescription.empty()) {
    text = driverDescription;
    whole += " " + driverDescription;
  }
  std::string extension = FileExtension(text);
  if (extension == "DBF" || extension == "DB") result = 5;
  if (extension == "MDB") result = 2;
  std::string wholeCopy = whole;
  std::string driver = AsciiUpper(GetConnectStringPart(wholeCopy, 4));
  std::string upperWhole = AsciiUpper(whole);
  if (Contains(driver, "MSACCESS") || Contains(driver, "MICROSOFT ACCESS")) return 2;
  if (Contains(driver, "JET.OLE")) {
    if (Contains(upperWhole, "OUTLOOK")) return 8;
    if (Contains(upperWhole, "EXCEL")) return 7;
    return result;
  }
  if (Contains(upperWhole, "TEXT DRIVER") || Contains(driver, "*.TXT") || Contains(driver, "*.ASC"))
    return 10;
  if (Contains(upperWhole, "XML DRIVER") || Contains(upperWhole, "*.XML")) return 11;
  if (Contains(upperWhole, "ANYWHERE")) return 0;
  if (Contains(upperWhole, "INTRBASE")) return 3;
  if (Contains(upperWhole, "ORACLE")) return 4;
  if (Contains(upperWhole, "MSSQL") || Contains(upperWhole, "INITIAL CATALOG") ||
      Contains(upperWhole, "SQL SERVER"))
    return 1;
  if (Contains(upperWhole, "MYSQL")) return 6;
  if (Contains(upperWhole, "STANDARD") || Contains(upperWhole, "PARADOX") ||
      Contains(upperWhole, "DBASE") || Contains(upperWhole, "FOXPRO"))
    return 5;
  return result;
}

}  // namespace ketrova
