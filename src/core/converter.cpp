#include "core/converter.h"

#include <filesystem>
#include <pugixml.hpp>

#include "core/dialogs.h"
#include "core/xml_document.h"
#include "engine/script_modules.h"
#include "engine/session.h"
#include "jobs/jobs.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "support/text.h"

namespace ketrova {

namespace {

std::shared_ptr<ConverterDialogs>& DialogsSlot() {
  static std::shared_ptr<ConverterDialogs> dialogs;
  return dialogs;
}

bool ContainsWordIgnoringCase(const std::string& text, std::string_view word) {
  auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; };
  auto it = std::search(text.begin(), text.end(), word.begin(), word.end(),
                        [&](char a, char b) { return lower(a) == lower(b); });
  return it != text.end();
}

// The skeleton of an entry function, each line ended by CR LF.
std::string Skeleton(std::int32_t language, const std::string& function, bool emptyLineAfterFrame) {
  const std::string stars(67, '*');
  std::string s;
  if (language == sclVBScript) {
    s += "'" + stars + "\r\n";
    for (int i = 0; i < 4; ++i) s += "'\r\n";
    s += "'" + stars + "\r\n";
    s += "\r\n";
    s += "Function " + function + "()\r\n";
    s += "\t" + function + " = True\r\n";
    s += "End Function\r\n";
    s += "\r\n";
  } else {
    s += "//" + stars + "\r\n";
    for (int i = 0; i < 4; ++i) s += "//\r\n";
    s += "//" + stars + "\r\n";
    if (emptyLineAfterFrame) s += "\r\n";
    s += "function " + function + "()\r\n";
    s += "{\r\n";
    s += "\treturn true\r\n";
    s += "}\r\n";
    s += "\r\n";
  }
  return s;
}

void CreateDirectoryQuietly(const std::string& path) {
  if (path.empty()) return;
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) std::filesystem::create_directories(path, ec);
}

}  // namespace

ConverterDialogs* CurrentConverterDialogs() {
  return DialogsSlot().get();
}

void SetConverterDialogs(std::shared_ptr<ConverterDialogs> dialogs) {
  DialogsSlot() = std::move(dialogs);
}

CConverter::CConverter() {
  sourceDataBase_ = std::make_unique<CDatabase>();
  sourceDataBase_->DatabaseDirection = dbdSource;
  sourceDataBase_->SetConverter(this);
  destDataBase_ = std::make_unique<CDatabase>();
  destDataBase_->DatabaseDirection = dbdTarget;
  destDataBase_->SetConverter(this);
  jobs_ = std::make_unique<CJobs>();
  jobs_->SetConverter(this);
  CreateDOM();
  logs_ = std::make_unique<CLogs>();
  session_ = std::make_shared<CSession>();
  scriptModules_ = std::make_unique<CScriptModules>();
  scriptModules_->SetConverter(this);
  EditMode = edNew;
  ScriptLanguage = sclVBScript;
  logs_->Clear();
  Cancel = false;
}

CConverter::~CConverter() {
  // Children go before the document and the node layer they write through.
  scriptModules_.reset();
  jobs_.reset();
  destDataBase_.reset();
  sourceDataBase_.reset();
}

void CConverter::SetProjectDirectory(const std::string& value) {
  projectDirectory_ = value;
  CreateDirectoryQuietly(value);
}

void CConverter::SetErrorDirectory(const std::string& value) {
  errorDirectory_ = value;
  CreateDirectoryQuietly(value);
}

std::int32_t CConverter::MaxDemoData() {
  if (maxDemoData_ == 0) maxDemoData_ = 20;
  return maxDemoData_;
}

std::string CConverter::ScriptLanguageAsString() const {
  return ScriptLanguage == sclVBScript ? "VBScript" : "JScript";
}

void CConverter::FireDebugEvent(const std::string& szMessage) {
  if (DebugEvent) DebugEvent(szMessage);
}

void CConverter::FireErrorEvent(const std::string& szMessage) {
  if (ErrorEvent) ErrorEvent(szMessage);
}

void CConverter::CreateDOM() {
  xmlLib_.reset();
  document_ = CreateProjectDocument();
  xmlLib_ = std::make_unique<CXMLADO>();
  xmlLib_->XMLDoc = document_.get();
}

void CConverter::Clear() {
  ProjectName.clear();
  FileName.clear();
  ErrorFileName.clear();
  LogfileName.clear();
  ScriptOnStart.clear();
  ScriptOnEnd.clear();
  MaxRecords = 0;
  maxDemoData_ = 20;
  ScriptLanguage = sclVBScript;
  sourceDataBase_->Clear();
  destDataBase_->Clear();
  jobs_->Clear();
  logs_->Clear();
  scriptModules_->Clear();
  CheckMainScriptOnStart();
  CheckMainScriptOnEnd();
}

void CConverter::CheckMainScriptOnStart() {
  if (ContainsWordIgnoringCase(ScriptOnStart, "txOnStart")) return;
  ScriptOnStart = Skeleton(ScriptLanguage, "txOnStart", true) + "\r\n" + ScriptOnStart;
}

void CConverter::CheckMainScriptOnEnd() {
  if (ContainsWordIgnoringCase(ScriptOnEnd, "txOnEnd")) return;
  // The JScript end skeleton has no empty line after its frame, as it always had.
  ScriptOnEnd = Skeleton(ScriptLanguage, "txOnEnd", false) + "\r\n" + ScriptOnEnd;
}

void CConverter::AssignOnNew(CConverter& objConverter) {
  objConverter.WorkingDirectory = WorkingDirectory;
  objConverter.SetProjectDirectory(ProjectDirectory());
  objConverter.SetErrorDirectory(ErrorDirectory());
  objConverter.ErrorFileName = ErrorFileName;
  objConverter.LogfileName.clear();
  objConverter.MaxRecords = MaxRecords;
  objConverter.SetMaxDemoData(MaxDemoData());
  objConverter.ScriptOnStart = ScriptOnStart;
  objConverter.ScriptOnEnd = ScriptOnEnd;
  CheckMainScriptOnStart();
  CheckMainScriptOnEnd();
}

void CConverter::Assign(CConverter& objConverter) {
  Clear();
  ProjectName = objConverter.ProjectName;
  FileName = objConverter.FileName;
  WorkingDirectory = objConverter.WorkingDirectory;
  SetProjectDirectory(objConverter.ProjectDirectory());
  SetErrorDirectory(objConverter.ErrorDirectory());
  ErrorFileName = objConverter.ErrorFileName;
  LogfileName = objConverter.LogfileName;
  MaxRecords = objConverter.MaxRecords;
  SetMaxDemoData(objConverter.MaxDemoData());
  ScriptOnStart = objConverter.ScriptOnStart;
  ScriptOnEnd = objConverter.ScriptOnEnd;
  CheckMainScriptOnStart();
  CheckMainScriptOnEnd();
  // The children change places, so that the other object stays whole until
  // it ends; each side's children point back at their new owner.
  std::swap(sourceDataBase_, objConverter.sourceDataBase_);
  std::swap(destDataBase_, objConverter.destDataBase_);
  std::swap(jobs_, objConverter.jobs_);
  std::swap(logs_, objConverter.logs_);
  std::swap(scriptModules_, objConverter.scriptModules_);
  AdoptChildren();
  objConverter.AdoptChildren();
}

void CConverter::AdoptChildren() {
  sourceDataBase_->SetConverter(this);
  destDataBase_->SetConverter(this);
  jobs_->SetConverter(this);
  scriptModules_->SetConverter(this);
}

bool CConverter::EditNew() {
  ui::UserInterface& ui = ui::Current();
  CConverter project;
  AssignOnNew(project);
  ConverterDialogs* dialogs = CurrentConverterDialogs();
  bool confirmed = dialogs && dialogs->EditProject(project);
  ui.DoEvents();
  if (confirmed) Assign(project);
  ui.DoEvents();
  if (!confirmed) return false;
  if (!SelectDatabaseSource()) return false;
  ui.DoEvents();
  if (!SelectDatabaseDest()) return false;
  ui.DoEvents();
  SaveProject("");
  EditMode = edEdit;
  return true;
}

bool CConverter::EditProjekt() {
  ConverterDialogs* dialogs = CurrentConverterDialogs();
  return dialogs && dialogs->EditProject(*this);
}

std::string CConverter::Execute() {
  ui::UserInterface& ui = ui::Current();
  if (ConverterDialogs* dialogs = CurrentConverterDialogs()) dialogs->Run(*this, FileName);
  ui.DoEvents();
  ui.DoEvents();
  return {};
}

std::string CConverter::JobEdit(std::int32_t Index, std::int32_t IndexAfter) {
  std::string result;
  if (destDataBase_->DatabaseType <= dbtUndefined) {
    result = "Bevor Sie eine Aufgabe bearbeiten können, müssen Sie eine Zieldatenbank wählen !";
  } else {
    std::unique_ptr<CJob> newJob;
    CJob* job = nullptr;
    if (IndexAfter > -1) {
      newJob = jobs_->NewJob();
      job = newJob.get();
    } else {
      try {
        job = jobs_->Count() == 0 ? &jobs_->Add() : &jobs_->Item(Index);
      } catch (const VbError&) {
        job = nullptr;
      }
    }
    if (!job) {
      result = "Die Aufgabe (" + std::to_string(Index) + ") konnte nicht ermittelt werden !";
    } else {
      // Only database jobs have an editor.
      ConverterDialogs* dialogs = CurrentConverterDialogs();
      bool confirmed = job->JobType == jtDBOperation && dialogs && dialogs->EditJob(*this, *job);
      if (confirmed) {
        if (IndexAfter > -1) job = &jobs_->Insert(std::move(newJob), IndexAfter);
        job->CheckValidate();
        result = "OK";
      } else {
        result = "CANCEL";
      }
    }
  }
  jobs_->RenumberJobs();
  return result;
}

bool CConverter::SelectDatabase(CDatabase& objDataBase) {
  ConverterDialogs* dialogs = CurrentConverterDialogs();
  bool confirmed =
      dialogs && dialogs->SelectDatabase(*this, objDataBase.DatabaseDirection, objDataBase);
  ui::Current().DoEvents();
  return confirmed;
}

bool CConverter::SelectDatabaseSource() {
  ConverterDialogs* dialogs = CurrentConverterDialogs();
  bool confirmed = dialogs && dialogs->SelectDatabase(*this, dbdSource, *sourceDataBase_);
  if (!confirmed) return false;
  ui::Current().DoEvents();
  ApplyDatabaseSource(true);
  return true;
}

std::string CConverter::ApplyDatabaseSource(bool bShowError) {
  ui::UserInterface& ui = ui::Current();
  jobs_->Clear();
  logs_->Clear();
  scriptModules_->Clear();
  sourceDataBase_->Objects().Clear();
  std::string error = sourceDataBase_->Reload(true, true);
  if (!error.empty()) {
    if (bShowError) ui.MsgBox(error, ui::vbOKOnly, ProductName());
  } else {
    sourceDataBase_->CopyDataBaseObjectsToJobs();
  }
  ui.DoEvents();
  UpdateJobTargets(true);
  return error;
}

bool CConverter::SelectDatabaseDest() {
  ConverterDialogs* dialogs = CurrentConverterDialogs();
  bool confirmed = dialogs && dialogs->SelectDatabase(*this, dbdTarget, *destDataBase_);
  if (!confirmed) return false;
  ui::Current().DoEvents();
  ApplyDatabaseDest(true);
  return true;
}

std::string CConverter::ApplyDatabaseDest(bool bShowError) {
  destDataBase_->Objects().Clear();
  std::string error = destDataBase_->Reload(true, true);
  if (error.empty() && destDataBase_->DatabaseTypeNative() == dbtOutlook)
    for (CJob& job : *jobs_) destDataBase_->CopyOutlookObjectsToTargetJobs(job);
  if (!error.empty()) {
    if (bShowError) ui::Current().MsgBox(error, ui::vbOKOnly, ProductName());
  } else {
    UpdateJobTargets(true);
  }
  return error;
}

void CConverter::UpdateJobTargets(bool bSetType) {
  for (CJob& job : *jobs_) {
    std::string name = job.JobSource().ItemObjectName;
    if (!sourceDataBase_->IsFileBased()) name = MakeIdentifier(name);
    std::string error;
    std::unique_ptr<CDatabaseObject> clone;
    CDatabaseObject* found = destDataBase_->ObjectByName(name, error, false, &clone);
    job.JobDest().CreateTable = found == nullptr;
    job.CheckValidate();
    if (!bSetType) continue;
    switch (destDataBase_->DatabaseType) {
      case dbtAccess:
      case dbtSQLServer:
      case dbtInterbase:
      case dbtOracle:
      case dbtParadox:
      case dbtMySQL:
      case dbtODBC:
        job.JobDest().JobType = jitTableView;
        break;
      case dbtExcel:
        job.JobDest().JobType = jitExcel;
        break;
      case dbtOutlook:
        job.JobDest().JobType = jitOutlook;
        break;
      case dbtText:
        job.JobDest().JobType = jitText;
        break;
      case dbtXML:
        job.JobDest().JobType = jitXML;
        break;
      default:
        break;
    }
    std::string target = job.JobDest().ItemObjectName;
    job.JobDest().ItemObjectName = destDataBase_->CheckTableName(target, false);
  }
}

bool CConverter::HasProject() {
  if (EditMode != edNew) return true;
  ui::UserInterface& ui = ui::Current();
  ui.SetMousePointer(ui::vbDefault);
  int answer = ui.MsgBox(
      "Für diese Operation müssen Sie zuerst ein Projekt Neu anlegen, \r\noder ein bestehendes "
      "öffnen. \r\n\r\nMöchten Sie jetzt ein neues Projekt anlegen ?",
      ui::vbYesNo | ui::vbExclamation, ProductName());
  if (answer == ui::vbYes) EditNew();
  return false;
}

}  // namespace ketrova
