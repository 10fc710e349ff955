// ui::UserInterface: the one door to the screen. Message boxes, the work form
// that shows long operations, the mouse pointer, yielding to the event loop,
// the beep, and the file and folder choosers all go through the current
// implementation: Qt in kor, the console in ketrova, and a scripted double in
// the tests. The core never talks to a screen any other way.
//
// The process sets one current implementation with SetCurrent(); until it does,
// Current() is a console implementation that answers every question with its
// default button.
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace ketrova::ui {

// VB's MsgBox button sets, icons and answers.
enum MsgBoxStyle : int {
  vbOKOnly = 0,
  vbOKCancel = 1,
  vbAbortRetryIgnore = 2,
  vbYesNoCancel = 3,
  vbYesNo = 4,
  vbRetryCancel = 5,
  vbCritical = 16,
  vbQuestion = 32,
  vbExclamation = 48,
  vbInformation = 64,
  vbDefaultButton1 = 0,
  vbDefaultButton2 = 256,
  vbDefaultButton3 = 512,
  vbDefaultButton4 = 768,
  vbApplicationModal = 0,
  vbSystemModal = 4096,
};

enum MsgBoxResult : int {
  vbOK = 1,
  vbCancel = 2,
  vbAbort = 3,
  vbRetry = 4,
  vbIgnore = 5,
  vbYes = 6,
  vbNo = 7,
};

// Mouse pointers as VB numbers them.
enum MousePointer : int { vbDefault = 0, vbHourglass = 11 };

// The answer a box gives when nobody presses a button: its default button
// (vbDefaultButton1..4 in `flags`) of the button set.
int DefaultButton(int flags);

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // A modal message box; answers one of MsgBoxResult.
  virtual int MsgBox(const std::string& text, int flags, const std::string& title) = 0;
  // VBScript's InputBox: the text entered, nullopt when cancelled.
  virtual std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                              const std::string& defaultText) = 0;

  // The work form: a small modeless window with a caption, two labels and a
  // progress bar, one at a time. The logic of when to show what is the
  // caller's; these are the primitives.
  virtual void WorkFormShow(const std::string& caption, const std::string& text1,
                            const std::string& text2) = 0;
  virtual void WorkFormHide() = 0;
  virtual bool WorkFormVisible() const = 0;
  virtual void WorkFormSetCaption(const std::string& caption) = 0;
  virtual void WorkFormSetTexts(const std::string& text1, const std::string& text2) = 0;
  // Shows the bar with its range and value, or hides it.
  virtual void WorkFormSetBar(bool visible, double min, double max, double value) = 0;

  virtual void SetMousePointer(int pointer) = 0;
  // Lets the event loop run once (VB's DoEvents); where a cancel press arrives.
  virtual void DoEvents() = 0;
  virtual void Beep() = 0;

  // A file to open; nullopt when cancelled. `filter` is VB's "Text|*.ext|...".
  virtual std::optional<std::string> ChooseFile(const std::string& title,
                                                const std::string& filter,
                                                const std::string& startPath) = 0;
  // A folder; nullopt when cancelled.
  virtual std::optional<std::string> ChooseFolder(const std::string& title,
                                                  const std::string& startPath) = 0;
};

// The current implementation. Never null.
UserInterface& Current();
// Replaces the current implementation; null restores the default console one.
void SetCurrent(std::shared_ptr<UserInterface> ui);

}  // namespace ketrova::ui
