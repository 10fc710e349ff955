// Loading the project named on a command line. Before the load, the file is
// looked at (core/project_check.h), so that a file that is no project is
// answered with the reason and the line, a binary file without its bytes, and
// a missing one with "nicht gefunden" beside the load's own text.
#pragma once

#include <iosfwd>
#include <string>

namespace ketrova {
class CConverter;
}

namespace ketrova::cli {

// True when `project` holds the file; otherwise everything was said on `err`.
// A well-formed file with another root loads (empty), with a note on `err`,
// unless the command would save over it (`saves`): then it is refused.
bool LoadProjectFile(CConverter& project, const std::string& file, std::ostream& err,
                     bool saves = false);

}  // namespace ketrova::cli
