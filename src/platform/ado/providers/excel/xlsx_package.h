// Reading an Office Open XML workbook (.xlsx): the zip container (libzip),
// the workbook's parts (pugixml) and each worksheet's rows streamed through
// expat, so that a sheet is never held whole in memory.
//
// The package keeps the archive open for its life. What all sheets share is
// read at open: the sheet list, the defined names that name one rectangle of
// one sheet (built-in names such as Print_Area and sheet-local names are not
// tables), the date system, the number formats of the cell styles and the
// shared strings (rich text as its plain text, phonetic runs left out).
// Formulas read as their cached value.
#pragma once

#include <zip.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/providers/excel/sheet_rows.h"

namespace ketrova::excel {

class XlsxPackage {
 public:
  // Raises VbError kErrGeneral naming the file when it is no readable workbook.
  explicit XlsxPackage(const std::filesystem::path& file);
  ~XlsxPackage();
  XlsxPackage(const XlsxPackage&) = delete;
  XlsxPackage& operator=(const XlsxPackage&) = delete;

  const std::filesystem::path& file() const { return file_; }
  bool date1904() const { return date1904_; }
  const std::vector<SheetInfo>& sheets() const { return sheets_; }
  const std::vector<DefinedName>& names() const { return names_; }
  // The zip entry of the workbook part ("xl/workbook.xml").
  const std::string& workbook_part() const { return workbook_part_; }
  // The kind of number a cell style shows.
  NumberKind StyleKind(std::uint32_t style) const {
    return style < style_kinds_.size() ? style_kinds_[style] : NumberKind::kPlain;
  }

  std::unique_ptr<RowReader> OpenSheet(std::size_t sheet) const;
  // The whole text of an entry; raises VbError when it is missing.
  std::string ReadEntry(const std::string& name) const;
  bool HasEntry(const std::string& name) const;

  [[noreturn]] void Damaged(const std::string& what) const;

 private:
  void ReadWorkbook();
  void ReadStyles(const std::string& part);
  void ReadSharedStrings(const std::string& part);

  std::filesystem::path file_;
  std::unique_ptr<zip_t, void (*)(zip_t*)> zip_{nullptr, zip_discard};
  std::string workbook_part_;
  bool date1904_ = false;
  std::vector<SheetInfo> sheets_;
  std::vector<DefinedName> names_;
  std::vector<NumberKind> style_kinds_;
  std::vector<std::string> shared_strings_;

  friend class XlsxRowReader;
};

// The target of a relationship relative to the part that names it
// ("worksheets/sheet1.xml" from "xl/workbook.xml" is "xl/worksheets/sheet1.xml").
std::string ResolvePartName(const std::string& from_part, const std::string& target);

// Text of an OOXML string with its "_xHHHH_" escapes decoded, and the reverse.
std::string DecodeOoxmlEscapes(std::string_view text);
std::string EncodeOoxmlEscapes(std::string_view text);

}  // namespace ketrova::excel
