// The run-time half of CDatabase: opening and closing the store, transactions
// and the narrow record interface through which the engine and the catalogue
// reach a store.
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "core/converter.h"
#include "core/error_text.h"
#include "platform/ado/adox/catalog.h"
#include "platform/ado/connection.h"
#include "platform/ado/providers/file_providers.h"
#include "platform/ado/recordset.h"
#include "platform/ui/ui_helpers.h"
#include "stores/database.h"
#include "stores/outlook/outlook.h"
#include "support/files.h"
#include "support/registry.h"
#include "support/system.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// Ketrova's own setting "GroupedCommits" in the section "Ketrova" of the
// registry ini: 0 (or "Nein", "Falsch", "off") has every write committed on
// its own. Read at the first open of a store in a process; the command line
// decides where it says something.
void ApplyGroupingSetting() {
  if (ado::GroupedCommitsSet()) return;
  std::string value = AsciiUpper(
      Trim(CRegistry().GetRegSetting("GroupedCommits", 0, HKEY_CURRENT_USER, "Ketrova", "1")));
  ado::SetGroupedCommits(!(value == "0" || value == "NEIN" || value == "FALSCH" ||
                           value == "FALSE" || value == "OFF" || value == "NO"));
}

// The text of the exception being handled, as the operations of this file
// answer it; the pending error is cleared behind it.
std::string CurrentFailureText(const std::string& szAction = {}) {
  SetPendingError(std::current_exception());
  std::string text = BuildErrorText(1, std::string(), szAction);
  Err().Clear();
  return text;
}

}  // namespace

std::string CDatabase::SQLiteFileProblem() const {
  // Only an SQLite file named by its driver is a file this store can look at.
  if (DatabaseType != dbtODBC || !DataSourceName.empty() || DatabaseName.empty() ||
      UpperCase(DriverName).find("SQLITE") == std::string::npos)
    return {};
  namespace fs = std::filesystem;
  const fs::path file(DatabaseName);
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  std::error_code ec;
  if (!fs::is_directory(folder, ec)) return "der Ordner " + folder.string() + " existiert nicht";
  if (fs::exists(file, ec)) {
    if (::access(file.c_str(), R_OK | W_OK) != 0)
      return "die Datei " + file.string() + ": " + SystemErrorText(errno);
  } else if (::access(folder.c_str(), W_OK) != 0) {
    return "die Datei kann im Ordner " + folder.string() +
           " nicht angelegt werden: " + SystemErrorText(errno);
  }
  return {};
}

bool CDatabase::Active() const {
  return DatabaseType == dbtOutlook ? m_OutLook != nullptr : active_;
}

void CDatabase::SetActive(bool value) {
  ado::RegisterFileProviders();
  if (value)
    Open();
  else
    Close();
}

void CDatabase::Open() {
  if (Active()) return;
  ui::ShowHourglass(true);
  std::string szStep = "Open Database";
  std::string connection;
  try {
    CloseConnection(Connection.get());
    active_ = false;
    nativeTypes_.clear();  // the ODBC configuration may have changed
    nativeMemo_.reset();
    connection = ConnectionString();
    if (DatabaseType == dbtOutlook) {
      OpenOutlook();
    } else {
      if (connection.empty())
        throw VbError(1000, "Keine Verbindungsparameter vorhanden !", "Database");
      if (DatabaseDirection == dbdTarget && DatabaseType == dbtAccess &&
          !FileExists(DatabaseFileName)) {
        szStep = "Create Database -> " + DatabaseFileName;
        adox::Catalog catalog;
        catalog.Create(connection);
      }
      ApplyGroupingSetting();
      Connection->Open(connection, "", "", -1);
    }
    SetColBrackets();
    active_ = true;
  } catch (...) {
    // A store that does not open raises nothing: the error lands in
    // LastErrorMessage and ErrorNumber.
    SetPendingError(std::current_exception());
    ui::ShowHourglass(false);
    if (std::string why = SQLiteFileProblem(); !why.empty()) Err().Description += " (" + why + ")";
    errorNumber_ = Err().Number;
    lastErrorMessage_ = BuildErrorText(1, std::string(), szStep) + "\r\n" + connection;
    Err().Clear();
    return;
  }
  ui::ShowHourglass(false);
}

void CDatabase::Close() {
  if (DatabaseType == dbtOutlook)
    m_OutLook.reset();
  else
    CloseConnection(Connection.get());
  active_ = false;
}

void CDatabase::OpenOutlook() {
  // A new adapter at each open; its text result is not looked at (a missing
  // contact root is reported through the error event), and the store reads
  // as open since the adapter exists.
  m_OutLook = std::make_unique<COutLook>();
  m_OutLook->Converter = Converter;
  // Through the store's hook as it stands at each refusal, so that a run may
  // set it after the store opened.
  // A refused card is also kept for the run's reject file, as a refused
  // record of any other store is.
  m_OutLook->RecordRefused = [this](const std::string& szError, ado::Recordset& objRecord) {
    NoteRefusedWrite(szError);
    if (OnOutlookRecordRefused) OnOutlookRecordRefused(szError, objRecord);
  };
  m_OutLook->OpenConnection();
}

void CDatabase::SetColBrackets() {
  colBracketLeft_.clear();
  colBracketRight_.clear();
  switch (DatabaseTypeNative()) {
    case dbtAccess:
    case dbtSQLServer:
    case dbtInterbase:
    case dbtOracle:
    case dbtExcel:
    case dbtODBC:
      colBracketLeft_ = "[";
      colBracketRight_ = "]";
      break;
    case dbtParadox:
      colBracketLeft_ = colBracketRight_ = "\"";
      break;
    case dbtMySQL:
      colBracketLeft_ = colBracketRight_ = "`";
      break;
    case dbtText:
      colBracketLeft_ = colBracketRight_ = "'";
      break;
    default:
      break;
  }
}

namespace {

// Runs one transaction call of the connection; on success the store's flag
// takes `after`, on failure the flag stays and the error text is the answer.
template <typename Call>
std::string Transaction(Call&& call, bool& onTransaction, bool after) {
  try {
    call();
    onTransaction = after;
    return {};
  } catch (...) {
    // A failed transaction call answers its error text and leaves the flag as it was.
    return CurrentFailureText();
  }
}

}  // namespace

std::string CDatabase::BeginTrans() {
  return Transaction([this] { Connection->BeginTrans(); }, onTransaction_, true);
}

std::string CDatabase::CommitTrans() {
  return Transaction([this] { Connection->CommitTrans(); }, onTransaction_, false);
}

std::string CDatabase::RollbackTrans() {
  return Transaction([this] { Connection->RollbackTrans(); }, onTransaction_, false);
}

std::string CDatabase::RecordSetOpen(std::shared_ptr<ado::Recordset>& objRS,
                                     const std::string& szSQL, const std::string& szObjectName,
                                     std::int32_t inRecordCount, std::int32_t inCursorType,
                                     std::int32_t inLockType) {
  try {
    if (DatabaseType == dbtOutlook) {
      // Reading a folder's columns (the catalogue opens forward-only and
      // read-only) goes through an adapter of its own: through the store's
      // adapter it would take over the cursor and the record set of a run
      // that reads this store as its source, whose next records would then
      // never reach it (a run into a table it creates reads the source's
      // columns between its first record and its second).
      if (inCursorType == ado::adOpenForwardOnly && inLockType == ado::adLockReadOnly &&
          m_OutLook) {
        COutLook columns(m_OutLook->Root());
        columns.Converter = Converter;
        columns.OpenConnection();
        if (!objRS) objRS = std::make_shared<ado::Recordset>();
        return columns.RecordSetOpen(szObjectName, inRecordCount, objRS, 2, szSQL, "", true);
      }
      return OpenOutlookRecordset(szObjectName, inRecordCount, objRS, szSQL);
    }
    if (DatabaseType == dbtXML) return {};
    if (!objRS) objRS = std::make_shared<ado::Recordset>();
    objRS->Open(Variant(szSQL), Variant(ObjectPtr(Connection)), inCursorType, inLockType, -1);
    return {};
  } catch (...) {
    // A record set that does not open answers the error text.
    return CurrentFailureText();
  }
}

std::string CDatabase::OpenOutlookRecordset(const std::string& szObjectName,
                                            std::int32_t inRecordCount,
                                            std::shared_ptr<ado::Recordset>& objRS,
                                            const std::string& szSQL) {
  if (!objRS) objRS = std::make_shared<ado::Recordset>();
  if (!m_OutLook) throw VbError(91, {}, "Database");
  return m_OutLook->RecordSetOpen(szObjectName, inRecordCount, objRS, 2, szSQL, "", true);
}

std::string CDatabase::RecordSetClose(std::shared_ptr<ado::Recordset>& objRS) {
  if (DatabaseType == dbtOutlook) return m_OutLook ? m_OutLook->RecordSetClose() : std::string();
  if (DatabaseType == dbtXML) return {};
  CloseRecordset(objRS.get());
  return {};
}

std::shared_ptr<ado::Recordset> CDatabase::Recordset() const {
  if (DatabaseType == dbtOutlook && m_OutLook) return m_OutLook->Recordset;
  return recordset_;
}

bool CDatabase::RecordsetEOF() {
  if (DatabaseType == dbtOutlook) return m_OutLook && m_OutLook->Eof();
  if (DatabaseType == dbtText || DatabaseType == dbtXML) return false;
  try {
    return recordset_->Eof();
  } catch (...) {
    // The store-level EOF swallows a failure and answers False.
    Err().Clear();
    return false;
  }
}

bool CDatabase::RecordsetMoveNext() {
  if (DatabaseType == dbtText || DatabaseType == dbtXML) return false;
  try {
    if (DatabaseType == dbtOutlook) {
      if (m_OutLook) m_OutLook->OutlookRSMoveNext();
      return false;
    }
    recordset_->MoveNext();
  } catch (...) {
    // The store-level MoveNext swallows a failure (and answers False, as always).
  }
  return false;
}

std::int32_t CDatabase::RecordsetRecordCount() {
  if (DatabaseType == dbtText || DatabaseType == dbtXML) return 0;
  try {
    if (DatabaseType == dbtOutlook) return m_OutLook ? m_OutLook->RecordCount() : 0;
    return recordset_->RecordCount();
  } catch (...) {
    // The store-level RecordCount swallows a failure and answers 0.
    return 0;
  }
}

std::string CDatabase::CreateObject(const std::string& szObjectName, const std::string& szSQL) {
  if (DatabaseType == dbtOutlook)
    return m_OutLook ? m_OutLook->CreateFolder(szObjectName) : std::string();
  if (DatabaseType == dbtText || DatabaseType == dbtXML) return {};
  try {
    if (!szSQL.empty()) Connection->Execute(szSQL, nullptr, -1);
    return {};
  } catch (...) {
    // A failed CREATE answers the error text.
    return CurrentFailureText();
  }
}

std::string CDatabase::DeleteRecords(const std::string& szObjectName, const std::string& szSQL) {
  if (DatabaseType == dbtOutlook)
    return m_OutLook ? m_OutLook->DeleteItems(szObjectName, szSQL, 2) : std::string();
  if (DatabaseType == dbtXML) return {};
  std::string result = ExecuteSQL(*Connection, szSQL);
  return ReplaceAll(result, "\\n", "\r\n");
}

bool CDatabase::ObjectExists(const std::string& szObjectName) {
  if (DatabaseType == dbtXML) return false;
  try {
    if (DatabaseType == dbtOutlook) {
      bool bFound = false;
      return m_OutLook && m_OutLook->FindObject(nullptr, szObjectName, 2, bFound) != nullptr;
    }
    ado::RecordsetPtr schema = Connection->OpenSchema(ado::adSchemaTables);
    for (; !schema->Eof(); schema->MoveNext())
      if (IsEqual(schema->GetFields().Item("TABLE_NAME").Value().ToText(), szObjectName))
        return true;
  } catch (...) {
    // An object that cannot be looked up does not exist for the caller.
    Err().Clear();
  }
  return false;
}

void CDatabase::RecordSetWrite(std::shared_ptr<ado::Recordset>& objRS, std::string& szOutlookError,
                               std::string& szError) {
  szError.clear();
  if (DatabaseType == dbtOutlook) {
    // szError goes in as the adapter's filter, which it does not use.
    if (m_OutLook)
      m_OutLook->RecordSetUpdate(objRS, szOutlookError, szError);
    else
      szOutlookError = "Outlook ist nicht geöffnet.";
    return;
  }
  try {
    objRS->Update();
    objRS->UpdateBatch(ado::adAffectAll);
  } catch (const VbError& error) {
    szError = error.Description;
  } catch (const std::exception& error) {
    szError = error.what();
  }
  NoteRefusedWrite(szError);
}

std::string CDatabase::FlushWrites() {
  if (DatabaseType == dbtOutlook || DatabaseType == dbtXML || !Connection) return {};
  try {
    Connection->Flush();
  } catch (const VbError& error) {
    return error.Description;
  }
  return {};
}

std::uint64_t CDatabase::WriteGroup() const {
  if (DatabaseType == dbtOutlook || DatabaseType == dbtXML || !Connection) return 0;
  return Connection->LastWriteGroup();
}

bool CDatabase::ConnectionLost() const {
  if (DatabaseType == dbtOutlook || DatabaseType == dbtXML || !Connection) return false;
  return Connection->ConnectionLost();
}

ado::Provider::GroupFate CDatabase::FateOfWrites(std::uint64_t group, std::string& szText) const {
  if (group == 0 || !Connection) return ado::Provider::GroupFate::kCommitted;
  return Connection->FateOfWriteGroup(group, szText);
}

std::string ExecuteSQL(ado::Connection& objConnection, const std::string& szSQL) {
  try {
    Variant affected;
    ado::RecordsetPtr result = objConnection.Execute(szSQL, &affected, -1);
    if (result && result->State() == ado::adStateOpen) result->Close();
    return {};
  } catch (...) {
    // A failed statement answers its error message; the failure does not spread.
    SetPendingError(std::current_exception());
    std::string text = BuildErrorMessage(std::string(), std::string());
    Err().Clear();
    return text;
  }
}

void CloseRecordset(ado::Recordset* objRS) {
  // Closing a closed record set raises an error that is ignored here; the
  // record loop closes its target twice per record, so it is not raised.
  if (!objRS || objRS->State() == ado::adStateClosed) return;
  try {
    objRS->Close();
  } catch (...) {
    // A record set is closed with every error ignored.
  }
}

void CloseConnection(ado::Connection* objConnection) {
  if (!objConnection) return;
  try {
    objConnection->Close();
  } catch (...) {
    // A connection is closed with every error ignored.
  }
}

}  // namespace ketrova
