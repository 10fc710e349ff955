// CJobItem: one end of a job (CJob.JobSource or CJob.JobDest): which object of
// which store is read or written, in what form, with which columns, filters
// and keys, and the open record set of that end during a run.
//
// The owning job sets Direction and Job once; Converter is passed down to the
// columns and filters. A side normally uses the project's store for its
// direction; after ChangeDataBase (or a load with DIFFERENTDATABASE) it owns a
// store of its own, which Database then answers.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "core/enums.h"
#include "jobs/job_item_columns.h"
#include "jobs/job_item_filters.h"
#include "support/object.h"

namespace ketrova {

namespace ado {
class Recordset;
}  // namespace ado

class CConverter;
class CDatabase;
class CJob;

class CJobItem {
 public:
  CJobItem();
  ~CJobItem();
  CJobItem(const CJobItem&) = delete;
  CJobItem& operator=(const CJobItem&) = delete;

  std::int32_t Index = 0;
  std::string Name;
  std::string Key;
  std::string SQL;
  std::string SortFields;
  std::string GroupFields;
  std::string FilterFields;
  bool Filtered = false;
  bool DestinationFilterUserDefined = false;
  std::string DestinationFilterUserDefinedScript;
  bool DeleteBeforeInsert = false;
  bool CreateTable = false;
  std::string FieldDelimiter;
  std::string FieldSeparater;
  std::string KeyField;
  std::string KeyFieldBracket;  // not touched by Clear, not stored
  std::string FileName;
  std::int32_t LastErrorNumber = 0;
  std::string LastErrorMessage;

  std::int32_t Direction = jidSource;
  std::string ItemObjectName;
  std::int32_t JobType = jitTableView;
  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);
  CJobItemColumns& Columns() { return *columns_; }
  const CJobItemColumns& Columns() const { return *columns_; }
  CJobItemFilters& Filters() { return *filters_; }
  const CJobItemFilters& Filters() const { return *filters_; }
  std::shared_ptr<ado::Recordset> Recordset;
  CJob* Job = nullptr;
  // The side's own store when DifferentDataBase, else the project's store for
  // the direction; null without a Converter.
  CDatabase* Database() const;
  bool DifferentDataBase() const { return differentDataBase_; }
  // Set by the engine; runs txSQLSearchResult for updates.
  ObjectPtr ScriptControl;

  void Save(pugi::xml_node objRootNode);
  // Reads the side at `szTreeNode` below `objNode` (or `objNode` itself when
  // the path is empty); "" or an error text.
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode);
  // KeyFieldBracket, LastError*, Direction, Job, Converter and the owned
  // objects stay.
  void Clear();
  // The first column whose Name / TargetColumn / SourceColumn IsEqual to the
  // name, or null.
  CJobItemColumn* ColumnByName(const std::string& szColumnName) const;
  CJobItemColumn* ColumnByTargetName(const std::string& szColumnName) const;
  CJobItemColumn* ColumnBySourceName(const std::string& szColumnName) const;
  // The type of the column with that name, 13 when there is none.
  std::int32_t GetColumnFieldType(const std::string& szColumnName) const;

  // Whether Recordset is open and not at its end.
  bool ValidRecordset() const;
  // Opens Recordset through the project's store of the direction (opening the
  // store when needed): on szUserSQL, else the source statement, or with
  // bForInsert on the target's open statement followed by AddNew. False with
  // LastErrorNumber and LastErrorMessage (ending in "SQL:" and the statement)
  // on failure; never raises.
  bool OpenRecordSet(std::int32_t inMaxRecords = 0, bool bForInsert = false,
                     const std::string& szUserSQL = {});
  // Rebuilds Columns from the record set's fields, opening it first with
  // bReload. A target column takes the source column of the same name as its
  // SourceColumn. False when nothing could be read.
  bool ReloadColumns(bool bReload, std::int32_t inMaxRecords = 0);
  // The columns' names into a list, after one blank entry when asked.
  void ColumnsToList(std::vector<std::string>& objList, bool bInsertFirstBlank = false) const;
  void ClearError();
  // Lets the side use a store of its own, which it then owns.
  std::string ChangeDataBase(std::unique_ptr<CDatabase> vValue, bool bShowWorkForm);
  void RefreshKeyFieldBracket();

  // Statement generation: the exact texts a job sends to its stores.
  std::string GetSelectColumn(const std::string& szColumn, const std::string& szAlias) const;
  std::string GetListFields() const;
  std::string GetSourceSQL() const;
  std::string GetFilter(const std::string& szBaseSQL) const;
  std::string GenerateSQLCount() const;
  std::string GenerateSQLDelete() const;
  // Reports through szError and then answers "".
  std::string GenerateSQLInsertRecord(std::string& szError);

  // Table creation on the destination: the CREATE TABLE statement (or, for a
  // text store, the header file written) for the source object's columns.
  std::string GenerateTableStructure(std::string& szError, const std::string& szSourceObjectName);
  // The store's type name for an ADO type; may turn `inFieldType` into 13.
  static std::string GetSQLTypeName(std::int32_t& inFieldType, std::int32_t inDatabaseType);

 private:
  std::unique_ptr<CJobItemColumns> columns_;
  std::unique_ptr<CJobItemFilters> filters_;
  std::unique_ptr<CDatabase> ownDatabase_;
  bool differentDataBase_ = false;
};

}  // namespace ketrova
