#include "platform/ado/providers/excel/xls_writer.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <map>

#include "platform/ado/enums.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr std::size_t kMaxRecordData = 8224;
constexpr std::size_t kSector = 512;
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;
constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
constexpr std::uint16_t kCellXf = 15;  // the default cell format

void Put16(std::string& out, std::uint32_t v) {
  out.push_back(static_cast<char>(v & 0xFF));
  out.push_back(static_cast<char>((v >> 8) & 0xFF));
}
void Put32(std::string& out, std::uint32_t v) {
  Put16(out, v & 0xFFFF);
  Put16(out, v >> 16);
}
void PutDouble(std::string& out, double v) {
  char bytes[8];
  std::memcpy(bytes, &v, 8);  // little-endian hosts only, as Debian's amd64 and arm64
  out.append(bytes, 8);
}

void Record(std::string& out, std::uint16_t type, const std::string& data) {
  Put16(out, type);
  Put16(out, static_cast<std::uint32_t>(data.size()));
  out += data;
}

// Text as UTF-16LE code units.
std::string Utf16Bytes(const std::string& utf8) {
  std::u16string units = ado::Utf8ToUtf16(utf8);
  std::string bytes;
  for (char16_t u : units) Put16(bytes, u);
  return bytes;
}

// The shared string table: SST with CONTINUE records where it outgrows one
// record; a string split across records repeats its option byte there. A
// string whose characters all lie below U+0100 is stored with one byte each.
// A string that does not fit where the record stands begins a record of its
// own, so that only strings longer than a record are split (FreeXL, which
// reads the .xls workbooks back, follows a string over one split only).
std::string SharedStrings(const std::vector<std::string>& strings, std::uint32_t total) {
  std::string out;
  std::string data;
  Put32(data, total);
  Put32(data, static_cast<std::uint32_t>(strings.size()));
  std::uint16_t type = 0x00FC;
  auto flush = [&] {
    Record(out, type, data);
    data.clear();
    type = 0x003C;
  };
  for (const auto& s : strings) {
    std::u16string units = ado::Utf8ToUtf16(s);
    bool compressed = true;
    for (char16_t u : units) compressed = compressed && u < 0x100;
    std::string payload;
    for (char16_t u : units) {
      if (compressed)
        payload.push_back(static_cast<char>(u));
      else
        Put16(payload, u);
    }
    const std::size_t width = compressed ? 1 : 2;
    const char flag = compressed ? '\0' : '\x01';
    if (data.size() + 3 + payload.size() > kMaxRecordData && !data.empty()) flush();
    Put16(data, static_cast<std::uint32_t>(units.size()));
    data.push_back(flag);
    std::size_t at = 0;
    while (at < payload.size()) {
      std::size_t room = (kMaxRecordData - data.size()) / width * width;
      std::size_t take = std::min(room, payload.size() - at);
      data.append(payload, at, take);
      at += take;
      if (at < payload.size()) {
        flush();
        data.push_back(flag);
      }
    }
  }
  flush();
  return out;
}

// BIFF8 (0x0600) of kind 5 (workbook globals) or 16 (a sheet), with the
// build, year and flags Excel 97 writes.
std::string Bof(std::uint16_t kind) {
  std::string d;
  for (std::uint32_t v : {0x0600u, std::uint32_t{kind}, 0x0DBBu, 0x07CCu}) Put16(d, v);
  Put32(d, 0x00000041);
  Put32(d, 0x00000006);
  std::string out;
  Record(out, 0x0809, d);
  return out;
}

std::string Xf(std::uint16_t format, bool style) {
  std::string d;
  Put16(d, 0);       // font
  Put16(d, format);  // number format
  Put16(d, style ? 0xFFF5 : 0x0001);
  d.push_back('\x20');  // bottom aligned
  d.push_back('\0');
  d.push_back('\0');
  d.push_back(style ? '\0' : '\xF8');
  Put32(d, 0);
  Put32(d, 0);
  Put16(d, 0x20C0);
  std::string out;
  Record(out, 0x00E0, d);
  return out;
}

std::string Globals(const std::vector<XlsSheet>& sheets, const std::vector<std::uint32_t>& offsets,
                    const std::string& sst) {
  std::string out = Bof(0x0005);
  std::string d;
  Put16(d, 1200);  // UTF-16
  Record(out, 0x0042, d);
  d.clear();
  for (std::uint32_t v : {0u, 0u, 0x4000u, 0x2000u, 0x0038u, 0u, 0u, 1u, 0x0258u}) Put16(d, v);
  Record(out, 0x003D, d);
  for (int i = 0; i < 4; ++i) {
    d.clear();
    Put16(d, 200);
    Put16(d, 0);
    Put16(d, 0x7FFF);
    Put16(d, 400);
    Put16(d, 0);
    d.append(4, '\0');  // underline, family, character set, reserved
    d.push_back('\x05');
    d.push_back('\0');
    d += "Arial";
    Record(out, 0x0031, d);
  }
  for (int i = 0; i < 15; ++i) out += Xf(0, true);
  out += Xf(0, false);   // 15: text and numbers
  out += Xf(14, false);  // 16: dates
  d.clear();
  Put16(d, 0x8000);
  d.push_back('\0');
  d.push_back('\xFF');
  Record(out, 0x0293, d);
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    d.clear();
    Put32(d, offsets.empty() ? 0 : offsets[i]);
    d.push_back('\0');
    d.push_back('\0');
    std::string name = Utf16Bytes(sheets[i].name);
    d.push_back(static_cast<char>(name.size() / 2));
    d.push_back('\x01');
    d += name;
    Record(out, 0x0085, d);
  }
  out += sst;
  Record(out, 0x000A, "");
  return out;
}

std::string Sheet(const XlsSheet& sheet, std::map<std::string, std::uint32_t>& index,
                  std::vector<std::string>& strings, std::uint32_t& total) {
  std::string out = Bof(0x0010);
  std::size_t columns = 0;
  for (const auto& row : sheet.rows) columns = std::max(columns, row.size());
  std::string d;
  Put32(d, 0);
  Put32(d, static_cast<std::uint32_t>(sheet.rows.size()));
  Put16(d, 0);
  Put16(d, static_cast<std::uint32_t>(columns));
  Put16(d, 0);
  Record(out, 0x0200, d);
  d.clear();
  for (std::uint32_t v : {0x06B6u, 0u, 0u, 0x40u, 0u, 0u, 0u, 0u, 0u}) Put16(d, v);
  Record(out, 0x023E, d);
  for (std::size_t r = 0; r < sheet.rows.size(); ++r) {
    for (std::size_t c = 0; c < sheet.rows[r].size(); ++c) {
      const CellValue& v = sheet.rows[r][c];
      d.clear();
      Put16(d, static_cast<std::uint32_t>(r));
      Put16(d, static_cast<std::uint32_t>(c));
      switch (v.kind) {
        case CellValue::Kind::kEmpty:
          continue;
        case CellValue::Kind::kNumber:
          Put16(d, v.style == 16 ? 16 : kCellXf);
          PutDouble(d, v.number);
          Record(out, 0x0203, d);
          break;
        case CellValue::Kind::kBoolean:
          Put16(d, kCellXf);
          d.push_back(v.number != 0 ? '\x01' : '\0');
          d.push_back('\0');
          Record(out, 0x0205, d);
          break;
        case CellValue::Kind::kText:
        case CellValue::Kind::kError: {
          auto [it, added] = index.emplace(v.text, static_cast<std::uint32_t>(strings.size()));
          if (added) strings.push_back(v.text);
          ++total;
          Put16(d, kCellXf);
          Put32(d, it->second);
          Record(out, 0x00FD, d);
          break;
        }
      }
    }
  }
  Record(out, 0x000A, "");
  return out;
}

// The compound document with the one stream "Workbook": the stream's
// sectors, one directory sector, then the allocation table.
std::string CompoundDocument(std::string stream, const std::filesystem::path& file) {
  // Streams below 4096 bytes would belong in the mini stream; padding keeps
  // this one in the regular sectors (readers stop at its EOF record).
  if (stream.size() < 4096) stream.resize(4096, '\0');
  const std::size_t size = stream.size();
  stream.resize((size + kSector - 1) / kSector * kSector, '\0');
  const std::size_t data_sectors = stream.size() / kSector;
  std::size_t fat_sectors = 1;
  while ((data_sectors + 1 + fat_sectors) > fat_sectors * (kSector / 4)) ++fat_sectors;
  if (fat_sectors > 109) {
    throw VbError(ado::kErrGeneral,
                  "Die Excel-Arbeitsmappe '" + file.string() +
                      "' ist für das Format Excel 97-2003 (.xls) zu groß",
                  "Ketrova.Excel");
  }
  const auto dir_sector = static_cast<std::uint32_t>(data_sectors);
  const auto first_fat = dir_sector + 1;

  std::string header;
  header.append("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  header.append(16, '\0');
  Put16(header, 0x003E);
  Put16(header, 0x0003);
  Put16(header, 0xFFFE);
  Put16(header, 9);
  Put16(header, 6);
  header.append(6, '\0');
  Put32(header, 0);
  Put32(header, static_cast<std::uint32_t>(fat_sectors));
  Put32(header, dir_sector);
  Put32(header, 0);
  Put32(header, 4096);
  Put32(header, kEndOfChain);
  Put32(header, 0);
  Put32(header, kEndOfChain);
  Put32(header, 0);
  for (std::size_t i = 0; i < 109; ++i)
    Put32(header, i < fat_sectors ? first_fat + static_cast<std::uint32_t>(i) : kFreeSector);

  auto entry = [](const std::string& name, std::uint8_t type, std::uint32_t child,
                  std::uint32_t start, std::uint32_t bytes) {
    std::string e;
    std::string units = name.empty() ? std::string() : Utf16Bytes(name) + std::string(2, '\0');
    e += units;
    e.resize(64, '\0');
    Put16(e, static_cast<std::uint32_t>(units.size()));
    e.push_back(static_cast<char>(type));
    e.push_back('\x01');  // black
    Put32(e, kFreeSector);
    Put32(e, kFreeSector);
    Put32(e, child);
    e.append(16 + 4 + 16, '\0');  // class, state bits, times
    Put32(e, start);
    Put32(e, bytes);
    Put32(e, 0);
    return e;
  };
  std::string directory = entry("Root Entry", 5, 1, kEndOfChain, 0) +
                          entry("Workbook", 2, kFreeSector, 0, static_cast<std::uint32_t>(size));
  while (directory.size() < kSector) {
    std::string empty = entry("", 0, kFreeSector, 0, 0);
    directory += empty;
  }

  std::string fat;
  for (std::size_t i = 0; i < data_sectors; ++i)
    Put32(fat, i + 1 < data_sectors ? static_cast<std::uint32_t>(i + 1) : kEndOfChain);
  Put32(fat, kEndOfChain);  // the directory
  for (std::size_t i = 0; i < fat_sectors; ++i) Put32(fat, kFatSector);
  while (fat.size() < fat_sectors * kSector) Put32(fat, kFreeSector);

  return header + stream + directory + fat;
}

}  // namespace

void WriteXlsWorkbook(const std::filesystem::path& file, const std::vector<XlsSheet>& sheets) {
  const std::string shown = "'" + file.string() + "'";
  for (const auto& s : sheets) {
    std::size_t columns = 0;
    for (const auto& row : s.rows) columns = std::max(columns, row.size());
    if (s.rows.size() > 65536 || columns > 256) {
      throw VbError(ado::kErrGeneral,
                    "Die Excel-Arbeitsmappe " + shown + " kann nicht geschrieben werden: das " +
                        "Tabellenblatt '" + s.name +
                        "' hat mehr Zeilen oder Spalten, als das Format Excel 97-2003 fasst",
                    "Ketrova.Excel");
    }
  }
  std::map<std::string, std::uint32_t> index;
  std::vector<std::string> strings;
  std::uint32_t total = 0;
  std::vector<std::string> bodies;
  for (const auto& s : sheets) bodies.push_back(Sheet(s, index, strings, total));
  const std::string sst = SharedStrings(strings, total);
  // The globals' size does not depend on the offsets they hold.
  std::vector<std::uint32_t> offsets;
  std::uint32_t at = static_cast<std::uint32_t>(Globals(sheets, {}, sst).size());
  for (const auto& b : bodies) {
    offsets.push_back(at);
    at += static_cast<std::uint32_t>(b.size());
  }
  std::string stream = Globals(sheets, offsets, sst);
  for (const auto& b : bodies) stream += b;
  const std::string bytes = CompoundDocument(std::move(stream), file);

  std::string temp =
      (file.parent_path().empty() ? std::filesystem::path(".") : file.parent_path()).string() +
      "/.ketrova-XXXXXX";
  int fd = ::mkstemp(temp.data());
  auto fail = [&](const std::string& why) {
    throw VbError(ado::kErrGeneral,
                  "Die Excel-Arbeitsmappe " + shown + " kann nicht geschrieben werden: " + why,
                  "Ketrova.Excel");
  };
  if (fd < 0) fail(std::strerror(errno));
  std::size_t written = 0;
  while (written < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
    if (n <= 0) break;
    written += static_cast<std::size_t>(n);
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  const bool ok = written == bytes.size() && ::fsync(fd) == 0 && ::fchmod(fd, 0666 & ~mask) == 0;
  const int saved = errno;
  ::close(fd);
  if (!ok || ::rename(temp.c_str(), file.c_str()) != 0) {
    const int why = ok ? errno : saved;
    ::unlink(temp.c_str());
    fail(std::strerror(why));
  }
}

}  // namespace ketrova::excel
