#include "platform/ui/scripted_ui.h"

#include <sstream>

namespace ketrova::ui {

namespace {

std::string Quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '\r')
      out += "\\r";
    else if (c == '\n')
      out += "\\n";
    else
      out += c;
  }
  return out + "\"";
}

std::string Answer(const std::optional<std::string>& answer) {
  return answer ? Quoted(*answer) : "cancel";
}

std::string Number(double v) {
  std::ostringstream s;
  s << v;
  return s.str();
}

template <typename T>
std::optional<T> Take(std::deque<T>& queue) {
  if (queue.empty()) return std::nullopt;
  T value = std::move(queue.front());
  queue.pop_front();
  return value;
}

}  // namespace

std::string ScriptedUserInterface::Transcript() const {
  std::string out;
  for (const auto& call : calls_) {
    if (!out.empty()) out += "\n";
    out += call;
  }
  return out;
}

std::vector<std::string> ScriptedUserInterface::CallsOf(const std::string& name) const {
  std::vector<std::string> out;
  for (const auto& call : calls_)
    if (call.compare(0, name.size(), name) == 0 &&
        (call.size() == name.size() || call[name.size()] == ' '))
      out.push_back(call);
  return out;
}

int ScriptedUserInterface::MsgBox(const std::string& text, int flags, const std::string& title) {
  int answer = Take(msgBoxAnswers_).value_or(DefaultButton(flags));
  calls_.push_back("MsgBox " + Quoted(title) + " " + Quoted(text) + " " + std::to_string(flags) +
                   " -> " + std::to_string(answer));
  return answer;
}

std::optional<std::string> ScriptedUserInterface::InputBox(const std::string& prompt,
                                                           const std::string& title,
                                                           const std::string& defaultText) {
  std::optional<std::string> answer = defaultText;
  if (!inputAnswers_.empty()) answer = *Take(inputAnswers_);
  calls_.push_back("InputBox " + Quoted(title) + " " + Quoted(prompt) + " " + Quoted(defaultText) +
                   " -> " + Answer(answer));
  return answer;
}

void ScriptedUserInterface::WorkFormShow(const std::string& caption, const std::string& text1,
                                         const std::string& text2) {
  visible_ = true;
  caption_ = caption;
  text1_ = text1;
  text2_ = text2;
  calls_.push_back("WorkFormShow " + Quoted(caption) + " " + Quoted(text1) + " " + Quoted(text2));
}

void ScriptedUserInterface::WorkFormHide() {
  visible_ = false;
  calls_.push_back("WorkFormHide");
}

void ScriptedUserInterface::WorkFormSetCaption(const std::string& caption) {
  caption_ = caption;
  calls_.push_back("WorkFormSetCaption " + Quoted(caption));
}

void ScriptedUserInterface::WorkFormSetTexts(const std::string& text1, const std::string& text2) {
  text1_ = text1;
  text2_ = text2;
  calls_.push_back("WorkFormSetTexts " + Quoted(text1) + " " + Quoted(text2));
}

void ScriptedUserInterface::WorkFormSetBar(bool visible, double min, double max, double value) {
  barValue_ = value;
  calls_.push_back("WorkFormSetBar " + std::string(visible ? "1 " : "0 ") + Number(min) + " " +
                   Number(max) + " " + Number(value));
}

void ScriptedUserInterface::SetMousePointer(int pointer) {
  pointer_ = pointer;
  calls_.push_back("SetMousePointer " + std::to_string(pointer));
}

void ScriptedUserInterface::DoEvents() {
  ++doEvents_;
  if (recordDoEvents) calls_.push_back("DoEvents");
  if (onDoEvents) onDoEvents(doEvents_);
}

void ScriptedUserInterface::Beep() {
  calls_.push_back("Beep");
}

std::optional<std::string> ScriptedUserInterface::ChooseFile(const std::string& title,
                                                             const std::string& filter,
                                                             const std::string& startPath) {
  std::optional<std::string> answer;
  if (!fileAnswers_.empty()) answer = *Take(fileAnswers_);
  calls_.push_back("ChooseFile " + Quoted(title) + " " + Quoted(filter) + " " + Quoted(startPath) +
                   " -> " + Answer(answer));
  return answer;
}

std::optional<std::string> ScriptedUserInterface::ChooseFolder(const std::string& title,
                                                               const std::string& startPath) {
  std::optional<std::string> answer;
  if (!folderAnswers_.empty()) answer = *Take(folderAnswers_);
  calls_.push_back("ChooseFolder " + Quoted(title) + " " + Quoted(startPath) + " -> " +
                   Answer(answer));
  return answer;
}

}  // namespace ketrova::ui
