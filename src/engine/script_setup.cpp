// The script host's set-up for a run and for each job: the user's start and
// end scripts, the modules, the Converter object, the two helper procedures,
// and the text of a script error.
#include <exception>

#include "core/converter.h"
#include "core/error_text.h"
#include "engine/engine.h"
#include "engine/run_log.h"
#include "engine/script_modules.h"
#include "platform/script/script_control.h"
#include "platform/ui/user_interface.h"
#include "support/vb_error.h"

namespace ketrova {

std::string CEngine::ConfigureScripting(const std::string& szName) {
  try {
    WriteLogLine("");
    WriteLogLine(LogFrame('-', 100));
    WriteLogLine("Initialisierung Scriptmodul Main für Aufgabe :" + szName);
    script::ScriptControl& host = *scriptHost_;
    host.SetLanguage(Converter->ScriptLanguageAsString());
    host.Reset();
    host.SetTimeout(-1);

    // A script that does not compile stops the sequence: what follows it
    // (later modules, the Converter object) is then missing. The text of
    // AddScriptCode is dropped; only a pending error makes a result.
    std::string szStep = "Benutzerscripte übergeben : OnStart";
    WriteLogLine(szStep);
    ShowStatus(szStep);
    if (!AddScriptCode(szStep, Converter->ScriptOnStart).empty()) return BuildErrorText(1, "", "");
    szStep = "Benutzerscripte übergeben : OnEnd";
    ShowStatus(szStep);
    WriteLogLine(szStep);
    if (!AddScriptCode(szStep, Converter->ScriptOnEnd).empty()) return BuildErrorText(1, "", "");
    CScriptModules& modules = Converter->ScriptModules();
    for (std::int32_t i = 1; i <= modules.Count(); ++i) {
      ui::Current().DoEvents();
      CScriptModule& module = modules.Item(i);
      szStep = "Benutzerscripte übergeben : " + module.Name;
      ShowStatus(szStep);
      WriteLogLine(szStep);
      std::string szError = AddScriptCode(szStep, module.ScriptText);
      if (!szError.empty()) {
        WriteLogLine(szError);
        return BuildErrorText(1, "", "");
      }
    }
    WriteLogLine("Scripting Objekte übergeben");
    WriteLogLine("Objekt übergeben : Converter");
    host.AddObject("Converter", runtime_, true);
    WriteLogLine(LogFrame('-', 100));
    return {};
  } catch (...) {
    // A run-time error while setting up the scripting ends with its error text.
    SetPendingError(std::current_exception());
    return BuildErrorText(1, "", "");
  }
}

std::string CEngine::AddScriptCode(const std::string& szStep, const std::string& szCode) {
  ResumeNext([&] { scriptHost_->AddCode(szCode); });
  if (Err().Number == 0) return {};
  std::string szResult = GetScriptError(szStep, "");
  Err().Clear();
  return szResult;
}

void CEngine::WriteScriptFunctions() {
  // VBScript text whatever the project's language.
  scriptHost_->AddCode(
      "Dim IdentKey\r\n"
      "Sub SetIdentKey(szGUID)\r\n"
      "     IdentKey = szGUID \r\n"
      "end Sub\r\n"
      "\r\n");
  scriptHost_->AddCode(
      "Dim RecordCount\r\n"
      "Sub SetRecordCount(inValue)\r\n"
      "     RecordCount = inValue \r\n"
      "end Sub\r\n"
      "\r\n");
}

std::string CEngine::GetScriptError(const std::string& szObject, const std::string& szScript) {
  script::ScriptControlError& error = scriptHost_->Error();
  lastScriptError_ = {currentJob_, currentRecord_, error};
  // "VBScript" stands for both languages here.
  std::string szText = "Fehler in VBScript: \r\n\r\n";
  szText += "Objekt.:" + szObject + "\r\n";
  szText += "Fehler Nr.:" + std::to_string(error.Number) + "\r\n";
  szText += "Beschreibung: " + error.Description + "\r\n";
  szText += "Quelle:" + error.Source + "\r\n";
  szText += "Spalte:" + std::to_string(error.Column) + "\r\n";
  szText += "Zeile:" + std::to_string(error.Line) + "\r\n\r\n";
  szText += "Script:\r\n" + szScript;
  error.Clear();
  // With the error still pending, the formatter's error block replaces this.
  return BuildErrorText(1, szText, "");
}

}  // namespace ketrova
