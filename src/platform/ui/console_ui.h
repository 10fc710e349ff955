// ConsoleUserInterface: the user interface of the command-line tool. Message
// boxes go to stderr; a question is answered from the terminal when stdin is
// one and `interactive` is set, by vbYes/vbOK when `assumeYes` is set, and
// otherwise by the box's default button. The work form becomes a progress line
// on stderr when stderr is a terminal.
#pragma once

#include <string>

#include "platform/ui/user_interface.h"

namespace ketrova::ui {

class ConsoleUserInterface : public UserInterface {
 public:
  struct Options {
    bool interactive = false;  // ask on the terminal
    bool assumeYes = false;    // answer every question with yes / OK
    bool quiet = false;        // no work-form output
  };
  explicit ConsoleUserInterface(Options options);

  int MsgBox(const std::string& text, int flags, const std::string& title) override;
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override;
  void WorkFormShow(const std::string& caption, const std::string& text1,
                    const std::string& text2) override;
  void WorkFormHide() override;
  bool WorkFormVisible() const override { return visible_; }
  void WorkFormSetCaption(const std::string& caption) override;
  void WorkFormSetTexts(const std::string& text1, const std::string& text2) override;
  void WorkFormSetBar(bool visible, double min, double max, double value) override;
  void SetMousePointer(int pointer) override {}
  void DoEvents() override {}
  void Beep() override;
  std::optional<std::string> ChooseFile(const std::string& title, const std::string& filter,
                                        const std::string& startPath) override;
  std::optional<std::string> ChooseFolder(const std::string& title,
                                          const std::string& startPath) override;

 private:
  Options options_;
  bool visible_ = false;
};

}  // namespace ketrova::ui
