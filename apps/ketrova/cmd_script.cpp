// ketrova script FILE [--language VBScript|JScript] [--timeout MS] [--dump]
//                     [--run NAME [ARG...]]:
// adds a script file to a script control, as a conversion adds a user module,
// optionally runs one of its procedures with the given arguments and prints
// the result. --timeout stops a run that takes longer, so that a module with
// an endless loop can be found without killing the process. Users test their modules with it.
// Message boxes go to the terminal; a script error is printed with its number, description, source,
// line and column. --dump prints the compiled VBScript code with the binding
// of every name, for diagnosing the interpreter.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "commands.h"
#include "platform/script/binding.h"
#include "platform/script/objects/file_system_object.h"
#include "platform/script/script_control.h"
#include "platform/ui/console_ui.h"
#include "support/collection.h"

namespace ketrova::cli {

namespace {

constexpr const char* kUsage =
    "Aufruf: ketrova script DATEI [--language VBScript|JScript] [--timeout MS] [--dump] "
    "[--run NAME [ARGUMENT...]]\n";

// MsgBox for JScript, which has none of its own; VBScript brings its own.
class ScriptHost : public script::BoundObject<ScriptHost> {
 public:
  std::string TypeName() const override { return "ScriptHost"; }
  static const script::MemberTable<ScriptHost>& Members() {
    static const auto table =
        script::MemberTable<ScriptHost>().Method("MsgBox", 1, 3, [](ScriptHost&, script::Args a) {
          auto text = [&](std::size_t i) {
            return i < a.size() && !a[i].IsMissing() ? a[i].ToText() : std::string();
          };
          int flags = a.size() > 1 && !a[1].IsMissing() ? a[1].ToLong() : 0;
          std::string title = text(2).empty() ? "Ketrova" : text(2);
          return Variant::Long(ui::Current().MsgBox(text(0), flags, title));
        });
    return table;
  }
};

// Arguments that read as whole numbers are passed as numbers, others as text.
Variant ArgumentValue(const std::string& text) {
  if (!text.empty()) {
    char* end = nullptr;
    long value = std::strtol(text.c_str(), &end, 10);
    if (*end == '\0' && value >= INT32_MIN && value <= INT32_MAX)
      return Variant::Long(static_cast<std::int32_t>(value));
  }
  return Variant(text);
}

std::string ResultText(const Variant& value) {
  if (value.IsObject()) return value.IsNothing() ? "Nothing" : value.AsObject()->TypeName();
  if (value.IsArray()) {
    std::string text;
    for (const auto& item : value.AsArray()->data)
      text += (text.empty() ? "" : ", ") + ResultText(item);
    return "(" + text + ")";
  }
  return value.ToText();
}

void PrintError(const script::ScriptControlError& error) {
  std::cerr << "Fehler Nr.: " << error.Number << "\n"
            << "Beschreibung: " << error.Description << "\n"
            << "Quelle: " << error.Source << "\n"
            << "Zeile: " << error.Line << "\n"
            << "Spalte: " << error.Column << "\n";
  if (!error.Text.empty()) std::cerr << "Script: " << error.Text << "\n";
}

}  // namespace

int RunScript(const Args& args) {
  std::string file;
  std::string language;
  std::string procedure;
  int timeout = -1;
  bool dump = false;
  std::vector<Variant> arguments;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--language" && i + 1 < args.size()) {
      language = args[++i];
    } else if (args[i] == "--timeout" && i + 1 < args.size()) {
      char* end = nullptr;
      long value = std::strtol(args[++i].c_str(), &end, 10);
      if (*end != '\0' || value < -1 || value > INT32_MAX) {
        std::cerr << kUsage;
        return 2;
      }
      timeout = static_cast<int>(value);
    } else if (args[i] == "--dump") {
      dump = true;
    } else if (args[i] == "--run" && i + 1 < args.size()) {
      procedure = args[++i];
      for (++i; i < args.size(); ++i) arguments.push_back(ArgumentValue(args[i]));
    } else if (file.empty() && !args[i].starts_with("--")) {
      file = args[i];
    } else {
      std::cerr << kUsage;
      return 2;
    }
  }
  if (file.empty()) {
    std::cerr << kUsage;
    return 2;
  }
  if (language.empty())
    language = file.ends_with(".js") || file.ends_with(".JS") ? "JScript" : "VBScript";

  std::ifstream in(file, std::ios::binary);
  if (!in) {
    std::cerr << "ketrova script: Datei nicht gefunden: " << file << "\n";
    return 1;
  }
  std::ostringstream bytes;
  bytes << in.rdbuf();
  std::string code = script::DecodeText(bytes.str());

  ui::ConsoleUserInterface::Options options;
  options.interactive = isatty(STDIN_FILENO) != 0;
  ui::SetCurrent(std::make_shared<ui::ConsoleUserInterface>(options));

  script::ScriptControl control;
  try {
    control.SetLanguage(language);
    control.SetTimeout(timeout);
    if (control.Language() == "JScript")
      control.AddObject("ScriptHost", std::make_shared<ScriptHost>(), true);
    control.AddCode(code);
    if (dump) {
      std::cout << control.DumpCompiled();
      dump = false;
    }
    if (!procedure.empty()) {
      Variant result = control.Run(procedure, arguments);
      if (!result.IsEmpty()) std::cout << ResultText(result) << "\n";
    }
  } catch (const VbError& e) {
    if (dump) std::cout << control.DumpCompiled();  // what compiled before the failure
    if (control.Error().Number == 0) {
      std::cerr << "Fehler Nr.: " << e.Number << "\nBeschreibung: " << e.Description << "\n";
    } else {
      PrintError(control.Error());
    }
    return 1;
  }
  return 0;
}

}  // namespace ketrova::cli
