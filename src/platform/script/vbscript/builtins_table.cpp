// The table of built-in functions, sorted by name without regard to case so
// that FindBuiltin can search it by halves.
#include <algorithm>
#include <array>
#include <cassert>
#include <vector>

#include "platform/script/vbscript/builtins.h"
#include "platform/script/vbscript/builtins_common.h"
#include "support/object.h"

namespace ketrova::script::vbscript {

namespace {

constexpr char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

constexpr bool LessNoCase(std::string_view a, std::string_view b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return Lower(x) < Lower(y); });
}

// Built-ins take values: an object argument stands for its default member
// (Left(rs("Name"), 3), IsNull(rs("Name"))), read once here. Strict: Nothing
// raises 91 and an object without a default member 438. Soft: such an object
// stays as it is (IsNull(Nothing) is False). Raw: the object itself matters.
enum class Deref { kStrict, kSoft };

template <BuiltinFunction F, Deref mode = Deref::kStrict>
Variant ByValue(std::span<const Variant> args) {
  bool anyObject = false;
  for (const Variant& a : args) anyObject = anyObject || a.IsObject();
  if (!anyObject) return F(args);
  std::vector<Variant> values(args.begin(), args.end());
  for (Variant& v : values) {
    if (!v.IsObject()) continue;
    if (!v.AsObject()) {
      if (mode == Deref::kStrict) throw VbError(91);
      continue;
    }
    try {
      v = v.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
    } catch (const VbError&) {
      if (mode == Deref::kStrict) throw;
    }
  }
  return F(values);
}

template <BuiltinFunction F>
constexpr BuiltinFunction Soft = ByValue<F, Deref::kSoft>;

constexpr auto kBuiltins = [] {
  std::array table{
      Builtin{"Abs", 1, 1, ByValue<BiAbs>},
      Builtin{"Array", 0, -1, BiArray},
      Builtin{"Asc", 1, 1, ByValue<BiAsc>},
      Builtin{"AscB", 1, 1, ByValue<BiAscB>},
      Builtin{"AscW", 1, 1, ByValue<BiAscW>},
      Builtin{"Atn", 1, 1, ByValue<BiAtn>},
      Builtin{"CBool", 1, 1, ByValue<BiCBool>},
      Builtin{"CByte", 1, 1, ByValue<BiCByte>},
      Builtin{"CCur", 1, 1, ByValue<BiCCur>},
      Builtin{"CDate", 1, 1, ByValue<BiCDate>},
      Builtin{"CDbl", 1, 1, ByValue<BiCDbl>},
      Builtin{"Chr", 1, 1, ByValue<BiChr>},
      Builtin{"ChrB", 1, 1, ByValue<BiChrB>},
      Builtin{"ChrW", 1, 1, ByValue<BiChrW>},
      Builtin{"CInt", 1, 1, ByValue<BiCInt>},
      Builtin{"CLng", 1, 1, ByValue<BiCLng>},
      Builtin{"Cos", 1, 1, ByValue<BiCos>},
      Builtin{"CSng", 1, 1, ByValue<BiCSng>},
      Builtin{"CStr", 1, 1, ByValue<BiCStr>},
      Builtin{"Date", 0, 0, ByValue<BiDate>},
      Builtin{"DateAdd", 3, 3, ByValue<BiDateAdd>},
      Builtin{"DateDiff", 3, 5, ByValue<BiDateDiff>},
      Builtin{"DatePart", 2, 4, ByValue<BiDatePart>},
      Builtin{"DateSerial", 3, 3, ByValue<BiDateSerial>},
      Builtin{"DateValue", 1, 1, ByValue<BiDateValue>},
      Builtin{"Day", 1, 1, ByValue<BiDay>},
      Builtin{"Escape", 1, 1, ByValue<BiEscape>},
      Builtin{"Exp", 1, 1, ByValue<BiExp>},
      Builtin{"Filter", 2, 4, ByValue<BiFilter>},
      Builtin{"Fix", 1, 1, ByValue<BiFix>},
      Builtin{"FormatCurrency", 1, 5, ByValue<BiFormatCurrency>},
      Builtin{"FormatDateTime", 1, 2, ByValue<BiFormatDateTime>},
      Builtin{"FormatNumber", 1, 5, ByValue<BiFormatNumber>},
      Builtin{"FormatPercent", 1, 5, ByValue<BiFormatPercent>},
      Builtin{"GetLocale", 0, 0, ByValue<BiGetLocale>},
      Builtin{"Hex", 1, 1, ByValue<BiHex>},
      Builtin{"Hour", 1, 1, ByValue<BiHour>},
      Builtin{"InputBox", 1, 7, ByValue<BiInputBox>},
      Builtin{"InStr", 2, 4, ByValue<BiInStr>},
      Builtin{"InStrB", 2, 4, ByValue<BiInStrB>},
      Builtin{"InStrRev", 2, 4, ByValue<BiInStrRev>},
      Builtin{"Int", 1, 1, ByValue<BiInt>},
      Builtin{"IsArray", 1, 1, Soft<BiIsArray>},
      Builtin{"IsDate", 1, 1, Soft<BiIsDate>},
      Builtin{"IsEmpty", 1, 1, Soft<BiIsEmpty>},
      Builtin{"IsNull", 1, 1, Soft<BiIsNull>},
      Builtin{"IsNumeric", 1, 1, Soft<BiIsNumeric>},
      Builtin{"IsObject", 1, 1, BiIsObject},
      Builtin{"Join", 1, 2, ByValue<BiJoin>},
      Builtin{"LBound", 1, 2, ByValue<BiLBound>},
      Builtin{"LCase", 1, 1, ByValue<BiLCase>},
      Builtin{"Left", 2, 2, ByValue<BiLeft>},
      Builtin{"LeftB", 2, 2, ByValue<BiLeftB>},
      Builtin{"Len", 1, 1, ByValue<BiLen>},
      Builtin{"LenB", 1, 1, ByValue<BiLenB>},
      Builtin{"LoadPicture", 1, 1, ByValue<BiLoadPicture>},
      Builtin{"Log", 1, 1, ByValue<BiLog>},
      Builtin{"LTrim", 1, 1, ByValue<BiLTrim>},
      Builtin{"Mid", 2, 3, ByValue<BiMid>},
      Builtin{"MidB", 2, 3, ByValue<BiMidB>},
      Builtin{"Minute", 1, 1, ByValue<BiMinute>},
      Builtin{"Month", 1, 1, ByValue<BiMonth>},
      Builtin{"MonthName", 1, 2, ByValue<BiMonthName>},
      Builtin{"MsgBox", 1, 5, ByValue<BiMsgBox>},
      Builtin{"Now", 0, 0, ByValue<BiNow>},
      Builtin{"Oct", 1, 1, ByValue<BiOct>},
      Builtin{"Randomize", 0, 1, ByValue<BiRandomize>},
      Builtin{"Replace", 3, 6, ByValue<BiReplace>},
      Builtin{"RGB", 3, 3, ByValue<BiRGB>},
      Builtin{"Right", 2, 2, ByValue<BiRight>},
      Builtin{"RightB", 2, 2, ByValue<BiRightB>},
      Builtin{"Rnd", 0, 1, ByValue<BiRnd>},
      Builtin{"Round", 1, 2, ByValue<BiRound>},
      Builtin{"RTrim", 1, 1, ByValue<BiRTrim>},
      Builtin{"ScriptEngine", 0, 0, ByValue<BiScriptEngine>},
      Builtin{"ScriptEngineBuildVersion", 0, 0, ByValue<BiScriptEngineBuildVersion>},
      Builtin{"ScriptEngineMajorVersion", 0, 0, ByValue<BiScriptEngineMajorVersion>},
      Builtin{"ScriptEngineMinorVersion", 0, 0, ByValue<BiScriptEngineMinorVersion>},
      Builtin{"Second", 1, 1, ByValue<BiSecond>},
      Builtin{"SetLocale", 0, 1, ByValue<BiSetLocale>},
      Builtin{"Sgn", 1, 1, ByValue<BiSgn>},
      Builtin{"Sin", 1, 1, ByValue<BiSin>},
      Builtin{"Space", 1, 1, ByValue<BiSpace>},
      Builtin{"Split", 1, 4, ByValue<BiSplit>},
      Builtin{"Sqr", 1, 1, ByValue<BiSqr>},
      Builtin{"StrComp", 2, 3, ByValue<BiStrComp>},
      Builtin{"String", 2, 2, ByValue<BiString>},
      Builtin{"StrReverse", 1, 1, ByValue<BiStrReverse>},
      Builtin{"Tan", 1, 1, ByValue<BiTan>},
      Builtin{"Time", 0, 0, ByValue<BiTime>},
      Builtin{"Timer", 0, 0, ByValue<BiTimer>},
      Builtin{"TimeSerial", 3, 3, ByValue<BiTimeSerial>},
      Builtin{"TimeValue", 1, 1, ByValue<BiTimeValue>},
      Builtin{"Trim", 1, 1, ByValue<BiTrim>},
      Builtin{"TypeName", 1, 1, BiTypeName},
      Builtin{"UBound", 1, 2, ByValue<BiUBound>},
      Builtin{"UCase", 1, 1, ByValue<BiUCase>},
      Builtin{"Unescape", 1, 1, ByValue<BiUnescape>},
      Builtin{"VarType", 1, 1, BiVarType},
      Builtin{"Weekday", 1, 2, ByValue<BiWeekday>},
      Builtin{"WeekdayName", 1, 3, ByValue<BiWeekdayName>},
      Builtin{"Year", 1, 1, ByValue<BiYear>},
  };
  std::sort(table.begin(), table.end(),
            [](const Builtin& a, const Builtin& b) { return LessNoCase(a.Name, b.Name); });
  return table;
}();

// A conversion called as a statement: its errors come first, then 458.
template <BuiltinFunction F>
Variant Discarded(std::span<const Variant> args) {
  (void)F(args);
  throw VbError(458);
}

Variant RefusedAsValue(std::span<const Variant>) {
  throw VbError(13);
}

struct RefusedUse {
  bool statement;  // the form for a call as a statement, else for a value
  Builtin form;
};

constexpr RefusedUse kRefusedUses[] = {
    {true, Builtin{"CByte", 1, 1, Discarded<ByValue<BiCByte>>}},
    {true, Builtin{"CCur", 1, 1, Discarded<ByValue<BiCCur>>}},
    {true, Builtin{"CDate", 1, 1, Discarded<ByValue<BiCDate>>}},
    {true, Builtin{"CDbl", 1, 1, Discarded<ByValue<BiCDbl>>}},
    {true, Builtin{"CInt", 1, 1, Discarded<ByValue<BiCInt>>}},
    {true, Builtin{"CLng", 1, 1, Discarded<ByValue<BiCLng>>}},
    {true, Builtin{"CSng", 1, 1, Discarded<ByValue<BiCSng>>}},
    {false, Builtin{"Randomize", 0, 1, RefusedAsValue}},
};

Variant RaiseUnqualifiedReference(std::span<const Variant>) {
  throw VbError(505);
}

constexpr Builtin kUnqualifiedReference{"", 0, -1, RaiseUnqualifiedReference};

}  // namespace

const Builtin* UnqualifiedReference() {
  return &kUnqualifiedReference;
}

const Builtin* BuiltinAs(const Builtin* builtin, bool statement) {
  assert(builtin);
  for (const RefusedUse& refused : kRefusedUses)
    if (refused.statement == statement && refused.form.Name == builtin->Name) return &refused.form;
  return builtin;
}

const Builtin* FindBuiltin(std::string_view name) {
  auto it = std::lower_bound(
      kBuiltins.begin(), kBuiltins.end(), name,
      [](const Builtin& entry, std::string_view key) { return LessNoCase(entry.Name, key); });
  if (it == kBuiltins.end() || LessNoCase(name, it->Name)) return nullptr;
  return &*it;
}

}  // namespace ketrova::script::vbscript
