#include "platform/ui/ui_helpers.h"

#include "platform/ui/user_interface.h"
#include "support/system.h"

namespace ketrova::ui {

void ShowHourglass(bool busy) {
  Current().SetMousePointer(busy ? vbHourglass : vbDefault);
}

std::string BrowseForFolder(const std::string& title, const std::string& startPath) {
  auto folder = Current().ChooseFolder(title, startPath);
  return folder ? *folder : startPath;
}

bool CheckKeyForType(int& keyCode, int adoType) {
  bool pass = ketrova::CheckKeyForType(keyCode, adoType);
  if (!pass) Current().Beep();
  return pass;
}

}  // namespace ketrova::ui
