#include "platform/ado/connection_string.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cctype>

#include "support/collection.h"
#include "support/text.h"

namespace ketrova::ado {
namespace {

std::string Trim(std::string_view s) {
  std::size_t b = 0, e = s.size();
  while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
  while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
  return std::string(s.substr(b, e - b));
}

bool StartsWithNoCase(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && KeyEquals(s.substr(0, prefix.size()), prefix);
}

std::string StripBraces(std::string_view v) {
  if (v.size() >= 2 && v.front() == '{' && v.back() == '}')
    return std::string(v.substr(1, v.size() - 2));
  return std::string(v);
}

// The ODBC spelling of a key, so that duplicates of the common tail meet.
std::string CanonicalKey(std::string_view key) {
  std::string k = AsciiUpper(Trim(key));
  if (k == "DATA SOURCE" || k == "DSN") return "DSN";
  if (k == "USER ID" || k == "UID" || k == "USER") return "UID";
  if (k == "PASSWORD" || k == "PWD") return "PWD";
  if (k == "DATABASE" || k == "INITIAL CATALOG") return "DATABASE";
  if (k == "DRIVER") return "DRIVER";
  if (k == "SERVER") return "SERVER";
  return Trim(key);
}

bool IsOleDbOnlyKey(std::string_view key) {
  std::string k = AsciiUpper(Trim(key));
  return k == "PROVIDER" || k == "EXTENDED PROPERTIES" || k == "PERSIST SECURITY INFO";
}

// Adds pairs to a list keyed by their ODBC spelling: the first non-empty value
// of a key wins, since the common tail repeats what an inner string said.
void Merge(std::vector<ConnectionPair>& into, const std::vector<ConnectionPair>& pairs) {
  for (const auto& p : pairs) {
    if (IsOleDbOnlyKey(p.key)) continue;
    std::string key = CanonicalKey(p.key);
    auto it = std::find_if(into.begin(), into.end(),
                           [&](const ConnectionPair& q) { return KeyEquals(q.key, key); });
    if (it == into.end()) {
      into.push_back({key, p.value});
    } else if (Trim(it->value).empty()) {
      it->value = p.value;
    }
  }
}

std::string BuildOdbcString(const std::vector<ConnectionPair>& pairs) {
  std::string out;
  for (const auto& p : pairs) {
    if (Trim(p.value).empty()) continue;
    std::string value = p.value;
    if (KeyEquals(p.key, "DRIVER"))
      value = "{" + ResolveOdbcDriverName(value) + "}";
    else if (value.find(';') != std::string::npos && value.front() != '{')
      value = "{" + value + "}";
    if (!out.empty()) out += ';';
    out += p.key + "=" + value;
  }
  return out;
}

void SetCredentials(std::vector<ConnectionPair>& pairs, std::string_view user,
                    std::string_view password) {
  auto set = [&](const char* key, std::string_view value) {
    if (value.empty()) return;
    auto it = std::find_if(pairs.begin(), pairs.end(),
                           [&](const ConnectionPair& q) { return KeyEquals(q.key, key); });
    if (it == pairs.end())
      pairs.push_back({key, std::string(value)});
    else
      it->value = std::string(value);
  };
  set("UID", user);
  set("PWD", password);
}

}  // namespace

std::string ConnectionSpec::Get(std::string_view key) const {
  for (const auto& p : pairs)
    if (KeyEquals(Trim(p.key), key)) return p.value;
  return {};
}

bool ConnectionSpec::Has(std::string_view key) const {
  for (const auto& p : pairs)
    if (KeyEquals(Trim(p.key), key)) return true;
  return false;
}

std::vector<ConnectionPair> SplitConnectionPairs(std::string_view text) {
  std::vector<ConnectionPair> pairs;
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t eq = text.find('=', i);
    std::size_t semi = text.find(';', i);
    if (eq == std::string_view::npos || (semi != std::string_view::npos && semi < eq)) {
      // A word without "=" ("Exchange 4.0"): kept as a key with no value.
      std::size_t end = semi == std::string_view::npos ? text.size() : semi;
      std::string key = Trim(text.substr(i, end - i));
      if (!key.empty()) pairs.push_back({key, {}});
      i = end + 1;
      continue;
    }
    std::string key = Trim(text.substr(i, eq - i));
    std::size_t v = eq + 1;
    while (v < text.size() && text[v] == ' ') ++v;
    std::string value;
    std::size_t end;
    if (v < text.size() && (text[v] == '"' || text[v] == '\'')) {
      char q = text[v];
      std::size_t close = text.find(q, v + 1);
      if (close == std::string_view::npos) close = text.size();
      value = std::string(text.substr(v + 1, close - v - 1));
      end = text.find(';', std::min(close + 1, text.size()));
    } else if (v < text.size() && text[v] == '{') {
      std::size_t close = text.find('}', v + 1);
      if (close == std::string_view::npos) close = text.size() - 1;
      value = std::string(text.substr(v, close - v + 1));
      end = text.find(';', close + 1);
    } else {
      end = text.find(';', v);
      value = std::string(text.substr(v, (end == std::string_view::npos ? text.size() : end) - v));
      // Trailing blanks are part of some values ("OPTION=35 "), leading ones are not.
    }
    if (!key.empty()) pairs.push_back({key, value});
    if (end == std::string_view::npos) break;
    i = end + 1;
  }
  return pairs;
}

ConnectionSpec ParseConnection(std::string_view connectionString, std::string_view user,
                               std::string_view password) {
  ConnectionSpec spec;
  spec.original = std::string(connectionString);
  std::string text = Trim(connectionString);

  if (StartsWithNoCase(text, "ODBC;")) {
    spec.kind = ProviderKind::kOdbc;
    spec.pairs = SplitConnectionPairs(std::string_view(text).substr(5));
  } else {
    auto outer = SplitConnectionPairs(text);
    spec.pairs = outer;
    std::string provider;
    for (const auto& p : outer)
      if (KeyEquals(Trim(p.key), "Provider")) provider = Trim(p.value);
    spec.extendedProperties = spec.Get("Extended Properties");

    if (StartsWithNoCase(provider, "MSDASQL")) {
      std::vector<ConnectionPair> merged;
      if (!spec.extendedProperties.empty())
        Merge(merged, SplitConnectionPairs(spec.extendedProperties));
      Merge(merged, outer);
      spec.pairs = merged;
    } else if (StartsWithNoCase(provider, "SQLOLEDB")) {
      std::vector<ConnectionPair> merged{{"DRIVER", "{FreeTDS}"},
                                         {"SERVER", spec.Get("Data Source")},
                                         {"DATABASE", spec.Get("Initial Catalog")}};
      for (const auto& p : outer) {
        std::string k = AsciiUpper(Trim(p.key));
        if (k == "DATA SOURCE" || k == "INITIAL CATALOG") continue;
        merged.push_back(p);
      }
      std::vector<ConnectionPair> canon;
      Merge(canon, merged);
      spec.pairs = canon;
    } else if (StartsWithNoCase(provider, "Microsoft.Jet.OLEDB")) {
      std::string ext = AsciiUpper(spec.extendedProperties);
      if (ext.find("EXCEL") != std::string::npos)
        spec.kind = ProviderKind::kExcel;
      else if (ext.find("PARADOX") != std::string::npos || ext.find("DBASE") != std::string::npos)
        spec.kind = ProviderKind::kXbase;
      else
        spec.kind = ProviderKind::kAccess;
      spec.dataSource = spec.Get("Data Source");
    } else if (AsciiUpper(spec.Get("Driver")).find("MICROSOFT TEXT DRIVER") != std::string::npos) {
      spec.kind = ProviderKind::kText;
      spec.dataSource = spec.Get("DBQ");
    } else if (!provider.empty()) {
      // An OLE DB provider we do not have: the driver manager refuses it.
      std::vector<ConnectionPair> canon;
      Merge(canon, outer);
      spec.pairs = canon;
    }
  }

  // The common tail, whatever its spelling.
  for (const auto& p : spec.pairs) {
    std::string k = CanonicalKey(p.key);
    if (k == "UID" && spec.user.empty()) spec.user = p.value;
    if (k == "PWD" && spec.password.empty()) spec.password = p.value;
    if (k == "DATABASE" && spec.database.empty()) spec.database = p.value;
  }
  if (!user.empty()) spec.user = std::string(user);
  if (!password.empty()) spec.password = std::string(password);

  // A Paradox or dBase ODBC driver exists on Windows only: its data source
  // is the folder it names, read by the xBase provider.
  if (spec.kind == ProviderKind::kOdbc) {
    const std::string driver = AsciiUpper(spec.Get("Driver")) + " " + AsciiUpper(spec.Get("FIL"));
    for (const char* word : {"PARADOX", "DBASE", "FOXPRO"}) {
      if (driver.find(word) == std::string::npos) continue;
      spec.kind = ProviderKind::kXbase;
      spec.dataSource = spec.Has("DBQ") ? spec.Get("DBQ") : spec.Get("DefaultDir");
      break;
    }
  }

  if (spec.kind == ProviderKind::kOdbc) {
    std::vector<ConnectionPair> pairs;
    for (const auto& p : spec.pairs) pairs.push_back({CanonicalKey(p.key), p.value});
    SetCredentials(pairs, user, password);
    spec.odbcString = BuildOdbcString(pairs);
  }
  return spec;
}

std::string ResolveOdbcDriverName(std::string_view driver) {
  std::string name = Trim(StripBraces(Trim(driver)));
  std::vector<std::string> installed;
  SQLHENV env = SQL_NULL_HENV;
  if (SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env) == SQL_SUCCESS) {
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLCHAR desc[512];
    SQLCHAR attrs[2048];
    SQLSMALLINT descLen = 0, attrLen = 0;
    SQLUSMALLINT dir = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(
        SQLDrivers(env, dir, desc, sizeof desc, &descLen, attrs, sizeof attrs, &attrLen))) {
      installed.emplace_back(reinterpret_cast<char*>(desc));
      dir = SQL_FETCH_NEXT;
    }
    SQLFreeHandle(SQL_HANDLE_ENV, env);
  }
  for (const auto& d : installed)
    if (KeyEquals(d, name)) return d;
  if (AsciiUpper(name).find("MYSQL") != std::string::npos) {
    const std::string* maria = nullptr;
    for (const auto& d : installed) {
      std::string u = AsciiUpper(d);
      if (u.find("MARIADB") == std::string::npos) continue;
      if (!maria || u.find("UNICODE") != std::string::npos) maria = &d;
    }
    if (maria) return *maria;
  }
  return name;
}

}  // namespace ketrova::ado
