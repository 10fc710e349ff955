#include "platform/script/jscript/js_errors.h"

#include <regex>

#include "platform/script/jscript/js_boxes.h"

namespace ketrova::script::jscript {

std::int32_t EncodeErrorNumber(std::int32_t number) {
  if (number > 0 && number <= 0xFFFF) return static_cast<std::int32_t>(0x800A0000u | number);
  return number;
}

std::int32_t DecodeErrorNumber(std::int32_t number) {
  if ((static_cast<std::uint32_t>(number) & 0xFFFF0000u) == 0x800A0000u) return number & 0xFFFF;
  return number;
}

void PushHostError(duk_context* ctx, const VbError& error) {
  duk_push_error_object_raw(ctx, DUK_ERR_ERROR, nullptr, 0, "%s", error.Description.c_str());
  duk_push_int(ctx, EncodeErrorNumber(error.Number));
  duk_put_prop_string(ctx, -2, "number");
  duk_push_string(ctx, error.Description.c_str());
  duk_put_prop_string(ctx, -2, "description");
  if (!error.Source.empty()) {
    duk_push_string(ctx, error.Source.c_str());
    duk_put_prop_literal(ctx, -2, kSourceKey);
  }
}

JsErrorInfo DescribeError(duk_context* ctx, duk_idx_t index, bool compile) {
  index = duk_normalize_index(ctx, index);
  JsErrorInfo info;
  std::string name;
  std::string message;
  bool hasNumber = false;
  if (duk_is_object(ctx, index) && !BoxAt<HostBox>(ctx, index, kObjectKey)) {
    duk_get_prop_string(ctx, index, "name");
    if (duk_is_string(ctx, -1)) name = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, "message");
    if (duk_is_string(ctx, -1)) message = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, "lineNumber");
    if (duk_is_number(ctx, -1)) info.line = duk_get_int(ctx, -1);
    duk_get_prop_string(ctx, index, "fileName");
    if (duk_is_string(ctx, -1)) info.fileName = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, "number");
    if (duk_is_number(ctx, -1)) {
      hasNumber = true;
      info.number = DecodeErrorNumber(static_cast<std::int32_t>(duk_get_number(ctx, -1)));
    }
    duk_get_prop_string(ctx, index, "description");
    if (duk_is_string(ctx, -1)) info.description = duk_get_string(ctx, -1);
    duk_get_prop_literal(ctx, index, kSourceKey);
    if (duk_is_string(ctx, -1)) info.source = duk_get_string(ctx, -1);
    duk_pop_n(ctx, 7);
  } else {
    info.number = 5022;
    info.description = "Ausnahme ausgelöst und nicht abgefangen";
    return info;
  }
  if (hasNumber) {
    if (info.description.empty()) info.description = message;
    return info;
  }
  std::smatch match;
  static const std::regex kQuoted("'([^']*)'");
  if (std::regex_search(message, match, kQuoted)) info.identifier = match[1];
  if (compile || name == "SyntaxError") {
    if (message.find("unterminated string") != std::string::npos) {
      info.number = 1015;
      info.description = "Nicht abgeschlossene Zeichenfolgenkonstante";
    } else if (message.find("unterminated comment") != std::string::npos) {
      info.number = 1016;
      info.description = "Nicht abgeschlossener Kommentar";
    } else if (message.find("unterminated statement") != std::string::npos) {
      info.number = 1004;
      info.description = "';' erwartet";
    } else if (message.find("invalid object literal") != std::string::npos) {
      info.number = 1028;
      info.description = "Bezeichner, Zeichenfolge oder Zahl erwartet";
    } else if (message.find("expected identifier") != std::string::npos ||
               message.find("invalid variable declaration") != std::string::npos) {
      info.number = 1010;
      info.description = "Bezeichner erwartet";
    } else {
      info.number = 1002;
      info.description = "Syntaxfehler";
    }
    return info;
  }
  if (name == "ReferenceError" && message.find("undefined") != std::string::npos) {
    info.number = 5009;
    info.description = "'" + info.identifier + "' ist nicht definiert";
  } else if (name == "TypeError" && message.find("not callable") != std::string::npos) {
    info.number = 5002;
    info.description = "Funktion erwartet";
  } else if (name == "TypeError" && message.find("not constructable") != std::string::npos) {
    info.number = 5002;
    info.description = "Funktion erwartet";
  } else if (name == "TypeError") {
    info.number = 5007;
    info.description = "Objekt erwartet";
  } else if (name == "RangeError" && message.find("array length") != std::string::npos) {
    info.number = 5029;
    info.description = "Die Arraylänge muss eine endliche positive ganze Zahl sein";
  } else if (name == "RangeError") {
    info.number = 28;
    info.description = "Nicht genügend Stapelspeicher";
  } else {
    info.number = 5022;
    info.description = message.empty() ? "Ausnahme ausgelöst und nicht abgefangen" : message;
  }
  return info;
}

}  // namespace ketrova::script::jscript
