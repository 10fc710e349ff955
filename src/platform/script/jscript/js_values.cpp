#include "platform/script/jscript/js_values.h"

#include <cmath>
#include <ctime>
#include <string>

#include "platform/script/jscript/js_boxes.h"
#include "platform/script/jscript/js_builtins.h"
#include "platform/script/jscript/js_heap.h"
#include "platform/script/jscript/js_host_objects.h"
#include "platform/script/jscript/js_script_object.h"

namespace ketrova::script::jscript {

namespace {

// OLE dates are local time; JS time values are milliseconds since 1970 UTC.
double OleToJsTime(double ole) {
  double days = std::floor(ole);
  double fraction = std::fabs(ole - days);
  long dayNumber = static_cast<long>(days) - 25569;  // days since 1970-01-01
  // Civil date of the day number.
  long z = dayNumber + 719468;
  long era = (z >= 0 ? z : z - 146096) / 146097;
  long doe = z - era * 146097;
  long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long y = yoe + era * 400;
  long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  long mp = (5 * doy + 2) / 153;
  long d = doy - (153 * mp + 2) / 5 + 1;
  long m = mp < 10 ? mp + 3 : mp - 9;
  if (m <= 2) ++y;
  double msOfDay = std::round(fraction * 86400000.0);
  std::tm local{};
  local.tm_year = static_cast<int>(y - 1900);
  local.tm_mon = static_cast<int>(m - 1);
  local.tm_mday = static_cast<int>(d);
  local.tm_isdst = -1;
  std::time_t midnight = std::mktime(&local);
  return static_cast<double>(midnight) * 1000.0 + msOfDay;
}

double JsTimeToOle(double ms) {
  double seconds = std::floor(ms / 1000.0);
  double rest = ms - seconds * 1000.0;
  std::time_t t = static_cast<std::time_t>(seconds);
  std::tm local{};
  localtime_r(&t, &local);
  // Day number of the local civil date.
  long y = local.tm_year + 1900;
  long m = local.tm_mon + 1;
  long d = local.tm_mday;
  y -= m <= 2;
  long era = (y >= 0 ? y : y - 399) / 400;
  long yoe = y - era * 400;
  long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  long days = era * 146097 + doe - 719468 + 25569;
  double fraction =
      ((local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) * 1000.0 + rest) / 86400000.0;
  return days >= 0 ? days + fraction : days - fraction;
}

constexpr const char* kClassHelper = "(function (x) { return Object.prototype.toString.call(x); })";
constexpr const char* kTimeHelper = "(function (d) { return d.getTime(); })";

}  // namespace

void InstallValues(duk_context* ctx) {
  Stashed& stashed = HeapOf(ctx).stashed;
  duk_get_global_string(ctx, "Date");
  stashed.date = Stash(ctx, "Date");
  duk_eval_string(ctx, kClassHelper);
  stashed.classOf = Stash(ctx, "classOf");
  duk_eval_string(ctx, kTimeHelper);
  stashed.timeOf = Stash(ctx, "timeOf");
}

void PushVariant(duk_context* ctx, const Variant& value) {
  switch (value.Type()) {
    case vbEmpty:
      duk_push_undefined(ctx);
      return;
    case vbNull:
      duk_push_null(ctx);
      return;
    case vbBoolean:
      duk_push_boolean(ctx, value.AsBool());
      return;
    case vbString: {
      const std::string& text = value.AsString();
      duk_push_lstring(ctx, text.data(), text.size());
      return;
    }
    case vbDate:
      duk_push_heapptr(ctx, HeapOf(ctx).stashed.date);
      duk_push_number(ctx, OleToJsTime(value.AsDate().value));
      duk_new(ctx, 1);
      return;
    case vbObject:
      if (value.IsNothing()) {
        duk_push_null(ctx);
        return;
      }
      PushHostObject(ctx, value.AsObject());
      return;
    case vbError:
      if (value.IsMissing()) {
        duk_push_undefined(ctx);
      } else {
        duk_push_int(ctx, value.AsError().code);
      }
      return;
    default:
      break;
  }
  if (value.IsArray()) {
    PushVBArray(ctx, value.AsArray());
    return;
  }
  duk_push_number(ctx, value.ToDouble());
}

Variant ToVariant(duk_context* ctx, duk_idx_t index) {
  index = duk_normalize_index(ctx, index);
  switch (duk_get_type(ctx, index)) {
    case DUK_TYPE_UNDEFINED:
    case DUK_TYPE_NONE:
      return Variant();
    case DUK_TYPE_NULL:
      return Variant::Null();
    case DUK_TYPE_BOOLEAN:
      return Variant(static_cast<bool>(duk_get_boolean(ctx, index)));
    case DUK_TYPE_NUMBER: {
      double number = duk_get_number(ctx, index);
      if (number == std::floor(number) && number >= -2147483648.0 && number <= 2147483647.0 &&
          !(number == 0 && std::signbit(number)))
        return Variant::Long(static_cast<std::int32_t>(number));
      return Variant(number);
    }
    case DUK_TYPE_STRING: {
      duk_size_t length = 0;
      const char* text = duk_get_lstring(ctx, index, &length);
      return Variant(std::string(text, length));
    }
    case DUK_TYPE_POINTER:
    case DUK_TYPE_BUFFER:
    case DUK_TYPE_LIGHTFUNC:
      return Variant();
    default:
      break;
  }
  if (HostBox* box = BoxAt<HostBox>(ctx, index, kObjectKey)) return Variant(box->object);
  if (ArrayBox* box = BoxAt<ArrayBox>(ctx, index, kArrayKey)) return Variant(box->array);
  const Stashed& stashed = HeapOf(ctx).stashed;
  duk_push_heapptr(ctx, stashed.classOf);
  duk_dup(ctx, index);
  std::string kind;
  if (duk_pcall(ctx, 1) == DUK_EXEC_SUCCESS && duk_is_string(ctx, -1))
    kind = duk_get_string(ctx, -1);
  duk_pop(ctx);
  if (kind == "[object Date]") {
    duk_push_heapptr(ctx, stashed.timeOf);
    duk_dup(ctx, index);
    double ms = 0;
    bool ok = duk_pcall(ctx, 1) == DUK_EXEC_SUCCESS && duk_is_number(ctx, -1);
    if (ok) ms = duk_get_number(ctx, -1);
    duk_pop(ctx);
    if (ok && !std::isnan(ms)) return Variant::FromDate(JsTimeToOle(ms));
    return Variant::Null();
  }
  if (kind == "[object Array]") {
    auto array = std::make_shared<SafeArray>();
    duk_size_t length = duk_get_length(ctx, index);
    array->bounds.push_back({0, static_cast<std::int32_t>(length)});
    for (duk_size_t i = 0; i < length; ++i) {
      duk_get_prop_index(ctx, index, static_cast<duk_uarridx_t>(i));
      array->data.push_back(ToVariant(ctx, -1));
      duk_pop(ctx);
    }
    return Variant(array);
  }
  return Variant(ScriptObjectAt(ctx, index));
}

}  // namespace ketrova::script::jscript
