// The screen helpers of the old code, over the current user interface:
// the hourglass, the folder picker that gives back the start path when
// cancelled, and the key filter for typed fields that beeps on a refused key.
#pragma once

#include <string>

namespace ketrova::ui {

// Mouse pointer 11 (hourglass) when true, 0 when false.
void ShowHourglass(bool busy);
// The chosen folder; the start path, unchanged, when the choice is cancelled.
std::string BrowseForFolder(const std::string& title, const std::string& startPath);
// ketrova::CheckKeyForType, with a beep for a refused key.
bool CheckKeyForType(int& keyCode, int adoType);

}  // namespace ketrova::ui
