#include "platform/ui/user_interface.h"

#include "platform/ui/console_ui.h"

namespace ketrova::ui {

int DefaultButton(int flags) {
  int set = flags & 0xF;
  int which = (flags & 0xF00) / 256;  // 0 = first button
  static const int buttons[6][3] = {
      {vbOK, vbOK, vbOK},          {vbOK, vbCancel, vbCancel},   {vbAbort, vbRetry, vbIgnore},
      {vbYes, vbNo, vbCancel},     {vbYes, vbNo, vbNo},          {vbRetry, vbCancel, vbCancel},
  };
  if (set > 5) set = 0;
  if (which > 2) which = 2;
  return buttons[set][which];
}

namespace {
std::shared_ptr<UserInterface>& Slot() {
  static std::shared_ptr<UserInterface> current;
  return current;
}
}  // namespace

UserInterface& Current() {
  auto& slot = Slot();
  if (!slot) slot = std::make_shared<ConsoleUserInterface>(ConsoleUserInterface::Options{});
  return *slot;
}

void SetCurrent(std::shared_ptr<UserInterface> ui) { Slot() = std::move(ui); }

}  // namespace ketrova::ui
