// Shared pieces of the built-in functions: the function declarations that the
// table binds, argument helpers and UTF-8 text handling. Private to the
// builtins_*.cpp files.
//
// Strings are UTF-8; character functions work on code points (std::u32string).
// The byte functions (LenB, MidB ...) see the UTF-16 form VBScript holds.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "support/utf8.h"
#include "support/variant.h"
#include "support/vb_error.h"

namespace ketrova::script::vbscript {

using Args = std::span<const Variant>;

// --- arguments ---------------------------------------------------------------

// True when argument i was not given or left out between commas.
inline bool Missing(Args args, std::size_t i) {
  return i >= args.size() || args[i].IsMissing();
}

// A whole-number argument (CLng's rules: Null raises 94), or `fallback` when missing.
std::int32_t LongArg(Args args, std::size_t i, std::int32_t fallback);

// The compare argument of InStr, Replace, StrComp ...: 0 binary, 1 text; other
// values raise 5.
bool TextCompareArg(Args args, std::size_t i);

// VB's Tristate arguments (-2 use default, -1 True, 0 False) resolved.
bool TristateArg(Args args, std::size_t i, bool byDefault);

[[noreturn]] inline void RaiseInvalidArgument() {
  throw VbError(5);
}

// --- text --------------------------------------------------------------------

// Code points come from support/utf8.h (ToCodePoints, FromCodePoints,
// CodePointCount, Trim); these add what VBScript needs besides.
// The byte offset of the code point `chars` places in; the size when the text
// is shorter.
std::size_t Utf8Offset(std::string_view utf8, std::size_t chars);
bool IsAscii(std::string_view text);

// The UTF-16 code units of a text, and back (a lone surrogate becomes U+FFFD).
std::u16string ToU16(std::string_view utf8);
std::string FromU16(std::u16string_view text);

// Case mapping by Unicode's simple mappings, all scripts (VBScript's UCase
// and LCase, and its text compare).
char32_t LowerChar(char32_t c);
char32_t UpperChar(char32_t c);
std::u32string Lower(std::u32string text);
std::u32string Upper(std::u32string text);

// Windows-1252, the ANSI code page of Asc and Chr: the character of a byte and
// the byte of a character (63 "?" for one the code page does not hold).
char32_t FromAnsi(std::uint8_t byte);
std::uint8_t ToAnsi(char32_t c);

// --- the functions, by family ------------------------------------------------

#define KETROVA_BUILTIN(name) Variant name(Args args)

// strings
KETROVA_BUILTIN(BiAsc);
KETROVA_BUILTIN(BiAscB);
KETROVA_BUILTIN(BiAscW);
KETROVA_BUILTIN(BiChr);
KETROVA_BUILTIN(BiChrB);
KETROVA_BUILTIN(BiChrW);
KETROVA_BUILTIN(BiEscape);
KETROVA_BUILTIN(BiInStr);
KETROVA_BUILTIN(BiInStrB);
KETROVA_BUILTIN(BiInStrRev);
KETROVA_BUILTIN(BiLCase);
KETROVA_BUILTIN(BiLeft);
KETROVA_BUILTIN(BiLeftB);
KETROVA_BUILTIN(BiLen);
KETROVA_BUILTIN(BiLenB);
KETROVA_BUILTIN(BiLTrim);
KETROVA_BUILTIN(BiMid);
KETROVA_BUILTIN(BiMidB);
KETROVA_BUILTIN(BiReplace);
KETROVA_BUILTIN(BiRight);
KETROVA_BUILTIN(BiRightB);
KETROVA_BUILTIN(BiRTrim);
KETROVA_BUILTIN(BiSpace);
KETROVA_BUILTIN(BiStrComp);
KETROVA_BUILTIN(BiString);
KETROVA_BUILTIN(BiStrReverse);
KETROVA_BUILTIN(BiTrim);
KETROVA_BUILTIN(BiUCase);
KETROVA_BUILTIN(BiUnescape);

// arrays
KETROVA_BUILTIN(BiArray);
KETROVA_BUILTIN(BiFilter);
KETROVA_BUILTIN(BiJoin);
KETROVA_BUILTIN(BiLBound);
KETROVA_BUILTIN(BiSplit);
KETROVA_BUILTIN(BiUBound);

// conversions and type tests
KETROVA_BUILTIN(BiCBool);
KETROVA_BUILTIN(BiCByte);
KETROVA_BUILTIN(BiCCur);
KETROVA_BUILTIN(BiCDate);
KETROVA_BUILTIN(BiCDbl);
KETROVA_BUILTIN(BiCInt);
KETROVA_BUILTIN(BiCLng);
KETROVA_BUILTIN(BiCSng);
KETROVA_BUILTIN(BiCStr);
KETROVA_BUILTIN(BiHex);
KETROVA_BUILTIN(BiOct);
KETROVA_BUILTIN(BiIsArray);
KETROVA_BUILTIN(BiIsDate);
KETROVA_BUILTIN(BiIsEmpty);
KETROVA_BUILTIN(BiIsNull);
KETROVA_BUILTIN(BiIsNumeric);
KETROVA_BUILTIN(BiIsObject);
KETROVA_BUILTIN(BiTypeName);
KETROVA_BUILTIN(BiVarType);

// math
KETROVA_BUILTIN(BiAbs);
KETROVA_BUILTIN(BiAtn);
KETROVA_BUILTIN(BiCos);
KETROVA_BUILTIN(BiExp);
KETROVA_BUILTIN(BiFix);
KETROVA_BUILTIN(BiInt);
KETROVA_BUILTIN(BiLog);
KETROVA_BUILTIN(BiRandomize);
KETROVA_BUILTIN(BiRGB);
KETROVA_BUILTIN(BiRnd);
KETROVA_BUILTIN(BiRound);
KETROVA_BUILTIN(BiSgn);
KETROVA_BUILTIN(BiSin);
KETROVA_BUILTIN(BiSqr);
KETROVA_BUILTIN(BiTan);

// dates
KETROVA_BUILTIN(BiDate);
KETROVA_BUILTIN(BiDateAdd);
KETROVA_BUILTIN(BiDateDiff);
KETROVA_BUILTIN(BiDatePart);
KETROVA_BUILTIN(BiDateSerial);
KETROVA_BUILTIN(BiDateValue);
KETROVA_BUILTIN(BiDay);
KETROVA_BUILTIN(BiFormatDateTime);
KETROVA_BUILTIN(BiHour);
KETROVA_BUILTIN(BiMinute);
KETROVA_BUILTIN(BiMonth);
KETROVA_BUILTIN(BiMonthName);
KETROVA_BUILTIN(BiNow);
KETROVA_BUILTIN(BiSecond);
KETROVA_BUILTIN(BiTime);
KETROVA_BUILTIN(BiTimer);
KETROVA_BUILTIN(BiTimeSerial);
KETROVA_BUILTIN(BiTimeValue);
KETROVA_BUILTIN(BiWeekday);
KETROVA_BUILTIN(BiWeekdayName);
KETROVA_BUILTIN(BiYear);

// number formats
KETROVA_BUILTIN(BiFormatCurrency);
KETROVA_BUILTIN(BiFormatNumber);
KETROVA_BUILTIN(BiFormatPercent);

// host, engine and locale
KETROVA_BUILTIN(BiGetLocale);
KETROVA_BUILTIN(BiInputBox);
KETROVA_BUILTIN(BiLoadPicture);
KETROVA_BUILTIN(BiMsgBox);
KETROVA_BUILTIN(BiScriptEngine);
KETROVA_BUILTIN(BiScriptEngineBuildVersion);
KETROVA_BUILTIN(BiScriptEngineMajorVersion);
KETROVA_BUILTIN(BiScriptEngineMinorVersion);
KETROVA_BUILTIN(BiSetLocale);

#undef KETROVA_BUILTIN

}  // namespace ketrova::script::vbscript
