// CConverter.SaveProject and LoadProject: the project file as a whole. The
// sections of the file are written and read by each class's own Save and Load.
#include <pugixml.hpp>

#include "core/converter.h"
#include "core/error_text.h"
#include "core/project_values.h"
#include "core/work_form.h"
#include "core/xml_document.h"
#include "engine/script_modules.h"
#include "jobs/jobs.h"
#include "platform/ui/ui_helpers.h"
#include "stores/database.h"
#include "support/files.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// The end of saving or loading a project. A failure gets the step it happened
// at and the pending error into its text; the work form closes either way.
std::string EndProjectFileAction(std::string error, const std::string& szStep, bool failed) {
  if (failed) {
    if (!szStep.empty()) error += "\\nAusgeführte Aktion : " + szStep;
    BuildErrorText(1, error, "");
  }
  Err().Clear();
  WorkFormClose();
  ui::ShowHourglass(false);
  return error;
}

std::string EncodeScript(const std::string& script) {
  return EscapeSpecialChars(ConvertUmlautsEscape(script, true), true);
}

std::string DecodeScript(const std::string& text) {
  return EscapeSpecialChars(ConvertUmlautsEscape(text, false), false);
}

}  // namespace

std::string CConverter::SaveProject(const std::string& szFileName) {
  std::string error;
  std::string szStep;
  ui::ShowHourglass(true);
  WorkFormOpen("Bitte einen Moment Geduld", "Projekt wird gesichert", "");
  try {
    szStep = "Create DOM";
    CreateDOM();
    CXMLADO& xml = XMLLib();
    pugi::xml_node root = xml.AppendChild(Document(), xml.CreateElement("PROJECT"));
    if (!szFileName.empty()) FileName = szFileName;
    auto text = [&](const char* name, const std::string& value) {
      return xml.AppendChild(root, xml.CreateElement(name, "", value));
    };
    text("PROJECTNAME", ProjectName);
    text("DIRWORKING", WorkingDirectory);
    text("DIRPROJECTS", ProjectDirectory());
    text("DIRERRORS", ErrorDirectory());
    text("ERRORFILENAME", ErrorFileName);
    text("LOGFILENAME", LogfileName);
    text("MAXRECORDS", std::to_string(MaxRecords));
    text("MAXDEMODATA", std::to_string(MaxDemoData()));
    std::string onStart = EncodeScript(ScriptOnStart);
    xml.AppendChild(root, xml.CreateCData("SCRIPTONSTART", onStart));
    std::string onEnd = EncodeScript(ScriptOnEnd);
    xml.AppendChild(root, xml.CreateCData("SCRIPTONEND", onEnd));
    text("SCRIPTLANGUAGE", std::to_string(ScriptLanguage));
    pugi::xml_node source = text("DATABASESOURCE", "");
    pugi::xml_node dest = text("DATABASEDEST", "");
    pugi::xml_node jobs = text("JOBS", "");

    szStep = "Quelldatenbank wird gesichert";
    WorkFormText(szStep, "");
    SourceDataBase().Save(source);
    if (error.empty()) {
      szStep = "Zieldatenbank wird gesichert";
      WorkFormText(szStep, "");
      DestDataBase().Save(dest);
    }
    if (error.empty()) {
      szStep = "Aufgaben werden gesichert";
      WorkFormText(szStep, "");
      error = Jobs().Save(jobs, true);
    }
    pugi::xml_node modules = text("SCRIPTMODULES", "");
    if (error.empty()) {
      szStep = "Module werden gesichert";
      WorkFormText(szStep, "");
      WorkFormProgress(0, 1, 0);
      error = ScriptModules().Save(modules);
    }
    // A section that failed leaves a partial document, which is written all
    // the same.
    DeleteFileWait(FileName);
    if (!SaveDocument(Document(), FileName)) throw VbError(75);
    EditMode = edEdit;
  } catch (...) {
    // The first failure stops the sections; the partial document is written all the same.
    SetPendingError(std::current_exception());
  }
  ui::ShowHourglass(false);
  return EndProjectFileAction(error, szStep, !error.empty() || Err().Number != 0);
}

std::string CConverter::LoadProject(const std::string& szFileName) {
  std::string error;
  std::string szStep;
  WorkFormOpen("Bitte einen Moment Geduld", "Projekt wird geöffnet", "");
  ui::ShowHourglass(true);
  bool failed = false;
  try {
    Clear();
    CreateDOM();
    DocumentLoadResult loaded = LoadDocument(Document(), szFileName);
    if (!loaded.ok) {
      error = "Das Dokument konnte nicht gelesen werden. \r\nFehlertext : " + loaded.srcText +
              "\r\nDateiname  : " + ketrova::FileName(szFileName);
      WorkFormClose();
      ui::ShowHourglass(false);
      return error;
    }
    CXMLADO& xml = XMLLib();
    ProjectName = xml.ReadNode("/Project/ProjectName");
    FileName = szFileName;
    WorkingDirectory = xml.ReadNode("/Project/DirWorking");
    // Replaced by the file's own directory below, so nothing is created here.
    projectDirectory_ = xml.ReadNode("/Project/DirProjects");
    SetErrorDirectory(xml.ReadNode("/Project/DirErrors"));
    ErrorFileName = xml.ReadNode("/Project/ErrorFileName");
    LogfileName = xml.ReadNode("/Project/LogfileName");
    MaxRecords = TextToLong(xml.ReadNode("/Project/MaxRecords", {}, "0"));
    SetMaxDemoData(TextToLong(xml.ReadNode("/Project/MaxDemoData", {}, "20")));
    // The skeletons are checked at once, while ScriptLanguage still has the
    // value Clear gave it.
    ScriptOnStart = DecodeScript(xml.ReadNode("/Project/ScriptOnStart"));
    CheckMainScriptOnStart();
    ScriptOnEnd = DecodeScript(xml.ReadNode("/Project/ScriptOnEnd"));
    CheckMainScriptOnEnd();
    ScriptLanguage = TextToLong(xml.ReadNode("/Project/ScriptLanguage", {}, "1"));
    pugi::xml_node root = xml.FindNode("/Project");

    // A store is read, opened and, when the file lists no objects of it,
    // analysed; a failure to open or analyse goes to the log, not into error.
    auto loadStore = [&](CDatabase& store, const char* path, const char* loading,
                         const char* opening, const char* objects) {
      WorkFormText(loading, "");
      error = store.Load(path, root);
      if (!error.empty()) return;
      szStep = opening;
      store.SetActive(true);
      if (store.ErrorNumber() != 0) Logs().AddLog(szStep + " : " + store.LastErrorMessage());
      szStep = objects;
      WorkFormText(szStep, "");
      if (store.Objects().Count() == 0) store.Reload();
      if (store.ErrorNumber() != 0) Logs().AddLog(szStep + " : " + store.LastErrorMessage());
    };
    loadStore(SourceDataBase(), "/Project/DatabaseSource", "Quelldatenbank wird geöffnet",
              "Quelldatenbank öffnen", "Quell-Objekte werden geladen");
    if (error.empty())
      loadStore(DestDataBase(), "/Project/DatabaseDest", "Zieldatenbank wird geöffnet",
                "Zieldatenbank öffnen", "Ziel-Objekte werden geladen");
    if (error.empty()) {
      WorkFormText("Aufgaben werden geladen", "");
      error = Jobs().Load("/Project/Jobs", root, true);
    }
    if (error.empty()) {
      WorkFormText("Module werden geladen", "");
      WorkFormProgress(0, 1, 0);
      error = ScriptModules().Load("/Project/ScriptModules");
    }
    SetProjectDirectory(FilePath(szFileName));
    EditMode = edEdit;
  } catch (...) {
    // A failed load is reported through the text made below.
    SetPendingError(std::current_exception());
    failed = true;
  }
  failed = failed || !error.empty();
  if (failed) ui::ShowHourglass(false);
  return EndProjectFileAction(error, szStep, failed);
}

}  // namespace ketrova
