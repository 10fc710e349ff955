// CEngine: one run of a project, from the project file to the closing report.
// The run dialog makes a fresh one for every press of its start button, hands
// it the project and three display controls, calls Execute once and reads
// ErrorCount and LogfileName afterwards.
//
// The run is split over four files: the driver (engine.cpp: stores, start and
// end scripts, the job loop, the log frames), one job (job_execution.cpp),
// the script host's set-up (script_setup.cpp) and the report of a failed
// record (debug_report.cpp). Failures never leave Execute as exceptions: they
// end in its text result and in the log beside the project.
//
// The display controls are optional late-bound objects: the two progress bars
// take Min, Max, Value and Visible, EditInfo takes Text, Visible and Refresh.
// A null control is simply not shown. Interface thread only; Cancel is set by
// the dialog during the yields of the record loop.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/reject_file.h"
#include "engine/run_log.h"
#include "engine/session.h"
#include "platform/script/script_control.h"
#include "support/object.h"

namespace ketrova {

namespace ado {
class Recordset;
}  // namespace ado

class CConverter;
class CJob;

class CEngine {
 public:
  CEngine();
  ~CEngine();
  CEngine(const CEngine&) = delete;
  CEngine& operator=(const CEngine&) = delete;

  ObjectPtr ProgressBar;
  ObjectPtr ProgressBarTotal;
  ObjectPtr EditInfo;
  // The project being run; when Execute loads a file, the engine owns it.
  CConverter* Converter = nullptr;
  std::int32_t ErrorCount() const { return errorCount_; }
  const std::string& LogfileName() const { return logfileName_; }
  // Why the log file could not be written ("" when it could); the run's text
  // then says only that a file failed.
  const std::string& LogfileError() const { return log_.OpenError(); }
  // -1 for true, as the program's truth values are.
  std::int32_t Cancel = 0;
  const std::shared_ptr<CRuntime>& Runtime() const { return runtime_; }
  script::ScriptControl& ScriptHost() { return *scriptHost_; }

  // The records the destination refused in this run, kept in the reject file
  // beside the log (reject_file.h). Its Note is shown beside the run's texts;
  // the run's log and result do not change for it.
  const RejectFile& Rejects() const { return rejects_; }
  // The first source record of every job (1: all of them). The records before
  // it are passed over without a script call or a write; the ones after keep
  // their numbers, so the log's counts and the progress see the whole source.
  std::int32_t FirstRecord = 1;
  // A job that ended on a failure, with what it wrote before: the records
  // written (committed, as no transaction spans the run) and the number of the
  // last one, from which a later run may go on.
  struct JobStop {
    std::string caption;
    std::int32_t written = 0;
    std::int32_t lastWritten = 0;
    std::int32_t record = 0;  // the record the job stopped at
  };
  const std::vector<JobStop>& Stops() const { return stops_; }
  // The last script error the run reported, with what the run's texts do not
  // keep: its line and column, the job and the record (0 outside the record
  // loop: a script that did not compile). error.Number is 0 when there was none.
  struct ScriptErrorPlace {
    std::string job;
    std::int32_t record = 0;
    script::ScriptControlError error;
  };
  const ScriptErrorPlace& LastScriptError() const { return lastScriptError_; }

  // Runs the project: the one in `szFileName`, or Converter as it stands when
  // the name is empty. Converter must be set either way (its event list is
  // cleared first); a loaded project then replaces it. The last error text of
  // the run, "" for a clean one.
  std::string Execute(std::string& szFileName);

  // Writes the failing record of `objJob` into the log: both statements, the
  // fields of both record sets with their values, and the assignments. A
  // field or record set that cannot be read is left out.
  void PrintDebugInfo(CJob& objJob, ado::Recordset* objRSSource, ado::Recordset* objRSDest);
  // The text of the script host's current error, which is then cleared.
  std::string GetScriptError(const std::string& szObject, const std::string& szScript);
  // Adds SetIdentKey and SetRecordCount (VBScript text whatever the language)
  // to the global module; raises what the host raises.
  void WriteScriptFunctions();

 private:
  // One job's run with its working state (job_execution.cpp).
  class JobRun;
  std::string DoExecute(CJob& objJob);
  std::string AddScriptCode(const std::string& szStep, const std::string& szCode);
  std::string ConfigureScripting(const std::string& szName);
  void ShowStatus(const std::string& szText);
  // inWhat: 0 Min, 1 Max, 2 Value; anything else does nothing.
  void SetProgressTotal(int inWhat, double inValue);
  void SetProgressRecord(int inWhat, double inValue);
  void SetProgressVisible(bool bVisible);
  bool OpenLogFile();
  void CloseLogFile() { log_.Close(); }
  void WriteLogLine(const std::string& szText) { log_.WriteLine(szText); }
  // The closing part of Execute: log closed, bars hidden, stores inactive.
  void FinishRun();

  std::shared_ptr<CRuntime> runtime_;
  std::unique_ptr<CConverter> ownConverter_;
  std::string projectFileName_;
  std::string logfileName_;
  RunLog log_;
  RejectFile rejects_;
  std::vector<JobStop> stops_;
  ScriptErrorPlace lastScriptError_;
  std::string currentJob_;
  std::int32_t maxRecords_ = 0;
  std::int32_t currentRecord_ = 0;
  std::int32_t errorCount_ = 0;
  std::unique_ptr<script::ScriptControl> scriptHost_;
  std::shared_ptr<ado::Recordset> rsSourceCount_;
  std::shared_ptr<ado::Recordset> rsDestination_;
  std::shared_ptr<ado::Recordset> rsDestinationCount_;
  ObjectPtr scriptHostObject_;
};

}  // namespace ketrova
