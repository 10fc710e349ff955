#include "engine/run_notes.h"

#include "engine/engine.h"

namespace ketrova {

std::vector<std::string> RunNotes(const CEngine& engine, const std::string& projectFile) {
  std::vector<std::string> notes;
  if (!engine.LogfileError().empty()) {
    notes.push_back("Die Protokolldatei " + engine.LogfileName() +
                    " konnte nicht geschrieben werden: " + engine.LogfileError());
  }
  const CEngine::ScriptErrorPlace& script = engine.LastScriptError();
  if (script.error.Number != 0 && script.error.Line > 0) {
    std::string note = "Scriptfehler in Zeile " + std::to_string(script.error.Line) + ", Spalte " +
                       std::to_string(script.error.Column);
    if (!script.job.empty()) {
      note += " (Aufgabe \"" + script.job + "\"";
      if (script.record > 0) note += ", Datensatz " + std::to_string(script.record);
      note += ")";
    }
    note += ": " + script.error.Description;
    if (!script.error.Text.empty()) note += "\n  " + script.error.Text;
    notes.push_back(note);
  }
  for (const CEngine::JobStop& stop : engine.Stops()) {
    std::string note = "Aufgabe \"" + stop.caption + "\" ist ";
    if (stop.record > 0) note += "bei Datensatz " + std::to_string(stop.record) + " ";
    if (stop.written == 0) {
      note += "gescheitert, bevor ein Datensatz geschrieben wurde.";
    } else {
      note += "gescheitert; davor wurden " + std::to_string(stop.written) +
              " Datensätze geschrieben (der letzte war Datensatz " +
              std::to_string(stop.lastWritten) + "); weiter mit: ketrova run " + projectFile +
              " --job \"" + stop.caption + "\" --from " + std::to_string(stop.lastWritten + 1);
    }
    notes.push_back(note);
  }
  if (std::string rejects = engine.Rejects().Note(); !rejects.empty()) notes.push_back(rejects);
  return notes;
}

}  // namespace ketrova
