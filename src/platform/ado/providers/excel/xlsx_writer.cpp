#include "platform/ado/providers/excel/xlsx_writer.h"

#include <zip.h>

#include <charconv>
#include <functional>
#include <map>
#include <memory>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "platform/ado/enums.h"
#include "platform/ado/providers/excel/workbook.h"
#include "platform/ado/providers/excel/xlsx_package.h"
#include "support/vb_error.h"
#include "support/xml_text.h"

namespace ketrova::excel {

namespace {

constexpr const char* kSource = "Ketrova.Excel";
constexpr const char* kMainNs = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr const char* kRelNs =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr const char* kWorksheetType =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet";
constexpr const char* kWorksheetContent =
    "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml";
constexpr const char* kXmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

// Text in an attribute or an element: quotes, line ends and tabs escaped as
// well, which element text takes as they are meant.
std::string Escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  AppendXmlEscaped(out, text, true);
  return out;
}

std::string NumberText(double v) {
  char buf[64];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, end);
}

// The XML of one cell, empty for an empty one.
std::string CellXml(const CellValue& v, int column, std::int64_t row) {
  const std::string ref = ColumnLetters(column) + std::to_string(row);
  const std::string style = v.style ? " s=\"" + std::to_string(v.style) + "\"" : "";
  switch (v.kind) {
    case CellValue::Kind::kEmpty:
      return {};
    case CellValue::Kind::kNumber:
      return "<c r=\"" + ref + "\"" + style + "><v>" + NumberText(v.number) + "</v></c>";
    case CellValue::Kind::kBoolean:
      return "<c r=\"" + ref + "\"" + style + " t=\"b\"><v>" + (v.number != 0 ? "1" : "0") +
             "</v></c>";
    case CellValue::Kind::kText:
    case CellValue::Kind::kError:
      return "<c r=\"" + ref + "\"" + style + " t=\"inlineStr\"><is><t xml:space=\"preserve\">" +
             Escaped(EncodeOoxmlEscapes(v.text)) + "</t></is></c>";
  }
  return {};
}

std::string RowXml(const std::vector<CellValue>& values, int first_column, std::int64_t row) {
  std::string xml = "<row r=\"" + std::to_string(row) + "\">";
  for (std::size_t i = 0; i < values.size(); ++i)
    xml += CellXml(values[i], first_column + static_cast<int>(i), row);
  return xml + "</row>";
}

std::string_view Local(const char* name) {
  std::string_view n(name);
  auto colon = n.find(':');
  return colon == std::string_view::npos ? n : n.substr(colon + 1);
}

std::string PrefixOf(const char* name) {
  std::string_view n(name);
  auto colon = n.find(':');
  return colon == std::string_view::npos ? std::string() : std::string(n.substr(0, colon + 1));
}

pugi::xml_node Child(pugi::xml_node node, std::string_view local) {
  for (auto c : node.children())
    if (Local(c.name()) == local) return c;
  return {};
}

bool HoldsValue(pugi::xml_node cell) {
  return Child(cell, "v") || Child(cell, "is");
}

std::string Serialized(const pugi::xml_document& doc) {
  std::ostringstream out;
  doc.save(out, "", pugi::format_raw);
  return out.str();
}

constexpr unsigned kParse = pugi::parse_default | pugi::parse_ws_pcdata | pugi::parse_declaration;

// Parses a fragment written without prefix and places its nodes, with the
// sheet's own prefix, after `after`, or before `before`, or at the end.
void InsertFragment(pugi::xml_node parent, const std::string& xml, const std::string& prefix,
                    pugi::xml_node after, pugi::xml_node before = {}) {
  pugi::xml_document fragment;
  fragment.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  std::function<void(pugi::xml_node)> prefixed = [&](pugi::xml_node n) {
    if (n.type() == pugi::node_element && !prefix.empty()) n.set_name((prefix + n.name()).c_str());
    for (auto c : n.children()) prefixed(c);
  };
  for (auto n : fragment.children()) {
    prefixed(n);
    pugi::xml_node copy;
    if (after)
      copy = parent.insert_copy_after(n, after);
    else if (before)
      copy = parent.insert_copy_before(n, before);
    else
      copy = parent.append_copy(n);
    after = copy;
  }
}

int CellColumn(pugi::xml_node cell, int previous) {
  auto ref = ParseCellRef(cell.attribute("r").value());
  return ref ? ref->column : previous + 1;
}

// Edits one sheet's XML: rows removed (those below moving up), rows replaced,
// rows appended below the last row that holds a value.
std::string EditedSheet(const std::string& original, const TableLayout& layout,
                        const std::map<std::int64_t, std::vector<CellValue>>& replaced,
                        const std::set<std::int64_t>& removed,
                        const std::map<std::int64_t, std::vector<CellValue>>& appended,
                        const std::function<void(const std::string&)>& fail, CellRange& used) {
  pugi::xml_document doc;
  if (!doc.load_buffer(original.data(), original.size(), kParse)) fail("worksheet");
  pugi::xml_node root = doc.document_element();
  const std::string prefix = PrefixOf(root.name());
  pugi::xml_node data = Child(root, "sheetData");
  if (!data) fail("sheetData");

  std::vector<pugi::xml_node> rows;
  std::int64_t number = 0;
  for (auto r : data.children()) {
    if (Local(r.name()) != "row") continue;
    std::int64_t n = r.attribute("r").as_llong(0);
    number = n > 0 ? n : number + 1;
    if (!r.attribute("r")) r.append_attribute("r");
    r.attribute("r").set_value(std::to_string(number).c_str());
    rows.push_back(r);
  }
  auto renumber_cells = [](pugi::xml_node row, std::int64_t n) {
    int column = 0;
    for (auto c : row.children()) {
      if (Local(c.name()) != "c") continue;
      auto ref = ParseCellRef(c.attribute("r").value());
      column = ref ? ref->column : column + 1;
      if (!c.attribute("r")) c.append_attribute("r");
      c.attribute("r").set_value((ColumnLetters(column) + std::to_string(n)).c_str());
    }
  };

  // Rows replaced: their table cells are written anew, the rest stays.
  for (auto row : rows) {
    std::int64_t n = row.attribute("r").as_llong();
    auto it = replaced.find(n);
    if (it == replaced.end()) continue;
    for (std::size_t i = 0; i < it->second.size(); ++i) {
      const int col = layout.first_column + static_cast<int>(i);
      pugi::xml_node old, next;
      int column = 0;
      for (auto c : row.children()) {
        if (Local(c.name()) != "c") continue;
        column = CellColumn(c, column);
        if (column == col) old = c;
        if (column > col && !next) next = c;
      }
      CellValue value = it->second[i];
      // The cell keeps its own format unless the value brings one.
      if (old && value.style == 0) value.style = old.attribute("s").as_uint(0);
      std::string xml = CellXml(value, col, n);
      if (old) {
        if (!xml.empty()) InsertFragment(row, xml, prefix, old);
        row.remove_child(old);
      } else if (!xml.empty()) {
        InsertFragment(row, xml, prefix, pugi::xml_node(), next);
      }
    }
  }

  // Rows removed, and the rows below moved up.
  if (!removed.empty()) {
    std::int64_t gone = 0;
    std::vector<pugi::xml_node> kept;
    for (auto row : rows) {
      std::int64_t n = row.attribute("r").as_llong();
      if (removed.count(n)) {
        data.remove_child(row);
        ++gone;
        continue;
      }
      if (gone > 0) {
        row.attribute("r").set_value(std::to_string(n - gone).c_str());
        renumber_cells(row, n - gone);
      }
      kept.push_back(row);
    }
    rows = std::move(kept);
  }

  // Appended rows go below the last row that holds a value; emptied rows
  // in their way give way.
  if (!appended.empty()) {
    pugi::xml_node last;
    std::int64_t last_number = 0;
    for (auto row : rows) {
      bool value = false;
      for (auto c : row.children())
        if (Local(c.name()) == "c" && HoldsValue(c)) value = true;
      if (value) {
        last = row;
        last_number = row.attribute("r").as_llong();
      }
    }
    const std::int64_t end = last_number + static_cast<std::int64_t>(appended.size());
    for (auto row : rows) {
      std::int64_t n = row.attribute("r").as_llong();
      if (n > last_number && n <= end) data.remove_child(row);
    }
    std::string xml;
    std::int64_t n = last_number;
    for (const auto& [id, values] : appended) xml += RowXml(values, layout.first_column, ++n);
    // Without a row holding a value, the rows go first.
    InsertFragment(data, xml, prefix, last, last ? pugi::xml_node() : data.first_child());
  }

  // The used range as it now is.
  int first_col = INT32_MAX, last_col = 0;
  std::int64_t first_row = 0, last_row = 0;
  for (auto row : data.children()) {
    for (auto c : row.children()) {
      auto ref = ParseCellRef(c.attribute("r").value());
      if (!ref) continue;
      first_col = std::min(first_col, ref->column);
      last_col = std::max(last_col, ref->column);
      if (first_row == 0) first_row = ref->row;
      last_row = std::max(last_row, ref->row);
    }
  }
  used = CellRange{first_col, last_col, first_row, last_row};
  if (pugi::xml_node dimension = Child(root, "dimension")) {
    if (last_col > 0) {
      dimension.attribute("ref").set_value((ColumnLetters(first_col) + std::to_string(first_row) +
                                            ":" + ColumnLetters(last_col) +
                                            std::to_string(last_row))
                                               .c_str());
    }
  }
  return Serialized(doc);
}

// "'Kunden'!$A$1:$C$9"
std::string SheetArea(const std::string& sheet, const CellRange& r) {
  std::string quoted = "'";
  for (char c : sheet) {
    quoted.push_back(c);
    if (c == '\'') quoted.push_back(c);
  }
  return quoted + "'!$" + ColumnLetters(r.first_column) + "$" + std::to_string(r.first_row) + ":$" +
         ColumnLetters(std::max(r.last_column, r.first_column)) + "$" +
         std::to_string(std::max(r.last_row, r.first_row));
}

std::string NewSheet(const TableLayout& layout,
                     const std::map<std::int64_t, std::vector<CellValue>>& appended) {
  std::string rows;
  std::vector<CellValue> header;
  for (const auto& name : layout.names) {
    CellValue c;
    c.kind = CellValue::Kind::kText;
    c.text = name;
    header.push_back(std::move(c));
  }
  rows += RowXml(header, 1, 1);
  std::int64_t n = 1;
  for (const auto& [id, values] : appended) rows += RowXml(values, 1, ++n);
  const std::string range =
      "A1:" + ColumnLetters(static_cast<int>(layout.names.size())) + std::to_string(n);
  return std::string(kXmlHead) + "<worksheet xmlns=\"" + kMainNs + "\" xmlns:r=\"" + kRelNs +
         "\"><dimension ref=\"" + range + "\"/><sheetData>" + rows + "</sheetData></worksheet>";
}

}  // namespace

void XlsxWriter::Fail(const std::string& why) const {
  throw VbError(ado::kErrGeneral,
                "Die Excel-Arbeitsmappe '" + workbook_.file().string() +
                    "' kann nicht geschrieben werden: " + why,
                kSource);
}

void XlsxWriter::Write() {
  Workbook& wb = workbook_;
  const bool fresh = !wb.xlsx_;
  int error = 0;
  std::unique_ptr<zip_t, void (*)(zip_t*)> zip(
      zip_open(wb.file().c_str(), fresh ? ZIP_CREATE | ZIP_TRUNCATE : 0, &error), zip_discard);
  if (!zip) {
    zip_error_t e;
    zip_error_init_with_code(&e, error);
    std::string why = zip_error_strerror(&e);
    zip_error_fini(&e);
    Fail(why);
  }
  auto put = [&](const std::string& name, std::string text) {
    buffers_.push_back(std::move(text));
    const std::string& held = buffers_.back();
    zip_source_t* src = zip_source_buffer(zip.get(), held.data(), held.size(), 0);
    if (src == nullptr ||
        zip_file_add(zip.get(), name.c_str(), src, ZIP_FL_OVERWRITE | ZIP_FL_ENC_UTF_8) < 0) {
      if (src) zip_source_free(src);
      Fail(zip_strerror(zip.get()));
    }
  };
  auto fail = [this](const std::string& why) { Fail(why); };

  // Where the new sheets go, and the workbook's parts that list them.
  std::string workbook_part = fresh ? "xl/workbook.xml" : wb.xlsx_->workbook_part();
  std::string folder = workbook_part.substr(0, workbook_part.rfind('/') + 1);
  struct NewPart {
    std::string name;
    std::string part;
    std::string rel_id;
  };
  std::vector<NewPart> added;
  int next_sheet = 1;
  std::map<std::size_t, std::string> areas;  // sheet to the area of its table
  for (std::size_t t = 0; t < wb.tables_.size(); ++t) {
    const auto& table = wb.tables_[t];
    if (table.range || table.alias) continue;
    auto& sheet = wb.sheets_[table.sheet];
    if (!sheet.dirty) continue;
    const TableLayout& layout = wb.Layout(t);
    CellRange used{1, static_cast<int>(layout.names.size()), 1,
                   1 + static_cast<std::int64_t>(sheet.appended.size())};
    if (sheet.source == SIZE_MAX) {
      std::string part;
      int number = 0;
      do {
        number = next_sheet++;
        part = folder + "worksheets/sheet" + std::to_string(number) + ".xml";
      } while (!fresh && wb.xlsx_->HasEntry(part));
      // Named after the part, which is new, so that it is new in the
      // workbook's relationships too.
      added.push_back({sheet.name, part, "rIdKetrova" + std::to_string(number)});
      put(part, NewSheet(layout, sheet.appended));
    } else {
      const std::string& part = wb.xlsx_->sheets()[sheet.source].part;
      put(part, EditedSheet(wb.xlsx_->ReadEntry(part), layout, sheet.replaced, sheet.removed,
                            sheet.appended, fail, used));
      used.first_column = layout.first_column;
      used.first_row = std::max<std::int64_t>(layout.header_row, 1);
    }
    areas[table.sheet] = SheetArea(sheet.name, used);
  }
  // The defined names that stand for a changed sheet cover its table anew.
  std::vector<std::pair<std::string, std::string>> names;
  for (const auto& table : wb.tables_) {
    if (table.alias && areas.count(table.sheet)) names.emplace_back(table.name, areas[table.sheet]);
  }

  if (fresh) {
    std::string types = std::string(kXmlHead) +
                        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                        "content-types\"><Default Extension=\"rels\" "
                        "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
                        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
                        "<Override PartName=\"/xl/workbook.xml\" "
                        "ContentType=\"application/"
                        "vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
                        "<Override PartName=\"/xl/styles.xml\" "
                        "ContentType=\"application/"
                        "vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>";
    std::string sheets, rels, defined;
    for (const auto& [name, area] : names)
      defined += "<definedName name=\"" + Escaped(name) + "\">" + Escaped(area) + "</definedName>";
    if (!defined.empty()) defined = "<definedNames>" + defined + "</definedNames>";
    int id = 1;
    for (const auto& a : added) {
      types += "<Override PartName=\"/" + a.part + "\" ContentType=\"" + kWorksheetContent + "\"/>";
      sheets += "<sheet name=\"" + Escaped(a.name) + "\" sheetId=\"" + std::to_string(id++) +
                "\" r:id=\"" + a.rel_id + "\"/>";
      rels += "<Relationship Id=\"" + a.rel_id + "\" Type=\"" + kWorksheetType + "\" Target=\"" +
              a.part.substr(folder.size()) + "\"/>";
    }
    rels +=
        "<Relationship Id=\"rIdKetrovaStyles\" "
        "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles\" "
        "Target=\"styles.xml\"/>";
    put("[Content_Types].xml", types + "</Types>");
    put("_rels/.rels",
        std::string(kXmlHead) +
            "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/"
            "relationships\"><Relationship Id=\"rId1\" "
            "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
            "officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>");
    put("xl/workbook.xml", std::string(kXmlHead) + "<workbook xmlns=\"" + kMainNs +
                               "\" xmlns:r=\"" + kRelNs + "\"><sheets>" + sheets + "</sheets>" +
                               defined + "</workbook>");
    put("xl/_rels/workbook.xml.rels",
        std::string(kXmlHead) +
            "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/"
            "relationships\">" +
            rels + "</Relationships>");
    put("xl/styles.xml",
        std::string(kXmlHead) + "<styleSheet xmlns=\"" + kMainNs +
            "\"><fonts count=\"1\"><font><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts>"
            "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill><fill>"
            "<patternFill patternType=\"gray125\"/></fill></fills><borders count=\"1\"><border>"
            "<left/><right/><top/><bottom/><diagonal/></border></borders><cellStyleXfs "
            "count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/>"
            "</cellStyleXfs><cellXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" "
            "borderId=\"0\" xfId=\"0\"/></cellXfs></styleSheet>");
  } else if (!added.empty() || !names.empty()) {
    // The new sheets and names enter the workbook part, the sheets also its
    // relationships and the content types; everything else in those parts
    // stays.
    pugi::xml_document book;
    std::string text = wb.xlsx_->ReadEntry(workbook_part);
    if (!book.load_buffer(text.data(), text.size(), kParse)) Fail(workbook_part);
    pugi::xml_node root = book.document_element();
    const std::string prefix = PrefixOf(root.name());
    pugi::xml_node sheets = Child(root, "sheets");
    if (!sheets) Fail(workbook_part);
    // The prefix the workbook gives the relationships' namespace.
    std::string r_prefix = "r";
    for (auto a : root.attributes()) {
      std::string_view n = a.name();
      if (n.starts_with("xmlns:") && std::string_view(a.value()) == kRelNs)
        r_prefix = std::string(n.substr(6));
    }
    if (!root.attribute(("xmlns:" + r_prefix).c_str()))
      root.append_attribute(("xmlns:" + r_prefix).c_str()).set_value(kRelNs);
    unsigned max_id = 0;
    for (auto s : sheets.children()) max_id = std::max(max_id, s.attribute("sheetId").as_uint());
    for (const auto& a : added) {
      pugi::xml_node s = sheets.append_child((prefix + "sheet").c_str());
      s.append_attribute("name").set_value(a.name.c_str());
      s.append_attribute("sheetId").set_value(++max_id);
      s.append_attribute((r_prefix + ":id").c_str()).set_value(a.rel_id.c_str());
    }
    if (!names.empty()) {
      pugi::xml_node defined = Child(root, "definedNames");
      if (!defined) {
        pugi::xml_node after = sheets;
        for (const char* later : {"functionGroups", "externalReferences"})
          if (pugi::xml_node n = Child(root, later)) after = n;
        defined = root.insert_child_after((prefix + "definedNames").c_str(), after);
      }
      for (const auto& [name, area] : names) {
        pugi::xml_node found;
        for (auto d : defined.children())
          if (std::string_view(d.attribute("name").value()) == name && !d.attribute("localSheetId"))
            found = d;
        if (!found) {
          found = defined.append_child((prefix + "definedName").c_str());
          found.append_attribute("name").set_value(name.c_str());
        }
        found.text().set(area.c_str());
      }
    }
    put(workbook_part, Serialized(book));
    if (added.empty()) {
      Close(std::move(zip));
      return;
    }

    std::string rels_part = folder + "_rels/" + workbook_part.substr(folder.size()) + ".rels";
    pugi::xml_document rels;
    text = wb.xlsx_->ReadEntry(rels_part);
    if (!rels.load_buffer(text.data(), text.size(), kParse)) Fail(rels_part);
    for (const auto& a : added) {
      pugi::xml_node r = rels.document_element().append_child("Relationship");
      r.append_attribute("Id").set_value(a.rel_id.c_str());
      r.append_attribute("Type").set_value(kWorksheetType);
      r.append_attribute("Target").set_value(a.part.substr(folder.size()).c_str());
    }
    put(rels_part, Serialized(rels));

    pugi::xml_document types;
    text = wb.xlsx_->ReadEntry("[Content_Types].xml");
    if (!types.load_buffer(text.data(), text.size(), kParse)) Fail("[Content_Types].xml");
    for (const auto& a : added) {
      pugi::xml_node o = types.document_element().append_child("Override");
      o.append_attribute("PartName").set_value(("/" + a.part).c_str());
      o.append_attribute("ContentType").set_value(kWorksheetContent);
    }
    put("[Content_Types].xml", Serialized(types));
  }

  Close(std::move(zip));
}

void XlsxWriter::Close(std::unique_ptr<zip_t, void (*)(zip_t*)> zip) {
  zip_t* raw = zip.release();
  if (zip_close(raw) != 0) {
    std::string why = zip_strerror(raw);
    zip_discard(raw);
    Fail(why);
  }
}

}  // namespace ketrova::excel
