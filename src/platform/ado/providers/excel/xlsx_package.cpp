#include "platform/ado/providers/excel/xlsx_package.h"

#include <cstring>
#include <map>
#include <pugixml.hpp>

#include "platform/ado/enums.h"
#include "platform/ado/providers/excel/xlsx_sheet_reader.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

// The local part of an element name ("x:row" is "row").
std::string_view Local(const char* name) {
  std::string_view n(name);
  auto colon = n.find(':');
  return colon == std::string_view::npos ? n : n.substr(colon + 1);
}

pugi::xml_node Child(pugi::xml_node node, std::string_view local) {
  for (auto c : node.children())
    if (Local(c.name()) == local) return c;
  return {};
}

// An attribute by its local name ("r:id" is found as "id" only with the prefix
// of relationships, which is why the full name is tried first).
pugi::xml_attribute Attr(pugi::xml_node node, std::string_view local) {
  for (auto a : node.attributes())
    if (Local(a.name()) == local) return a;
  return {};
}

// The relationships of a part: id to (type, resolved target).
std::map<std::string, std::pair<std::string, std::string>> Relationships(const XlsxPackage& package,
                                                                         const std::string& part) {
  std::map<std::string, std::pair<std::string, std::string>> rels;
  auto slash = part.rfind('/');
  std::string rels_name = (slash == std::string::npos ? std::string() : part.substr(0, slash + 1)) +
                          "_rels/" + part.substr(slash == std::string::npos ? 0 : slash + 1) +
                          ".rels";
  if (!package.HasEntry(rels_name)) return rels;
  std::string text = package.ReadEntry(rels_name);
  pugi::xml_document doc;
  if (!doc.load_buffer(text.data(), text.size())) package.Damaged(rels_name);
  for (auto r : doc.document_element().children()) {
    if (Local(r.name()) != "Relationship") continue;
    std::string target = r.attribute("Target").value();
    if (std::string_view(r.attribute("TargetMode").value()) == "External") continue;
    rels[r.attribute("Id").value()] = {r.attribute("Type").value(), ResolvePartName(part, target)};
  }
  return rels;
}

bool EndsWith(std::string_view s, std::string_view tail) {
  return s.size() >= tail.size() && s.substr(s.size() - tail.size()) == tail;
}

// The plain text of a string item: its <t>, or its runs' <t>, without the
// phonetic runs.
std::string ItemText(pugi::xml_node si) {
  std::string text;
  for (auto c : si.children()) {
    auto name = Local(c.name());
    if (name == "t") {
      text += c.child_value();
    } else if (name == "r") {
      if (auto t = Child(c, "t")) text += t.child_value();
    }
  }
  return DecodeOoxmlEscapes(text);
}

// "Sheet1!$A$1:$C$9", "'Meine Kunden'!$A$1:$C$9" or one cell.
bool ParseAreaFormula(std::string_view formula, std::string& sheet, CellRange& range) {
  auto bang = formula.rfind('!');
  if (bang == std::string_view::npos) return false;
  std::string_view name = formula.substr(0, bang);
  std::string_view area = formula.substr(bang + 1);
  sheet.clear();
  if (name.size() >= 2 && name.front() == '\'' && name.back() == '\'') {
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
      sheet.push_back(name[i]);
      if (name[i] == '\'' && i + 2 < name.size() && name[i + 1] == '\'') ++i;
    }
  } else {
    sheet = std::string(name);
  }
  auto colon = area.find(':');
  auto first = ParseCellRef(area.substr(0, colon));
  auto last = colon == std::string_view::npos ? first : ParseCellRef(area.substr(colon + 1));
  if (!first || !last) return false;
  range.first_column = std::min(first->column, last->column);
  range.last_column = std::max(first->column, last->column);
  range.first_row = std::min(first->row, last->row);
  range.last_row = std::max(first->row, last->row);
  return true;
}

}  // namespace

std::string ResolvePartName(const std::string& from_part, const std::string& target) {
  std::string path;
  if (!target.empty() && target.front() == '/') {
    path = target.substr(1);
  } else {
    auto slash = from_part.rfind('/');
    path = (slash == std::string::npos ? std::string() : from_part.substr(0, slash + 1)) + target;
  }
  // Folds "a/../b" and "./".
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (start <= path.size()) {
    auto end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    std::string piece = path.substr(start, end - start);
    if (piece == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!piece.empty() && piece != ".") {
      parts.push_back(piece);
    }
    start = end + 1;
  }
  std::string out;
  for (auto& p : parts) out += (out.empty() ? "" : "/") + p;
  return out;
}

std::string DecodeOoxmlEscapes(std::string_view text) {
  if (text.find("_x") == std::string_view::npos) return std::string(text);
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '_' && i + 6 < text.size() && text[i + 1] == 'x' && text[i + 6] == '_') {
      unsigned value = 0;
      bool hex = true;
      for (std::size_t k = i + 2; k < i + 6; ++k) {
        char c = text[k];
        value <<= 4;
        if (c >= '0' && c <= '9')
          value |= static_cast<unsigned>(c - '0');
        else if (c >= 'a' && c <= 'f')
          value |= static_cast<unsigned>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
          value |= static_cast<unsigned>(c - 'A' + 10);
        else
          hex = false;
      }
      if (hex) {
        // A UTF-16 unit below the surrogates, as these escapes carry.
        if (value < 0x80) {
          out.push_back(static_cast<char>(value));
        } else if (value < 0x800) {
          out.push_back(static_cast<char>(0xC0 | (value >> 6)));
          out.push_back(static_cast<char>(0x80 | (value & 0x3F)));
        } else {
          out.push_back(static_cast<char>(0xE0 | (value >> 12)));
          out.push_back(static_cast<char>(0x80 | ((value >> 6) & 0x3F)));
          out.push_back(static_cast<char>(0x80 | (value & 0x3F)));
        }
        i += 6;
        continue;
      }
    }
    out.push_back(text[i]);
  }
  return out;
}

std::string EncodeOoxmlEscapes(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  char buf[8];
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto c = static_cast<unsigned char>(text[i]);
    bool control = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
    // A text that itself looks like an escape keeps its underscore escaped.
    bool looks_escaped = c == '_' && i + 6 < text.size() && text[i + 1] == 'x' &&
                         text[i + 6] == '_' &&
                         std::isxdigit(static_cast<unsigned char>(text[i + 2])) &&
                         std::isxdigit(static_cast<unsigned char>(text[i + 3])) &&
                         std::isxdigit(static_cast<unsigned char>(text[i + 4])) &&
                         std::isxdigit(static_cast<unsigned char>(text[i + 5]));
    if (control || looks_escaped) {
      std::snprintf(buf, sizeof buf, "_x%04X_", c);
      out += buf;
    } else {
      out.push_back(static_cast<char>(c));
    }
  }
  return out;
}

XlsxPackage::XlsxPackage(const std::filesystem::path& file) : file_(file) {
  int error = 0;
  zip_.reset(zip_open(file.c_str(), ZIP_RDONLY, &error));
  if (!zip_) Damaged("zip");
  ReadWorkbook();
}

XlsxPackage::~XlsxPackage() = default;

void XlsxPackage::Damaged(const std::string& what) const {
  ThrowUnreadableWorkbook(file_, what);
}

bool XlsxPackage::HasEntry(const std::string& name) const {
  return zip_name_locate(zip_.get(), name.c_str(), 0) >= 0;
}

std::string XlsxPackage::ReadEntry(const std::string& name) const {
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat(zip_.get(), name.c_str(), 0, &st) != 0 || !(st.valid & ZIP_STAT_SIZE)) Damaged(name);
  zip_file_t* f = zip_fopen(zip_.get(), name.c_str(), 0);
  if (f == nullptr) Damaged(name);
  std::string text(st.size, '\0');
  zip_int64_t got = text.empty() ? 0 : zip_fread(f, text.data(), text.size());
  zip_fclose(f);
  if (got < 0 || static_cast<zip_uint64_t>(got) != st.size) Damaged(name);
  return text;
}

void XlsxPackage::ReadWorkbook() {
  // The package's own relationships name the workbook part.
  auto root_rels = Relationships(*this, "");
  for (auto& [id, rel] : root_rels)
    if (EndsWith(rel.first, "/officeDocument")) workbook_part_ = rel.second;
  if (workbook_part_.empty()) {
    if (!HasEntry("xl/workbook.xml")) Damaged("workbook");
    workbook_part_ = "xl/workbook.xml";
  }
  std::string text = ReadEntry(workbook_part_);
  pugi::xml_document doc;
  if (!doc.load_buffer(text.data(), text.size())) Damaged(workbook_part_);
  auto workbook = doc.document_element();
  auto rels = Relationships(*this, workbook_part_);

  if (auto pr = Child(workbook, "workbookPr")) {
    std::string_view v = pr.attribute("date1904").value();
    date1904_ = v == "1" || v == "true";
  }
  for (auto sheet : Child(workbook, "sheets").children()) {
    if (Local(sheet.name()) != "sheet") continue;
    auto rel = rels.find(Attr(sheet, "id").value());
    if (rel == rels.end() || !EndsWith(rel->second.first, "/worksheet")) continue;
    SheetInfo info;
    info.name = sheet.attribute("name").value();
    info.part = rel->second.second;
    sheets_.push_back(std::move(info));
  }
  for (auto dn : Child(workbook, "definedNames").children()) {
    if (Local(dn.name()) != "definedName") continue;
    std::string name = dn.attribute("name").value();
    if (name.starts_with("_xlnm.") || dn.attribute("localSheetId")) continue;
    std::string sheet;
    DefinedName entry;
    entry.name = name;
    if (!ParseAreaFormula(dn.child_value(), sheet, entry.range)) continue;
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
      if (sheets_[i].name == sheet) {
        entry.sheet = i;
        names_.push_back(entry);
        break;
      }
    }
  }
  for (auto& [id, rel] : rels) {
    if (EndsWith(rel.first, "/styles")) ReadStyles(rel.second);
    if (EndsWith(rel.first, "/sharedStrings")) ReadSharedStrings(rel.second);
  }
}

void XlsxPackage::ReadStyles(const std::string& part) {
  if (!HasEntry(part)) return;
  std::string text = ReadEntry(part);
  pugi::xml_document doc;
  if (!doc.load_buffer(text.data(), text.size())) Damaged(part);
  auto root = doc.document_element();
  std::map<int, NumberKind> custom;
  for (auto f : Child(root, "numFmts").children()) {
    if (Local(f.name()) != "numFmt") continue;
    custom[f.attribute("numFmtId").as_int()] = KindOfFormatCode(f.attribute("formatCode").value());
  }
  for (auto xf : Child(root, "cellXfs").children()) {
    if (Local(xf.name()) != "xf") continue;
    int id = xf.attribute("numFmtId").as_int();
    auto it = custom.find(id);
    style_kinds_.push_back(it != custom.end() ? it->second : KindOfBuiltinFormat(id));
  }
}

void XlsxPackage::ReadSharedStrings(const std::string& part) {
  if (!HasEntry(part)) return;
  std::string text = ReadEntry(part);
  pugi::xml_document doc;
  if (!doc.load_buffer_inplace(text.data(), text.size())) Damaged(part);
  for (auto si : doc.document_element().children())
    if (Local(si.name()) == "si") shared_strings_.push_back(ItemText(si));
}

std::unique_ptr<RowReader> XlsxPackage::OpenSheet(std::size_t sheet) const {
  return std::make_unique<XlsxRowReader>(*this, sheets_.at(sheet).part);
}

}  // namespace ketrova::excel
