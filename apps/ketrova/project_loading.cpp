#include "project_loading.h"

#include <ostream>
#include <vector>

#include "core/project_check.h"

namespace ketrova::cli {

bool LoadProjectFile(CConverter& project, const std::string& file, std::ostream& err, bool saves) {
  std::vector<std::string> notes;
  const bool loaded = LoadCheckedProject(project, file, saves, notes);
  for (const std::string& note : notes) err << note << "\n";
  return loaded;
}

}  // namespace ketrova::cli
