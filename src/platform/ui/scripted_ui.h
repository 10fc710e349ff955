// ScriptedUserInterface: the test double of the user interface, the only
// sanctioned fake. It records every call as one line of text and answers the
// questions from queues that the test fills; an empty queue answers as nobody
// pressing anything would: the box's default button, the InputBox's default
// text, and a cancelled file or folder choice.
//
// Lines, with texts in double quotes (line breaks written \r and \n):
//   MsgBox "<title>" "<text>" <flags> -> <answer>
//   InputBox "<title>" "<prompt>" "<default>" -> "<answer>" | cancel
//   WorkFormShow "<caption>" "<text1>" "<text2>"     WorkFormHide
//   WorkFormSetCaption "<caption>"     WorkFormSetTexts "<text1>" "<text2>"
//   WorkFormSetBar <0|1> <min> <max> <value>     SetMousePointer <n>     Beep
//   ChooseFile "<title>" "<filter>" "<start>" -> "<path>" | cancel
//   ChooseFolder "<title>" "<start>" -> "<path>" | cancel
// DoEvents is counted, not recorded, unless recordDoEvents is set; a hook may
// act on it (a test presses cancel at the third record that way).
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/ui/user_interface.h"

namespace ketrova::ui {

class ScriptedUserInterface : public UserInterface {
 public:
  // Answers, used in order.
  void QueueMsgBox(int answer) { msgBoxAnswers_.push_back(answer); }
  void QueueInputBox(std::optional<std::string> answer) { inputAnswers_.push_back(answer); }
  void QueueChooseFile(std::optional<std::string> path) { fileAnswers_.push_back(path); }
  void QueueChooseFolder(std::optional<std::string> path) { folderAnswers_.push_back(path); }

  // Called at every DoEvents with the number of calls so far (1 for the first).
  std::function<void(int)> onDoEvents;
  bool recordDoEvents = false;

  const std::vector<std::string>& Calls() const { return calls_; }
  // The calls joined by "\n".
  std::string Transcript() const;
  // Only the calls whose line starts with the given name ("MsgBox").
  std::vector<std::string> CallsOf(const std::string& name) const;
  void ClearCalls() { calls_.clear(); }
  int DoEventsCount() const { return doEvents_; }

  // The state of the work form and the pointer, for asserts.
  const std::string& Caption() const { return caption_; }
  const std::string& Text1() const { return text1_; }
  const std::string& Text2() const { return text2_; }
  double BarValue() const { return barValue_; }
  int MousePointer() const { return pointer_; }

  // The questions: recorded with their answer, taken from the queues.
  int MsgBox(const std::string& text, int flags, const std::string& title) override;
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override;
  std::optional<std::string> ChooseFile(const std::string& title, const std::string& filter,
                                        const std::string& startPath) override;
  std::optional<std::string> ChooseFolder(const std::string& title,
                                          const std::string& startPath) override;

  // The work form and the pointer: recorded, and kept for the getters above.
  void WorkFormShow(const std::string& caption, const std::string& text1,
                    const std::string& text2) override;
  void WorkFormHide() override;
  bool WorkFormVisible() const override { return visible_; }
  void WorkFormSetCaption(const std::string& caption) override;
  void WorkFormSetTexts(const std::string& text1, const std::string& text2) override;
  void WorkFormSetBar(bool visible, double min, double max, double value) override;
  void SetMousePointer(int pointer) override;

  // Counted (and recorded when asked), then the onDoEvents hook.
  void DoEvents() override;
  void Beep() override;

 private:
  std::deque<int> msgBoxAnswers_;
  std::deque<std::optional<std::string>> inputAnswers_, fileAnswers_, folderAnswers_;
  std::vector<std::string> calls_;
  int doEvents_ = 0;
  bool visible_ = false;
  std::string caption_, text1_, text2_;
  double barValue_ = 0;
  int pointer_ = 0;
};

}  // namespace ketrova::ui
