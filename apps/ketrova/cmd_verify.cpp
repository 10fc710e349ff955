// ketrova verify PROJECT.CPF: opens a project, creates on its destination the
// tables of the source that the destination lacks, and saves the project
// (jobs whose target got a new name are changed with it). What could not be
// created is listed on stderr from the event log.
#include <iostream>

#include "commands.h"
#include "core/converter.h"
#include "project_loading.h"
#include "stores/database.h"

namespace ketrova::cli {

int RunVerify(const Args& args) {
  if (args.size() != 1) {
    std::cerr << "Aufruf: ketrova verify PROJEKT.CPF\n";
    return 2;
  }
  CConverter project;
  if (!LoadProjectFile(project, args[0], std::cerr, true)) return 1;
  std::int32_t notesOfLoad = project.Logs().Count();
  std::string error = project.DestDataBase().VerifyTables(false, true);
  std::string saveError = project.SaveProject(args[0]);
  if (error.empty()) error = saveError;
  for (const CLog& log : project.Logs()) std::cerr << log.Message << "\n";
  if (!error.empty()) {
    std::cerr << error << "\n";
    return 1;
  }
  // A table that could not be created is only logged; it fails the command.
  return project.Logs().Count() > notesOfLoad ? 1 : 0;
}

}  // namespace ketrova::cli
