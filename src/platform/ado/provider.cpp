#include "platform/ado/provider.h"

#include <atomic>
#include <cctype>
#include <map>
#include <mutex>

#include "platform/ado/providers/odbc/odbc_provider.h"
#include "platform/ado/providers/sqlite/sqlite_provider.h"
#include "platform/ado/sql_tokens.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<ProviderKind, ProviderFactory> factories;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

const char* KindName(ProviderKind kind) {
  switch (kind) {
    case ProviderKind::kOdbc:
      return "ODBC";
    case ProviderKind::kText:
      return "Text";
    case ProviderKind::kExcel:
      return "Excel";
    case ProviderKind::kXbase:
      return "Paradox/dBase";
    case ProviderKind::kAccess:
      return "Access";
  }
  return "?";
}

std::atomic<bool> groupedCommits{true};
std::atomic<bool> groupedCommitsSet{false};

}  // namespace

void SetGroupedCommits(bool on) {
  groupedCommits = on;
  groupedCommitsSet = true;
}

bool GroupedCommitsSet() {
  return groupedCommitsSet;
}

bool GroupedCommits() {
  return groupedCommits;
}

bool IsDdlStatement(std::string_view sql) {
  std::size_t i = sql.find_first_not_of(" \t\r\n");
  if (i == std::string_view::npos) return false;
  auto startsWith = [&](std::string_view word) {
    if (sql.size() - i < word.size()) return false;
    for (std::size_t k = 0; k < word.size(); ++k)
      if (std::toupper(static_cast<unsigned char>(sql[i + k])) != word[k]) return false;
    return true;
  };
  return startsWith("CREATE") || startsWith("ALTER") || startsWith("DROP");
}

std::string FirstSqlWord(std::string_view sql) {
  std::size_t i = sql.find_first_not_of(" \t\r\n");
  if (i == std::string_view::npos) return {};
  std::size_t end = i;
  while (end < sql.size() && std::isalpha(static_cast<unsigned char>(sql[end]))) ++end;
  std::string word(sql.substr(i, end - i));
  for (char& c : word) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return word;
}

bool IsTransactionStatement(std::string_view sql) {
  // Asked for every statement a provider runs: the first word is compared
  // where it stands.
  std::size_t i = sql.find_first_not_of(" \t\r\n");
  if (i == std::string_view::npos) return false;
  std::size_t end = i;
  while (end < sql.size() && std::isalpha(static_cast<unsigned char>(sql[end]))) ++end;
  const std::string_view first = sql.substr(i, end - i);
  auto is = [&](std::string_view word) {
    if (first.size() != word.size()) return false;
    for (std::size_t k = 0; k < word.size(); ++k)
      if (std::toupper(static_cast<unsigned char>(first[k])) != word[k]) return false;
    return true;
  };
  return is("BEGIN") || is("START") || is("COMMIT") || is("END") || is("ROLLBACK") ||
         is("SAVEPOINT") || is("RELEASE");
}

std::string RewriteBrackets(std::string_view sql, std::string_view openQuote,
                            std::string_view closeQuote) {
  std::string out;
  out.reserve(sql.size());
  for (std::size_t i = 0; i < sql.size();) {
    SqlToken t = NextSqlToken(sql, i);
    if (t.kind == SqlTokenKind::kBracketed && t.closed) {
      out.append(openQuote);
      out.append(t.Content());
      out.append(closeQuote);
    } else {
      out.append(t.text);
    }
  }
  return out;
}

void RegisterProvider(ProviderKind kind, ProviderFactory factory) {
  auto& r = TheRegistry();
  std::lock_guard lock(r.mutex);
  r.factories[kind] = std::move(factory);
}

std::unique_ptr<Provider> OpenProvider(std::string_view connectionString, std::string_view user,
                                       std::string_view password) {
  ConnectionSpec spec = ParseConnection(connectionString, user, password);
  ProviderFactory factory;
  {
    auto& r = TheRegistry();
    std::lock_guard lock(r.mutex);
    auto it = r.factories.find(spec.kind);
    if (it != r.factories.end()) factory = it->second;
  }
  if (factory) return factory(spec);
  if (spec.kind == ProviderKind::kOdbc) {
    // A SQLite file named through the SQLite3 ODBC driver is opened natively.
    if (auto file = SqliteFileOf(spec)) return std::make_unique<SqliteProvider>(*file, spec);
    return std::make_unique<OdbcProvider>(spec);
  }
  throw VbError(kErrGeneral,
                std::string("Kein Provider für diese Verbindung verfügbar (") +
                    KindName(spec.kind) + "): " + spec.original,
                "Ketrova.ADO");
}

}  // namespace ketrova::ado
