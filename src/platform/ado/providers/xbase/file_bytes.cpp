#include "platform/ado/providers/xbase/file_bytes.h"

#include <iconv.h>

#include <cassert>
#include <fstream>
#include <memory>
#include <sstream>

#include "support/text.h"

namespace ketrova::xbase_provider {

bool Convert(const std::string& from, const std::string& to, std::string_view in,
             std::string& out) {
  iconv_t cd = iconv_open(to.c_str(), from.c_str());
  assert(cd != reinterpret_cast<iconv_t>(-1) && "glibc knows every code page named here");
  std::unique_ptr<void, int (*)(iconv_t)> owner(cd, iconv_close);
  out.assign(in.size() * 4 + 4, '\0');
  char* src = const_cast<char*>(in.data());
  std::size_t srcLeft = in.size();
  char* dst = out.data();
  std::size_t dstLeft = out.size();
  if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<std::size_t>(-1)) return false;
  out.resize(out.size() - dstLeft);
  return true;
}

std::uint32_t LittleEndian(const std::string& s, std::size_t at, int bytes) {
  assert(at + static_cast<std::size_t>(bytes) <= s.size());
  std::uint32_t v = 0;
  for (int i = bytes - 1; i >= 0; --i)
    v = (v << 8) | static_cast<unsigned char>(s[at + static_cast<std::size_t>(i)]);
  return v;
}

void PutLittleEndian(std::string& s, std::size_t at, std::uint32_t value, int bytes) {
  assert(at + static_cast<std::size_t>(bytes) <= s.size());
  for (int i = 0; i < bytes; ++i)
    s[at + static_cast<std::size_t>(i)] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::string ReadWholeFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::filesystem::path MemoFileOf(const std::filesystem::path& table, const char* extension) {
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(table.parent_path(), ec)) {
    const auto& p = entry.path();
    if (AsciiUpper(p.stem().string()) == AsciiUpper(table.stem().string()) &&
        AsciiUpper(p.extension().string()) == extension)
      return p;
  }
  return {};
}

}  // namespace ketrova::xbase_provider
