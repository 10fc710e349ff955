// A look at a file before it is loaded as a project, so that a file that is
// none is answered with a reason a user can act on. The load's own text
// (CConverter::LoadProject) stays as it is; this is said beside it.
#pragma once

#include <string>
#include <vector>

namespace ketrova {

class CConverter;

struct ProjectFileCheck {
  enum class Kind {
    kProject,     // well-formed XML whose root is Project: load it
    kMissing,     // no such file
    kUnreadable,  // there, but cannot be read (a folder, no permission)
    kNotXml,      // text that is not well-formed XML: reason, line and column
    kBinary,      // not text at all; its bytes are never shown
    kNotProject,  // well-formed XML with another root: it loads, with nothing in it
  };
  Kind kind = Kind::kProject;
  // "" for a project; otherwise German, e.g.
  // "Dies ist keine gültige Projektdatei: a.cpf\nGrund: ... (Zeile 3, Spalte 7)".
  std::string text;
};

ProjectFileCheck CheckProjectFile(const std::string& path);

// Looks at `path`, then loads it into `project` unless it is binary (the
// load's text would quote its bytes) or, when the caller would save a project
// over it (`saves`), a well-formed file of another kind. `notes` gets what a
// user reads about it, one text each, in order: the look's reason before the
// load's own text, "nicht gefunden" or why it cannot be read after it. True
// when the file loaded (a non-project loads empty, with its note).
bool LoadCheckedProject(CConverter& project, const std::string& path, bool saves,
                        std::vector<std::string>& notes);

}  // namespace ketrova
