// CDatabase: one data store of a project, the source or the destination. Its
// eight text parameters say where the store is; the connection string is built
// anew from them each time it is read and is never the source of truth.
//
// CConverter owns two of them; a job side may own one of its own. The catalogue
// (Objects) is owned here; Converter is a back reference that the owner sets
// through SetConverter, which passes it down the catalogue.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <tuple>
#include <utility>

#include "core/enums.h"
#include "platform/ado/provider.h"
#include "stores/database_objects.h"

namespace ketrova {

namespace ado {
class Connection;
class Recordset;
}  // namespace ado

class CConverter;
class CJob;
class COutLook;
class LabelControl;
class ListControl;
class ProgressBarControl;

class CDatabase {
 public:
  CDatabase();
  ~CDatabase();
  CDatabase(const CDatabase&) = delete;
  CDatabase& operator=(const CDatabase&) = delete;

  std::string DataSourceName;
  std::string UserName;
  std::string Password;  // kept and saved in clear
  std::string DatabaseName;
  std::string DriverName;
  std::string ServerName;
  std::string PortAdress;
  std::string DatabaseFileName;
  // 0 in a new object until Clear or Load sets it.
  std::int32_t DatabaseType = 0;
  std::int32_t DatabaseDirection = dbdSource;

  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);
  CDatabaseObjects& Objects() { return *objects_; }
  const CDatabaseObjects& Objects() const { return *objects_; }

  // Record access of the store; set up when the store opens.
  std::shared_ptr<ado::Connection> Connection;
  // The store's record set: an Outlook store's is its adapter's (the folder's
  // record set), any other store's its own, into which Reload reads the schema
  // rows. Setting it stores back what the get answers, whatever is given:
  // nothing outside the class replaces it.
  std::shared_ptr<ado::Recordset> Recordset() const;
  void SetRecordset(const std::shared_ptr<ado::Recordset>& /*ignored*/) {
    recordset_ = Recordset();
  }

  const std::string& LastErrorMessage() const { return lastErrorMessage_; }
  std::int32_t ErrorNumber() const { return errorNumber_; }
  bool OnTransaction() const { return onTransaction_; }
  const std::string& ColBracketLeft() const { return colBracketLeft_; }
  const std::string& ColBracketRight() const { return colBracketRight_; }
  // Sets both brackets by the native type; each successful open runs it.
  void SetColBrackets();

  // The connection string built from the parameters and the type.
  std::string ConnectionString();
  // Ignores the value: rebuilds the string and parses the parameters back from
  // it, which leaves them in upper case.
  void SetConnectionString(const std::string& ignored);
  std::string DatabaseTypeString() const;
  // No store type may use transactions.
  bool CanUseTransctions() const { return false; }
  std::string GetFileBasedDriverPath() const;
  // Only text stores change the name: cut at an extension, or ".TXT" added.
  std::string CheckTableName(std::string& szObjectName, bool bCut) const;
  bool CanUseConnection() const;
  bool IsFileBased();
  // True for the stores that take SQL of their own: ODBC, MySQL, Oracle,
  // Interbase, SQL Server and Access, by the declared type.
  bool IsSQLStore() const;
  // The type the connection string leads to (the argument, else the string
  // built from the parameters).
  std::int32_t DatabaseTypeNative(const std::string& szConnection = {});

  void Clear();
  void Save(pugi::xml_node objRootNode);
  // Reads the store element at `szTreeNode` (below `objNode`); "" or an error text.
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode);

  // Whether the store is open. Setting it true opens the connection (the
  // first open of any store registers the file providers); a failure lands in
  // ErrorNumber and LastErrorMessage, which a later success leaves standing.
  bool Active() const;
  void SetActive(bool value);

  // Reads the store's tables and views with their columns into Objects,
  // without clearing it first; a table whose columns cannot be read is logged
  // and left out. "" or the error text; a failed open answers LastErrorMessage.
  std::string Reload(bool bShowWorkForm = false, bool bShowErrors = false,
                     ProgressBarControl* objProgressBar = nullptr,
                     LabelControl* objLabel = nullptr);
  // On a destination: creates the source's tables that it lacks, then reads
  // its schema again. "" or the error text; a source store does nothing.
  std::string VerifyTables(bool bShowWorkForm = false, bool bShowErrors = false,
                           ProgressBarControl* objProgressBar = nullptr,
                           LabelControl* objLabel = nullptr);
  // The catalogue object whose name matches by IsEqual after MakeIdentifier (and
  // CheckTableName with bCut on stores that are not file based); on a target
  // with `bSearchInSource`, a clone of the source's object. Null when none; a
  // clone is owned by `clone`.
  CDatabaseObject* ObjectByName(const std::string& szObjectName, std::string& szError,
                                bool bSearchInSource,
                                std::unique_ptr<CDatabaseObject>* clone = nullptr);
  std::string ValidColumnName(const std::string& szColumnName) const;

  // Record access of the store. Text results are "" on success, else the
  // error text. Opening and closing are Active's work.
  std::string BeginTrans();
  std::string CommitTrans();
  std::string RollbackTrans();
  // Opens `objRS` (made when null) on `szSQL` with the caller's cursor and lock.
  std::string RecordSetOpen(std::shared_ptr<ado::Recordset>& objRS, const std::string& szSQL,
                            const std::string& szObjectName, std::int32_t inRecordCount,
                            std::int32_t inCursorType, std::int32_t inLockType);
  std::string RecordSetClose(std::shared_ptr<ado::Recordset>& objRS);
  // These work on the store-level Recordset, not on a job's.
  bool RecordsetEOF();
  bool RecordsetMoveNext();
  std::int32_t RecordsetRecordCount();
  std::string CreateObject(const std::string& szObjectName, const std::string& szSQL);
  std::string DeleteRecords(const std::string& szObjectName, const std::string& szSQL);
  // Whether a table or folder of that name exists now, asked of the store.
  bool ObjectExists(const std::string& szObjectName);
  // The engine's last step for a written record: Update, then UpdateBatch.
  void RecordSetWrite(std::shared_ptr<ado::Recordset>& objRS, std::string& szOutlookError,
                      std::string& szError);
  // Commits the writes the store's provider has grouped (at a job's end and
  // before the run waits on the user). Answers the store's text when the
  // commit failed ("" otherwise); the writes of that group are then lost, as
  // FateOfWrites tells.
  std::string FlushWrites();
  // Where the last write that went through went: 0 when it is committed,
  // else the provider's group, whose fate FateOfWrites answers (with the
  // store's text in `szText` for a lost group). See ado::Provider.
  std::uint64_t WriteGroup() const;
  ado::Provider::GroupFate FateOfWrites(std::uint64_t group, std::string& szText) const;
  // Whether the store's server is gone, asked after a write failed: the run
  // then cannot write any further record of the job.
  bool ConnectionLost() const;
  // A record the store refused to write, kept for the run's reject file: the
  // store's text. RecordSetWrite notes its own failures; a store that reports
  // a refusal elsewhere (the mail client's RecordSetUpdate) calls
  // NoteRefusedWrite with its text. TakeRefusedWrite answers it once and
  // forgets it ("" when the last write went through).
  void NoteRefusedWrite(const std::string& szText) { refusedWrite_ = szText; }
  std::string TakeRefusedWrite() { return std::exchange(refusedWrite_, std::string()); }
  // Copies a table's definition from the source through the catalogue;
  // `szTableName` is the source name in, the destination's name out.
  std::string CreateTableFromSource(std::string& szTableName);

  // Fills the list with the names of the objects of a type (tables 1, views
  // 2, all for jitUndefined), their Index as item data; reads the schema first
  // when the catalogue is empty.
  void DatabaseObjectsToList(ListControl& objList, std::int32_t inType);
  // Run on the source: replaces all jobs by one per catalogue object.
  void CopyDataBaseObjectsToJobs();
  // The contact-store adapter while an Outlook store is open, else null.
  COutLook* OutLook() const { return m_OutLook.get(); }
  // Where an Outlook store reports a record whose contact could not be saved
  // (the adapter's RecordToItem answering False): the failure's text and the
  // record. The run's reject file is meant to hear of it; nothing else of the
  // run changes. Read at each refusal, so it may be set while the store is open.
  std::function<void(const std::string& szError, ado::Recordset& objRecord)> OnOutlookRecordRefused;

  // Fills the destination columns of the job from the first folder.
  void CopyOutlookObjectsToTargetJobs(CJob& objJob, bool bShowWorkForm = false,
                                      ProgressBarControl* ProgressBar = nullptr);

 private:
  std::shared_ptr<ado::Recordset> recordset_;
  void Open();
  void Close();
  // Why an SQLite file named by the SQLite3 driver cannot be opened or made
  // (its folder is missing, it or its folder is read-only); "" when nothing
  // of that is wrong or the store names no such file.
  std::string SQLiteFileProblem() const;
  void OpenOutlook();
  std::string OpenOutlookRecordset(const std::string& szObjectName, std::int32_t inRecordCount,
                                   std::shared_ptr<ado::Recordset>& objRS,
                                   const std::string& szSQL);

  // The TDataBaseType of a store code of GetDatabaseTypeFromConnectString.
  static std::int32_t NativeTypeOfCode(std::int32_t code);
  // The native type of a connection text (kept per text in nativeTypes_).
  std::int32_t NativeTypeOfText(const std::string& text);

  std::unique_ptr<CDatabaseObjects> objects_;
  std::map<std::string, std::int32_t> nativeTypes_;  // connection text -> native type
  // The native type of the store's own connection text, with what that text
  // was made of: statements ask for it once or twice per record, and making
  // the text costs more than comparing its parts.
  using ConnectionParts =
      std::tuple<std::int32_t, std::string, std::string, std::string, std::string, std::string,
                 std::string, std::string, std::string>;
  // The parts ConnectionString is made of, as references for comparing.
  auto PartsOfConnection() const {
    return std::tie(DatabaseType, DataSourceName, UserName, Password, DatabaseName, DriverName,
                    ServerName, PortAdress, DatabaseFileName);
  }
  std::optional<std::pair<ConnectionParts, std::int32_t>> nativeMemo_;
  std::string connectionString_;
  std::string lastErrorMessage_;
  std::string refusedWrite_;
  std::int32_t errorNumber_ = 0;
  bool active_ = false;
  std::unique_ptr<COutLook> m_OutLook;  // exists only while an Outlook store is open
  bool onTransaction_ = false;
  std::string colBracketLeft_;
  std::string colBracketRight_;
};

// Reverse parsing of a connection string (the argument is upper-cased in place):
// 0 data source, 1 database (else data source), 2 user, 3 password, 4 driver
// (else provider), 5 server, 6 provider, 7 default directory (else database).
std::string GetConnectStringPart(std::string& szConnection, int inPart);

// The store code behind a connection string: 0 Watcom, 1 SQL Server, 2 Access,
// 3 Interbase, 4 Oracle, 5 Paradox, 6 MySQL, 7 Excel, 8 Outlook, 9 ODBC,
// 10 text, 11 XML; `inDefault` when nothing says otherwise.
std::int32_t GetDatabaseTypeFromConnectString(std::string szConnection, std::int32_t inDefault);

// Runs a statement on the connection; "" or the error text. The failure does
// not spread.
std::string ExecuteSQL(ado::Connection& objConnection, const std::string& szSQL);
// Close, ignoring every error; null is fine.
void CloseRecordset(ado::Recordset* objRS);
void CloseConnection(ado::Connection* objConnection);

}  // namespace ketrova
