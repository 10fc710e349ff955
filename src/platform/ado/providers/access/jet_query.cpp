#include "platform/ado/providers/access/jet_query.h"

#include <algorithm>
#include <cctype>
#include <map>

#include "platform/ado/enums.h"
#include "support/collection.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::access_provider {

namespace {

constexpr const char* kSource = "Ketrova.Access";

// Attributes of the rows in MSysQueries.
enum Attribute {
  kKind = 1,       // Flag: 1 select, 9 union (others: action queries, crosstab)
  kParameter = 2,  // one row per parameter
  kOptions = 3,    // Flag: 0x01 all fields, 0x02 DISTINCT, 0x10 TOP (Name1 the count), 0x20 PERCENT
  kTable = 5,      // Name1 table, Name2 alias; Expression: a part of a union
  kColumn = 6,     // Expression, Name1 alias
  kJoin = 7,       // Name1 left, Name2 right, Expression condition; Flag 1 inner, 2 left, 3 right
  kWhere = 8,
  kGroupBy = 9,
  kHaving = 10,
  kOrderBy = 11,  // Expression; Name1 "D" for descending
};

[[noreturn]] void Refuse(const std::string& query, const std::string& why) {
  throw VbError(ado::kErrStatementRefused,
                "Die Access-Abfrage '" + query + "' kann nicht übernommen werden: " + why, kSource);
}

bool IsWordChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

std::string Bracket(const std::string& name) {
  return "[" + name + "]";
}

}  // namespace

std::string TranslateJetExpression(std::string_view e) {
  std::string out;
  out.reserve(e.size());
  for (std::size_t i = 0; i < e.size();) {
    char c = e[i];
    if (c == '"' || c == '\'') {
      // A text literal: Jet takes both quotes, the engine only the apostrophe.
      std::string text;
      std::size_t k = i + 1;
      for (; k < e.size(); ++k) {
        if (e[k] == c) {
          if (k + 1 < e.size() && e[k + 1] == c) {
            text.push_back(c);
            ++k;
            continue;
          }
          break;
        }
        text.push_back(e[k]);
      }
      out.push_back('\'');
      for (char t : text) {
        if (t == '\'') out.push_back('\'');
        out.push_back(t);
      }
      out.push_back('\'');
      i = k + 1;
    } else if (c == '[') {
      std::size_t close = e.find(']', i);
      if (close == std::string_view::npos) close = e.size() - 1;
      out.append(e.substr(i, close - i + 1));
      i = close + 1;
    } else if (c == '#') {
      std::size_t close = e.find('#', i + 1);
      if (close == std::string_view::npos) close = e.size() - 1;
      out.append(e.substr(i, close - i + 1));
      i = close + 1;
    } else if (c == '&') {
      out += "||";
      ++i;
    } else if (IsWordChar(c)) {
      std::size_t k = i;
      while (k < e.size() && IsWordChar(e[k])) ++k;
      std::string word(e.substr(i, k - i));
      const bool qualified = i > 0 && e[i - 1] == '.';
      std::string upper = AsciiUpper(word);
      if (!qualified && (upper == "YES" || upper == "TRUE"))
        out += "1";
      else if (!qualified && (upper == "NO" || upper == "FALSE"))
        out += "0";
      else
        out += word;
      i = k;
    } else {
      out.push_back(c);
      ++i;
    }
  }
  return out;
}

std::string BuildQuerySql(const std::string& query,
                          const std::vector<MdbDatabase::QueryRow>& rows) {
  int kind = 0, options = 0;
  std::string top;
  struct Table {
    std::string name, alias, expression;
  };
  std::vector<Table> tables;
  std::vector<const MdbDatabase::QueryRow*> columns, joins, wheres, groups, havings, orders;
  for (const auto& r : rows) {
    switch (r.attribute) {
      case kKind:
        kind = r.flag;
        break;
      case kParameter:
        Refuse(query, "sie fragt nach Parametern");
      case kOptions:
        options = r.flag;
        top = r.name1;
        break;
      case kTable:
        tables.push_back({r.name1, r.name2, r.expression});
        break;
      case kColumn:
        columns.push_back(&r);
        break;
      case kJoin:
        joins.push_back(&r);
        break;
      case kWhere:
        wheres.push_back(&r);
        break;
      case kGroupBy:
        groups.push_back(&r);
        break;
      case kHaving:
        havings.push_back(&r);
        break;
      case kOrderBy:
        orders.push_back(&r);
        break;
      default:
        break;
    }
  }

  auto orderBy = [&] {
    std::string sql;
    for (std::size_t i = 0; i < orders.size(); ++i) {
      sql += i == 0 ? " ORDER BY " : ", ";
      sql += TranslateJetExpression(orders[i]->expression);
      if (AsciiUpper(orders[i]->name1) == "D") sql += " DESC";
    }
    return sql;
  };

  if (kind == 9) {  // a union: its parts are complete statements of their own
    std::string sql;
    for (const auto& t : tables) {
      if (t.expression.empty()) continue;
      if (!sql.empty()) sql += " UNION ";
      std::string part = TranslateJetExpression(t.expression);
      while (!part.empty() && std::isspace(static_cast<unsigned char>(part.back())))
        part.pop_back();
      sql += part;
    }
    if (sql.empty()) Refuse(query, "die Vereinigung hat keine Teile");
    return sql + orderBy();
  }
  if (kind != 1) Refuse(query, "sie ist keine Auswahlabfrage");
  if (tables.empty()) Refuse(query, "sie nennt keine Tabelle");

  std::string sql = "SELECT ";
  if (options & 0x02) sql += "DISTINCT ";
  std::string list;
  if (options & 0x01) list = "*";
  for (const auto* c : columns) {
    if (!list.empty()) list += ", ";
    list += TranslateJetExpression(c->expression);
    if (!c->name1.empty()) list += " AS " + Bracket(c->name1);
  }
  if (list.empty()) Refuse(query, "sie hat keine Spalten");
  sql += list;

  // FROM: the joins as a chain, then every table no join names.
  std::map<std::string, const Table*, std::less<>> byName;
  for (const auto& t : tables) byName[AsciiUpper(t.alias.empty() ? t.name : t.alias)] = &t;
  auto ref = [&](const std::string& name) {
    auto it = byName.find(AsciiUpper(name));
    if (it == byName.end()) return Bracket(name);
    const Table* t = it->second;
    return t->alias.empty() ? Bracket(t->name) : Bracket(t->name) + " AS " + Bracket(t->alias);
  };
  std::vector<std::string> joined;
  auto isJoined = [&](const std::string& n) {
    return std::any_of(joined.begin(), joined.end(),
                       [&](const std::string& j) { return KeyEquals(j, n); });
  };
  std::string from;
  std::vector<std::string> extraConditions;
  for (const auto* j : joins) {
    const char* type = j->flag == 2 ? "LEFT" : j->flag == 3 ? "RIGHT" : "INNER";
    const char* flipped = j->flag == 2 ? "RIGHT" : j->flag == 3 ? "LEFT" : "INNER";
    std::string on = TranslateJetExpression(j->expression);
    if (from.empty()) {
      from = ref(j->name1) + " " + type + " JOIN " + ref(j->name2) + " ON " + on;
      joined.push_back(j->name1);
      joined.push_back(j->name2);
    } else if (isJoined(j->name1) && !isJoined(j->name2)) {
      from += std::string(" ") + type + " JOIN " + ref(j->name2) + " ON " + on;
      joined.push_back(j->name2);
    } else if (isJoined(j->name2) && !isJoined(j->name1)) {
      from += std::string(" ") + flipped + " JOIN " + ref(j->name1) + " ON " + on;
      joined.push_back(j->name1);
    } else if (isJoined(j->name1) && isJoined(j->name2) && j->flag == 1) {
      extraConditions.push_back("(" + on + ")");
    } else {
      Refuse(query, "ihre Verknüpfungen lassen sich nicht als Kette schreiben");
    }
  }
  for (const auto& t : tables) {
    const std::string& n = t.alias.empty() ? t.name : t.alias;
    if (isJoined(n)) continue;
    if (!from.empty()) from += ", ";
    from += ref(n);
  }
  sql += " FROM " + from;

  std::string where;
  for (const auto* w : wheres) {
    if (!where.empty()) where += " AND ";
    where += "(" + TranslateJetExpression(w->expression) + ")";
  }
  for (const auto& c : extraConditions) {
    if (!where.empty()) where += " AND ";
    where += c;
  }
  if (!where.empty()) sql += " WHERE " + where;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    sql += i == 0 ? " GROUP BY " : ", ";
    sql += TranslateJetExpression(groups[i]->expression);
  }
  for (std::size_t i = 0; i < havings.size(); ++i) {
    sql += i == 0 ? " HAVING " : " AND ";
    sql += "(" + TranslateJetExpression(havings[i]->expression) + ")";
  }
  sql += orderBy();
  if (options & 0x10) {
    if (options & 0x20) Refuse(query, "TOP ... PERCENT wird nicht übernommen");
    const auto digits = top.find_first_not_of("0123456789");
    if (top.empty() || digits != std::string::npos) Refuse(query, "TOP ohne Anzahl");
    sql += " LIMIT " + top;
  }
  return sql;
}

}  // namespace ketrova::access_provider
