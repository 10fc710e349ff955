// The SQL of a saved Access query, rebuilt from its rows in MSysQueries, in
// the syntax of the file SQL engine's statements (identifiers in brackets).
//
// Select and union queries are rebuilt: output columns with their aliases,
// DISTINCT and TOP, the tables with aliases, inner and outer joins, WHERE,
// GROUP BY, HAVING and ORDER BY. Jet's expressions are carried over with
// string literals in apostrophes, "&" as "||" and Yes/No/True/False as 1/0;
// functions are left as they are, so that a query calling a function the
// engine does not have fails when it is prepared. A query with parameters,
// a crosstab or an action query raises VbError kErrStatementRefused.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/ado/providers/access/mdb_database.h"

namespace ketrova::access_provider {

std::string BuildQuerySql(const std::string& query, const std::vector<MdbDatabase::QueryRow>& rows);

// One Jet expression in the engine's terms (see above).
std::string TranslateJetExpression(std::string_view expression);

}  // namespace ketrova::access_provider
