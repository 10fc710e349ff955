#include "platform/ado/file_engine/text_encoding.h"

#include <cstdint>
#include <cstring>

namespace ketrova::file_engine {

namespace {

// Code points of the bytes 0x80 to 0x9F in Windows-1252; 0 marks an undefined byte.
constexpr char32_t kHighControls[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void AppendCodePoint(char32_t cp, std::string& out) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// The first byte at or after p that is not ASCII, or end. Eight bytes at a
// time: most text a converter reads is ASCII.
const unsigned char* SkipAscii(const unsigned char* p, const unsigned char* end) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;
  while (end - p >= 8) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    if (word & kHighBits) break;
    p += 8;
  }
  while (p < end && *p < 0x80) ++p;
  return p;
}

}  // namespace

bool IsAscii(std::string_view bytes) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  return SkipAscii(p, p + bytes.size()) == p + bytes.size();
}

bool IsValidUtf8(std::string_view bytes) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* end = p + bytes.size();
  while ((p = SkipAscii(p, end)) < end) {
    unsigned char c = *p;
    int extra;
    char32_t cp;
    if (c >= 0xC2 && c <= 0xDF) {
      extra = 1;
      cp = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
      extra = 2;
      cp = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      extra = 3;
      cp = c & 0x07;
    } else {
      return false;
    }
    if (end - p <= extra) return false;
    for (int i = 1; i <= extra; ++i) {
      if ((p[i] & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (p[i] & 0x3F);
    }
    if ((extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) ||
        (cp >= 0xD800 && cp <= 0xDFFF)) {
      return false;
    }
    p += extra + 1;
  }
  return true;
}

bool AppendWindows1252AsUtf8(std::string_view bytes, std::string& out, std::size_t& bad_index) {
  out.reserve(out.size() + bytes.size() + bytes.size() / 4);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    auto c = static_cast<unsigned char>(bytes[i]);
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0xA0) {
      char32_t cp = kHighControls[c - 0x80];
      if (cp == 0) {
        bad_index = i;
        return false;
      }
      AppendCodePoint(cp, out);
    } else {
      AppendCodePoint(c, out);
    }
  }
  return true;
}

}  // namespace ketrova::file_engine
