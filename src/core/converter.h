// CConverter: the project in memory and the root of the object tree. It owns
// the two stores, the job list, the script modules, the event log list, the
// session object and the project document with its node layer; every child
// keeps a plain back pointer (Converter) to it. It also starts the editors and
// the run dialog (through ConverterDialogs), so that a host needs only this
// one object.
//
// Operations that report do so with a text (LoadProject, SaveProject,
// JobEdit): empty on success. A cancelled dialog is a false result, never an
// error. Interface thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/enums.h"
#include "core/logs.h"
#include "core/xml_node.h"

namespace pugi {
class xml_document;
}

namespace ketrova {

class CDatabase;
class CJobs;
class CScriptModules;
class CSession;

class CConverter {
 public:
  CConverter();
  ~CConverter();
  CConverter(const CConverter&) = delete;
  CConverter& operator=(const CConverter&) = delete;

  std::string Version() const { return "Version 2.5"; }
  std::string ProductName() const { return "Ketrova"; }
  std::string ProjectName;
  std::string FileName;
  std::string WorkingDirectory;
  const std::string& ProjectDirectory() const { return projectDirectory_; }
  // Creates the directory when it does not exist; failures are ignored.
  void SetProjectDirectory(const std::string& value);
  const std::string& ErrorDirectory() const { return errorDirectory_; }
  void SetErrorDirectory(const std::string& value);
  std::string ErrorFileName;
  std::string LogfileName;
  std::int32_t MaxRecords = 0;
  // A stored 0 reads as 20 (and stays 20).
  std::int32_t MaxDemoData();
  void SetMaxDemoData(std::int32_t value) { maxDemoData_ = value; }

  CDatabase& SourceDataBase() { return *sourceDataBase_; }
  CDatabase& DestDataBase() { return *destDataBase_; }
  CXMLADO& XMLLib() { return *xmlLib_; }
  pugi::xml_document& Document() { return *document_; }
  CJobs& Jobs() { return *jobs_; }
  CLogs& Logs() { return *logs_; }
  const std::shared_ptr<CSession>& Session() const { return session_; }
  bool Cancel = false;
  std::int32_t ScriptLanguage = sclVBScript;
  // "VBScript" for 1, "JScript" for anything else.
  std::string ScriptLanguageAsString() const;
  CScriptModules& ScriptModules() { return *scriptModules_; }
  std::string ScriptOnStart;
  std::string ScriptOnEnd;
  std::int32_t EditMode = edNew;

  // The two outgoing events; the host's connector listens to both.
  std::function<void(const std::string&)> DebugEvent;
  std::function<void(const std::string&)> ErrorEvent;
  void FireDebugEvent(const std::string& szMessage);
  void FireErrorEvent(const std::string& szMessage);

  // The project file; "" or the error text.
  std::string LoadProject(const std::string& szFileName);
  std::string SaveProject(const std::string& szFileName = {});
  // Empties the project; the three directories survive and the two script
  // skeletons are put back.
  void Clear();
  // Copies the settings of a new project into `objConverter`.
  void AssignOnNew(CConverter& objConverter);
  // Takes over everything from `objConverter`: its settings are copied, its
  // stores, jobs, logs and modules change places with this object's and point
  // back here.
  void Assign(CConverter& objConverter);
  bool EditNew();
  bool EditProjekt();
  // Opens the run dialog; the result stays empty.
  std::string Execute();
  // "OK", "CANCEL" or a notice why no editor opened.
  std::string JobEdit(std::int32_t Index, std::int32_t IndexAfter = -1);
  bool SelectDatabase(CDatabase& objDataBase);
  bool SelectDatabaseSource();
  bool SelectDatabaseDest();
  // What follows a confirmed store dialog, for callers without one: the
  // source's catalogue is read anew and one job made per table or view (all
  // jobs and modules are dropped first); the destination's catalogue is read
  // anew and the jobs' targets re-aimed. "" or the store's error text, which
  // is also shown in a message box with bShowError.
  std::string ApplyDatabaseSource(bool bShowError);
  std::string ApplyDatabaseDest(bool bShowError);
  // Whether a project was saved or loaded; otherwise offers to make one.
  bool HasProject();
  // Puts the skeleton of txOnStart / txOnEnd in front of the script unless it
  // mentions the function already.
  void CheckMainScriptOnStart();
  void CheckMainScriptOnEnd();

 private:
  void CreateDOM();
  void UpdateJobTargets(bool bSetType);
  // Points every child's back reference at this object.
  void AdoptChildren();

  std::string projectDirectory_;
  std::string errorDirectory_;
  std::int32_t maxDemoData_ = 20;
  std::unique_ptr<CDatabase> sourceDataBase_;
  std::unique_ptr<CDatabase> destDataBase_;
  std::unique_ptr<CJobs> jobs_;
  std::unique_ptr<pugi::xml_document> document_;
  std::unique_ptr<CXMLADO> xmlLib_;
  std::unique_ptr<CLogs> logs_;
  std::shared_ptr<CSession> session_;
  std::unique_ptr<CScriptModules> scriptModules_;
};

}  // namespace ketrova
