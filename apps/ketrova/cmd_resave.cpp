// ketrova resave IN.CPF OUT.CPF: loads a project file and saves it again, as
// the desktop would on "Speichern". A load or save error goes to stderr.
#include <iostream>

#include "commands.h"
#include "core/converter.h"
#include "project_loading.h"

namespace ketrova::cli {

int RunResave(const Args& args) {
  if (args.size() != 2) {
    std::cerr << "Aufruf: ketrova resave EIN.CPF AUS.CPF\n";
    return 2;
  }
  CConverter project;
  if (!LoadProjectFile(project, args[0], std::cerr)) return 1;
  std::string error = project.SaveProject(args[1]);
  if (!error.empty()) {
    std::cerr << error << "\n";
    return 1;
  }
  return 0;
}

}  // namespace ketrova::cli
