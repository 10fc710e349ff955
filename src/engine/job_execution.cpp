// One job of a run: count and open the source, make sure the target table
// exists, optionally empty it, hand the job's script to the host and walk the
// records, writing each through the target record set (or by a generated
// statement on MySQL).
#include <deque>
#include <exception>

#include "core/converter.h"
#include "core/error_text.h"
#include "engine/engine.h"
#include "engine/job_object.h"
#include "engine/run_log.h"
#include "engine/script_host_object.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/script/script_control.h"
#include "platform/ui/ui_helpers.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "support/system.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

constexpr std::string_view kMainModule = "zsModuleConvertMain";

// Overflow and division by zero are passed over throughout a job: the
// statement that raised them is skipped and the job goes on.
template <typename F>
void SkipArithmetic(F&& statement) {
  try {
    statement();
  } catch (const VbError& e) {
    if (e.Number != 6 && e.Number != 11) throw;
  }
}

}  // namespace

class CEngine::JobRun {
 public:
  JobRun(CEngine& engine, CJob& job)
      : e_(engine),
        job_(job),
        src_(job.JobSource()),
        dst_(job.JobDest()),
        srcDb_(*src_.Database()),
        dstDb_(*dst_.Database()),
        logs_(engine.Converter->Logs()) {}

  std::string Run();

 private:
  enum class Flow { kGoOn, kJobEnd, kErrorEnd };

  Flow Prepare();
  Flow RecordLoop();
  void CountWritten();
  void ErrorEnd();
  // Procedures looked up once per job, called per record.
  void ResolveProcedures();
  Variant CallProcedure(script::ProcedureHandle handle, std::string_view module,
                        std::string_view name, std::span<Variant> args);

  void Log(const std::string& text) { e_.WriteLogLine(text); }
  // A write the target refused goes to the reject file with the source's values.
  void KeepRefused(const std::string& text);
  RejectFile::Values SourceValues() const;
  RejectFile::Values AsText(const std::vector<Variant>& values) const;
  // A write went through: it counts as written once the target has committed
  // it. Until its group is committed the record waits with its source values.
  void WriteWentThrough();
  // Counts the waiting records whose group was committed and files those of a
  // lost group as refused, with the store's text.
  void SettleWrites();
  // Commits what the target has grouped, then settles every waiting record.
  void FlushAndSettle();
  // The target's server is gone: the job ends as when its target cannot be
  // opened, with the store's text.
  Flow LostConnection(const std::string& text);
  // Passes over the source records before the engine's FirstRecord.
  void SkipToFirstRecord();

  CEngine& e_;
  CJob& job_;
  CJobItem& src_;
  CJobItem& dst_;
  CDatabase& srcDb_;
  CDatabase& dstDb_;
  CLogs& logs_;

  std::string szError_;
  std::string szStep_;
  std::string szSQL_;
  std::string szDestSQL_;
  std::int32_t nDestNative_ = 0;
  bool bDirectSQL_ = false;
  bool bSourceOutlook_ = false;
  std::int32_t inTotal_ = 0;
  std::int32_t inAll_ = 0;
  std::int32_t inRecord_ = 0;
  bool bEOF_ = false;
  bool bEmptySource_ = false;
  bool bScriptFailed_ = false;
  // Records committed in the target, and the last of them.
  std::int32_t written_ = 0;
  std::int32_t lastWritten_ = 0;
  // A record written into a group not yet committed, with its source values
  // as read (turned into text only should the group be lost).
  struct Waiting {
    std::int32_t record;
    std::uint64_t group;
    std::vector<Variant> values;
  };
  std::deque<Waiting> waiting_;
  static constexpr std::size_t kSpareValues = 16384;
  std::vector<std::vector<Variant>> spareValues_;  // of settled records, used again
  std::vector<std::string> sourceNames_;           // of the waiting records' values
  script::ScriptModule* module_ = nullptr;
  script::ProcedureHandle setIdentKey_ = nullptr;
  script::ProcedureHandle setRecordCount_ = nullptr;
  script::ProcedureHandle convertMain_ = nullptr;
};

std::string CEngine::DoExecute(CJob& objJob) {
  currentJob_ = objJob.Caption;
  currentRecord_ = 0;
  return JobRun(*this, objJob).Run();
}

std::string CEngine::JobRun::Run() {
  nDestNative_ = dstDb_.DatabaseTypeNative();
  bDirectSQL_ = nDestNative_ == dbtMySQL;
  bSourceOutlook_ = srcDb_.DatabaseType == dbtOutlook;
  ui::ShowHourglass(true);

  Flow flow = Flow::kGoOn;
  try {
    flow = Prepare();
    if (flow == Flow::kGoOn && !bEmptySource_) flow = RecordLoop();
    // What the job wrote is committed before anything counts or reads it.
    FlushAndSettle();
    if (flow == Flow::kGoOn) {
      if (!bEmptySource_) --inRecord_;
      Log("Es wurden " + std::to_string(inRecord_) + " Datensätze konvertiert.");
      // Without a delete before the insert the target may hold older rows,
      // so only then are the written rows compared with the read ones.
      if (dst_.DeleteBeforeInsert) CountWritten();
    }
  } catch (...) {
    // A run-time error under error trapping goes to the job's error end.
    SetPendingError(std::current_exception());
    flow = Flow::kErrorEnd;
    FlushAndSettle();
  }

  // The job's end, and its error end when there is a text to report.
  ui::ShowHourglass(false);
  if (flow == Flow::kErrorEnd || !szError_.empty()) {
    ErrorEnd();
    // A job that went through its records keeps the last refusal as its text
    // and stopped nowhere.
    if (flow != Flow::kGoOn && !e_.Cancel)
      e_.stops_.push_back({job_.Caption, written_, lastWritten_, inRecord_});
  }
  Err().Clear();
  return szError_;
}

CEngine::JobRun::Flow CEngine::JobRun::Prepare() {
  szStep_ = "Anzahl der Datensätze ermitteln ...";
  Log(szStep_);
  e_.ShowStatus(szStep_);
  szSQL_ = src_.GenerateSQLCount();
  szSQL_ += src_.GetFilter(szSQL_);
  srcDb_.RecordSetClose(src_.Recordset);
  srcDb_.RecordSetClose(e_.rsSourceCount_);
  szError_ =
      srcDb_.RecordSetOpen(e_.rsSourceCount_, szSQL_, src_.ItemObjectName, bSourceOutlook_ ? 1 : 0,
                           ado::adOpenKeyset, ado::adLockPessimistic);
  if (!szError_.empty()) {
    szError_ = BuildErrorText(1, szError_, szStep_);
    Log(szError_);
    return Flow::kErrorEnd;
  }
  SkipArithmetic([&] {
    if (bSourceOutlook_) {
      inTotal_ = srcDb_.RecordsetRecordCount();
    } else {
      inTotal_ = e_.rsSourceCount_->GetFields().Item(0).Value().ToLong();
      e_.rsSourceCount_->Close();
    }
  });
  inAll_ = inTotal_;
  e_.maxRecords_ = e_.Converter->MaxRecords != 0 ? e_.Converter->MaxRecords : job_.MaxRecords;
  if (e_.maxRecords_ > 0 && inTotal_ > e_.maxRecords_) inTotal_ = e_.maxRecords_;
  Log("Datensätze -> " + std::to_string(inTotal_) + " / " + std::to_string(inAll_));

  szStep_ = "Quelle öffnen ...";
  Log(szStep_);
  e_.ShowStatus(job_.Caption + " " + szStep_);
  if (bSourceOutlook_) {
    src_.Recordset = e_.rsSourceCount_;
  } else {
    src_.OpenRecordSet(0, false, "");
    if (!src_.Recordset || src_.Recordset->State() == ado::adStateClosed) {
      szError_ = src_.LastErrorMessage;
      Log(szError_);
      return Flow::kErrorEnd;
    }
  }

  szStep_ = "Zieltabelle überprüfen : [" + dst_.ItemObjectName + "]";
  e_.ShowStatus(szStep_);
  Log(szStep_);
  // Creating the table runs with errors only recorded, up to the delete.
  bool bTrapOff = false;
  if (!dstDb_.ObjectExists(dst_.ItemObjectName)) {
    szStep_ = "Tabellenstruktur erzeugen : [" + dst_.ItemObjectName + "]";
    Log(szStep_);
    std::string szTable = dst_.ItemObjectName;
    szSQL_ = dst_.GenerateTableStructure(szError_, src_.ItemObjectName);
    Log("Erzeuge Tabelle " + dst_.ItemObjectName + "\r\n" + szSQL_);
    if (!szError_.empty()) {
      Log(szStep_ + "\r\n" + szError_);
      logs_.AddLog(szError_);
      return Flow::kErrorEnd;
    }
    bTrapOff = true;
    szStep_ = "Zielobjekt erzeugen : [" + dst_.ItemObjectName + "]";
    ResumeNext([&] { szError_ = dstDb_.CreateObject(szTable, szSQL_); });
    if (!szError_.empty()) {
      Log(szStep_ + "\r\n" + szError_ + "\r\n" + szSQL_);
      logs_.AddLog(szError_);
      return Flow::kErrorEnd;
    }
    if (!IsEqual(dst_.ItemObjectName, szTable)) {
      const std::string szOld = dst_.ItemObjectName;
      ResumeNext([&] { e_.Converter->Jobs().RenameDestinationObject(szOld, szTable); });
    }
  }
  auto statement = [&](auto&& f) {
    if (bTrapOff) {
      ResumeNext(f);
    } else {
      SkipArithmetic(f);
    }
  };

  statement([&] { bEmptySource_ = src_.Recordset->Eof(); });
  if (bEmptySource_) {
    const std::string szText = "Keine Daten in Quelle vorhanden bei Aufgabe : " + job_.Caption;
    logs_.AddLog(szText);
    Log(szText);
    Log(LogFrame('-', 50));
    // Even an empty source goes on to the written count.
    Err().Clear();
    return Flow::kGoOn;
  }
  const std::string szText = "Es werden " + std::to_string(inTotal_) +
                             " Daten bei Aufgabe : " + job_.Caption + " konvertiert.";
  logs_.AddLog(szText);
  Log(szText);
  statement([&] { src_.Recordset->MoveFirst(); });
  inRecord_ = 0;
  szStep_ = "Objekte übergeben ...";
  Log(szStep_);
  e_.ShowStatus(job_.Caption + " ... ");
  Err().Clear();

  if (dst_.DeleteBeforeInsert) {
    szSQL_ = dst_.GenerateSQLDelete();
    szStep_ = "Daten löschen ... \r\n" + szSQL_;
    Log(szStep_);
    e_.ShowStatus(szStep_);
    szError_ = dstDb_.DeleteRecords(dst_.ItemObjectName, szSQL_);
    if (!szError_.empty()) {
      Log(szError_);
      return Flow::kErrorEnd;
    }
  }

  // Resetting the host is what removes the previous job's objects.
  e_.ConfigureScripting(job_.Caption);
  szStep_ = "Scripting Funktionen übergeben";
  Log(szStep_);
  e_.WriteScriptFunctions();
  Log(LogFrame('-', 100));
  Log("Auszuführendes Script :\r\n" + job_.Script);
  Log(LogFrame('-', 100));

  szStep_ = "Scripting Objekte übergeben";
  Log(szStep_);
  script::ScriptControl& host = e_.ScriptHost();
  host.AddObject("Source", src_.Recordset, true);
  host.AddObject("Destination", e_.rsDestination_, true);
  host.AddObject("SourceConnection", srcDb_.Connection, true);
  host.AddObject("DestinationConnection", dstDb_.Connection, true);
  host.AddObject("Session", e_.Converter->Session(), true);
  host.AddObject("Job", std::make_shared<JobObject>(job_), true);

  szStep_ = "Übergabe Modul Main";
  module_ = &host.Modules().Add(kMainModule);
  szStep_ = "Übergabe Function zsConvertMain()";
  ResumeNext([&] { module_->AddCode(job_.Script); });
  if (Err().Number != 0) {
    szError_ = e_.GetScriptError(szStep_, "");
    Log(szError_);
    return Flow::kErrorEnd;
  }
  Err().Clear();
  if (dst_.DestinationFilterUserDefined) {
    szStep_ = "Benutzerdefiniertes Filterscript einfügen";
    szError_ = e_.AddScriptCode(szStep_, dst_.DestinationFilterUserDefinedScript);
    if (!szError_.empty()) return Flow::kErrorEnd;
  }
  job_.RefreshKeyBrackets();
  e_.SetProgressRecord(0, 1);
  e_.SetProgressRecord(1, inTotal_);
  if (!e_.scriptHostObject_) e_.scriptHostObject_ = std::make_shared<ScriptHostObject>(host);
  src_.ScriptControl = e_.scriptHostObject_;
  dst_.ScriptControl = e_.scriptHostObject_;
  ResolveProcedures();
  inRecord_ = 1;
  bEOF_ = bSourceOutlook_ ? srcDb_.RecordsetEOF() : src_.Recordset->Eof();
  SkipToFirstRecord();
  return Flow::kGoOn;
}

void CEngine::JobRun::SkipToFirstRecord() {
  while (inRecord_ < e_.FirstRecord && !bEOF_) {
    if (bSourceOutlook_) {
      srcDb_.RecordsetMoveNext();
      bEOF_ = srcDb_.RecordsetEOF();
    } else {
      src_.Recordset->MoveNext();
      bEOF_ = src_.Recordset->Eof();
    }
    ++inRecord_;
  }
}

RejectFile::Values CEngine::JobRun::SourceValues() const {
  RejectFile::Values values;
  // A source whose values cannot be read still has its refusal kept.
  try {
    for (const ado::FieldPtr& field : src_.Recordset->GetFields())
      values.emplace_back(field->Name(), field->Value().ToText());
  } catch (const VbError&) {
    Err().Clear();
  }
  return values;
}

RejectFile::Values CEngine::JobRun::AsText(const std::vector<Variant>& values) const {
  RejectFile::Values named;
  for (std::size_t i = 0; i < values.size() && i < sourceNames_.size(); ++i)
    named.emplace_back(sourceNames_[i], values[i].ToText());
  return named;
}

void CEngine::JobRun::KeepRefused(const std::string& text) {
  e_.rejects_.Add(job_.Caption, inRecord_, text, SourceValues());
}

void CEngine::JobRun::WriteWentThrough() {
  if (const std::uint64_t group = dstDb_.WriteGroup(); group != 0) {
    Waiting record{inRecord_, group, {}};
    // The values of a record settled before, with their room.
    if (!spareValues_.empty()) {
      record.values = std::move(spareValues_.back());
      spareValues_.pop_back();
    }
    try {
      const ado::Fields& fields = src_.Recordset->GetFields();
      if (sourceNames_.empty())
        for (const ado::FieldPtr& field : fields) sourceNames_.push_back(field->Name());
      src_.Recordset->CurrentValues(record.values);
    } catch (const VbError&) {
      // No values rather than another record's.
      record.values.clear();
      Err().Clear();
    }
    waiting_.push_back(std::move(record));
  } else {
    ++written_;
    lastWritten_ = inRecord_;
  }
}

void CEngine::JobRun::SettleWrites() {
  // Groups end in the order they began, so the waiting records settle from
  // the front.
  while (!waiting_.empty()) {
    Waiting& first = waiting_.front();
    std::string text;
    const ado::Provider::GroupFate fate = dstDb_.FateOfWrites(first.group, text);
    if (fate == ado::Provider::GroupFate::kOpen) break;
    if (fate == ado::Provider::GroupFate::kCommitted) {
      ++written_;
      lastWritten_ = first.record;
    } else {
      e_.rejects_.Add(job_.Caption, first.record, text, AsText(first.values));
    }
    // As many as a group holds: the next group's records take their place
    // without allocating.
    if (spareValues_.size() < kSpareValues) spareValues_.push_back(std::move(first.values));
    waiting_.pop_front();
  }
}

void CEngine::JobRun::FlushAndSettle() {
  const std::string failure = dstDb_.FlushWrites();
  SettleWrites();
  // After a flush no group is open; one still waiting was not committed.
  for (const Waiting& record : waiting_)
    e_.rejects_.Add(job_.Caption, record.record, failure, AsText(record.values));
  waiting_.clear();
}

CEngine::JobRun::Flow CEngine::JobRun::LostConnection(const std::string& text) {
  szError_ = text;
  Log(szStep_);
  logs_.AddLog(szError_);
  Log(LogFrame('#', 60));
  Log(szError_);
  Log(LogFrame('#', 60));
  Err().Clear();
  return Flow::kJobEnd;
}

void CEngine::JobRun::ResolveProcedures() {
  const script::ScriptControl& host = e_.ScriptHost();
  setIdentKey_ = host.FindProcedure(script::kGlobalModule, "SetIdentKey");
  setRecordCount_ = host.FindProcedure(script::kGlobalModule, "SetRecordCount");
  convertMain_ = host.FindProcedure(kMainModule, "txConvertMain");
}

Variant CEngine::JobRun::CallProcedure(script::ProcedureHandle handle, std::string_view module,
                                       std::string_view name, std::span<Variant> args) {
  script::ScriptControl& host = e_.ScriptHost();
  if (handle) return host.Call(handle, args);
  // Not there: the host's own Run says so in its words.
  return host.Modules().Item(module).Run(name, args);
}

CEngine::JobRun::Flow CEngine::JobRun::RecordLoop() {
  ui::UserInterface& ui = ui::Current();
  ado::Recordset& source = *src_.Recordset;
  const bool bDestOutlook = dstDb_.DatabaseType == dbtOutlook;
  const bool bStatusEveryRecord = nDestNative_ == dbtOutlook;
  const std::string szTotal = std::to_string(inTotal_);
  Variant identArg[1];
  Variant countArg[1];

  while (inRecord_ - 1 < inTotal_ && !bEOF_) {
    e_.currentRecord_ = inRecord_;
    SkipArithmetic([&] { e_.SetProgressRecord(2, inRecord_); });
    if (inRecord_ % 20 == 0 || inRecord_ == 1 || bStatusEveryRecord) {
      e_.ShowStatus(job_.Caption + "\r\nDatensatz " + std::to_string(inRecord_) + " / " + szTotal +
                    " wird bearbeitet ...");
    }
    ui.DoEvents();

    if (e_.Cancel) {
      FlushAndSettle();
      int answer = ui.MsgBox("Möchten Sie wirklich die Verarbeitung abbrechen ?",
                             ui::vbYesNo | ui::vbQuestion, e_.Converter->ProductName());
      // Yes ends this job and, with Cancel still set, the run.
      if (answer == ui::vbYes) return Flow::kJobEnd;
      e_.Cancel = 0;
      ui.DoEvents();
    }

    CloseRecordset(e_.rsDestination_.get());
    szDestSQL_ = dst_.GenerateSQLInsertRecord(szError_);
    // The step texts of a record are written into the same buffer record
    // after record.
    szStep_.assign("Ziel öffnen -> \r\n").append(szDestSQL_);
    if (!szError_.empty()) {
      logs_.AddLog(szStep_);
      logs_.AddLog(szError_);
      Log(szStep_);
      Log(szError_);
      return Flow::kJobEnd;
    }

    // From here to the write, errors are only recorded; a pending one makes
    // the record fail.
    ResumeNext([&] { dstDb_.RecordSetClose(e_.rsDestination_); });
    ResumeNext([&] {
      szError_ = dstDb_.RecordSetOpen(e_.rsDestination_, szDestSQL_, dst_.ItemObjectName, 1,
                                      ado::adOpenKeyset, ado::adLockBatchOptimistic);
    });
    if (!szError_.empty()) {
      Log(szStep_);
      logs_.AddLog(szError_);
      Log(LogFrame('#', 60));
      Log(szError_);
      Log(LogFrame('#', 60));
      e_.PrintDebugInfo(job_, src_.Recordset.get(), e_.rsDestination_.get());
      return Flow::kJobEnd;
    }
    ado::Recordset& target = *e_.rsDestination_;
    ResumeNext([&] {
      if (!bDestOutlook) {
        // A text file only appends, so its record always counts as new. A
        // job that only inserts adds whatever EOF says; only the MySQL path,
        // which sends the answer along, asks.
        const bool bAsk = dstDb_.DatabaseType != dbtText && (job_.DestinationUpdate || bDirectSQL_);
        bEOF_ = bAsk ? target.Eof() : true;
        if (!job_.DestinationUpdate || bEOF_) target.AddNew();
      } else {
        bEOF_ = dstDb_.RecordsetEOF();
        if (bEOF_) target.AddNew();
      }
    });

    // A GUID has no blanks to clean; its text goes into the argument's own
    // buffer, which a script may have replaced.
    if (!identArg[0].IsString()) identArg[0] = Variant(std::string());
    CreateGUID(identArg[0].AsString());
    ResumeNext(
        [&] { CallProcedure(setIdentKey_, script::kGlobalModule, "SetIdentKey", identArg); });
    countArg[0] = Variant::Long(inRecord_);
    ResumeNext(
        [&] { CallProcedure(setRecordCount_, script::kGlobalModule, "SetRecordCount", countArg); });
    szStep_.assign("Übergabe von Datensatz ").append(std::to_string(inRecord_));
    ResumeNext([&] {
      szError_ = CallProcedure(convertMain_, kMainModule, "txConvertMain", {}).ToString();
    });

    if (job_.Cancel) {
      Log(szStep_);
      Log("Abbruch wurde angefordert.");
      return Flow::kJobEnd;
    }

    // A pending script error does not keep the statement from being sent.
    if (bDirectSQL_ && ~Err().Number != 0) {
      ResumeNext(
          [&] { szSQL_ = job_.GenerateUpdateInsertSQLFieldValues(source, bEOF_, nDestNative_); });
      // Only a record whose script and statement went through counts as sent:
      // a failed script makes a failed record, not a refused one.
      const bool bSending = Err().Number == 0;
      ResumeNext([&] { dstDb_.Connection->Execute(szSQL_, nullptr, -1); });
      SettleWrites();
      if (bSending && Err().Number != 0) {
        KeepRefused(Err().Description);
        if (dstDb_.ConnectionLost()) return LostConnection(Err().Description);
      } else if (bSending) {
        WriteWentThrough();
      }
    }

    if (Err().Number != 0) {
      bScriptFailed_ = true;
      ++e_.errorCount_;
      szError_ = e_.GetScriptError(job_.Caption, "");
      logs_.AddLog(szError_);
      Log(LogFrame('#', 60));
      Log(szStep_);
      Log(szError_);
      Log(LogFrame('#', 60));
      if (bDirectSQL_) Log("UpdateSQL:\r\n" + szSQL_);
      e_.PrintDebugInfo(job_, src_.Recordset.get(), e_.rsDestination_.get());
      if (job_.CancelOnError) {
        Log("Job.CancelOnError = Wahr; Konvertierung wird abgebrochen.");
        return Flow::kJobEnd;
      }
      Log("Job.CancelOnError = Falsch; Konvertierung wird fortgesetzt.");
      szError_.clear();
      Err().Clear();
    } else if (!bDirectSQL_ && target.EditMode() != ado::adEditNone) {
      // A found row that the script left unchanged is not written.
      szStep_.assign("Datensatz ").append(std::to_string(inRecord_)).append(" sichern ...");
      dstDb_.RecordSetWrite(e_.rsDestination_, szDestSQL_, szError_);
      // Records of a group the write took with it are filed before it.
      SettleWrites();
      if (std::string refused = dstDb_.TakeRefusedWrite(); !refused.empty()) {
        KeepRefused(refused);
        if (dstDb_.ConnectionLost()) return LostConnection(refused);
      } else {
        WriteWentThrough();
      }
    }

    szStep_.assign("Datensatzwechsel zu ").append(std::to_string(inRecord_ + 1)).append(" ...");
    if (!bSourceOutlook_) {
      bEOF_ = source.Eof();
      if (!bEOF_) {
        source.MoveNext();
        bEOF_ = source.Eof();
      }
    } else {
      bEOF_ = srcDb_.RecordsetEOF();
      if (!bEOF_) {
        srcDb_.RecordsetMoveNext();
        bEOF_ = srcDb_.RecordsetEOF();
      }
    }
    ++inRecord_;
  }
  return Flow::kGoOn;
}

void CEngine::JobRun::CountWritten() {
  szStep_ = "Anzahl der geschriebenen Datensätze ermitteln ...";
  Log(szStep_);
  e_.ShowStatus(szStep_);
  szSQL_ = dst_.GenerateSQLCount();
  CloseRecordset(e_.rsDestination_.get());
  dstDb_.RecordSetClose(e_.rsDestination_);
  szError_ = dstDb_.RecordSetOpen(e_.rsDestinationCount_, szSQL_, dst_.ItemObjectName, 1,
                                  ado::adOpenKeyset, ado::adLockPessimistic);
  if (!szError_.empty()) {
    Log(szError_);
    szError_.clear();
  }
  std::int32_t inWritten = 0;
  SkipArithmetic([&] {
    if (dstDb_.DatabaseType != dbtOutlook) {
      inWritten = e_.rsDestinationCount_->GetFields().Item(0).Value().ToLong();
    } else {
      inWritten = dstDb_.RecordsetRecordCount();
    }
  });
  e_.rsDestinationCount_->Close();
  const std::int32_t inDiff = inTotal_ - inWritten;
  if (inDiff != 0) {
    szStep_ = "Anzahl Datensätze gelesen -> " + std::to_string(inTotal_) + " / geschrieben -> " +
              std::to_string(inWritten) + "  / Differenz = " + std::to_string(inDiff);
    Log(szStep_);
    logs_.AddLog(szStep_);
    szStep_ = "Warnung: Anzahl gelesener und geschriebener Datensätze stimmen nicht überein.";
    logs_.AddLog(szStep_);
    Log(szStep_);
  }
}

void CEngine::JobRun::ErrorEnd() {
  try {
    if (szError_.empty()) {
      szError_ = BuildErrorText(1, szError_, szStep_);
      Log(LogFrame('*', 100));
      Log(szError_);
      Log(LogFrame('*', 100));
      Log("Debuginfo : ");
      e_.PrintDebugInfo(job_, src_.Recordset.get(), e_.rsDestination_.get());
      Log(LogFrame('*', 100));
    }
    logs_.AddLog(job_.Caption + "\r\n" + szStep_ + "\r\n" + szError_);
    if (bScriptFailed_) {
      script::ScriptControl& host = e_.ScriptHost();
      Log("");
      Log(LogFrame('-', 100));
      Log("Scriptmodul Debuginformation:");
      Log("Anzahl Module :" + std::to_string(host.Modules().Count()));
      for (std::int32_t i = 1; i <= host.Modules().Count(); ++i) {
        Log("Module :" + host.Modules().Item(i).Name());
      }
      script::ScriptProcedures procedures = host.Procedures();
      Log("Anzahl Procedure :" + std::to_string(procedures.Count()));
      for (std::int32_t i = 1; i <= procedures.Count(); ++i) {
        const script::ProcedureInfo& p = procedures.Item(i);
        Log("Procedure :" + p.Name + "/" + std::to_string(p.NumArgs));
      }
      Log(LogFrame('-', 100));
    }
  } catch (...) {
    // The error end reports what it can; the job's text is already made.
    SetPendingError(std::current_exception());
  }
}

}  // namespace ketrova
