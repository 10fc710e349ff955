#include "project_loading.h"

#include <ostream>

#include "core/converter.h"
#include "core/project_check.h"

namespace ketrova::cli {

bool LoadProjectFile(CConverter& project, const std::string& file, std::ostream& err, bool saves) {
  const ProjectFileCheck check = CheckProjectFile(file);
  using Kind = ProjectFileCheck::Kind;
  // The load's text quotes the line it stopped at, which a binary file must
  // not have printed.
  // Nor is a file of another kind overwritten by a project.
  if (check.kind == Kind::kBinary || (saves && check.kind == Kind::kNotProject)) {
    err << check.text << "\n";
    return false;
  }
  if (check.kind == Kind::kNotXml || check.kind == Kind::kNotProject) err << check.text << "\n";
  const std::string error = project.LoadProject(file);
  if (error.empty()) return true;
  err << error << "\n";
  if (check.kind == Kind::kMissing || check.kind == Kind::kUnreadable) err << check.text << "\n";
  return false;
}

}  // namespace ketrova::cli
