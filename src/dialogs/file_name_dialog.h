// The common dialog's open box as the project options use it: unlike
// ShowFileOpen (file_dialogs.h), the name typed need not exist yet, since a
// new project, log or error file is named here before it is written.
#pragma once

#include <optional>
#include <string>

class QWidget;

namespace ketrova::dialogs {

// A modal, non-native file dialog (object name "FileOpen", title "Öffnen")
// over `parent` (may be null) that starts in `folder` (or the nearest folder
// above it that exists) with `fileName` in its name field. `vbFilter` is VB's
// filter text (file_filter.h); patterns match without regard to case.
// Answers the absolute path of the name accepted, existing or not; nullopt
// when cancelled.
std::optional<std::string> ShowFileNameDialog(QWidget* parent, const std::string& vbFilter,
                                              const std::string& folder,
                                              const std::string& fileName);

}  // namespace ketrova::dialogs
