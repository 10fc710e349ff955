#include "support/utf8.h"

namespace ketrova {

namespace {

// Decodes one code point at `i` and moves past it.
char32_t Next(std::string_view s, std::size_t& i) {
  auto b = static_cast<unsigned char>(s[i]);
  int extra = b < 0x80             ? 0
              : (b & 0xE0) == 0xC0 ? 1
              : (b & 0xF0) == 0xE0 ? 2
              : (b & 0xF8) == 0xF0 ? 3
                                   : -1;
  if (extra <= 0 || i + static_cast<std::size_t>(extra) >= s.size()) {
    ++i;
    return b;
  }
  char32_t c = b & (0x3F >> extra);
  for (int k = 1; k <= extra; ++k) {
    auto n = static_cast<unsigned char>(s[i + static_cast<std::size_t>(k)]);
    if ((n & 0xC0) != 0x80) {
      ++i;
      return b;
    }
    c = (c << 6) | (n & 0x3F);
  }
  i += static_cast<std::size_t>(extra) + 1;
  return c;
}

void Append(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

}  // namespace

std::u32string ToCodePoints(std::string_view text) {
  std::u32string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) out += Next(text, i);
  return out;
}

std::string FromCodePoints(std::u32string_view codePoints) {
  std::string out;
  out.reserve(codePoints.size());
  for (char32_t c : codePoints) Append(out, c);
  return out;
}

std::size_t CodePointCount(std::string_view text) {
  std::size_t n = 0;
  for (std::size_t i = 0; i < text.size(); ++n) Next(text, i);
  return n;
}

std::string SubText(std::string_view text, std::size_t start, std::size_t count) {
  std::size_t i = 0, n = 0;
  while (i < text.size() && n < start) {
    Next(text, i);
    ++n;
  }
  std::size_t from = i;
  for (n = 0; i < text.size() && n < count; ++n) Next(text, i);
  return std::string(text.substr(from, i - from));
}

char32_t UpperCodePoint(char32_t c) {
  if (c >= 'a' && c <= 'z') return c - 32;
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 32;
  if (c == 0xFF) return 0x178;
  return c;
}

char32_t LowerCodePoint(char32_t c) {
  if (c >= 'A' && c <= 'Z') return c + 32;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
  if (c == 0x178) return 0xFF;
  return c;
}

std::string UpperCase(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) Append(out, UpperCodePoint(Next(text, i)));
  return out;
}

std::string LowerCase(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) Append(out, LowerCodePoint(Next(text, i)));
  return out;
}

std::string_view TrimView(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::string Trim(std::string_view text) {
  return std::string(TrimView(text));
}

std::string LTrim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return std::string(text);
}

std::string RTrim(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return std::string(text);
}

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
  if (from.empty()) return std::string(text);
  std::string out;
  out.reserve(text.size());
  std::size_t pos = 0;
  for (;;) {
    std::size_t hit = text.find(from, pos);
    if (hit == std::string_view::npos) break;
    out.append(text.substr(pos, hit - pos));
    out.append(to);
    pos = hit + from.size();
  }
  out.append(text.substr(pos));
  return out;
}

}  // namespace ketrova
