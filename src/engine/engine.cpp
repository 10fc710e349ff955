// The run driver: project file, log file, both stores, the start and end
// scripts, the job loop, commit or rollback and the closing report.
#include "engine/engine.h"

#include <ctime>
#include <exception>
#include <functional>

#include "core/converter.h"
#include "core/error_text.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/script/script_control.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "support/date_text.h"
#include "support/files.h"
#include "support/ole_date.h"
#include "support/regional.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// VB's Time in the system's format.
std::string TimeNow() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return TimeText(TimeSerial(local.tm_hour, local.tm_min, local.tm_sec), Regional());
}

// Sets one property of a display control; a missing control shows nothing.
void SetDisplay(const ObjectPtr& control, std::string_view name, Variant value) {
  if (control) control->Put(name, std::move(value));
}

// Steps 9 to 13 of a run for one store: the error text, or "" when it opened.
std::string OpenStore(CDatabase& store, const std::string& szWhat, const std::string& szOk,
                      const std::string& szType, const std::function<void(const std::string&)>& log,
                      const std::function<void(const std::string&)>& status) {
  std::string szStep = LogPad(szWhat);
  status(szStep);
  log(szStep);
  if (store.CanUseConnection() && store.Connection) store.Connection->SetCommandTimeout(0);
  // Closed first, so that a connection left open by the editor is never reused.
  store.SetActive(false);
  store.SetActive(true);
  if (store.ErrorNumber() != 0) {
    log(store.LastErrorMessage());
    return store.LastErrorMessage();
  }
  log(szOk);
  log(szType + store.DatabaseTypeString());
  return {};
}

}  // namespace

CEngine::CEngine()
    : runtime_(std::make_shared<CRuntime>()),
      scriptHost_(std::make_unique<script::ScriptControl>()),
      rsSourceCount_(std::make_shared<ado::Recordset>()),
      rsDestination_(std::make_shared<ado::Recordset>()),
      rsDestinationCount_(std::make_shared<ado::Recordset>()) {}

CEngine::~CEngine() {
  CloseRecordset(rsSourceCount_.get());
  CloseRecordset(rsDestination_.get());
  CloseRecordset(rsDestinationCount_.get());
}

void CEngine::ShowStatus(const std::string& szText) {
  if (!EditInfo) return;
  EditInfo->Put("Text", Variant(szText));
  EditInfo->Call("Refresh");
}

void CEngine::SetProgressTotal(int inWhat, double inValue) {
  static constexpr std::string_view kNames[] = {"Min", "Max", "Value"};
  if (inWhat < 0 || inWhat > 2) return;
  SetDisplay(ProgressBarTotal, kNames[inWhat], Variant(inValue));
}

void CEngine::SetProgressRecord(int inWhat, double inValue) {
  static constexpr std::string_view kNames[] = {"Min", "Max", "Value"};
  if (inWhat < 0 || inWhat > 2) return;
  // The record bar's maximum leaves room for the last record.
  SetDisplay(ProgressBar, kNames[inWhat], Variant(inWhat == 1 ? inValue + 1 : inValue));
}

void CEngine::SetProgressVisible(bool bVisible) {
  SetDisplay(ProgressBar, "Visible", Variant(bVisible));
  SetDisplay(ProgressBarTotal, "Visible", Variant(bVisible));
}

bool CEngine::OpenLogFile() {
  log_.Open(logfileName_);
  return true;
}

void CEngine::FinishRun() {
  CloseLogFile();
  ResumeNext([&] { SetProgressVisible(false); });
  if (!Converter) return;
  Converter->SourceDataBase().SetActive(false);
  Converter->DestDataBase().SetActive(false);
}

std::string CEngine::Execute(std::string& szFileName) {
  std::string szStep;
  std::string szError;
  std::string szResult;
  auto log = [this](const std::string& s) { WriteLogLine(s); };
  auto status = [this](const std::string& s) { ShowStatus(s); };

  try {
    if (!Converter) throw VbError(91);
    Converter->Logs().Clear();

    if (!szFileName.empty()) {
      szStep = "Dateiprüfung ...";
      if (!FileExists(szFileName)) szError = "Datei nicht gefunden -> " + szFileName;
      szStep = "Konverter instanzieren ...";
      auto loaded = std::make_unique<CConverter>();
      Converter = loaded.get();
      ownConverter_ = std::move(loaded);
      szStep = "Projektdatei öffnen -> " + szFileName;
      // The load's own message replaces "Datei nicht gefunden": what the user
      // sees for a missing file is the loader's text.
      szError = Converter->LoadProject(szFileName);
    } else if (!Converter) {
      szError = "Keine Instanz des Konverters vorhanden.";
    }
    if (!szError.empty()) {
      FinishRun();
      Err().Clear();
      return szError;
    }

    projectFileName_ = Converter->FileName;
    logfileName_ = ChangeFileExtension(projectFileName_, ".LOG");
    Converter->LogfileName = logfileName_;
    rejects_.Reset(ChangeFileExtension(projectFileName_, "-abgelehnt.csv"));
    stops_.clear();
    OpenLogFile();

    szStep = "Projekt-Datei wird eingelesen ...";
    WriteLogLine(szStep);
    SetProgressVisible(true);
    SetDisplay(EditInfo, "Visible", Variant(true));

    CDatabase& source = Converter->SourceDataBase();
    CDatabase& dest = Converter->DestDataBase();
    szStep = LogPad("Öffne Quelldatenbank -> ");
    szError = OpenStore(source, "Öffne Quelldatenbank -> ", "Verbindung Quelle erfolgreich ",
                        "Verbindungstyp Quelle = ", log, status);
    if (szError.empty()) {
      szStep = LogPad("Öffne Zieldatenbank -> ");
      szError = OpenStore(dest, "Öffne Zieldatenbank -> ", "Verbindung Ziel erfolgreich ",
                          "Verbindungstyp Ziel = ", log, status);
    }
    if (!szError.empty()) {
      FinishRun();
      Err().Clear();
      return szError;
    }

    if (source.CanUseTransctions()) {
      szStep = "Starte Transaktion Quelle";
      ShowStatus(szStep);
      WriteLogLine(szStep);
      source.BeginTrans();
    }
    if (dest.CanUseTransctions()) {
      szStep = "Starte Transaktion Ziel";
      ShowStatus(szStep);
      WriteLogLine(szStep);
      dest.BeginTrans();
    }

    szStep = "Konfiguriere Scripting";
    ShowStatus(szStep);
    WriteLogLine(szStep);
    // A start script that does not compile has been logged there; the run goes
    // on and fails at txOnStart.
    ConfigureScripting("Initialisierung");
    WriteLogLine("");
    WriteLogLine(LogFrame('*', 100));
    WriteLogLine("Start ->" + TimeNow());
    CJobs& jobs = Converter->Jobs();
    WriteLogLine("Import ->" + std::to_string(jobs.Count()) + " Objekte");
    WriteLogLine(LogFrame('-', 100));
    WriteLogLine("");

    if (source.CanUseConnection()) rsSourceCount_->SetActiveConnection(source.Connection);

    szStep = "Aufruf Benutzerscript Methode : txOnStart";
    ShowStatus(szStep);
    WriteLogLine(szStep);
    bool bContinue = true;
    ResumeNext([&] { bContinue = scriptHost_->Run("txOnStart").ToBool(); });
    if (Err().Number != 0) {
      szError = GetScriptError(szStep, "");
      WriteLogLine(szError);
      Err().Clear();
    } else if (!bContinue) {
      errorCount_ = 1;
      WriteLogLine("Script wurde von UserScriptung beendet");
    } else {
      SetProgressTotal(1, jobs.Count());
      errorCount_ = 0;
      const std::int32_t count = jobs.Count();
      for (std::int32_t i = 1; i <= count; ++i) {
        SetProgressTotal(2, i);
        CJob& job = jobs.Item(i);
        if (!job.Enabled) continue;
        szStep = "Bearbeite " + job.Caption;
        WriteLogLine(szStep);
        // Only the last job's text survives: the next job overwrites it.
        szError = DoExecute(job);
        if (Cancel) break;
        if (!szError.empty() && job.CancelOnError) break;
      }

      // Keeping or undoing goes by the failed records alone; each store that
      // takes part says so in the log, and its answer replaces szError.
      bool undo = errorCount_ > 0;
      auto settle = [&](CDatabase& store, const char* side) {
        if (!store.CanUseTransctions()) return;
        szStep =
            std::string(undo ? "Transaktion wird zurückgenommen -> " : "Sichere Transaktion -> ") +
            side;
        WriteLogLine(szStep);
        ShowStatus(szStep);
        szError = undo ? store.RollbackTrans() : store.CommitTrans();
      };
      settle(source, "Quelle");
      settle(dest, "Ziel");
    }

    szStep = "Aufruf Benutzerscript Methode : txOnEnd";
    WriteLogLine(szStep);
    ResumeNext([&] { scriptHost_->Run("txOnEnd"); });
    if (Err().Number != 0) {
      szError = GetScriptError(szStep, "");
      WriteLogLine(szError);
      Err().Clear();
    }
    WriteLogLine("");
    WriteLogLine(LogFrame('*', 100));
    WriteLogLine("");
    WriteLogLine(LogFrame('-', 100));
    WriteLogLine("End ->" + TimeNow());
    WriteLogLine(LogFrame('-', 100));
    WriteLogLine("");
    CloseLogFile();
    source.SetActive(false);
    dest.SetActive(false);
    ShowStatus(szError);
    szResult = szError;
    if (Converter->Logs().Count() > 0) {
      ui::Current().MsgBox(
          "Es sind Meldungen während der Konvertierung geschrieben worden, \r\n"
          "überprüfen Sie bitte das Ereignisprotokoll !",
          ui::vbInformation, Converter->ProductName());
    }
  } catch (...) {
    // An unexpected run-time error in the driver is logged, counted and the result.
    SetPendingError(std::current_exception());
    if (szError.empty()) {
      ++errorCount_;
      szError = BuildErrorText(1, szError, szStep);
      WriteLogLine(szError);
      ResumeNext([&] { ShowStatus(szError); });
    }
    szResult = szError;
  }
  FinishRun();
  Err().Clear();
  return szResult;
}

}  // namespace ketrova
