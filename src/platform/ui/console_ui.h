// ConsoleUserInterface: the user interface of the command-line tool. Message
// boxes go to stderr; a question is answered from the terminal when stdin is
// one and `interactive` is set, by vbYes/vbOK when `assumeYes` is set, and
// otherwise by the box's default button. The work form becomes a progress line
// on stderr when stderr is a terminal, unless `quiet`.
//
// Ctrl-C: with `catchInterrupt` a SIGINT only sets a flag; the next DoEvents
// calls `onInterrupt` (the front end sets the run's Cancel there), so the
// run asks its own question about stopping. A second Ctrl-C while one is
// pending ends the process as usual.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "platform/ui/user_interface.h"

namespace ketrova::ui {

class ConsoleUserInterface : public UserInterface {
 public:
  struct Options {
    bool interactive = false;     // ask on the terminal
    bool assumeYes = false;       // answer every question with yes / OK
    bool quiet = false;           // no work-form output
    bool catchInterrupt = false;  // Ctrl-C goes to onInterrupt (see above)
  };
  explicit ConsoleUserInterface(Options options);
  // With other streams, and whether they count as terminals (tests).
  ConsoleUserInterface(Options options, std::istream& in, std::ostream& err, bool inIsTerminal,
                       bool errIsTerminal);
  ~ConsoleUserInterface() override;

  // Called from DoEvents after a Ctrl-C.
  std::function<void()> onInterrupt;

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
  void DoEvents() override;
  void Beep() override;
  std::optional<std::string> ChooseFile(const std::string& title, const std::string& filter,
                                        const std::string& startPath) override;
  std::optional<std::string> ChooseFolder(const std::string& title,
                                          const std::string& startPath) override;

 private:
  bool Asking() const;
  // A line from the terminal; nullopt at the end of input.
  std::optional<std::string> ReadLine(const std::string& prompt);
  void DrawProgress(bool force);

  Options options_;
  std::istream& in_;
  std::ostream& err_;
  bool inIsTerminal_;
  bool errIsTerminal_;
  bool visible_ = false;
  std::string caption_, text1_, text2_;
  bool barVisible_ = false;
  int percent_ = -1;
  std::string drawn_;
};

}  // namespace ketrova::ui
