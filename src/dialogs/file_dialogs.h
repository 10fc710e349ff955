// The common dialogs of the old code on Qt's own (non-native) file dialog:
// choosing a file to open, and SHBrowseForFolder's choice of a folder.
#pragma once

#include <optional>
#include <string>

class QWidget;

namespace ketrova::dialogs {

// A modal file dialog (object name "FileOpen") over `parent` (may be null)
// for an existing file. `vbFilter` is VB's filter text (see file_filter.h);
// its descriptions show as written and its patterns match without regard to
// case. `startPath` is a folder to start in, or a file, whose folder is
// opened with the file preselected; empty starts in the current folder.
// "\" counts as a separator. Answers the chosen file's absolute path, or
// nullopt when cancelled. An empty title shows "Öffnen".
std::optional<std::string> ShowFileOpen(QWidget* parent, const std::string& title,
                                        const std::string& vbFilter, const std::string& startPath);

// A modal folder dialog (object name "BrowseForFolder") over `parent` that
// lists folders only and starts in `startPath`, or in the nearest folder
// above it that exists. Answers the chosen folder's absolute path, or nullopt
// when cancelled. An empty title shows "Ordner auswählen".
std::optional<std::string> ShowBrowseForFolder(QWidget* parent, const std::string& title,
                                               const std::string& startPath);

}  // namespace ketrova::dialogs
