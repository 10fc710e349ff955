#include "platform/ado/providers/xbase/paradox_file.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <fstream>

#include "platform/ado/enums.h"
#include "platform/ado/providers/xbase/file_bytes.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::xbase_provider {

namespace {

constexpr const char* kSource = "Ketrova.Paradox";

// Header offsets (all header numbers are little-endian).
constexpr std::size_t kRecordSize = 0x00;
constexpr std::size_t kHeaderSize = 0x02;
constexpr std::size_t kFileType = 0x04;
constexpr std::size_t kBlockKb = 0x05;
constexpr std::size_t kNumRecords = 0x06;
constexpr std::size_t kNextBlock = 0x0A;
constexpr std::size_t kFileBlocks = 0x0C;
constexpr std::size_t kFirstBlock = 0x0E;
constexpr std::size_t kLastBlock = 0x10;
constexpr std::size_t kNumFields = 0x21;
constexpr std::size_t kKeyFields = 0x23;
constexpr std::size_t kEncryption1 = 0x25;
constexpr std::size_t kSortOrder = 0x29;
constexpr std::size_t kChangeCount1 = 0x2D;
constexpr std::size_t kVersion = 0x39;
constexpr std::size_t kMaxBlocks = 0x3A;
constexpr std::size_t kAutoInc = 0x49;
constexpr std::size_t kFirstFreeBlock = 0x4D;
constexpr std::size_t kIndexUpdateRequired = 0x4F;
constexpr std::size_t kRealHeaderSize = 0x51;
// From Paradox 4 on, a second part follows the first 0x58 bytes.
constexpr std::size_t kBaseHeader = 0x58;
constexpr std::size_t kVersionId3 = 0x58;
constexpr std::size_t kVersionId4 = 0x5A;
constexpr std::size_t kEncryption2 = 0x5C;
constexpr std::size_t kHighFieldId = 0x64;
constexpr std::size_t kCodePage = 0x6A;
constexpr std::size_t kDataHeader = 0x78;
constexpr std::uint32_t kNotEncrypted4 = 0xFF00FF00u;

constexpr int kVersion7 = 0x0C;
constexpr std::size_t kMbBlock = 4096;
constexpr int kBlobPointer = 10;  // offset, length, modification number
// Days from 0001-01-01 (day 1 of Paradox's count) to the OLE date 0.
constexpr std::int64_t kOleDay0 = 693594;
constexpr double kMsPerDay = 86400000.0;

[[noreturn]] void Fail(const std::filesystem::path& file, const std::string& what,
                       std::int32_t number = ado::kErrGeneral) {
  throw VbError(number, "Die Paradox-Datei '" + file.string() + "' " + what, kSource);
}

bool AllZero(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == '\0'; });
}

// A whole number stored big-endian with the sign bit flipped.
std::int64_t FlippedInt(std::string_view b) {
  std::uint64_t v = static_cast<unsigned char>(b[0]) ^ 0x80u;
  for (std::size_t i = 1; i < b.size(); ++i) v = (v << 8) | static_cast<unsigned char>(b[i]);
  const int bits = static_cast<int>(b.size()) * 8;
  if (bits < 64 && (v >> (bits - 1)) & 1) v |= ~std::uint64_t{0} << bits;
  return static_cast<std::int64_t>(v);
}

std::string PutFlippedInt(std::int64_t value, int bytes) {
  std::string out(static_cast<std::size_t>(bytes), '\0');
  auto v = static_cast<std::uint64_t>(value);
  for (int i = bytes - 1; i >= 0; --i, v >>= 8)
    out[static_cast<std::size_t>(i)] = static_cast<char>(v & 0xFF);
  out[0] = static_cast<char>(out[0] ^ 0x80);
  return out;
}

// A double stored big-endian: positive with the sign bit set, negative with
// every bit inverted, so that the bytes sort as the numbers do.
double FlippedDouble(std::string_view b) {
  std::uint64_t v = 0;
  for (char c : b) v = (v << 8) | static_cast<unsigned char>(c);
  v = (v >> 63) ? v ^ (std::uint64_t{1} << 63) : ~v;
  double d;
  std::memcpy(&d, &v, sizeof d);
  return d;
}

std::string PutFlippedDouble(double d) {
  std::uint64_t v;
  std::memcpy(&v, &d, sizeof v);
  v = (v >> 63) ? ~v : v | (std::uint64_t{1} << 63);
  std::string out(8, '\0');
  for (int i = 7; i >= 0; --i, v >>= 8) out[static_cast<std::size_t>(i)] = static_cast<char>(v);
  return out;
}

// Days counted from 0001-01-01 = 1 (proleptic Gregorian) and back.
ado::DateParts PartsOfDay(std::int64_t day) {
  // Days since 0000-03-01, in 400-year eras (H. Hinnant's civil_from_days).
  const std::int64_t z = day + 305;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t doe = z - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  ado::DateParts p;
  p.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  p.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  p.year = static_cast<int>(yoe + era * 400 + (p.month <= 2 ? 1 : 0));
  return p;
}

std::int64_t DayOfParts(const ado::DateParts& p) {
  const std::int64_t y = p.year - (p.month <= 2 ? 1 : 0);
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yoe = y - era * 400;
  const std::int64_t m = p.month;
  const std::int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + p.day - 1;
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 305;
}

double OleOf(std::int64_t day, std::int64_t msOfDay) {
  ado::DateParts p = PartsOfDay(day);
  p.hour = static_cast<int>(msOfDay / 3600000);
  p.minute = static_cast<int>(msOfDay / 60000 % 60);
  p.second = static_cast<int>(msOfDay / 1000 % 60);
  p.fraction = static_cast<std::uint32_t>(msOfDay % 1000) * 1000000u;
  return ado::OleDateFromParts(p);
}

std::int64_t MsOfDay(const ado::DateParts& p) {
  return ((p.hour * 60LL + p.minute) * 60 + p.second) * 1000 + p.fraction / 1000000;
}

// The code page of the header's DOS code page number.
std::string CodePageName(std::uint32_t number) {
  switch (number) {
    case 437:
    case 850:
    case 852:
    case 860:
    case 861:
    case 863:
    case 865:
    case 866:
    case 1250:
    case 1251:
    case 1252:
      return "CP" + std::to_string(number);
    default:
      return {};
  }
}

// The type letters by the header's type byte.
char TypeLetter(int code) {
  switch (code) {
    case 0x01:
      return 'A';
    case 0x02:
      return 'D';
    case 0x03:
      return 'S';
    case 0x04:
      return 'I';
    case 0x05:
      return '$';
    case 0x06:
      return 'N';
    case 0x09:
      return 'L';
    case 0x0C:
      return 'M';
    case 0x0D:
      return 'B';
    case 0x0E:
      return 'F';
    case 0x0F:
      return 'O';
    case 0x10:
      return 'G';
    case 0x14:
      return 'T';
    case 0x15:
      return '@';
    case 0x16:
      return '+';
    case 0x17:
      return '#';
    case 0x18:
      return 'Y';
    default:
      return '\0';
  }
}

int TypeCode(char letter) {
  for (int code = 1; code <= 0x18; ++code)
    if (TypeLetter(code) == letter) return code;
  return 0;
}

bool IsBlob(char type) {
  return type == 'M' || type == 'B' || type == 'F' || type == 'O' || type == 'G';
}

// The bytes a field takes in the record; a BCD field's header size is its
// number of decimals, the field itself always 17 bytes.
int StoredWidth(char type, int headerSize) {
  return type == '#' ? 17 : headerSize;
}

// The BLOb file of a table, read once when a value lies outside its record.
struct BlobFile {
  std::filesystem::path path;
  std::ifstream in;
  std::uintmax_t size = 0;
};

std::string BlobOf(const std::filesystem::path& table, BlobFile& mb, std::uint32_t offset,
                   std::uint32_t length) {
  if (!mb.in.is_open()) {
    mb.path = MemoFileOf(table, ".MB");
    if (mb.path.empty()) Fail(table, "verweist auf eine BLOb-Datei (.MB), die fehlt");
    std::error_code ec;
    mb.size = std::filesystem::file_size(mb.path, ec);
    mb.in.open(mb.path, std::ios::binary);
    if (ec || !mb.in) Fail(table, "kann ihre BLOb-Datei '" + mb.path.string() + "' nicht lesen");
  }
  auto piece = [&](std::uintmax_t at, std::size_t n) {
    std::string bytes(n, '\0');
    mb.in.clear();
    if (at + n > mb.size || !mb.in.seekg(static_cast<std::streamoff>(at)) ||
        !mb.in.read(bytes.data(), static_cast<std::streamsize>(n))) {
      Fail(table, "hat eine beschädigte BLOb-Datei '" + mb.path.filename().string() +
                      "' (Verweis " + std::to_string(offset) + ")");
    }
    return bytes;
  };
  const std::uintmax_t block = offset & ~0xFFu;
  const std::uint32_t index = offset & 0xFFu;
  const std::string head = piece(block, 12);
  // A block of one BLOb (type 2), or one shared by up to 64 small BLObs in
  // 16-byte chunks (type 3), its table of entries after the header.
  std::uintmax_t data = block + 9;
  if (index != 0xFF) {
    if (head[0] != 3 || index >= 64) piece(mb.size, 1);
    data = block + static_cast<unsigned char>(piece(block + 12 + index * 5, 1)[0]) * 16u;
  } else if (head[0] != 2) {
    piece(mb.size, 1);
  }
  return piece(data, length);
}

Variant BytesValue(std::string_view bytes) {
  auto array = std::make_shared<SafeArray>();
  array->elementType = vbByte;
  array->bounds.push_back({0, static_cast<std::int32_t>(bytes.size())});
  for (char c : bytes) array->data.push_back(Variant::Byte(static_cast<std::uint8_t>(c)));
  return Variant(array);
}

std::string BytesOf(const Variant& v) {
  std::string out;
  for (const auto& b : v.AsArray()->data) out.push_back(static_cast<char>(b.ToLong()));
  return out;
}

Variant BcdValue(std::string_view b) {
  const bool negative = !(static_cast<unsigned char>(b[0]) & 0x80);
  const int decimals = static_cast<unsigned char>(b[0]) & 0x3F;
  Decimal d;
  for (std::size_t i = 1; i < 17; ++i) {
    for (int shift : {4, 0}) {
      int digit = (static_cast<unsigned char>(b[i]) >> shift) & 0x0F;
      if (negative) digit = 0x0F - digit;
      d.mantissa = d.mantissa * 10 + digit;
    }
  }
  d.scale = decimals;
  while (d.scale > 28) d.mantissa /= 10, --d.scale;
  if (negative) d.mantissa = -d.mantissa;
  return Variant(d);
}

}  // namespace

ado::ColumnInfo DescribeParadoxField(const std::string& name, char type, int width, int decimals) {
  static constexpr FieldKind kKinds[] = {
      {'A', ado::adVarWChar, FieldKind::kWidth},
      {'S', ado::adSmallInt, 2, 5},
      {'I', ado::adInteger, 4, 10},
      {'+', ado::adInteger, 4, 10, false, true},
      {'$', ado::adDouble, 8, 15},
      {'N', ado::adDouble, 8, 15},
      {'#', ado::adNumeric, 17, 32, true},
      {'D', ado::adDate, 8},
      {'T', ado::adDate, 8},
      {'@', ado::adDate, 8},
      {'L', ado::adBoolean, 2},
      {'M', ado::adLongVarWChar, 536870910},
      {'F', ado::adLongVarBinary, 1073741823},
      {'B', ado::adLongVarBinary, 1073741823},
      {'O', ado::adLongVarBinary, 1073741823},
      {'G', ado::adLongVarBinary, 1073741823},
      {'Y', ado::adVarBinary, FieldKind::kWidth},
  };
  return DescribeField(kKinds, name, type, width, decimals);
}

namespace {

// One record's values.
ado::Row DecodeRecord(const std::filesystem::path& file, const std::vector<TableField>& fields,
                      const std::string& codePage, std::string_view rec, BlobFile& mb) {
  ado::Row row;
  std::size_t off = 0;
  for (const auto& f : fields) {
    std::string_view b = rec.substr(off, static_cast<std::size_t>(f.width));
    off += static_cast<std::size_t>(f.width);
    if (IsBlob(f.type)) {
      const std::size_t lead = b.size() - kBlobPointer;
      std::string tail(b.substr(lead));
      const std::uint32_t offset = LittleEndian(tail, 0, 4), length = LittleEndian(tail, 4, 4);
      if (length == 0) {
        row.push_back(Variant::Null());
        continue;
      }
      std::string value = length <= lead && offset == 0 ? std::string(b.substr(0, length))
                                                        : BlobOf(file, mb, offset, length);
      if (f.type == 'M') {
        std::string text;
        if (!Convert(codePage, "UTF-8", value, text))
          Fail(file, "hat im Memofeld '" + f.name + "' Zeichen außerhalb von " + codePage);
        row.push_back(Variant(text));
      } else {
        row.push_back(BytesValue(value));
      }
      continue;
    }
    if (AllZero(b)) {
      row.push_back(Variant::Null());
      continue;
    }
    switch (f.type) {
      case 'A': {
        std::string_view raw = b.substr(0, std::min(b.size(), b.find('\0')));
        std::string text;
        if (!Convert(codePage, "UTF-8", raw, text))
          Fail(file, "hat im Feld '" + f.name + "' Zeichen außerhalb von " + codePage);
        row.push_back(Variant(text));
        break;
      }
      case 'S':
        row.push_back(Variant::Integer(static_cast<std::int16_t>(FlippedInt(b))));
        break;
      case 'I':
      case '+':
        row.push_back(Variant::Long(static_cast<std::int32_t>(FlippedInt(b))));
        break;
      case '$':
      case 'N':
        row.push_back(Variant(FlippedDouble(b)));
        break;
      case 'L':
        row.push_back(Variant(static_cast<unsigned char>(b[0]) != 0x80));
        break;
      case 'D':
        row.push_back(Variant::FromDate(OleOf(FlippedInt(b), 0)));
        break;
      case 'T':
        row.push_back(Variant::FromDate(OleOf(kOleDay0, FlippedInt(b))));
        break;
      case '@': {
        const double ms = std::floor(FlippedDouble(b));
        const double day = std::floor(ms / kMsPerDay);
        row.push_back(Variant::FromDate(OleOf(static_cast<std::int64_t>(day),
                                              static_cast<std::int64_t>(ms - day * kMsPerDay))));
        break;
      }
      case '#':
        row.push_back(BcdValue(b));
        break;
      case 'Y':
        row.push_back(BytesValue(b));
        break;
      default:
        assert(false && "field types are checked with the header");
    }
  }
  return row;
}

// The records block by block along the data blocks' chain.
class BlockStream : public RowStream {
 public:
  BlockStream(const std::filesystem::path& file, const std::vector<TableField>& fields,
              const std::string& codePage, std::size_t headerSize, std::size_t recordSize,
              std::size_t blockSize, std::uint32_t fileBlocks, std::uint32_t firstBlock,
              std::uint32_t expected)
      : file_(file),
        fields_(fields),
        codePage_(codePage),
        headerSize_(headerSize),
        recordSize_(recordSize),
        fileBlocks_(fileBlocks),
        next_(firstBlock),
        expected_(expected),
        data_(blockSize, '\0'),
        in_(file, std::ios::binary) {
    if (!in_) Fail(file, "kann nicht gelesen werden");
  }

  bool Next(std::vector<ado::Row>& rows) override {
    if (next_ == 0) {
      if (delivered_ != expected_) {
        Fail(file_, "enthält " + std::to_string(delivered_) + " Datensätze, ihr Kopf nennt " +
                        std::to_string(expected_));
      }
      return false;
    }
    const std::uint32_t block = next_;
    if (++visited_ > fileBlocks_ || block > fileBlocks_)
      Fail(file_, "hat eine beschädigte Blockkette (Block " + std::to_string(block) + ")");
    in_.seekg(static_cast<std::streamoff>(headerSize_ + (block - 1) * data_.size()));
    if (!in_.read(data_.data(), 6))
      Fail(file_, "ist abgeschnitten (Block " + std::to_string(block) + ")");
    const auto last = static_cast<std::int16_t>(LittleEndian(data_, 4, 2));
    const std::size_t count = last < 0 ? 0 : static_cast<std::size_t>(last) / recordSize_ + 1;
    if (6 + count * recordSize_ > data_.size())
      Fail(file_, "hat einen beschädigten Block " + std::to_string(block));
    if (!in_.read(data_.data() + 6, static_cast<std::streamsize>(count * recordSize_)))
      Fail(file_, "ist abgeschnitten (Block " + std::to_string(block) + ")");
    for (std::size_t r = 0; r < count; ++r) {
      std::string_view rec(data_.data() + 6 + r * recordSize_, recordSize_);
      rows.push_back(DecodeRecord(file_, fields_, codePage_, rec, mb_));
    }
    delivered_ += count;
    next_ = LittleEndian(data_, 0, 2);
    return true;
  }

 private:
  std::filesystem::path file_;
  const std::vector<TableField>& fields_;  // the table's, which outlives its streams
  std::string codePage_;
  std::size_t headerSize_, recordSize_;
  std::uint32_t fileBlocks_, next_, expected_;
  std::uint32_t visited_ = 0;
  std::size_t delivered_ = 0;
  std::string data_;
  std::ifstream in_;
  BlobFile mb_;
};

}  // namespace

ParadoxFile ParadoxFile::Open(const std::filesystem::path& file) {
  ParadoxFile t;
  t.file_ = file;
  std::error_code ec;
  if (!std::filesystem::is_regular_file(file, ec)) Fail(file, "wurde nicht gefunden");
  std::ifstream in(file, std::ios::binary);
  if (!in) Fail(file, "kann nicht gelesen werden");
  std::string head(kBaseHeader, '\0');
  if (!in.read(head.data(), static_cast<std::streamsize>(head.size())))
    Fail(file, "ist zu kurz für einen Paradox-Kopf");
  const std::uint32_t recordSize = LittleEndian(head, kRecordSize, 2);
  const std::uint32_t headerSize = LittleEndian(head, kHeaderSize, 2);
  const int fileType = static_cast<unsigned char>(head[kFileType]);
  const int blockKb = static_cast<unsigned char>(head[kBlockKb]);
  t.version_ = static_cast<unsigned char>(head[kVersion]);
  const bool v4 = t.version_ >= 5;
  if (fileType != 0 && fileType != 2)
    Fail(file, "ist keine Paradox-Tabelle (Dateityp " + std::to_string(fileType) + ")");
  if (t.version_ < 3 || t.version_ > kVersion7 || recordSize == 0 || blockKb < 1 || blockKb > 32 ||
      headerSize < (v4 ? kDataHeader : kBaseHeader)) {
    Fail(file, "hat keinen gültigen Paradox-Kopf");
  }
  head.resize(headerSize);
  if (!in.read(head.data() + kBaseHeader, static_cast<std::streamsize>(headerSize - kBaseHeader)))
    Fail(file, "ist abgeschnitten (der Kopf ist unvollständig)");
  // Paradox 4 and later keep the key's check in the second header part.
  const std::uint32_t encryption1 = LittleEndian(head, kEncryption1, 4);
  const bool encrypted = v4 ? LittleEndian(head, kEncryption2, 4) != 0
                            : encryption1 != 0 && encryption1 != kNotEncrypted4;
  if (encrypted) Fail(file, "ist mit einem Kennwort verschlüsselt");
  t.header_ = head;
  t.blockSize_ = blockKb * 1024;
  t.keyFields_ = fileType == 0 ? static_cast<int>(LittleEndian(head, kKeyFields, 2)) : 0;
  if (v4) {
    t.codePage_ = CodePageName(LittleEndian(head, kCodePage, 2));
    if (t.codePage_.empty())
      Fail(file, "hat die unbekannte Codepage " + std::to_string(LittleEndian(head, kCodePage, 2)));
  }

  // Field types and sizes, the pointers Paradox keeps in memory, the table
  // name, then the field names one after the other.
  const std::size_t numFields = LittleEndian(head, kNumFields, 2);
  std::size_t at = v4 ? kDataHeader : kBaseHeader;
  const std::size_t names =
      at + numFields * 2 + 4 + numFields * 4 + (t.version_ >= kVersion7 ? 261 : 79);
  if (numFields == 0 || names > headerSize) Fail(file, "hat keinen gültigen Paradox-Kopf");
  std::size_t nameAt = names;
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < numFields; ++i, at += 2) {
    TableField f;
    const int code = static_cast<unsigned char>(head[at]);
    const int size = static_cast<unsigned char>(head[at + 1]);
    const std::size_t end = head.find('\0', nameAt);
    if (end == std::string::npos) Fail(file, "hat keinen gültigen Paradox-Kopf (Feldnamen)");
    std::string raw = head.substr(nameAt, end - nameAt);
    nameAt = end + 1;
    if (!Convert(t.codePage_, "UTF-8", raw, f.name)) f.name = raw;
    f.type = TypeLetter(code);
    if (f.type == '\0') {
      Fail(file, "hat im Feld '" + f.name + "' den unbekannten Feldtyp " + std::to_string(code));
    }
    f.width = StoredWidth(f.type, size);
    f.decimals = f.type == '#' ? size : 0;
    if (IsBlob(f.type) && f.width < kBlobPointer)
      Fail(file, "hat im BLOb-Feld '" + f.name + "' eine zu kleine Feldlänge");
    f.info = DescribeParadoxField(f.name, f.type, f.width, f.decimals);
    f.info.baseTable = file.stem().string();
    f.info.keyColumn = static_cast<int>(i) < t.keyFields_;
    sum += static_cast<std::uint32_t>(f.width);
    t.fields_.push_back(std::move(f));
  }
  if (sum != recordSize) {
    Fail(file, "hat eine Satzlänge von " + std::to_string(recordSize) +
                   " Bytes, die Felder ergeben " + std::to_string(sum));
  }
  t.headerSize_ = headerSize;
  t.fileBlocks_ = LittleEndian(head, kFileBlocks, 2);
  t.firstBlock_ = t.fileBlocks_ ? LittleEndian(head, kFirstBlock, 2) : 0;
  t.expected_ = LittleEndian(head, kNumRecords, 4);
  t.loaded_ = false;
  return t;
}

ParadoxFile ParadoxFile::Read(const std::filesystem::path& file) {
  ParadoxFile t = Open(file);
  t.Load();
  return t;
}

void ParadoxFile::Load() {
  if (loaded_) return;
  // Into a vector of its own, so that a failed read leaves rows_ empty.
  std::vector<ado::Row> rows;
  auto stream = Stream();
  while (stream->Next(rows)) {
  }
  rows_ = std::move(rows);
  loaded_ = true;
}

std::unique_ptr<RowStream> ParadoxFile::Stream() const {
  return std::make_unique<BlockStream>(
      file_, fields_, codePage_, headerSize_, LittleEndian(header_, kRecordSize, 2),
      static_cast<std::size_t>(blockSize_), fileBlocks_, firstBlock_, expected_);
}

namespace {

// A field's bytes for a value; BLObs outside the record are appended to
// `mb` (which starts with its header block). Raises kErrStatementRefused.
std::string EncodeField(const std::filesystem::path& file, const TableField& f, const Variant& v,
                        const std::string& codePage, std::string& mb) {
  const auto width = static_cast<std::size_t>(f.width);
  auto refuse = [&](const std::string& why) {
    Fail(file, "kann im Feld '" + f.name + "' " + why, ado::kErrStatementRefused);
  };
  if (v.IsNull() || v.IsEmpty()) return std::string(width, '\0');
  auto whole = [&](double lo, double hi) {
    const double d = v.ToDouble();
    if (d != std::floor(d) || d < lo || d > hi)
      refuse("keine Zahl " + v.ToString() + " halten (ganze Zahlen von " +
             std::to_string(static_cast<std::int64_t>(lo)) + " bis " +
             std::to_string(static_cast<std::int64_t>(hi)) + ")");
    return static_cast<std::int64_t>(d);
  };
  switch (f.type) {
    case 'A': {
      std::string bytes;
      if (!Convert("UTF-8", codePage, v.ToString(), bytes))
        refuse("den Wert '" + v.ToString() + "' nicht in " + codePage + " schreiben");
      if (bytes.size() > width)
        refuse("nur " + std::to_string(width) + " Zeichen halten, nicht '" + v.ToString() + "'");
      return bytes + std::string(width - bytes.size(), '\0');
    }
    case 'S':
      return PutFlippedInt(whole(-32767, 32767), 2);
    case 'I':
    case '+':
      return PutFlippedInt(whole(-2147483647.0, 2147483647.0), 4);
    case '$':
    case 'N':
      return PutFlippedDouble(v.ToDouble());
    case 'L':
      return std::string(1, static_cast<char>(v.ToBool() ? 0x81 : 0x80));
    case 'D':
    case 'T':
    case '@': {
      const ado::DateParts p = ado::PartsFromOleDate(v.ToDate().value);
      const std::int64_t day = DayOfParts(p), ms = MsOfDay(p);
      if (f.type == 'D') {
        if (ms != 0) refuse("nur ein Datum halten, nicht die Uhrzeit von '" + v.ToString() + "'");
        return PutFlippedInt(day, 4);
      }
      if (f.type == 'T') {
        if (day != kOleDay0)
          refuse("nur eine Uhrzeit halten, nicht das Datum von '" + v.ToString() + "'");
        return PutFlippedInt(ms, 4);
      }
      return PutFlippedDouble(static_cast<double>(day) * kMsPerDay + static_cast<double>(ms));
    }
    case '#': {
      Decimal d = v.ToDecimal();
      const bool negative = d.mantissa < 0;
      if (negative) d.mantissa = -d.mantissa;
      for (; d.scale > f.decimals; --d.scale) {
        if (d.mantissa % 10 != 0)
          refuse("nur " + std::to_string(f.decimals) + " Nachkommastellen halten, nicht " +
                 v.ToString());
        d.mantissa /= 10;
      }
      for (; d.scale < f.decimals; ++d.scale) d.mantissa *= 10;
      std::string out(17, '\0');
      out[0] = static_cast<char>((negative ? 0x40 : 0xC0) | f.decimals);
      for (int nibble = 31; nibble >= 0; --nibble) {
        int digit = static_cast<int>(d.mantissa % 10);
        d.mantissa /= 10;
        if (negative) digit = 0x0F - digit;
        out[1 + static_cast<std::size_t>(nibble) / 2] |=
            static_cast<char>(nibble % 2 ? digit : digit << 4);
      }
      if (d.mantissa != 0) refuse("die Zahl " + v.ToString() + " nicht in 32 Stellen halten");
      return out;
    }
    case 'Y': {
      std::string bytes = (v.Type() & vbArray) ? BytesOf(v) : v.ToString();
      if (bytes.size() > width)
        refuse("nur " + std::to_string(width) + " Bytes halten, nicht " +
               std::to_string(bytes.size()));
      return bytes + std::string(width - bytes.size(), '\0');
    }
    default:
      break;
  }
  assert(IsBlob(f.type));
  std::string data;
  if (v.Type() & vbArray) {
    data = BytesOf(v);
  } else if (!Convert("UTF-8", codePage, v.ToString(), data)) {
    refuse("den Wert nicht in " + codePage + " schreiben");
  }
  const std::size_t lead = width - kBlobPointer;
  std::string out = data.substr(0, std::min(lead, data.size()));
  out.resize(width, '\0');
  std::uint32_t offset = 0;
  if (data.size() > lead) {
    // One BLOb in a block of its own: type 2, the count of 4 KB blocks, the
    // length and the modification number, then the bytes.
    offset = static_cast<std::uint32_t>(mb.size()) | 0xFFu;
    const std::size_t blocks = (data.size() + 9 + kMbBlock - 1) / kMbBlock;
    std::string head(9, '\0');
    head[0] = 2;
    PutLittleEndian(head, 1, static_cast<std::uint32_t>(blocks), 2);
    PutLittleEndian(head, 3, static_cast<std::uint32_t>(data.size()), 4);
    PutLittleEndian(head, 7, 1, 2);
    mb += head + data;
    mb.resize(mb.size() + (kMbBlock - mb.size() % kMbBlock) % kMbBlock, '\0');
  }
  PutLittleEndian(out, lead, offset, 4);
  PutLittleEndian(out, lead + 4, static_cast<std::uint32_t>(data.size()), 4);
  PutLittleEndian(out, lead + 8, 1, 2);
  return out;
}

// Orders Null first, then numbers, dates and texts by value.
bool KeyLess(const ado::Row& a, const ado::Row& b, int keyFields) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(keyFields); ++i) {
    const Variant &x = a[i], &y = b[i];
    if (x.IsNull() != y.IsNull()) return x.IsNull();
    if (x.IsNull()) continue;
    if (x.Type() == vbString || y.Type() == vbString) {
      const std::string sx = x.ToString(), sy = y.ToString();
      if (sx != sy) return sx < sy;
    } else {
      const double dx = x.ToDouble(), dy = y.ToDouble();
      if (dx != dy) return dx < dy;
    }
  }
  return false;
}

void WriteFile(const std::filesystem::path& target, const std::string& bytes,
               const std::filesystem::path& table) {
  const auto temp = std::filesystem::path(target.string() + ".ketrova-neu");
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (!out || !out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
      Fail(table, "kann nicht geschrieben werden");
  }
  std::error_code ec;
  std::filesystem::rename(temp, target, ec);
  if (ec) Fail(table, "kann nicht geschrieben werden: " + ec.message());
}

// The header block of a new BLOb file.
std::string NewMbHeader() {
  std::string head(kMbBlock, '\0');
  PutLittleEndian(head, 1, 1, 2);  // blocks of this header
  PutLittleEndian(head, 3, 1, 2);  // modification count
  PutLittleEndian(head, 0x0B, kMbBlock, 2);
  PutLittleEndian(head, 0x0D, kMbBlock, 2);
  head[0x10] = 16;                       // bytes of a chunk in a shared block
  PutLittleEndian(head, 0x11, 64, 2);    // BLObs in a shared block
  PutLittleEndian(head, 0x13, 2048, 2);  // the largest BLOb of a shared block
  return head;
}

}  // namespace

void ParadoxFile::CompleteNewRow(ado::Row& row) {
  assert(loaded_ && "rows are added to a loaded table");
  for (std::size_t i = 0; i < fields_.size() && i < row.size(); ++i) {
    if (fields_[i].type != '+' || !row[i].IsNull()) continue;
    std::int32_t next = static_cast<std::int32_t>(LittleEndian(header_, kAutoInc, 4));
    for (const auto& r : rows_)
      if (!r[i].IsNull()) next = std::max(next, r[i].ToLong());
    row[i] = Variant::Long(next + 1);
  }
}

void ParadoxFile::Check(const ado::Row& row) const {
  std::string mb;
  for (std::size_t i = 0; i < fields_.size() && i < row.size(); ++i)
    EncodeField(file_, fields_[i], row[i], codePage_, mb);
}

void ParadoxFile::Write(const std::vector<ado::Row>& rows) const {
  std::vector<const ado::Row*> order;
  for (const auto& r : rows) order.push_back(&r);
  if (keyFields_ > 0) {
    std::stable_sort(order.begin(), order.end(), [this](const ado::Row* a, const ado::Row* b) {
      return KeyLess(*a, *b, keyFields_);
    });
  }
  bool hasBlob = false;
  for (const auto& f : fields_) hasBlob = hasBlob || IsBlob(f.type);
  const auto mbPath = MemoFileOf(file_, ".MB");
  std::string mb;
  if (hasBlob) {
    mb = mbPath.empty() ? std::string() : ReadWholeFile(mbPath).substr(0, kMbBlock);
    if (mb.size() != kMbBlock || mb[0] != 0) mb = NewMbHeader();
  }

  const std::size_t recordSize = LittleEndian(header_, kRecordSize, 2);
  const std::size_t perBlock = (static_cast<std::size_t>(blockSize_) - 6) / recordSize;
  assert(perBlock > 0 && "a block holds at least one record");
  const std::size_t blocks = (order.size() + perBlock - 1) / perBlock;
  if (blocks > 0xFFFF) Fail(file_, "kann nicht mehr als 65535 Blöcke halten");
  std::string out = header_;
  std::uint32_t autoInc = LittleEndian(header_, kAutoInc, 4);
  for (std::size_t b = 0; b < blocks; ++b) {
    std::string block(static_cast<std::size_t>(blockSize_), '\0');
    const std::size_t first = b * perBlock, count = std::min(perBlock, order.size() - first);
    PutLittleEndian(block, 0, b + 1 < blocks ? static_cast<std::uint32_t>(b + 2) : 0, 2);
    PutLittleEndian(block, 2, static_cast<std::uint32_t>(b), 2);
    PutLittleEndian(block, 4, static_cast<std::uint32_t>((count - 1) * recordSize), 2);
    std::size_t at = 6;
    for (std::size_t r = first; r < first + count; ++r) {
      const ado::Row& row = *order[r];
      for (std::size_t i = 0; i < fields_.size(); ++i) {
        const Variant& v = i < row.size() ? row[i] : Variant::Null();
        std::string bytes = EncodeField(file_, fields_[i], v, codePage_, mb);
        if (fields_[i].type == '+' && !v.IsNull())
          autoInc = std::max(autoInc, static_cast<std::uint32_t>(v.ToLong()));
        block.replace(at, bytes.size(), bytes);
        at += bytes.size();
      }
    }
    out += block;
  }
  PutLittleEndian(out, kNumRecords, static_cast<std::uint32_t>(order.size()), 4);
  PutLittleEndian(out, kNextBlock, static_cast<std::uint32_t>(blocks), 2);
  PutLittleEndian(out, kFileBlocks, static_cast<std::uint32_t>(blocks), 2);
  PutLittleEndian(out, kFirstBlock, blocks ? 1 : 0, 2);
  PutLittleEndian(out, kLastBlock, static_cast<std::uint32_t>(blocks), 2);
  PutLittleEndian(out, kFirstFreeBlock, 0, 2);
  PutLittleEndian(out, kAutoInc, autoInc, 4);
  if (keyFields_ > 0) {
    // The index files now describe other blocks: an advanced change counter
    // tells Paradox they are out of date.
    out[kChangeCount1] = static_cast<char>(out[kChangeCount1] + 1);
    out[kIndexUpdateRequired] = 1;
  }
  if (hasBlob) {
    PutLittleEndian(mb, 1, 1, 2);
    WriteFile(mbPath.empty() ? file_.parent_path() / (file_.stem().string() + ".mb") : mbPath, mb,
              file_);
  }
  WriteFile(file_, out, file_);
}

ParadoxFile ParadoxFile::Create(const std::filesystem::path& file, std::vector<TableField> fields) {
  ParadoxFile t;
  t.file_ = file;
  t.version_ = kVersion7;
  t.codePage_ = "CP1252";
  std::size_t recordSize = 0;
  std::string info, names;
  for (auto& f : fields) {
    const int code = TypeCode(f.type);
    assert(code != 0 && "the provider maps declarations to Paradox types");
    if (f.type == '#') f.width = 17;
    f.info = DescribeParadoxField(f.name, f.type, f.width, f.decimals);
    f.info.baseTable = file.stem().string();
    recordSize += static_cast<std::size_t>(f.width);
    info.push_back(static_cast<char>(code));
    info.push_back(static_cast<char>(f.type == '#' ? f.decimals : f.width));
    std::string raw;
    if (!Convert("UTF-8", t.codePage_, f.name, raw) || raw.size() > 25 || raw.empty()) {
      Fail(file,
           "kann den Feldnamen '" + f.name + "' nicht halten (höchstens 25 Zeichen aus " +
               t.codePage_ + ")",
           ado::kErrStatementRefused);
    }
    names += raw + '\0';
  }
  if (fields.empty() || fields.size() > 255 || recordSize > 32750)
    Fail(file, "kann diese Felder nicht halten", ado::kErrStatementRefused);
  int blockKb = 2;
  while (static_cast<std::size_t>(blockKb) * 1024 - 6 < recordSize) blockKb *= 2;
  t.blockSize_ = blockKb * 1024;

  // Header: the base part, Paradox 4's data part, field types and sizes, room
  // for the in-memory pointers, the table name, the field names, the field
  // numbers and the sort order's name.
  std::string table;
  if (!Convert("UTF-8", t.codePage_, file.stem().string(), table)) table = "table";
  table.resize(std::min<std::size_t>(table.size(), 260));
  std::string head(kDataHeader, '\0');
  PutLittleEndian(head, kRecordSize, static_cast<std::uint32_t>(recordSize), 2);
  head[kFileType] = 2;
  head[kBlockKb] = static_cast<char>(blockKb);
  PutLittleEndian(head, kNumFields, static_cast<std::uint32_t>(fields.size()), 2);
  PutLittleEndian(head, kEncryption1, kNotEncrypted4, 4);
  head[kSortOrder] = 0x62;  // ANSI international
  head[kVersion] = static_cast<char>(kVersion7);
  PutLittleEndian(head, kMaxBlocks, 1, 2);
  PutLittleEndian(head, kVersionId3, 0x0100 | kVersion7, 2);
  PutLittleEndian(head, kVersionId4, 0x0100 | kVersion7, 2);
  PutLittleEndian(head, kHighFieldId, static_cast<std::uint32_t>(fields.size() + 1), 2);
  PutLittleEndian(head, kCodePage, 1252, 2);
  head += info;
  head += std::string(4 + fields.size() * 4, '\0');
  head += table + std::string(261 - table.size(), '\0');
  head += names;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    std::string number(2, '\0');
    PutLittleEndian(number, 0, static_cast<std::uint32_t>(i + 1), 2);
    head += number;
  }
  head += std::string("ANSIINTL") + '\0';
  PutLittleEndian(head, kRealHeaderSize, static_cast<std::uint32_t>(head.size()), 2);
  const std::size_t headerSize = (head.size() + 0x7FF) / 0x800 * 0x800;
  head.resize(headerSize, '\0');
  PutLittleEndian(head, kHeaderSize, static_cast<std::uint32_t>(headerSize), 2);
  t.header_ = std::move(head);
  t.fields_ = std::move(fields);
  return t;
}

}  // namespace ketrova::xbase_provider
