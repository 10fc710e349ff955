// Reading an Excel 97-2003 workbook (.xls): the "Workbook" stream of the
// compound document (libgsf), then its BIFF8 records, read here. At open the
// workbook globals: the worksheets, the defined names that cover one
// rectangle of one worksheet (built-in and sheet-local names are no tables),
// the date system, the number format of every cell format and the shared
// strings. A sheet's cells are read from the held stream when it is opened,
// every cell the sheet holds whatever its recorded used range says.
//
// Cells are given with their cell format (XF) index as style; StyleKind
// tells what its number format shows. Formulas read as their cached value.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/providers/excel/sheet_rows.h"

namespace ketrova::excel {

// The number formats of a workbook's cell formats, as the .xls writer keeps
// them: the format id of each cell format (XF) and the codes of the formats
// the workbook defines itself.
struct XlsFormats {
  std::vector<std::uint16_t> xf_format;
  std::map<std::uint16_t, std::string> codes;
};

// A record as stored, type and data.
struct XlsRecord {
  std::uint16_t type = 0;
  std::string data;
};

class XlsFile {
 public:
  // Raises VbError naming the file when it is no readable BIFF8 workbook or
  // is protected by a password.
  explicit XlsFile(const std::filesystem::path& file);
  ~XlsFile();
  XlsFile(const XlsFile&) = delete;
  XlsFile& operator=(const XlsFile&) = delete;

  const std::vector<std::string>& sheets() const { return sheets_; }
  const std::vector<DefinedName>& names() const { return names_; }
  bool date1904() const { return date1904_; }
  const XlsFormats& formats() const { return formats_; }
  NumberKind StyleKind(std::uint32_t style) const;

  // Raises VbError naming the file when the sheet's records are damaged.
  // `formatting`, when given, receives the sheet's column widths and merged
  // areas as records (DEFCOLWIDTH, COLINFO, MERGEDCELLS), for the writer.
  std::unique_ptr<RowReader> OpenSheet(std::size_t sheet,
                                       std::vector<XlsRecord>* formatting = nullptr) const;

 private:
  void ReadGlobals();
  [[noreturn]] void Damaged(const std::string& what) const;

  std::filesystem::path file_;
  std::string stream_;
  std::vector<std::string> sheets_;
  std::vector<std::uint32_t> sheet_offsets_;
  std::vector<DefinedName> names_;
  bool date1904_ = false;
  XlsFormats formats_;
  std::vector<std::string> strings_;
};

}  // namespace ketrova::excel
