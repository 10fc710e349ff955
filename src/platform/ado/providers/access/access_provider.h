// The Access provider: an Access database (.mdb, .accdb) as a read-only store,
// opened by "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=<file>" without
// extended properties.
//
// Tables and select queries are read through libmdb (mdb_database.h) and run
// on the file SQL engine: each table a virtual table of the module
// "ketrova_mdb", each select query a view of the engine made from its SQL
// (jet_query.h) when a statement first names it. A query whose SQL the engine
// cannot take fails when it is prepared, so its columns cannot be loaded.
// Columns carry the ADO type and size that Jet reports; values come as the
// matching Variant subtype (Byte, Integer, Long, Single, Double, Currency,
// Date, Boolean, Decimal, String, a Byte array for binary).
//
// Nothing is ever written: INSERT, UPDATE, DELETE and DDL are refused, and so
// are AddNew and field assignments on its record sets (CheckWritable), with a
// German text that names the way out. A file that does not exist cannot be
// created, so opening it fails.
//
// RegisterAccessProvider() must be called once at program start, as the
// programs and the tests do.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/provider.h"
#include "platform/ado/providers/access/mdb_database.h"

namespace ketrova::access_provider {

void RegisterAccessProvider();

class AccessProvider : public ado::Provider {
 public:
  // Raises VbError kErrGeneral when the file is missing or no Access file.
  explicit AccessProvider(const ado::ConnectionSpec& spec);

  std::string Dialect() const override { return "access"; }
  std::string IdentifierQuote() const override { return "["; }

  ado::ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                             std::int64_t maxRows = 0) override;
  void BeginTrans() override {}
  void CommitTrans() override {}
  void RollbackTrans() override {}
  void CheckWritable() const override;

  std::vector<ado::TableInfo> Tables() override;
  std::vector<ado::ColumnInfo> TableColumns(const std::string& table) override;
  std::vector<ado::IndexInfo> TableIndexes(const std::string& table) override;
  std::string ColumnTypeSql(const ado::ColumnInfo& column) const override;

 private:
  std::optional<file_engine::TableSource> Resolve(const std::string& name);
  // The Jet description of a result column, found by its base table and
  // column; null when the column is computed or comes from a query.
  const JetColumn* BaseColumn(const ado::ColumnInfo& column);

  std::unique_ptr<MdbDatabase> database_;
  std::unique_ptr<file_engine::FileEngine> engine_;
  std::map<std::string, std::vector<JetColumn>> columns_;  // by upper-case table name
  friend class AccessCursor;
};

}  // namespace ketrova::access_provider
