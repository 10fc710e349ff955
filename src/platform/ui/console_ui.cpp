#include "platform/ui/console_ui.h"

#include <iostream>

namespace ketrova::ui {

ConsoleUserInterface::ConsoleUserInterface(Options options) : options_(options) {}

int ConsoleUserInterface::MsgBox(const std::string& text, int flags, const std::string& title) {
  if (!title.empty()) std::cerr << title << ": ";
  std::cerr << text << "\n";
  if (options_.assumeYes) {
    int set = flags & 0xF;
    if (set == vbYesNo || set == vbYesNoCancel) return vbYes;
    if (set == vbAbortRetryIgnore) return vbIgnore;
    if (set == vbRetryCancel) return vbRetry;
    return vbOK;
  }
  return DefaultButton(flags);
}

std::optional<std::string> ConsoleUserInterface::InputBox(const std::string& prompt,
                                                          const std::string& title,
                                                          const std::string& defaultText) {
  std::cerr << prompt << "\n";
  return defaultText;
}

void ConsoleUserInterface::WorkFormShow(const std::string&, const std::string&,
                                        const std::string&) {
  visible_ = true;
}
void ConsoleUserInterface::WorkFormHide() { visible_ = false; }
void ConsoleUserInterface::WorkFormSetCaption(const std::string&) {}
void ConsoleUserInterface::WorkFormSetTexts(const std::string&, const std::string&) {}
void ConsoleUserInterface::WorkFormSetBar(bool, double, double, double) {}
void ConsoleUserInterface::Beep() {}

std::optional<std::string> ConsoleUserInterface::ChooseFile(const std::string&,
                                                            const std::string&,
                                                            const std::string&) {
  return std::nullopt;
}

std::optional<std::string> ConsoleUserInterface::ChooseFolder(const std::string&,
                                                              const std::string& startPath) {
  return std::nullopt;
}

}  // namespace ketrova::ui
