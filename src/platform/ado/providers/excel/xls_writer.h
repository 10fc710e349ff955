// Writes an Excel 97-2003 workbook (.xls): BIFF8 records, written here since
// no Debian library writes them, in the "Workbook" stream of a compound
// document (libgsf). It writes a whole workbook: a new one, or one read
// before whose cells come back with their cell formats, the number formats
// those use, the date system and the defined names that cover a rectangle.
// The sheets' column widths and merged areas are kept as they were. Not kept
// from a workbook read before: fonts, colours, borders, alignment, the
// formats of whole columns, row heights, formulas (their last values are written),
// merged areas, comments, print settings, chart and macro sheets, built-in
// and sheet-local names.
// The file is written to a temporary file in the same folder and renamed
// over the target.
//
// Limits of the format: 65,536 rows and 256 columns per sheet; more is
// refused with a German error naming the file.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/ado/providers/excel/sheet_rows.h"
#include "platform/ado/providers/excel/xls_file.h"

namespace ketrova::excel {

struct XlsSheet {
  std::string name;
  std::vector<RawRow> rows;  // in row order; a cell's style is its format in `formats`
  // Column widths and merged areas read with the sheet (XlsFile::OpenSheet).
  std::vector<XlsRecord> formatting;
};

struct XlsWorkbook {
  std::vector<XlsSheet> sheets;
  std::vector<DefinedName> names;
  XlsFormats formats;  // empty for a new workbook: every cell then has the default format
  bool date1904 = false;
};

// Raises VbError naming the file.
void WriteXlsWorkbook(const std::filesystem::path& file, const XlsWorkbook& book);

}  // namespace ketrova::excel
