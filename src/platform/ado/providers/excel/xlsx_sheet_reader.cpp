#include "platform/ado/providers/excel/xlsx_sheet_reader.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

#include "platform/ado/providers/excel/xlsx_package.h"

namespace ketrova::excel {

namespace {

constexpr std::size_t kChunk = 16 * 1024;

std::string_view Local(const XML_Char* name) {
  std::string_view n(name);
  auto colon = n.find(':');
  return colon == std::string_view::npos ? n : n.substr(colon + 1);
}

const XML_Char* Attribute(const XML_Char** attrs, std::string_view local) {
  for (int i = 0; attrs[i]; i += 2)
    if (Local(attrs[i]) == local) return attrs[i + 1];
  return nullptr;
}

}  // namespace

XlsxRowReader::XlsxRowReader(const XlsxPackage& package, const std::string& part)
    : package_(package), part_(part) {
  entry_ = zip_fopen(package.zip_.get(), part.c_str(), 0);
  if (entry_ == nullptr) package.Damaged(part);
  parser_ = XML_ParserCreate(nullptr);
  if (parser_ == nullptr) {
    zip_fclose(entry_);
    package.Damaged("expat");
  }
  XML_SetUserData(parser_, this);
  XML_SetElementHandler(parser_, OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser_, OnText);
}

XlsxRowReader::~XlsxRowReader() {
  XML_ParserFree(parser_);
  zip_fclose(entry_);
}

bool XlsxRowReader::Next(RawRow& row) {
  char buffer[kChunk];
  while (ready_.empty() && !done_) {
    zip_int64_t got = zip_fread(entry_, buffer, sizeof buffer);
    if (got < 0) package_.Damaged(part_);
    done_ = got == 0;
    if (XML_Parse(parser_, buffer, static_cast<int>(got), done_ ? 1 : 0) != XML_STATUS_OK) {
      package_.Damaged(part_ + ", Zeile " + std::to_string(XML_GetCurrentLineNumber(parser_)) +
                       ": " + XML_ErrorString(XML_GetErrorCode(parser_)));
    }
  }
  if (ready_.empty()) return false;
  row = std::move(ready_.front());
  ready_.pop_front();
  return true;
}

std::optional<std::pair<int, int>> XlsxRowReader::RemainingColumns() {
  // The rows parsed but not handed out yet count too, and the row being parsed.
  ready_.push_back(std::move(row_));
  row_ = RawRow{};
  for (const auto& r : ready_)
    for (const auto& c : r.cells) WidenExtent(extent_, c.column);
  ready_.clear();
  columns_only_ = true;
  XML_SetCharacterDataHandler(parser_, nullptr);
  RawRow none;
  Next(none);
  return extent_;
}

void XMLCALL XlsxRowReader::OnStart(void* self, const XML_Char* name, const XML_Char** attrs) {
  static_cast<XlsxRowReader*>(self)->Start(Local(name), attrs);
}
void XMLCALL XlsxRowReader::OnEnd(void* self, const XML_Char* name) {
  static_cast<XlsxRowReader*>(self)->End(Local(name));
}
void XMLCALL XlsxRowReader::OnText(void* self, const XML_Char* text, int length) {
  auto* r = static_cast<XlsxRowReader*>(self);
  if (r->in_value_ || (r->in_inline_text_ && !r->in_phonetic_))
    r->text_.append(text, static_cast<std::size_t>(length));
}

void XlsxRowReader::Start(std::string_view name, const XML_Char** attrs) {
  if (name == "c") {
    cell_ = RawCell{};
    const XML_Char* ref = Attribute(attrs, "r");
    auto parsed = ref ? ParseCellRef(ref) : std::nullopt;
    cell_.column = parsed ? parsed->column : last_column_ + 1;
    last_column_ = cell_.column;
    const XML_Char* t = Attribute(attrs, "t");
    type_ = t ? t : "n";
    const XML_Char* s = Attribute(attrs, "s");
    cell_.value.style = s ? static_cast<std::uint32_t>(std::strtoul(s, nullptr, 10)) : 0;
    text_.clear();
    has_value_ = false;
  } else if (name == "v") {
    in_value_ = true;
    has_value_ = true;
    text_.clear();
  } else if (name == "is") {
    in_inline_ = true;
    has_value_ = true;
    text_.clear();
  } else if (name == "t" && in_inline_) {
    in_inline_text_ = true;
  } else if (name == "rPh") {
    in_phonetic_ = true;
  } else if (name == "row") {
    row_ = RawRow{};
    const XML_Char* r = Attribute(attrs, "r");
    row_.row = r ? std::strtoll(r, nullptr, 10) : last_row_ + 1;
    if (row_.row <= 0) row_.row = last_row_ + 1;
    last_row_ = row_.row;
    last_column_ = 0;
  } else if (name == "dimension") {
    const XML_Char* ref = Attribute(attrs, "ref");
    if (ref) {
      std::string_view area(ref);
      auto colon = area.find(':');
      auto first = ParseCellRef(area.substr(0, colon));
      auto last = colon == std::string_view::npos ? first : ParseCellRef(area.substr(colon + 1));
      if (first && last) {
        used = CellRange{first->column, last->column, first->row, last->row};
      }
    }
  }
}

void XlsxRowReader::End(std::string_view name) {
  if (name == "v") {
    in_value_ = false;
  } else if (name == "t") {
    in_inline_text_ = false;
  } else if (name == "rPh") {
    in_phonetic_ = false;
  } else if (name == "is") {
    in_inline_ = false;
  } else if (name == "c") {
    FinishCell();
  } else if (name == "row") {
    if (!row_.cells.empty() && !columns_only_) ready_.push_back(std::move(row_));
    row_ = RawRow{};
  }
}

void XlsxRowReader::FinishCell() {
  if (!has_value_) return;
  if (columns_only_) {
    WidenExtent(extent_, cell_.column);
    return;
  }
  CellValue& v = cell_.value;
  if (type_ == "s") {
    char* end = nullptr;
    unsigned long index = std::strtoul(text_.c_str(), &end, 10);
    const auto& strings = package_.shared_strings_;
    if (end == text_.c_str() || index >= strings.size())
      package_.Damaged(part_ + ": " + ColumnLetters(cell_.column) + std::to_string(row_.row));
    v.kind = CellValue::Kind::kText;
    v.text = strings[index];
  } else if (type_ == "inlineStr" || type_ == "str") {
    v.kind = CellValue::Kind::kText;
    v.text = DecodeOoxmlEscapes(text_);
  } else if (type_ == "b") {
    v.kind = CellValue::Kind::kBoolean;
    v.number = text_ == "1" || text_ == "true" ? 1 : 0;
  } else if (type_ == "e") {
    v.kind = CellValue::Kind::kError;
    v.text = text_;
  } else if (type_ == "d") {
    // An ISO date written as such: kept as its text, the engine's own form.
    v.kind = CellValue::Kind::kText;
    v.text = text_;
    if (v.text.size() > 19) v.text.resize(19);
    if (v.text.size() > 10 && v.text[10] == 'T') v.text[10] = ' ';
  } else {
    if (text_.empty()) return;
    auto [end, ec] = std::from_chars(text_.data(), text_.data() + text_.size(), v.number);
    if (ec != std::errc() || end != text_.data() + text_.size()) {
      v.kind = CellValue::Kind::kText;
      v.text = text_;
    } else {
      v.kind = CellValue::Kind::kNumber;
    }
  }
  row_.cells.push_back(std::move(cell_));
}

}  // namespace ketrova::excel
