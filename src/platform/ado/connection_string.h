// Reading an ADO connection string: which provider serves it and with what.
//
// The system builds OLE DB style strings (Provider=MSDASQL, SQLOLEDB, Jet ...),
// ODBC strings ("ODBC;Driver={X};...") and text-driver strings. ParseConnection
// turns one into a ConnectionSpec: the provider kind, the file or folder for
// the file providers, the string to hand to the ODBC driver manager for the
// ODBC provider, and the common tail (user, password, database). It does not
// check that a DSN, driver or file exists; the provider's open does.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ketrova::ado {

enum class ProviderKind {
  kOdbc,    // unixODBC driver manager
  kText,    // folder of delimited text files
  kExcel,   // workbook
  kXbase,   // folder of Paradox / dBase files
  kAccess,  // Access file, read only
};

// One "key=value" pair as written; the key keeps its spelling. A value in
// double quotes loses them; a value in braces keeps them (drivers want them).
struct ConnectionPair {
  std::string key;
  std::string value;
};

struct ConnectionSpec {
  ProviderKind kind = ProviderKind::kOdbc;
  std::string original;  // the string as given
  // The pairs of the string; for MSDASQL with extended properties these are the
  // inner pairs followed by the outer ones (outer Provider and Extended
  // Properties left out).
  std::vector<ConnectionPair> pairs;
  // For kOdbc: the string for SQLDriverConnect, user and password included.
  std::string odbcString;
  // For the file providers: the file or folder (Data Source or DBQ).
  std::string dataSource;
  // The common tail and its ODBC spellings (User ID/UID, PWD/Password, Database).
  std::string user;
  std::string password;
  std::string database;
  // The Extended Properties value of a Jet string ("Excel 8.0;", "Paradox 5.x").
  std::string extendedProperties;

  // The value of a pair, without regard to the key's case; empty when absent.
  std::string Get(std::string_view key) const;
  bool Has(std::string_view key) const;
};

// Splits "k=v;k=v" into pairs. Values in double quotes or braces may hold ";".
std::vector<ConnectionPair> SplitConnectionPairs(std::string_view text);

// Parses a connection string; `user` and `password` of Connection.Open, when
// not empty, take precedence over those in the string.
ConnectionSpec ParseConnection(std::string_view connectionString, std::string_view user = {},
                               std::string_view password = {});

// The driver name that the installed driver manager knows for `driver` (braces
// removed): the name itself when installed; the installed MariaDB driver for a
// MySQL driver that is not installed; otherwise the name unchanged.
std::string ResolveOdbcDriverName(std::string_view driver);

}  // namespace ketrova::ado
