// UTF-8 text by code points: the unit in which Ketrova counts characters
// (Len, Left, Mid, a field's size), and VB's case folding for the letters of
// Latin-1 ("ä" to "Ä"; "ß" has no capital and stays).
#pragma once

#include <string>
#include <string_view>

namespace ketrova {

// The code points of a text; an invalid byte stands for itself (as Latin-1).
std::u32string ToCodePoints(std::string_view text);
std::string FromCodePoints(std::u32string_view codePoints);
// The number of code points.
std::size_t CodePointCount(std::string_view text);
// `count` code points from the 0-based code point `start` (clipped to the text).
std::string SubText(std::string_view text, std::size_t start,
                    std::size_t count = std::string::npos);

char32_t UpperCodePoint(char32_t c);
char32_t LowerCodePoint(char32_t c);
std::string UpperCase(std::string_view text);  // VB's UCase
std::string LowerCase(std::string_view text);  // VB's LCase

// VB's Trim, LTrim, RTrim: blanks (U+0020) only.
std::string_view TrimView(std::string_view text);
std::string Trim(std::string_view text);
std::string LTrim(std::string_view text);
std::string RTrim(std::string_view text);

// Every occurrence of `from` replaced by `to`, left to right (binary compare).
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);

}  // namespace ketrova
