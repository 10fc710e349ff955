// What a workbook format gives the sheet tables: the sheets and names of a
// workbook, and a sheet's rows one after the other.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ado/enums.h"
#include "platform/ado/providers/excel/cell_value.h"
#include "support/vb_error.h"

namespace ketrova::excel {

// Widens a first and last column to take in one more.
inline void WidenExtent(std::optional<std::pair<int, int>>& extent, int column) {
  if (!extent) extent.emplace(column, column);
  extent->first = std::min(extent->first, column);
  extent->second = std::max(extent->second, column);
}

// One row as stored: only the cells that hold something, in column order.
struct RawCell {
  int column = 0;  // 1-based
  CellValue value;
};
struct RawRow {
  std::int64_t row = 0;  // 1-based
  std::vector<RawCell> cells;
};

// A rectangle of cells, 1-based and inclusive.
struct CellRange {
  int first_column = 1;
  int last_column = 0;
  std::int64_t first_row = 1;
  std::int64_t last_row = 0;
};

// Streams the rows of one sheet in row order. Raises VbError (kErrGeneral,
// naming the file) on a damaged sheet.
class RowReader {
 public:
  virtual ~RowReader() = default;
  // False at the end of the sheet.
  virtual bool Next(RawRow& row) = 0;
  // The first and last column holding a value in the rows not read yet,
  // nullopt when none does. Reads the sheet to its end: Next then answers
  // false. The recorded used range below cannot stand in for it, since
  // writers do not always keep it true.
  virtual std::optional<std::pair<int, int>> RemainingColumns() {
    std::optional<std::pair<int, int>> extent;
    RawRow row;
    while (Next(row)) {
      for (const auto& c : row.cells) WidenExtent(extent, c.column);
    }
    return extent;
  }
  // The used range the sheet records, known once Next was called.
  std::optional<CellRange> used;
};

// The error of a workbook whose structure cannot be read; `what` names the
// part that could not.
[[noreturn]] inline void ThrowUnreadableWorkbook(const std::filesystem::path& file,
                                                 const std::string& what) {
  throw VbError(
      ado::kErrGeneral,
      "Die Datei '" + file.string() + "' ist keine lesbare Excel-Arbeitsmappe (" + what + ")",
      "Ketrova.Excel");
}

struct SheetInfo {
  std::string name;
  std::string part;  // where the format keeps it (a zip entry)
};

struct DefinedName {
  std::string name;
  std::size_t sheet = 0;  // index into the sheets
  CellRange range;
};

}  // namespace ketrova::excel
