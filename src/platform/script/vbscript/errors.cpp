#include "platform/script/vbscript/errors.h"

#include <map>

namespace ketrova::script::vbscript {

std::string CompileErrorText(std::int32_t number) {
  static const std::map<std::int32_t, const char*> texts = {
      {1001, "Nicht genügend Arbeitsspeicher"},
      {1002, "Syntaxfehler"},
      {1003, "':' erwartet"},
      {1005, "'(' erwartet"},
      {1006, "')' erwartet"},
      {1007, "']' erwartet"},
      {1010, "Bezeichner erwartet"},
      {1011, "'=' erwartet"},
      {1012, "'If' erwartet"},
      {1013, "'To' erwartet"},
      {1014, "'End' erwartet"},
      {1015, "'Function' erwartet"},
      {1016, "'Sub' erwartet"},
      {1017, "'Then' erwartet"},
      {1018, "'Wend' erwartet"},
      {1019, "'Loop' erwartet"},
      {1020, "'Next' erwartet"},
      {1021, "'Case' erwartet"},
      {1022, "'Select' erwartet"},
      {1023, "Ausdruck erwartet"},
      {1024, "Anweisung erwartet"},
      {1025, "Ende der Anweisung erwartet"},
      {1026, "Ganze Zahl als Konstante erwartet"},
      {1027, "'While' oder 'Until' erwartet"},
      {1028, "'While', 'Until' oder Ende der Anweisung erwartet"},
      {1029, "'With' erwartet"},
      {1030, "Bezeichner zu lang"},
      {1031, "Ungültige Zahl"},
      {1032, "Ungültiges Zeichen"},
      {1033, "Nicht abgeschlossene Zeichenfolgenkonstante"},
      {1037, "Ungültige Verwendung des Schlüsselwortes 'Me'"},
      {1038, "'loop' ohne 'do'"},
      {1039, "Ungültige 'exit'-Anweisung"},
      {1040, "Ungültige Schleifensteuervariable 'for'"},
      {1041, "Name neu definiert"},
      {1042, "Muss erste Anweisung in der Zeile sein"},
      {1044, "Beim Aufrufen einer Sub können keine Klammern verwendet werden"},
      {1045, "Literalkonstante erwartet"},
      {1046, "'In' erwartet"},
      {1047, "'Class' erwartet"},
      {1048, "Muss innerhalb einer Klasse definiert werden"},
      {1049, "'Let', 'Set' oder 'Get' in Eigenschaftsdeklaration erwartet"},
      {1050, "'Property' erwartet"},
      {1051, "Die Anzahl der Argumente muss für alle Eigenschaftsspezifikationen übereinstimmen"},
      {1052, "Mehrere Standardeigenschaften/-methoden in einer Klasse sind nicht zulässig"},
      {1053, "Class_Initialize oder Class_Terminate haben keine Argumente"},
      {1054, "'Property Let' oder 'Property Set' muss mindestens ein Argument haben"},
      {1055, "Unerwartetes 'Next'"},
      {1056, "'Default' kann nur für 'Property', 'Function' oder 'Sub' angegeben werden"},
      {1057, "Bei der 'Default'-Spezifikation muss auch 'Public' angegeben werden"},
      {1058, "'Default'-Spezifikation kann nur für 'Property Get' angegeben werden"},
  };
  auto it = texts.find(number);
  return it != texts.end() ? it->second : VbErrorText(number);
}

std::string RaisedErrorText(std::int32_t number) {
  // What support answers for a number it has no text for (VB's own wording).
  static const std::string unknown = VbErrorText(0);
  std::string text = CompileErrorText(number);
  return text == unknown ? "Unbekannter Laufzeitfehler" : text;
}

void RaiseCompileError(std::int32_t number, int line, int column) {
  throw ScriptError(number, CompileErrorText(number), kCompileErrorSource, line, column);
}

}  // namespace ketrova::script::vbscript
