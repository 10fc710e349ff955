// The functions that reach outside the language: message and input boxes
// through ui::Current(), the engine's name and version, the locale, and
// LoadPicture, which has nothing to load on Linux.
#include <cctype>

#include "platform/script/vbscript/builtins_common.h"
#include "platform/ui/user_interface.h"
#include "support/regional.h"

namespace ketrova::script::vbscript {

namespace {

constexpr const char* kDefaultTitle = "VBScript";
constexpr std::int32_t kLcidGerman = 1031;
constexpr std::int32_t kLcidUs = 1033;

// The locale a script set with SetLocale; 0 while it follows the environment.
// Process-wide, like the regional settings it switches.
std::int32_t chosenLocale = 0;

std::int32_t CurrentLocale() {
  if (chosenLocale != 0) return chosenLocale;
  return Regional().german ? kLcidGerman : kLcidUs;
}

std::string TitleArg(Args args, std::size_t i) {
  return Missing(args, i) ? std::string(kDefaultTitle) : args[i].ToString();
}

}  // namespace

// MsgBox(prompt[, buttons[, title[, helpfile, context]]]): the button pressed.
Variant BiMsgBox(Args args) {
  std::string prompt = args[0].ToString();
  std::int32_t buttons = LongArg(args, 1, ui::vbOKOnly);
  std::string title = TitleArg(args, 2);
  int answer = ui::Current().MsgBox(prompt, buttons, title);
  return Variant::Integer(static_cast<std::int16_t>(answer));
}

// InputBox(prompt[, title[, default[, xpos, ypos[, helpfile, context]]]]): the
// text entered, "" when cancelled.
Variant BiInputBox(Args args) {
  std::string prompt = args[0].ToString();
  std::string title = TitleArg(args, 1);
  std::string defaultText = Missing(args, 2) ? std::string() : args[2].ToString();
  std::optional<std::string> answer = ui::Current().InputBox(prompt, title, defaultText);
  return Variant(answer.value_or(std::string()));
}

Variant BiScriptEngine(Args) {
  return Variant("VBScript");
}
Variant BiScriptEngineMajorVersion(Args) {
  return Variant::Long(5);
}
Variant BiScriptEngineMinorVersion(Args) {
  return Variant::Long(8);
}
Variant BiScriptEngineBuildVersion(Args) {
  return Variant::Long(16384);
}

Variant BiGetLocale(Args) {
  return Variant::Long(CurrentLocale());
}

// SetLocale([lcid]): takes 1031 / "de-de" (German settings) or 1033 / "en-us"
// (US settings); 0 or no argument goes back to the environment's settings.
// Answers the locale in force before. The settings are the process's, so this
// changes how every text is read and written from then on, as it did in VB.
Variant BiSetLocale(Args args) {
  std::int32_t previous = CurrentLocale();
  std::int32_t lcid = 0;
  if (!Missing(args, 0)) {
    if (args[0].IsString()) {
      std::string name;
      for (char c : args[0].AsString())
        name.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
      if (name == "de-de" || name == "de" || name == "german")
        lcid = kLcidGerman;
      else if (name == "en-us" || name == "en" || name == "english")
        lcid = kLcidUs;
      else if (!name.empty())
        RaiseInvalidArgument();
    } else {
      lcid = args[0].ToLong();
    }
  }
  if (lcid == kLcidGerman) {
    SetRegional(GermanRegional());
  } else if (lcid == kLcidUs) {
    SetRegional(UsRegional());
  } else if (lcid == 0) {
    ResetRegional();
  } else {
    RaiseInvalidArgument();
  }
  chosenLocale = lcid;
  return Variant::Long(previous);
}

// There are no OLE pictures on Linux.
Variant BiLoadPicture(Args) {
  throw VbError(481);
}

}  // namespace ketrova::script::vbscript
