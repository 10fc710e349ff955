#include "platform/ui/console_ui.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <vector>

#include "support/text.h"
#include "support/utf8.h"

namespace ketrova::ui {

namespace {

std::atomic<bool> interruptPending{false};

extern "C" void OnSigInt(int) {
  if (interruptPending.exchange(true)) {
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
  }
}

struct Button {
  int answer;
  const char* label;
};

// The buttons of a set, in order, with the letter that chooses each.
std::vector<Button> ButtonsOf(int flags) {
  switch (flags & 0xF) {
    case vbOKCancel:
      return {{vbOK, "OK"}, {vbCancel, "Abbrechen"}};
    case vbAbortRetryIgnore:
      return {{vbAbort, "Abbrechen"}, {vbRetry, "Wiederholen"}, {vbIgnore, "Ignorieren"}};
    case vbYesNoCancel:
      return {{vbYes, "Ja"}, {vbNo, "Nein"}, {vbCancel, "Abbrechen"}};
    case vbYesNo:
      return {{vbYes, "Ja"}, {vbNo, "Nein"}};
    case vbRetryCancel:
      return {{vbRetry, "Wiederholen"}, {vbCancel, "Abbrechen"}};
    default:
      return {{vbOK, "OK"}};
  }
}

// Reads an answer: the label, its first letter, or y/n in English.
std::optional<int> ParseAnswer(const std::string& line, const std::vector<Button>& buttons) {
  std::string a = LowerCase(Trim(line));
  if (a.empty()) return std::nullopt;
  for (const auto& b : buttons) {
    std::string label = LowerCase(b.label);
    if (a == label || a == label.substr(0, 1)) return b.answer;
    if ((a == "y" || a == "yes") && b.answer == vbYes) return b.answer;
    if (a == "no" && b.answer == vbNo) return b.answer;
  }
  return std::nullopt;
}

}  // namespace

ConsoleUserInterface::ConsoleUserInterface(Options options)
    : ConsoleUserInterface(options, std::cin, std::cerr, isatty(STDIN_FILENO) != 0,
                           isatty(STDERR_FILENO) != 0) {}

ConsoleUserInterface::ConsoleUserInterface(Options options, std::istream& in, std::ostream& err,
                                           bool inIsTerminal, bool errIsTerminal)
    : options_(options),
      in_(in),
      err_(err),
      inIsTerminal_(inIsTerminal),
      errIsTerminal_(errIsTerminal) {
  if (options_.catchInterrupt) std::signal(SIGINT, OnSigInt);
}

ConsoleUserInterface::~ConsoleUserInterface() {
  if (options_.catchInterrupt) std::signal(SIGINT, SIG_DFL);
}

bool ConsoleUserInterface::Asking() const {
  return options_.interactive && inIsTerminal_ && !options_.assumeYes;
}

std::optional<std::string> ConsoleUserInterface::ReadLine(const std::string& prompt) {
  err_ << prompt << std::flush;
  std::string line;
  if (!std::getline(in_, line)) {
    err_ << "\n";
    return std::nullopt;
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

int ConsoleUserInterface::MsgBox(const std::string& text, int flags, const std::string& title) {
  if (visible_ && errIsTerminal_ && !drawn_.empty()) err_ << "\r\x1b[K";
  drawn_.clear();
  if (!title.empty()) err_ << title << ": ";
  err_ << text << "\n";
  std::vector<Button> buttons = ButtonsOf(flags);
  if (options_.assumeYes) {
    for (int preferred : {vbYes, vbOK, vbRetry, vbIgnore})
      for (const auto& b : buttons)
        if (b.answer == preferred) return preferred;
  }
  int fallback = DefaultButton(flags);
  if (!Asking() || buttons.size() < 2) return fallback;
  std::string choices;
  for (const auto& b : buttons) {
    if (!choices.empty()) choices += " / ";
    choices += std::string("[") + b.label[0] + "]" + (b.label + 1);
  }
  for (int tries = 0; tries < 5; ++tries) {
    auto line = ReadLine(choices + " ? ");
    if (!line) return fallback;
    if (Trim(*line).empty()) return fallback;
    if (auto answer = ParseAnswer(*line, buttons)) return *answer;
  }
  return fallback;
}

std::optional<std::string> ConsoleUserInterface::InputBox(const std::string& prompt,
                                                          const std::string& title,
                                                          const std::string& defaultText) {
  if (!title.empty()) err_ << title << ": ";
  err_ << prompt << "\n";
  if (!Asking()) return defaultText;
  auto line = ReadLine(defaultText.empty() ? "> " : "[" + defaultText + "] > ");
  if (!line) return std::nullopt;
  return line->empty() ? defaultText : *line;
}

void ConsoleUserInterface::WorkFormShow(const std::string& caption, const std::string& text1,
                                        const std::string& text2) {
  visible_ = true;
  caption_ = caption;
  text1_ = text1;
  text2_ = text2;
  barVisible_ = false;
  percent_ = -1;
  DrawProgress(true);
}

void ConsoleUserInterface::WorkFormHide() {
  if (visible_ && errIsTerminal_ && !options_.quiet && !drawn_.empty())
    err_ << "\r\x1b[K" << std::flush;
  drawn_.clear();
  visible_ = false;
}

void ConsoleUserInterface::WorkFormSetCaption(const std::string& caption) {
  caption_ = caption;
  DrawProgress(false);
}

void ConsoleUserInterface::WorkFormSetTexts(const std::string& text1, const std::string& text2) {
  text1_ = text1;
  text2_ = text2;
  DrawProgress(false);
}

void ConsoleUserInterface::WorkFormSetBar(bool visible, double min, double max, double value) {
  barVisible_ = visible;
  int percent = -1;
  if (visible && max > min) {
    double share = (value - min) / (max - min);
    percent = static_cast<int>(std::min(1.0, std::max(0.0, share)) * 100);
  }
  if (percent == percent_) return;
  percent_ = percent;
  DrawProgress(false);
}

void ConsoleUserInterface::DrawProgress(bool force) {
  if (!visible_ || options_.quiet || !errIsTerminal_) return;
  std::string line = caption_;
  for (const std::string* t : {&text1_, &text2_})
    if (!t->empty()) line += (line.empty() ? "" : " - ") + *t;
  if (barVisible_ && percent_ >= 0) line += " [" + std::to_string(percent_) + "%]";
  // One line: keep it within a common terminal width.
  if (CodePointCount(line) > 79) line = SubText(line, 0, 79);
  if (!force && line == drawn_) return;
  drawn_ = line;
  err_ << "\r\x1b[K" << line << std::flush;
}

void ConsoleUserInterface::DoEvents() {
  if (interruptPending.exchange(false) && onInterrupt) onInterrupt();
}

void ConsoleUserInterface::Beep() {
  if (errIsTerminal_) err_ << '\a' << std::flush;
}

std::optional<std::string> ConsoleUserInterface::ChooseFile(const std::string& title,
                                                            const std::string& filter,
                                                            const std::string& startPath) {
  if (!Asking()) return std::nullopt;
  err_ << title << (filter.empty() ? "" : " (" + filter + ")") << "\n";
  auto line = ReadLine(startPath.empty() ? "> " : "[" + startPath + "] > ");
  if (!line) return std::nullopt;
  std::string path = Trim(*line);
  if (path.empty()) path = startPath;
  if (path.empty()) return std::nullopt;
  return path;
}

std::optional<std::string> ConsoleUserInterface::ChooseFolder(const std::string& title,
                                                              const std::string& startPath) {
  return ChooseFile(title, {}, startPath);
}

}  // namespace ketrova::ui
