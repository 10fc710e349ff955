// The DDL text that ADOX's Append calls turn into, in the dialect of a
// provider: identifiers in the provider's quote, column types from the
// provider's ColumnTypeSql.
//
// Columns are nullable unless they belong to the primary key or count up by
// themselves: the attributes that callers copy from record-set fields do not
// carry ADOX's adColNullable, and a converter must not refuse NULLs because of
// that.
#pragma once

#include <string>
#include <vector>

#include "platform/ado/adox/catalog.h"
#include "platform/ado/provider.h"

namespace ketrova::adox {

// The provider's view of an ADOX column.
ado::ColumnInfo ColumnDefinition(const Column& column);

// "CREATE TABLE q(t) (col type, ..., PRIMARY KEY (...))".
std::string CreateTableSql(const ado::Provider& provider, const std::string& table,
                           const std::vector<ColumnPtr>& columns, const Index* primaryKey);
// "ALTER TABLE q(t) ADD q(c) type" (MySQL and the others: "ADD COLUMN" is not needed).
std::string AddColumnSql(const ado::Provider& provider, const std::string& table,
                         const Column& column);
// "CREATE [UNIQUE] INDEX q(i) ON q(t) (q(c), ...)", or for a primary key on an
// existing table "ALTER TABLE q(t) ADD PRIMARY KEY (...)" where the store can.
std::string CreateIndexSql(const ado::Provider& provider, const std::string& table,
                           const Index& index);

}  // namespace ketrova::adox
