// Writes a new Excel 97-2003 workbook (.xls): BIFF8 records in the
// "Workbook" stream of a compound document, both written here since no Debian
// library writes them. It serves a workbook that the connection made: its
// sheets all come from CREATE TABLE, so every cell is text (shared strings),
// a number or a boolean. The file is written to a temporary file in the same
// folder and renamed over the target.
//
// Limits of the format: 65,536 rows and 256 columns per sheet; this writer
// also keeps the workbook within the compound document's header (about 7 MB),
// and refuses more with a German error naming the file.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/ado/providers/excel/cell_value.h"

namespace ketrova::excel {

struct XlsSheet {
  std::string name;
  std::vector<std::vector<CellValue>> rows;  // the header row first
};

// Raises VbError naming the file.
void WriteXlsWorkbook(const std::filesystem::path& file, const std::vector<XlsSheet>& sheets);

}  // namespace ketrova::excel
