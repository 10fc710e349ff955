// The table of built-in functions, sorted by name without regard to case so
// that FindBuiltin can search it by halves.
#include <algorithm>
#include <array>

#include "platform/script/vbscript/builtins.h"
#include "platform/script/vbscript/builtins_common.h"

namespace ketrova::script::vbscript {

namespace {

constexpr char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

constexpr bool LessNoCase(std::string_view a, std::string_view b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return Lower(x) < Lower(y); });
}

constexpr auto kBuiltins = [] {
  std::array table{
      Builtin{"Abs", 1, 1, BiAbs},
      Builtin{"Array", 0, -1, BiArray},
      Builtin{"Asc", 1, 1, BiAsc},
      Builtin{"AscB", 1, 1, BiAscB},
      Builtin{"AscW", 1, 1, BiAscW},
      Builtin{"Atn", 1, 1, BiAtn},
      Builtin{"CBool", 1, 1, BiCBool},
      Builtin{"CByte", 1, 1, BiCByte},
      Builtin{"CCur", 1, 1, BiCCur},
      Builtin{"CDate", 1, 1, BiCDate},
      Builtin{"CDbl", 1, 1, BiCDbl},
      Builtin{"Chr", 1, 1, BiChr},
      Builtin{"ChrB", 1, 1, BiChrB},
      Builtin{"ChrW", 1, 1, BiChrW},
      Builtin{"CInt", 1, 1, BiCInt},
      Builtin{"CLng", 1, 1, BiCLng},
      Builtin{"Cos", 1, 1, BiCos},
      Builtin{"CSng", 1, 1, BiCSng},
      Builtin{"CStr", 1, 1, BiCStr},
      Builtin{"Date", 0, 0, BiDate},
      Builtin{"DateAdd", 3, 3, BiDateAdd},
      Builtin{"DateDiff", 3, 5, BiDateDiff},
      Builtin{"DatePart", 2, 4, BiDatePart},
      Builtin{"DateSerial", 3, 3, BiDateSerial},
      Builtin{"DateValue", 1, 1, BiDateValue},
      Builtin{"Day", 1, 1, BiDay},
      Builtin{"Escape", 1, 1, BiEscape},
      Builtin{"Exp", 1, 1, BiExp},
      Builtin{"Filter", 2, 4, BiFilter},
      Builtin{"Fix", 1, 1, BiFix},
      Builtin{"FormatCurrency", 1, 5, BiFormatCurrency},
      Builtin{"FormatDateTime", 1, 2, BiFormatDateTime},
      Builtin{"FormatNumber", 1, 5, BiFormatNumber},
      Builtin{"FormatPercent", 1, 5, BiFormatPercent},
      Builtin{"GetLocale", 0, 0, BiGetLocale},
      Builtin{"Hex", 1, 1, BiHex},
      Builtin{"Hour", 1, 1, BiHour},
      Builtin{"InputBox", 1, 7, BiInputBox},
      Builtin{"InStr", 2, 4, BiInStr},
      Builtin{"InStrB", 2, 4, BiInStrB},
      Builtin{"InStrRev", 2, 4, BiInStrRev},
      Builtin{"Int", 1, 1, BiInt},
      Builtin{"IsArray", 1, 1, BiIsArray},
      Builtin{"IsDate", 1, 1, BiIsDate},
      Builtin{"IsEmpty", 1, 1, BiIsEmpty},
      Builtin{"IsNull", 1, 1, BiIsNull},
      Builtin{"IsNumeric", 1, 1, BiIsNumeric},
      Builtin{"IsObject", 1, 1, BiIsObject},
      Builtin{"Join", 1, 2, BiJoin},
      Builtin{"LBound", 1, 2, BiLBound},
      Builtin{"LCase", 1, 1, BiLCase},
      Builtin{"Left", 2, 2, BiLeft},
      Builtin{"LeftB", 2, 2, BiLeftB},
      Builtin{"Len", 1, 1, BiLen},
      Builtin{"LenB", 1, 1, BiLenB},
      Builtin{"LoadPicture", 1, 1, BiLoadPicture},
      Builtin{"Log", 1, 1, BiLog},
      Builtin{"LTrim", 1, 1, BiLTrim},
      Builtin{"Mid", 2, 3, BiMid},
      Builtin{"MidB", 2, 3, BiMidB},
      Builtin{"Minute", 1, 1, BiMinute},
      Builtin{"Month", 1, 1, BiMonth},
      Builtin{"MonthName", 1, 2, BiMonthName},
      Builtin{"MsgBox", 1, 5, BiMsgBox},
      Builtin{"Now", 0, 0, BiNow},
      Builtin{"Oct", 1, 1, BiOct},
      Builtin{"Randomize", 0, 1, BiRandomize},
      Builtin{"Replace", 3, 6, BiReplace},
      Builtin{"RGB", 3, 3, BiRGB},
      Builtin{"Right", 2, 2, BiRight},
      Builtin{"RightB", 2, 2, BiRightB},
      Builtin{"Rnd", 0, 1, BiRnd},
      Builtin{"Round", 1, 2, BiRound},
      Builtin{"RTrim", 1, 1, BiRTrim},
      Builtin{"ScriptEngine", 0, 0, BiScriptEngine},
      Builtin{"ScriptEngineBuildVersion", 0, 0, BiScriptEngineBuildVersion},
      Builtin{"ScriptEngineMajorVersion", 0, 0, BiScriptEngineMajorVersion},
      Builtin{"ScriptEngineMinorVersion", 0, 0, BiScriptEngineMinorVersion},
      Builtin{"Second", 1, 1, BiSecond},
      Builtin{"SetLocale", 0, 1, BiSetLocale},
      Builtin{"Sgn", 1, 1, BiSgn},
      Builtin{"Sin", 1, 1, BiSin},
      Builtin{"Space", 1, 1, BiSpace},
      Builtin{"Split", 1, 4, BiSplit},
      Builtin{"Sqr", 1, 1, BiSqr},
      Builtin{"StrComp", 2, 3, BiStrComp},
      Builtin{"String", 2, 2, BiString},
      Builtin{"StrReverse", 1, 1, BiStrReverse},
      Builtin{"Tan", 1, 1, BiTan},
      Builtin{"Time", 0, 0, BiTime},
      Builtin{"Timer", 0, 0, BiTimer},
      Builtin{"TimeSerial", 3, 3, BiTimeSerial},
      Builtin{"TimeValue", 1, 1, BiTimeValue},
      Builtin{"Trim", 1, 1, BiTrim},
      Builtin{"TypeName", 1, 1, BiTypeName},
      Builtin{"UBound", 1, 2, BiUBound},
      Builtin{"UCase", 1, 1, BiUCase},
      Builtin{"Unescape", 1, 1, BiUnescape},
      Builtin{"VarType", 1, 1, BiVarType},
      Builtin{"Weekday", 1, 2, BiWeekday},
      Builtin{"WeekdayName", 1, 3, BiWeekdayName},
      Builtin{"Year", 1, 1, BiYear},
  };
  std::sort(table.begin(), table.end(),
            [](const Builtin& a, const Builtin& b) { return LessNoCase(a.Name, b.Name); });
  return table;
}();

}  // namespace

const Builtin* FindBuiltin(std::string_view name) {
  auto it = std::lower_bound(
      kBuiltins.begin(), kBuiltins.end(), name,
      [](const Builtin& entry, std::string_view key) { return LessNoCase(entry.Name, key); });
  if (it == kBuiltins.end() || LessNoCase(name, it->Name)) return nullptr;
  return &*it;
}

}  // namespace ketrova::script::vbscript
