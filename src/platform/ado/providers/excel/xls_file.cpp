#include "platform/ado/providers/excel/xls_file.h"

#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-stdio.h>
#include <gsf/gsf-input.h>
#include <gsf/gsf-utils.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <optional>

#include "platform/ado/enums.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr const char* kSource = "Ketrova.Excel";

enum : std::uint16_t {
  kFormula = 0x0006,
  kEof = 0x000A,
  kExternSheet = 0x0017,
  kName = 0x0018,
  kDateMode = 0x0022,
  kDefColWidth = 0x0055,
  kColInfo = 0x007D,
  kMergedCells = 0x00E5,
  kFilePass = 0x002F,
  kContinue = 0x003C,
  kBoundSheet = 0x0085,
  kMulRk = 0x00BD,
  kRString = 0x00D6,
  kXf = 0x00E0,
  kSst = 0x00FC,
  kLabelSst = 0x00FD,
  kDimension = 0x0200,
  kNumber = 0x0203,
  kLabel = 0x0204,
  kBoolErr = 0x0205,
  kString = 0x0207,
  kRk = 0x027E,
  kFormat = 0x041E,
  kBof = 0x0809,
};

// A GLib object's one owner.
struct Unref {
  void operator()(void* object) const {
    if (object) g_object_unref(object);
  }
};
template <typename T>
using GsfPtr = std::unique_ptr<T, Unref>;

std::uint16_t U16(std::string_view d, std::size_t at) {
  if (at + 2 > d.size()) return 0;
  return static_cast<std::uint16_t>(static_cast<unsigned char>(d[at]) |
                                    static_cast<unsigned char>(d[at + 1]) << 8);
}
std::uint32_t U32(std::string_view d, std::size_t at) {
  return U16(d, at) | static_cast<std::uint32_t>(U16(d, at + 2)) << 16;
}
double F64(std::string_view d, std::size_t at) {
  double v = 0;
  if (at + 8 <= d.size()) std::memcpy(&v, d.data() + at, 8);  // little-endian hosts
  return v;
}

// A number in the packed form of RK records.
double RkValue(std::uint32_t rk) {
  double v;
  if (rk & 0x02) {
    v = static_cast<double>(static_cast<std::int32_t>(rk) >> 2);
  } else {
    std::uint64_t bits = static_cast<std::uint64_t>(rk & 0xFFFFFFFCu) << 32;
    std::memcpy(&v, &bits, 8);
  }
  return (rk & 0x01) ? v / 100 : v;
}

std::string ErrorText(std::uint8_t code) {
  switch (code) {
    case 0x00:
      return "#NULL!";
    case 0x07:
      return "#DIV/0!";
    case 0x0F:
      return "#VALUE!";
    case 0x17:
      return "#REF!";
    case 0x1D:
      return "#NAME?";
    case 0x24:
      return "#NUM!";
    case 0x2A:
      return "#N/A";
  }
  return "#ERR";
}

// One record with the CONTINUE records that follow it.
struct Record {
  std::uint16_t type = 0;
  std::vector<std::string_view> parts;
  std::string_view data() const { return parts.empty() ? std::string_view() : parts.front(); }
};

class Records {
 public:
  Records(std::string_view stream, std::size_t at) : stream_(stream), at_(at) {}

  // False at the end of the stream; a record cut short ends it too.
  bool Next(Record& r) {
    r.parts.clear();
    if (!Header(r.type)) return false;
    r.parts.push_back(Body());
    std::uint16_t next = 0;
    while (Peek(next) && next == kContinue) {
      Header(next);
      r.parts.push_back(Body());
    }
    return true;
  }
  bool cut() const { return cut_; }

 private:
  bool Peek(std::uint16_t& type) const {
    if (at_ + 4 > stream_.size()) return false;
    type = U16(stream_, at_);
    return true;
  }
  bool Header(std::uint16_t& type) {
    if (at_ + 4 > stream_.size()) return false;
    type = U16(stream_, at_);
    length_ = U16(stream_, at_ + 2);
    at_ += 4;
    if (at_ + length_ > stream_.size()) {
      cut_ = true;
      length_ = stream_.size() - at_;
    }
    return true;
  }
  std::string_view Body() {
    std::string_view body = stream_.substr(at_, length_);
    at_ += length_;
    return body;
  }

  std::string_view stream_;
  std::size_t at_;
  std::size_t length_ = 0;
  bool cut_ = false;
};

// Reads across a record and its CONTINUE parts. Characters of a string that
// runs into the next part start there with a new option byte.
class Pieces {
 public:
  explicit Pieces(const std::vector<std::string_view>& parts, std::size_t skip = 0)
      : parts_(parts) {
    Skip(skip);
  }

  bool ok() const { return ok_; }
  std::uint8_t Byte() {
    if (!Ready()) return 0;
    return static_cast<std::uint8_t>(parts_[part_][at_++]);
  }
  std::uint16_t U16() {
    std::uint16_t lo = Byte();
    return static_cast<std::uint16_t>(lo | Byte() << 8);
  }
  std::uint32_t U32() {
    std::uint32_t lo = U16();
    return lo | static_cast<std::uint32_t>(U16()) << 16;
  }
  void Skip(std::size_t n) {
    while (n > 0 && Ready()) {
      std::size_t take = std::min(n, parts_[part_].size() - at_);
      at_ += take;
      n -= take;
    }
  }
  // A string with a 16-bit (or given) character count and its option byte.
  std::string String(std::optional<std::size_t> count = std::nullopt) {
    std::size_t cch = count ? *count : U16();
    std::uint8_t flags = Byte();
    std::uint16_t runs = (flags & 0x08) ? U16() : 0;
    std::uint32_t extended = (flags & 0x04) ? U32() : 0;
    std::u16string units;
    units.reserve(cch);
    bool wide = flags & 0x01;
    while (units.size() < cch && ok_) {
      if (at_ >= parts_[part_].size()) {
        if (part_ + 1 >= parts_.size()) {
          ok_ = false;
          break;
        }
        ++part_;
        at_ = 0;
        wide = Byte() & 0x01;
        continue;
      }
      units.push_back(wide ? static_cast<char16_t>(U16()) : static_cast<char16_t>(Byte()));
    }
    Skip(4u * runs + extended);
    return ado::Utf16ToUtf8(units);
  }

 private:
  bool Ready() {
    while (part_ < parts_.size() && at_ >= parts_[part_].size()) {
      ++part_;
      at_ = 0;
    }
    if (part_ >= parts_.size()) ok_ = false;
    return ok_;
  }

  const std::vector<std::string_view>& parts_;
  std::size_t part_ = 0;
  std::size_t at_ = 0;
  bool ok_ = true;
};

class XlsRowReader : public RowReader {
 public:
  explicit XlsRowReader(std::vector<RawRow> rows) : rows_(std::move(rows)) {}
  bool Next(RawRow& row) override {
    if (next_ >= rows_.size()) return false;
    row = std::move(rows_[next_++]);
    return true;
  }

 private:
  std::vector<RawRow> rows_;
  std::size_t next_ = 0;
};

}  // namespace

XlsFile::XlsFile(const std::filesystem::path& file) : file_(file) {
  static const bool initialised = (gsf_init(), true);
  (void)initialised;
  GError* error = nullptr;
  GsfPtr<GsfInput> input(gsf_input_stdio_new(file.c_str(), &error));
  if (error) g_clear_error(&error);
  if (!input) Damaged("Datei");
  GsfPtr<GsfInfile> document(gsf_infile_msole_new(input.get(), &error));
  if (error) g_clear_error(&error);
  if (!document) Damaged("Verbunddokument");
  // The stream by its name, whatever case a writer gave it.
  auto child = [&](std::string_view wanted) -> GsfPtr<GsfInput> {
    for (int i = 0; i < gsf_infile_num_children(document.get()); ++i) {
      const char* name = gsf_infile_name_by_index(document.get(), i);
      if (name && std::string_view(name).size() == wanted.size() &&
          std::equal(wanted.begin(), wanted.end(), name, [](char a, char b) {
            return std::tolower(static_cast<unsigned char>(a)) ==
                   std::tolower(static_cast<unsigned char>(b));
          }))
        return GsfPtr<GsfInput>(gsf_infile_child_by_index(document.get(), i));
    }
    return nullptr;
  };
  GsfPtr<GsfInput> stream = child("Workbook");
  if (!stream) {
    if (child("Book")) {
      throw VbError(ado::kErrGeneral,
                    "Die Excel-Arbeitsmappe '" + file.string() +
                        "' hat ein Format vor Excel 97 und wird nicht gelesen",
                    kSource);
    }
    Damaged("Workbook");
  }
  const gsf_off_t size = gsf_input_size(stream.get());
  stream_.resize(static_cast<std::size_t>(size));
  if (size > 0 && gsf_input_read(stream.get(), static_cast<std::size_t>(size),
                                 reinterpret_cast<guint8*>(stream_.data())) == nullptr) {
    Damaged("Workbook");
  }
  ReadGlobals();
}

XlsFile::~XlsFile() = default;

void XlsFile::Damaged(const std::string& what) const {
  ThrowUnreadableWorkbook(file_, what);
}

NumberKind XlsFile::StyleKind(std::uint32_t style) const {
  if (style >= formats_.xf_format.size()) return NumberKind::kPlain;
  const std::uint16_t id = formats_.xf_format[style];
  auto code = formats_.codes.find(id);
  return code != formats_.codes.end() ? KindOfFormatCode(code->second) : KindOfBuiltinFormat(id);
}

void XlsFile::ReadGlobals() {
  Records records(stream_, 0);
  Record r;
  if (!records.Next(r) || r.type != kBof) Damaged("BOF");
  if (U16(r.data(), 0) != 0x0600) {
    throw VbError(ado::kErrGeneral,
                  "Die Excel-Arbeitsmappe '" + file_.string() +
                      "' hat ein Format vor Excel 97 und wird nicht gelesen",
                  kSource);
  }
  struct Xti {
    std::uint16_t first = 0;
    std::uint16_t last = 0;
  };
  std::vector<Xti> xtis;
  std::vector<int> worksheet_of;  // the worksheet of each sheet entry, -1 for others
  struct RawName {
    std::string name;
    std::vector<std::string_view> parts;
    std::size_t formula = 0;  // where the formula starts
    std::uint16_t length = 0;
  };
  std::vector<RawName> raw_names;
  while (records.Next(r)) {
    const std::string_view d = r.data();
    switch (r.type) {
      case kFilePass:
        throw VbError(ado::kErrGeneral,
                      "Die Excel-Arbeitsmappe '" + file_.string() +
                          "' ist mit einem Kennwort verschlüsselt und kann nicht gelesen werden",
                      kSource);
      case kDateMode:
        date1904_ = U16(d, 0) == 1;
        break;
      case kFormat: {
        Pieces p(r.parts, 2);
        formats_.codes[U16(d, 0)] = p.String();
        break;
      }
      case kXf:
        formats_.xf_format.push_back(U16(d, 2));
        break;
      case kBoundSheet: {
        const auto cch = static_cast<std::uint8_t>(d.size() > 6 ? d[6] : 0);
        Pieces p(r.parts, 7);
        std::string name = p.String(cch);
        if (d.size() > 5 && d[5] == 0) {
          worksheet_of.push_back(static_cast<int>(sheets_.size()));
          sheets_.push_back(std::move(name));
          sheet_offsets_.push_back(U32(d, 0));
        } else {
          worksheet_of.push_back(-1);  // a chart or macro sheet
        }
        break;
      }
      case kExternSheet: {
        Pieces p(r.parts);
        std::uint16_t count = p.U16();
        for (std::uint16_t i = 0; i < count && p.ok(); ++i) {
          p.U16();
          Xti x;
          x.first = p.U16();
          x.last = p.U16();
          xtis.push_back(x);
        }
        break;
      }
      case kName: {
        const std::uint16_t flags = U16(d, 0);
        const auto cch = static_cast<std::uint8_t>(d.size() > 3 ? d[3] : 0);
        const std::uint16_t cce = U16(d, 4);
        const std::uint16_t itab = U16(d, 8);
        if ((flags & 0x0020) || itab != 0 || d.size() < 15) break;  // built-in or sheet-local
        const bool wide = d[14] & 0x01;
        Pieces p(r.parts, 14);
        RawName n;
        n.name = p.String(cch);
        n.parts = r.parts;
        n.formula = 15 + static_cast<std::size_t>(cch) * (wide ? 2 : 1);
        n.length = cce;
        raw_names.push_back(std::move(n));
        break;
      }
      case kSst: {
        Pieces p(r.parts, 4);
        const std::uint32_t unique = p.U32();
        strings_.reserve(std::min<std::uint32_t>(unique, 1u << 20));
        for (std::uint32_t i = 0; i < unique && p.ok(); ++i) strings_.push_back(p.String());
        if (!p.ok()) Damaged("SST");
        break;
      }
      default:
        break;
    }
    if (r.type == kEof) break;
  }
  if (records.cut()) Damaged("Workbook");
  // A name over one rectangle of one worksheet is a table.
  for (const auto& n : raw_names) {
    std::string_view f = n.parts.front();
    if (n.formula + n.length > f.size() || n.length < 7) continue;
    f = f.substr(n.formula, n.length);
    const auto token = static_cast<std::uint8_t>(f[0]);
    CellRange range;
    std::uint16_t ixti = U16(f, 1);
    if ((token == 0x3B || token == 0x5B || token == 0x7B) && n.length == 11) {
      range.first_row = U16(f, 3) + 1;
      range.last_row = U16(f, 5) + 1;
      range.first_column = (U16(f, 7) & 0x00FF) + 1;
      range.last_column = (U16(f, 9) & 0x00FF) + 1;
    } else if ((token == 0x3A || token == 0x5A || token == 0x7A) && n.length == 7) {
      range.first_row = range.last_row = U16(f, 3) + 1;
      range.first_column = range.last_column = (U16(f, 5) & 0x00FF) + 1;
    } else {
      continue;
    }
    if (ixti >= xtis.size() || xtis[ixti].first != xtis[ixti].last ||
        xtis[ixti].first >= worksheet_of.size() || worksheet_of[xtis[ixti].first] < 0)
      continue;
    names_.push_back(
        DefinedName{n.name, static_cast<std::size_t>(worksheet_of[xtis[ixti].first]), range});
  }
}

std::unique_ptr<RowReader> XlsFile::OpenSheet(std::size_t sheet,
                                              std::vector<XlsRecord>* formatting) const {
  const std::size_t start = sheet_offsets_.at(sheet);
  if (start >= stream_.size()) Damaged(sheets_[sheet]);
  Records records(stream_, start);
  Record r;
  if (!records.Next(r) || r.type != kBof) Damaged(sheets_[sheet]);
  std::map<std::int64_t, std::map<int, CellValue>> cells;
  auto put = [&](std::uint16_t row, std::uint16_t column, CellValue v) {
    cells[std::int64_t{row} + 1][column + 1] = std::move(v);
  };
  auto number = [](double n, std::uint16_t xf) {
    CellValue v;
    v.kind = CellValue::Kind::kNumber;
    v.number = n;
    v.style = xf;
    return v;
  };
  auto text = [](std::string t, std::uint16_t xf) {
    CellValue v;
    v.kind = CellValue::Kind::kText;
    v.text = std::move(t);
    v.style = xf;
    return v;
  };
  std::optional<CellRange> used;
  std::optional<std::pair<std::uint16_t, std::uint16_t>> formula_string;  // awaiting STRING
  std::uint16_t formula_xf = 0;
  int depth = 1;  // charts embedded in the sheet bring their own BOF and EOF
  while (depth > 0 && records.Next(r)) {
    const std::string_view d = r.data();
    if (r.type == kBof) {
      ++depth;
      continue;
    }
    if (r.type == kEof) {
      --depth;
      continue;
    }
    if (depth > 1) continue;
    if (formatting && (r.type == kDefColWidth || r.type == kColInfo || r.type == kMergedCells)) {
      XlsRecord kept{r.type, {}};
      for (auto part : r.parts) kept.data += part;
      formatting->push_back(std::move(kept));
    }
    const std::uint16_t row = U16(d, 0);
    const std::uint16_t column = U16(d, 2);
    const std::uint16_t xf = U16(d, 4);
    switch (r.type) {
      case kDimension:
        // Rows and columns from the first to one past the last.
        if (U32(d, 4) > U32(d, 0) && U16(d, 10) > U16(d, 8))
          used = CellRange{U16(d, 8) + 1, U16(d, 10), std::int64_t{U32(d, 0)} + 1, U32(d, 4)};
        break;
      case kNumber:
        put(row, column, number(F64(d, 6), xf));
        break;
      case kRk:
        put(row, column, number(RkValue(U32(d, 6)), xf));
        break;
      case kMulRk:
        for (std::size_t at = 4, c = column; d.size() >= 6 && at + 6 <= d.size() - 2; at += 6, ++c)
          put(row, static_cast<std::uint16_t>(c), number(RkValue(U32(d, at + 2)), U16(d, at)));
        break;
      case kLabelSst: {
        const std::uint32_t index = U32(d, 6);
        if (index >= strings_.size()) Damaged(sheets_[sheet] + ": SST");
        put(row, column, text(strings_[index], xf));
        break;
      }
      case kLabel:
      case kRString: {
        Pieces p(r.parts, 6);
        std::string t = p.String();
        put(row, column, text(std::move(t), xf));
        break;
      }
      case kBoolErr: {
        CellValue v;
        v.style = xf;
        const auto value = static_cast<std::uint8_t>(d.size() > 6 ? d[6] : 0);
        if (d.size() > 7 && d[7] != 0) {
          v.kind = CellValue::Kind::kError;
          v.text = ErrorText(value);
        } else {
          v.kind = CellValue::Kind::kBoolean;
          v.number = value != 0 ? 1 : 0;
        }
        put(row, column, std::move(v));
        break;
      }
      case kFormula: {
        if (d.size() < 14) break;
        if (U16(d, 12) != 0xFFFF) {
          put(row, column, number(F64(d, 6), xf));
          break;
        }
        const auto kind = static_cast<std::uint8_t>(d[6]);
        const auto value = static_cast<std::uint8_t>(d[8]);
        CellValue v;
        v.style = xf;
        if (kind == 0) {
          formula_string.emplace(row, column);
          formula_xf = xf;
          break;
        }
        if (kind == 1) {
          v.kind = CellValue::Kind::kBoolean;
          v.number = value != 0 ? 1 : 0;
        } else if (kind == 2) {
          v.kind = CellValue::Kind::kError;
          v.text = ErrorText(value);
        } else {
          break;  // an empty text
        }
        put(row, column, std::move(v));
        break;
      }
      case kString:
        if (formula_string) {
          Pieces p(r.parts);
          put(formula_string->first, formula_string->second, text(p.String(), formula_xf));
          formula_string.reset();
        }
        break;
      default:
        break;
    }
  }
  if (records.cut()) Damaged(sheets_[sheet]);
  std::vector<RawRow> rows;
  rows.reserve(cells.size());
  for (auto& [number_of_row, row_cells] : cells) {
    RawRow raw;
    raw.row = number_of_row;
    for (auto& [c, v] : row_cells) {
      if (v.kind == CellValue::Kind::kText && v.text.empty()) continue;
      raw.cells.push_back(RawCell{c, std::move(v)});
    }
    if (!raw.cells.empty()) rows.push_back(std::move(raw));
  }
  auto reader = std::make_unique<XlsRowReader>(std::move(rows));
  reader->used = used;
  return reader;
}

}  // namespace ketrova::excel
