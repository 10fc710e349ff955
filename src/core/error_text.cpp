#include "core/error_text.h"

#include "support/vb_error.h"

namespace ketrova {

namespace {

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  if (from.empty()) return;
  std::size_t pos = 0;
  while ((pos = text.find(from, pos)) != std::string::npos) {
    text.replace(pos, from.size(), to);
    pos += to.size();
  }
}

std::string DoubleBackslashes(std::string text) {
  ReplaceAll(text, "\\", "\\\\");
  return text;
}

}  // namespace

std::string BuildErrorMessage(std::string szMessage, const std::string& szAction) {
  std::string s = szMessage;
  const ErrObject& err = Err();
  if (err.Number != 0) {
    s = "\\nEin Fehler ist aufgetreten!\\n\\nFehler Nr.: " + std::to_string(err.Number) +
        "\\nBeschreibung: " + DoubleBackslashes(err.Description) +
        "\\n\\nQuelle: " + DoubleBackslashes(err.Source) + "\\n\\n";
  } else {
    // A message of the caller appears twice; callers rely on it.
    s += szMessage;
  }
  if (!szAction.empty()) s += "Ausgeführte Aktion: " + szAction + "\\n";
  ReplaceAll(s, "'", "´");
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '\r') {
      if (i + 1 < s.size() && s[i + 1] == '\n') ++i;
      out += " \\n ";
    } else if (s[i] == '\n') {
      out += " \\n ";
    } else {
      out += s[i];
    }
  }
  return out;
}

std::string BuildErrorMessageText(std::string& szMessage, const std::string& szAction) {
  szMessage = BuildErrorMessage(szMessage, szAction);
  ReplaceAll(szMessage, "\\n", "\r\n");
  return szMessage;
}

std::string BuildErrorText(int inMode, std::string& szMessage, const std::string& szAction) {
  if (inMode == 1) {
    szMessage = BuildErrorMessageText(szMessage, szAction);
    ReplaceAll(szMessage, "\\n", "\r\n");
  } else if (szMessage.empty()) {
    szMessage = BuildErrorMessage(szMessage, szAction);
  }
  return szMessage;
}

std::string BuildErrorText(int inMode, const std::string& szMessage, const std::string& szAction) {
  std::string message = szMessage;
  return BuildErrorText(inMode, message, szAction);
}

}  // namespace ketrova
