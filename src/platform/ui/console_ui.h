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

  // Prints "<title>: <text>" on stderr; with --yes the first of Yes, OK,
  // Retry, Ignore the box offers; without a terminal to ask, the default
  // button; otherwise asks for the button by its letter.
  int MsgBox(const std::string& text, int flags, const std::string& title) override;
  // Prints the prompt and reads a line; an empty line or no terminal keeps
  // the default text, end of input cancels (nullopt).
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override;
  // The work form is one progress line on stderr, redrawn in place on a
  // terminal and left out with --quiet.
  void WorkFormShow(const std::string& caption, const std::string& text1,
                    const std::string& text2) override;
  void WorkFormHide() override;
  bool WorkFormVisible() const override { return visible_; }
  void WorkFormSetCaption(const std::string& caption) override;
  void WorkFormSetTexts(const std::string& text1, const std::string& text2) override;
  void WorkFormSetBar(bool visible, double min, double max, double value) override;
  // A console has no pointer to change.
  void SetMousePointer(int pointer) override {}
  // Delivers a pending Ctrl-C to onInterrupt.
  void DoEvents() override;
  // The terminal's bell, only where stderr is a terminal.
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
