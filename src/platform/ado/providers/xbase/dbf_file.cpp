#include "platform/ado/providers/xbase/dbf_file.h"

#include <shapefil.h>
#include <sys/stat.h>

#include <cassert>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

#include "platform/ado/enums.h"
#include "platform/ado/providers/xbase/file_bytes.h"
#include "platform/ado/value_text.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::xbase_provider {

namespace {

constexpr const char* kSource = "Ketrova.xBase";
// Days from the Julian day number 0 to the OLE date 0 (1899-12-30).
constexpr std::int64_t kJulianOleDay = 2415019;

[[noreturn]] void Fail(const std::filesystem::path& file, const std::string& what,
                       std::int32_t number = ado::kErrGeneral) {
  throw VbError(number, "Die dBase-Datei '" + file.string() + "' " + what, kSource);
}

// The code page of a language driver byte (dBase and FoxPro share them).
std::string CodePageOf(int ldid) {
  switch (ldid) {
    case 0x01:
      return "CP437";
    case 0x02:
      return "CP850";
    case 0x03:
    case 0x57:
    case 0x58:
    case 0x59:
      return "CP1252";
    case 0x64:
      return "CP852";
    case 0x65:
      return "CP866";
    case 0x66:
      return "CP865";
    case 0x67:
      return "CP861";
    case 0xC8:
      return "CP1250";
    case 0xC9:
      return "CP1251";
    case 0x00:
      return "CP437";  // no driver named: DOS dBase's own
    default:
      return {};
  }
}

std::int64_t Le(const unsigned char* p, int bytes) {
  std::uint64_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | p[i];
  if (bytes < 8 && (v >> (bytes * 8 - 1)) & 1) v |= ~std::uint64_t{0} << (bytes * 8);
  return static_cast<std::int64_t>(v);
}

std::uint32_t Be32(const unsigned char* p) {
  return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
         p[3];
}

void PutLe(std::string& out, std::uint64_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

void PutBe32(std::string& out, std::uint32_t v) {
  for (int i = 3; i >= 0; --i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

std::string Trim(std::string_view s) {
  std::size_t b = 0, e = s.size();
  while (b < e && (s[b] == ' ' || s[b] == '\0')) ++b;
  while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\0')) --e;
  return std::string(s.substr(b, e - b));
}

bool IsFoxPro(int version) {
  return version == 0x30 || version == 0x31 || version == 0xF5 || version == 0xFB;
}

// The memo file's content as read: kind "DBT3", "DBT4" or "FPT".
struct Memo {
  std::string bytes;
  std::string kind;
  std::size_t blockSize = 512;
};

Variant MemoValue(const Memo& memo, const std::filesystem::path& file, std::uint32_t block,
                  bool binary, const std::string& codePage) {
  if (block == 0) return Variant::Null();
  const std::size_t at = static_cast<std::size_t>(block) * memo.blockSize;
  if (at >= memo.bytes.size())
    Fail(file,
         "verweist auf Memoblock " + std::to_string(block) + " hinter dem Ende ihrer Memodatei");
  const auto* p = reinterpret_cast<const unsigned char*>(memo.bytes.data()) + at;
  const std::size_t left = memo.bytes.size() - at;
  std::string_view data;
  if (memo.kind == "FPT") {
    if (left < 8) Fail(file, "hat einen abgeschnittenen Memoblock " + std::to_string(block));
    std::uint32_t length = Be32(p + 4);
    if (length > left - 8)
      Fail(file, "hat einen abgeschnittenen Memoblock " + std::to_string(block));
    data = std::string_view(reinterpret_cast<const char*>(p) + 8, length);
  } else if (memo.kind == "DBT4" && left >= 8 && p[0] == 0xFF && p[1] == 0xFF) {
    std::uint32_t length = static_cast<std::uint32_t>(Le(p + 4, 4)) & 0x7FFFFFFF;
    if (length < 8 || length - 8 > left - 8)
      Fail(file, "hat einen abgeschnittenen Memoblock " + std::to_string(block));
    data = std::string_view(reinterpret_cast<const char*>(p) + 8, length - 8);
  } else {
    // dBase III: the text runs to the first end-of-file mark.
    std::string_view rest(reinterpret_cast<const char*>(p), left);
    data = rest.substr(0, rest.find('\x1A'));
  }
  if (binary) {
    auto array = std::make_shared<SafeArray>();
    array->elementType = vbByte;
    array->bounds.push_back({0, static_cast<std::int32_t>(data.size())});
    for (char b : data) array->data.push_back(Variant::Byte(static_cast<std::uint8_t>(b)));
    return Variant(array);
  }
  if (data.empty()) return Variant::Null();  // as a blank field reads
  std::string text;
  if (!Convert(codePage, "UTF-8", data, text))
    Fail(file, "hat in Memoblock " + std::to_string(block) + " Zeichen außerhalb von " + codePage);
  return Variant(text);
}

double OleFromYmd(int y, int m, int d) {
  ado::DateParts p;
  p.year = y, p.month = m, p.day = d;
  return ado::OleDateFromParts(p);
}

}  // namespace

ado::ColumnInfo DescribeDbfField(const std::string& name, char type, int width, int decimals) {
  static constexpr FieldKind kKinds[] = {
      {'C', ado::adVarWChar, FieldKind::kWidth},
      {'N', ado::adDouble, 8, 15, true},
      {'F', ado::adDouble, 8, 15, true},
      {'B', ado::adDouble, 8, 15, true},
      {'I', ado::adInteger, 4, 10},
      {'Y', ado::adCurrency, 8, 19},
      {'D', ado::adDate, 8},
      {'T', ado::adDate, 8},
      {'L', ado::adBoolean, 2},
      {'M', ado::adLongVarWChar, 65535},
      {'G', ado::adLongVarBinary, 1073741823},
      {'P', ado::adLongVarBinary, 1073741823},
  };
  return DescribeField(kKinds, name, type, width, decimals);
}

DbfFile DbfFile::Read(const std::filesystem::path& file) {
  DbfFile t;
  t.file_ = file;
  struct stat st {};
  if (::stat(file.c_str(), &st) != 0) Fail(file, "wurde nicht gefunden");
  const std::string raw = ReadWholeFile(file);
  if (raw.size() < 32) Fail(file, "ist zu kurz für einen dBase-Kopf");
  const auto* head = reinterpret_cast<const unsigned char*>(raw.data());
  t.version_ = head[0];
  if (t.version_ == 0x04 || t.version_ == 0x8C)
    Fail(file, "ist eine Tabelle von dBase 7; gelesen werden dBase III und IV und FoxPro");
  const auto records = static_cast<std::uint64_t>(Le(head + 4, 4) & 0xFFFFFFFF);
  const auto headerLength = static_cast<std::uint64_t>(head[8] | (head[9] << 8));
  const auto recordLength = static_cast<std::uint64_t>(head[10] | (head[11] << 8));
  if (headerLength < 33 || recordLength == 0 || headerLength > raw.size())
    Fail(file, "hat einen ungültigen Kopf");
  if (raw.size() < headerLength + records * recordLength) {
    Fail(file, "ist unvollständig: der Kopf nennt " + std::to_string(records) +
                   " Datensätze, die Datei hält " +
                   std::to_string((raw.size() - headerLength) / recordLength));
  }
  t.languageDriver_ = head[29];
  t.codePage_ = CodePageOf(t.languageDriver_);
  if (t.codePage_.empty())
    Fail(file, "nennt den unbekannten Sprachtreiber " + std::to_string(t.languageDriver_));

  DBFHandle dbf = DBFOpen(file.c_str(), "rb");
  if (!dbf) Fail(file, "kann nicht als dBase-Tabelle gelesen werden");
  std::unique_ptr<DBFInfo, void (*)(DBFHandle)> owner(dbf, DBFClose);
  if (DBFGetRecordCount(dbf) != static_cast<int>(records))
    Fail(file, "hat einen widersprüchlichen Kopf");
  int used = 1;
  bool memo = false;
  std::vector<int> offsets;
  for (int i = 0; i < DBFGetFieldCount(dbf); ++i) {
    char name[XBASE_FLDNAME_LEN_READ + 1] = {};
    int width = 0, decimals = 0;
    DBFGetFieldInfo(dbf, i, name, &width, &decimals);
    const char type = DBFGetNativeFieldType(dbf, i);
    used += width;
    if (type == '0') continue;  // Visual FoxPro's hidden _NullFlags
    TableField f{name, type, width, decimals, DescribeDbfField(name, type, width, decimals)};
    if (f.info.type == ado::adEmpty)
      Fail(file, "hat im Feld '" + f.name + "' den unbekannten Feldtyp '" + type + "'");
    memo = memo || type == 'M' || type == 'G' || type == 'P';
    offsets.push_back(dbf->panFieldOffset[i]);
    t.fields_.push_back(std::move(f));
  }
  if (used != static_cast<int>(recordLength))
    Fail(file, "hat eine Satzlänge, die nicht zu ihren Feldern passt");

  Memo memoFile;
  if (memo) {
    const bool fox = IsFoxPro(t.version_);
    auto path = MemoFileOf(file, fox ? ".FPT" : ".DBT");
    if (path.empty())
      Fail(file, std::string("hat Memofelder, aber ihre Memodatei (") + (fox ? ".fpt" : ".dbt") +
                     ") fehlt");
    memoFile.bytes = ReadWholeFile(path);
    if (memoFile.bytes.size() < 512) Fail(path, "ist als Memodatei zu kurz");
    const auto* m = reinterpret_cast<const unsigned char*>(memoFile.bytes.data());
    if (fox) {
      memoFile.kind = "FPT";
      memoFile.blockSize = static_cast<std::size_t>((m[6] << 8) | m[7]);
    } else if (t.version_ == 0x8B) {
      memoFile.kind = "DBT4";
      memoFile.blockSize = static_cast<std::size_t>(m[20] | (m[21] << 8));
    } else {
      memoFile.kind = "DBT3";
    }
    if (memoFile.blockSize == 0) Fail(path, "nennt die Blockgröße 0");
  }

  for (std::uint64_t r = 0; r < records; ++r) {
    const auto* rec = head + headerLength + r * recordLength;
    if (rec[0] == '*') continue;  // deleted
    ado::Row row;
    for (std::size_t i = 0; i < t.fields_.size(); ++i) {
      const TableField& f = t.fields_[i];
      const auto* p = rec + offsets[i];
      std::string_view bytes(reinterpret_cast<const char*>(p), static_cast<std::size_t>(f.width));
      auto bad = [&] {
        Fail(file, "hat in Datensatz " + std::to_string(r + 1) + ", Feld '" + f.name +
                       "' den ungültigen Wert '" + Trim(bytes) + "'");
      };
      Variant v = Variant::Null();
      switch (f.type) {
        case 'C': {
          std::string text(bytes.substr(0, bytes.find_last_not_of(' ') + 1));
          if (text.empty()) break;
          std::string utf8;
          if (!Convert(t.codePage_, "UTF-8", text, utf8)) bad();
          v = Variant(utf8);
          break;
        }
        case 'N':
        case 'F': {
          std::string text = Trim(bytes);
          if (text.empty()) break;
          char* end = nullptr;
          double d = std::strtod(text.c_str(), &end);
          if (end == text.c_str() || *end != '\0') bad();
          v = Variant(d);
          break;
        }
        case 'D': {
          std::string text = Trim(bytes);
          if (text.empty() || text == "00000000") break;
          int y = 0, m = 0, d = 0;
          if (text.size() != 8 || std::sscanf(text.c_str(), "%4d%2d%2d", &y, &m, &d) != 3 ||
              m < 1 || m > 12 || d < 1 || d > 31)
            bad();
          v = Variant::FromDate(OleFromYmd(y, m, d));
          break;
        }
        case 'L': {
          char c = static_cast<char>(std::toupper(static_cast<unsigned char>(p[0])));
          if (c == 'T' || c == 'Y')
            v = Variant(true);
          else if (c == 'F' || c == 'N')
            v = Variant(false);
          else if (c != '?' && c != ' ')
            bad();
          break;
        }
        case 'I':
          v = Variant::Long(static_cast<std::int32_t>(Le(p, 4)));
          break;
        case 'B': {
          double d;
          std::uint64_t bits = static_cast<std::uint64_t>(Le(p, 8));
          std::memcpy(&d, &bits, sizeof d);
          v = Variant(d);
          break;
        }
        case 'Y':
          v = Variant::FromCurrency(static_cast<double>(Le(p, 8)) / 10000.0);
          break;
        case 'T': {
          const std::int64_t day = Le(p, 4);
          const std::int64_t ms = Le(p + 4, 4);
          if (day == 0 && ms == 0) break;
          v = Variant::FromDate(static_cast<double>(day - kJulianOleDay) +
                                static_cast<double>(ms) / 86400000.0);
          break;
        }
        case 'M':
        case 'G':
        case 'P': {
          std::uint32_t block = 0;
          if (f.width == 4) {
            block = static_cast<std::uint32_t>(Le(p, 4));
          } else {
            std::string text = Trim(bytes);
            if (!text.empty() && text.find_first_not_of("0123456789") != std::string::npos) bad();
            block = text.empty() ? 0 : static_cast<std::uint32_t>(std::stoul(text));
          }
          v = MemoValue(memoFile, file, block, f.type != 'M', t.codePage_);
          break;
        }
        default:
          assert(false && "field types are checked when the header is read");
      }
      row.push_back(std::move(v));
    }
    t.rows_.push_back(std::move(row));
  }
  for (auto& f : t.fields_) f.info.baseTable = file.stem().string();
  return t;
}

DbfFile DbfFile::Create(const std::filesystem::path& file, std::vector<TableField> fields) {
  DbfFile t;
  t.file_ = file;
  t.fields_ = std::move(fields);
  bool memo = false;
  for (auto& f : t.fields_) {
    f.info = DescribeDbfField(f.name, f.type, f.width, f.decimals);
    f.info.baseTable = file.stem().string();
    memo = memo || f.type == 'M';
  }
  t.version_ = memo ? 0x83 : 0x03;
  t.languageDriver_ = 0x03;
  t.codePage_ = "CP1252";
  return t;
}

namespace {

// A field's bytes for a value; raises kErrStatementRefused when it does not fit.
std::string EncodeField(const DbfFile& table, const TableField& f, const Variant& v,
                        const std::string& codePage, std::string& memo, std::size_t blockSize,
                        bool fox) {
  const auto width = static_cast<std::size_t>(f.width);
  auto refuse = [&](const std::string& why) {
    Fail(table.file(), "kann im Feld '" + f.name + "' " + why, ado::kErrStatementRefused);
  };
  const bool null = v.IsNull() || v.IsEmpty();
  std::string out;
  switch (f.type) {
    case 'C': {
      std::string bytes;
      if (!null && !Convert("UTF-8", codePage + "", v.ToString(), bytes))
        refuse("den Wert '" + v.ToString() + "' nicht in " + codePage + " schreiben");
      if (bytes.size() > width)
        refuse("nur " + std::to_string(width) + " Zeichen halten, nicht '" + v.ToString() + "'");
      out = bytes + std::string(width - bytes.size(), ' ');
      break;
    }
    case 'N':
    case 'F': {
      if (null) return std::string(width, ' ');
      // A field without decimals holds whole numbers only; a fraction (a
      // Single column created as LONG) is refused rather than rounded away.
      const double number = v.ToDouble();
      if (f.decimals == 0 && number != std::round(number))
        refuse("nur ganze Zahlen halten, nicht " + v.ToString());
      char buf[64];
      std::snprintf(buf, sizeof buf, "%*.*f", f.width, f.decimals, number);
      if (std::strlen(buf) > width)
        refuse("die Zahl " + v.ToString() + " nicht in " + std::to_string(width) +
               " Stellen halten");
      out = buf;
      break;
    }
    case 'D': {
      if (null) return std::string(width, ' ');
      ado::DateParts p = ado::PartsFromOleDate(v.ToDate().value);
      if (p.hour || p.minute || p.second)
        refuse("nur ein Datum halten, nicht die Uhrzeit von '" + v.ToString() + "'");
      char buf[16];
      std::snprintf(buf, sizeof buf, "%04d%02d%02d", p.year, p.month, p.day);
      out = buf;
      break;
    }
    case 'L':
      out = null ? "?" : (v.ToBool() ? "T" : "F");
      break;
    case 'I':
      PutLe(out, null ? 0 : static_cast<std::uint64_t>(static_cast<std::int64_t>(v.ToLong())), 4);
      break;
    case 'B': {
      double d = null ? 0 : v.ToDouble();
      std::uint64_t bits;
      std::memcpy(&bits, &d, sizeof d);
      PutLe(out, bits, 8);
      break;
    }
    case 'Y':
      PutLe(out, null ? 0 : static_cast<std::uint64_t>(std::llround(v.ToDouble() * 10000.0)), 8);
      break;
    case 'T': {
      if (null) {
        out.assign(8, '\0');
        break;
      }
      double ole = v.ToDate().value;
      double day = std::floor(ole);
      auto ms = static_cast<std::int64_t>(std::llround((ole - day) * 86400000.0));
      PutLe(out, static_cast<std::uint64_t>(static_cast<std::int64_t>(day) + kJulianOleDay), 4);
      PutLe(out, static_cast<std::uint64_t>(ms), 4);
      break;
    }
    case 'M':
    case 'G':
    case 'P': {
      std::uint32_t block = 0;
      if (!null) {
        std::string data;
        if (v.Type() == vbArray || (v.Type() & vbArray)) {
          for (const auto& b : v.AsArray()->data) data.push_back(static_cast<char>(b.ToLong()));
        } else if (!Convert("UTF-8", codePage, v.ToString(), data)) {
          refuse("den Wert nicht in " + codePage + " schreiben");
        }
        block = static_cast<std::uint32_t>(memo.size() / blockSize);
        if (fox) {
          PutBe32(memo, f.type == 'M' ? 1 : 0);
          PutBe32(memo, static_cast<std::uint32_t>(data.size()));
          memo += data;
        } else {
          memo += data;
          memo += "\x1A\x1A";
        }
        memo.append((blockSize - memo.size() % blockSize) % blockSize, '\0');
      }
      if (width == 4) {
        PutLe(out, block, 4);
      } else {
        out = block ? std::to_string(block) : std::string();
        out = std::string(width - out.size(), ' ') + out;
      }
      break;
    }
    default:
      assert(false && "field types are checked when the header is read");
  }
  return out;
}

}  // namespace

void DbfFile::Check(const ado::Row& row) const {
  std::string memo(512, '\0');
  for (std::size_t i = 0; i < fields_.size() && i < row.size(); ++i)
    EncodeField(*this, fields_[i], row[i], codePage_, memo, 512, IsFoxPro(version_));
}

void DbfFile::Write(const std::vector<ado::Row>& rows) const {
  const bool fox = IsFoxPro(version_);
  bool hasMemo = false;
  for (const auto& f : fields_)
    hasMemo = hasMemo || f.type == 'M' || f.type == 'G' || f.type == 'P';
  const std::size_t blockSize = fox ? 64 : 512;
  std::string memo(fox ? 512 : 512, '\0');

  // shapelib names the file it creates itself: the given name's extension
  // becomes ".dbf".
  const auto temp = file_.parent_path() / (file_.stem().string() + ".ketrova-neu.dbf");
  {
    DBFHandle dbf = DBFCreateEx(temp.c_str(), ("LDID/" + std::to_string(languageDriver_)).c_str());
    if (!dbf) Fail(file_, "kann nicht geschrieben werden");
    std::unique_ptr<DBFInfo, void (*)(DBFHandle)> owner(dbf, DBFClose);
    for (const auto& f : fields_) {
      if (DBFAddNativeFieldType(dbf, f.name.c_str(), f.type, f.width, f.decimals) < 0)
        Fail(file_, "kann das Feld '" + f.name + "' nicht anlegen");
    }
    int index = 0;
    for (const auto& row : rows) {
      std::string record = " ";  // the deletion flag, then the fields
      for (std::size_t i = 0; i < fields_.size(); ++i) {
        record += EncodeField(*this, fields_[i], i < row.size() ? row[i] : Variant::Null(),
                              codePage_, memo, blockSize, fox);
      }
      if (!DBFWriteTuple(dbf, index++, record.data())) Fail(file_, "kann nicht geschrieben werden");
    }
  }
  // shapelib writes dBase III without memo; the version byte says what the
  // table is (dBase III with memo, or the FoxPro version it was read as).
  {
    std::fstream patch(temp, std::ios::binary | std::ios::in | std::ios::out);
    int version = hasMemo ? (fox ? version_ : 0x83) : (fox ? version_ : 0x03);
    patch.seekp(0);
    patch.put(static_cast<char>(version));
    if (!patch) Fail(file_, "kann nicht geschrieben werden");
  }
  if (hasMemo) {
    if (fox) {
      std::string head;
      PutBe32(head, static_cast<std::uint32_t>(memo.size() / blockSize));
      head += std::string(2, '\0');
      head.push_back(static_cast<char>(blockSize >> 8));
      head.push_back(static_cast<char>(blockSize & 0xFF));
      memo.replace(0, head.size(), head);
    } else {
      std::string head;
      PutLe(head, memo.size() / blockSize, 4);
      memo.replace(0, head.size(), head);
      memo[16] = 0x03;  // dBase III
    }
    auto memoPath = MemoFileOf(file_, fox ? ".FPT" : ".DBT");
    if (memoPath.empty())
      memoPath = file_.parent_path() / (file_.stem().string() + (fox ? ".fpt" : ".dbt"));
    const auto memoTemp = std::filesystem::path(memoPath.string() + ".ketrova-neu");
    {
      std::ofstream out(memoTemp, std::ios::binary | std::ios::trunc);
      if (!out || !(out << memo)) Fail(memoPath, "kann nicht geschrieben werden");
    }
    std::error_code ec;
    std::filesystem::rename(memoTemp, memoPath, ec);
    if (ec) Fail(memoPath, "kann nicht geschrieben werden: " + ec.message());
  }
  std::error_code ec;
  std::filesystem::rename(temp, file_, ec);
  if (ec) Fail(file_, "kann nicht geschrieben werden: " + ec.message());
}

}  // namespace ketrova::xbase_provider
