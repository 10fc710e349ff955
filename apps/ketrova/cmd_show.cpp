// ketrova show PROJECT.CPF [--job N]: prints what each job of a project would
// send and run, so that a user can review a project before running it: the
// source statement, the count, the delete, the table it would create and its
// script. Nothing is opened; the stores' brackets follow their types.
#include <iostream>
#include <string>

#include "commands.h"
#include "core/converter.h"
#include "jobs/jobs.h"
#include "project_loading.h"
#include "stores/database.h"

namespace ketrova::cli {

namespace {

constexpr const char* kUsage = "Aufruf: ketrova show PROJEKT.CPF [--job N]\n";

void Section(std::ostream& out, const char* title, const std::string& text) {
  out << "-- " << title << "\n" << text;
  if (!text.empty() && text.back() != '\n') out << "\n";
}

void ShowJob(std::ostream& out, CJob& job) {
  CJobItem& source = job.JobSource();
  CJobItem& dest = job.JobDest();
  out << "== Aufgabe " << job.Index << ": " << job.Caption << (job.Enabled ? "" : " (nicht aktiv)")
      << "\n";
  out << "Quelle: " << source.ItemObjectName << "   Ziel: " << dest.ItemObjectName
      << (job.DestinationUpdate ? "   (Aktualisieren über " + dest.KeyField + ")" : "") << "\n";
  if (!job.Validate) out << "Fehler: " << job.ValidateError << "\n";
  Section(out, "Abfrage", source.GetSourceSQL());
  Section(out, "Anzahl", source.GenerateSQLCount());
  Section(out, "Löschen", dest.GenerateSQLDelete());
  if (dest.CreateTable) {
    std::string error;
    std::string table = dest.GenerateTableStructure(error, source.ItemObjectName);
    Section(out, "Tabelle anlegen", error.empty() ? table : error);
  }
  Section(out, job.ScriptLanguage == sclVBScript ? "Script (VBScript)" : "Script (JScript)",
          job.Script);
  out << "\n";
}

}  // namespace

int RunShow(const Args& args) {
  if (args.size() != 1 && !(args.size() == 3 && args[1] == "--job")) {
    std::cerr << kUsage;
    return 2;
  }
  std::int32_t only = 0;
  if (args.size() == 3) {
    try {
      only = std::stoi(args[2]);
    } catch (const std::exception&) {
      only = 0;
    }
    if (only < 1) {
      std::cerr << "ketrova show: keine Aufgabennummer: " << args[2] << "\n" << kUsage;
      return 2;
    }
  }
  CConverter project;
  if (!LoadProjectFile(project, args[0], std::cerr)) return 1;
  project.SourceDataBase().SetColBrackets();
  project.DestDataBase().SetColBrackets();
  CJobs& jobs = project.Jobs();
  if (only > jobs.Count()) {
    std::cerr << "ketrova show: das Projekt hat " << jobs.Count() << " Aufgabe(n)\n";
    return 1;
  }
  std::cout << project.ProjectName << " (" << jobs.Count() << " Aufgabe(n))\n\n";
  for (CJob& job : jobs)
    if (only == 0 || job.Index == only) ShowJob(std::cout, job);
  return 0;
}

}  // namespace ketrova::cli
