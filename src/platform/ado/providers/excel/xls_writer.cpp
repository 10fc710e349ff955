#include "platform/ado/providers/excel/xls_writer.h"

#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-output.h>
#include <gsf/gsf-utils.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <memory>

#include "platform/ado/enums.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr std::size_t kMaxRecordData = 8224;
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
// own, so that only strings longer than a record are split.
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

// The cell formats the workbook gets: Excel's 15 style formats, the default
// cell format (15), then one per number format the cells use.
struct CellFormats {
  std::map<std::uint16_t, std::uint16_t> xf_of_format;  // number format to cell format
  std::vector<std::uint16_t> formats;                   // the number formats of 16, 17, ...

  CellFormats(const XlsWorkbook& book) : source_(book.formats) {
    for (const auto& sheet : book.sheets)
      for (const auto& row : sheet.rows)
        for (const auto& cell : row.cells) Xf(cell.value.style);
  }
  std::uint16_t Xf(std::uint32_t style) {
    const std::uint16_t format =
        style < source_.xf_format.size() ? source_.xf_format[style] : std::uint16_t{0};
    if (format == 0) return kCellXf;
    auto [it, added] =
        xf_of_format.emplace(format, static_cast<std::uint16_t>(kCellXf + 1 + formats.size()));
    if (added) formats.push_back(format);
    return it->second;
  }

 private:
  const XlsFormats& source_;
};

std::string Globals(const XlsWorkbook& book, const CellFormats& xfs,
                    const std::vector<std::uint32_t>& offsets, const std::string& sst) {
  std::string out = Bof(0x0005);
  std::string d;
  Put16(d, 1200);  // UTF-16
  Record(out, 0x0042, d);
  d.clear();
  for (std::uint32_t v : {0u, 0u, 0x4000u, 0x2000u, 0x0038u, 0u, 0u, 1u, 0x0258u}) Put16(d, v);
  Record(out, 0x003D, d);
  d.clear();
  Put16(d, book.date1904 ? 1 : 0);
  Record(out, 0x0022, d);
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
  // The number formats the workbook defined itself, for those in use.
  for (std::uint16_t format : xfs.formats) {
    auto code = book.formats.codes.find(format);
    if (code == book.formats.codes.end()) continue;
    d.clear();
    Put16(d, format);
    std::string units = Utf16Bytes(code->second);
    Put16(d, static_cast<std::uint32_t>(units.size() / 2));
    d.push_back('\x01');
    d += units;
    Record(out, 0x041E, d);
  }
  for (int i = 0; i < 15; ++i) out += Xf(0, true);
  out += Xf(0, false);  // 15: the default
  for (std::uint16_t format : xfs.formats) out += Xf(format, false);
  d.clear();
  Put16(d, 0x8000);
  d.push_back('\0');
  d.push_back('\xFF');
  Record(out, 0x0293, d);
  for (std::size_t i = 0; i < book.sheets.size(); ++i) {
    d.clear();
    Put32(d, offsets.empty() ? 0 : offsets[i]);
    d.push_back('\0');
    d.push_back('\0');
    std::string name = Utf16Bytes(book.sheets[i].name);
    d.push_back(static_cast<char>(name.size() / 2));
    d.push_back('\x01');
    d += name;
    Record(out, 0x0085, d);
  }
  if (!book.names.empty()) {
    // The names refer to the sheets through this workbook's own reference
    // list: one entry per sheet.
    d.clear();
    Put16(d, static_cast<std::uint32_t>(book.sheets.size()));
    Put16(d, 0x0401);
    Record(out, 0x01AE, d);
    d.clear();
    Put16(d, static_cast<std::uint32_t>(book.sheets.size()));
    for (std::size_t i = 0; i < book.sheets.size(); ++i) {
      Put16(d, 0);
      Put16(d, static_cast<std::uint32_t>(i));
      Put16(d, static_cast<std::uint32_t>(i));
    }
    Record(out, 0x0017, d);
    for (const auto& name : book.names) {
      std::string units = Utf16Bytes(name.name);
      d.clear();
      Put16(d, 0);  // options
      d.push_back('\0');
      d.push_back(static_cast<char>(units.size() / 2));
      Put16(d, 11);  // the formula's size
      Put16(d, 0);
      Put16(d, 0);  // global
      d.append(4, '\0');
      d.push_back('\x01');
      d += units;
      d.push_back('\x3B');  // an area on a sheet
      Put16(d, static_cast<std::uint32_t>(name.sheet));
      Put16(d, static_cast<std::uint32_t>(name.range.first_row - 1));
      Put16(d, static_cast<std::uint32_t>(name.range.last_row - 1));
      Put16(d, static_cast<std::uint32_t>(name.range.first_column - 1));
      Put16(d, static_cast<std::uint32_t>(name.range.last_column - 1));
      Record(out, 0x0018, d);
    }
  }
  out += sst;
  Record(out, 0x000A, "");
  return out;
}

std::string Sheet(const XlsSheet& sheet, CellFormats& xfs,
                  std::map<std::string, std::uint32_t>& index, std::vector<std::string>& strings,
                  std::uint32_t& total) {
  std::string out = Bof(0x0010);
  // Column widths come before the cells; a column's format is the default,
  // since the cell formats are numbered anew.
  for (const auto& r : sheet.formatting) {
    if (r.type == 0x0055) Record(out, r.type, r.data);
  }
  for (const auto& r : sheet.formatting) {
    if (r.type != 0x007D || r.data.size() < 12) continue;
    std::string data = r.data;
    data[6] = static_cast<char>(kCellXf);
    data[7] = '\0';
    Record(out, r.type, data);
  }
  int first_column = 256, last_column = -1;
  std::int64_t first_row = 0, last_row = 0;
  for (const auto& row : sheet.rows) {
    if (!row.cells.empty()) {
      if (first_row == 0) first_row = row.row;
      last_row = row.row;
    }
    for (const auto& c : row.cells) {
      first_column = std::min(first_column, c.column);
      last_column = std::max(last_column, c.column);
    }
  }
  std::string d;
  Put32(d, first_row > 0 ? static_cast<std::uint32_t>(first_row - 1) : 0);
  Put32(d, static_cast<std::uint32_t>(last_row));
  Put16(d, last_column >= 0 ? static_cast<std::uint32_t>(first_column - 1) : 0);
  Put16(d, last_column >= 0 ? static_cast<std::uint32_t>(last_column) : 0);
  Put16(d, 0);
  Record(out, 0x0200, d);
  d.clear();
  for (std::uint32_t v : {0x06B6u, 0u, 0u, 0x40u, 0u, 0u, 0u, 0u, 0u}) Put16(d, v);
  Record(out, 0x023E, d);
  for (const auto& row : sheet.rows) {
    for (const auto& cell : row.cells) {
      const CellValue& v = cell.value;
      d.clear();
      Put16(d, static_cast<std::uint32_t>(row.row - 1));
      Put16(d, static_cast<std::uint32_t>(cell.column - 1));
      const std::uint16_t xf = xfs.Xf(v.style);
      switch (v.kind) {
        case CellValue::Kind::kEmpty:
          continue;
        case CellValue::Kind::kNumber:
          Put16(d, xf);
          PutDouble(d, v.number);
          Record(out, 0x0203, d);
          break;
        case CellValue::Kind::kBoolean:
          Put16(d, xf);
          d.push_back(v.number != 0 ? '\x01' : '\0');
          d.push_back('\0');
          Record(out, 0x0205, d);
          break;
        case CellValue::Kind::kText:
        case CellValue::Kind::kError: {
          auto [it, added] = index.emplace(v.text, static_cast<std::uint32_t>(strings.size()));
          if (added) strings.push_back(v.text);
          ++total;
          Put16(d, xf);
          Put32(d, it->second);
          Record(out, 0x00FD, d);
          break;
        }
      }
    }
  }
  for (const auto& r : sheet.formatting) {
    if (r.type == 0x00E5) Record(out, r.type, r.data);
  }
  Record(out, 0x000A, "");
  return out;
}

// GLib objects with one owner.
struct Unref {
  void operator()(void* object) const {
    if (object) g_object_unref(object);
  }
};

// The compound document with the one stream "Workbook".
std::string CompoundDocument(const std::string& stream,
                             const std::function<void(const std::string&)>& fail) {
  static const bool initialised = (gsf_init(), true);
  (void)initialised;
  std::unique_ptr<GsfOutput, Unref> memory(gsf_output_memory_new());
  std::unique_ptr<GsfOutfile, Unref> document(gsf_outfile_msole_new(memory.get()));
  if (!document) fail("libgsf");
  {
    std::unique_ptr<GsfOutput, Unref> workbook(
        gsf_outfile_new_child(document.get(), "Workbook", FALSE));
    if (!workbook ||
        !gsf_output_write(workbook.get(), stream.size(),
                          reinterpret_cast<const guint8*>(stream.data())) ||
        !gsf_output_close(workbook.get())) {
      fail("libgsf");
    }
  }
  if (!gsf_output_close(GSF_OUTPUT(document.get()))) fail("libgsf");
  const guint8* bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory.get()));
  const auto size = static_cast<std::size_t>(gsf_output_size(memory.get()));
  // Closing the document has closed the memory it was written to.
  return std::string(reinterpret_cast<const char*>(bytes), size);
}

}  // namespace

void WriteXlsWorkbook(const std::filesystem::path& file, const XlsWorkbook& book) {
  const std::string shown = "'" + file.string() + "'";
  auto fail = [&](const std::string& why) {
    throw VbError(ado::kErrGeneral,
                  "Die Excel-Arbeitsmappe " + shown + " kann nicht geschrieben werden: " + why,
                  "Ketrova.Excel");
  };
  for (const auto& s : book.sheets) {
    int columns = 0;
    for (const auto& row : s.rows)
      for (const auto& c : row.cells) columns = std::max(columns, c.column);
    if ((!s.rows.empty() && s.rows.back().row > 65536) || columns > 256) {
      fail("das Tabellenblatt '" + s.name +
           "' hat mehr Zeilen oder Spalten, als das Format Excel 97-2003 fasst");
    }
  }
  CellFormats xfs(book);
  std::map<std::string, std::uint32_t> index;
  std::vector<std::string> strings;
  std::uint32_t total = 0;
  std::vector<std::string> bodies;
  for (const auto& s : book.sheets) bodies.push_back(Sheet(s, xfs, index, strings, total));
  const std::string sst = SharedStrings(strings, total);
  // The globals' size does not depend on the offsets they hold.
  std::vector<std::uint32_t> offsets;
  std::uint32_t at = static_cast<std::uint32_t>(Globals(book, xfs, {}, sst).size());
  for (const auto& b : bodies) {
    offsets.push_back(at);
    at += static_cast<std::uint32_t>(b.size());
  }
  std::string stream = Globals(book, xfs, offsets, sst);
  for (const auto& b : bodies) stream += b;
  const std::string bytes = CompoundDocument(stream, fail);

  std::string temp =
      (file.parent_path().empty() ? std::filesystem::path(".") : file.parent_path()).string() +
      "/.ketrova-XXXXXX";
  int fd = ::mkstemp(temp.data());
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
