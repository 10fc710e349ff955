// One cell of a worksheet as the workbook readers and writers pass it, and
// what a cell's number format and the workbook's date system make of it.
//
// Excel keeps dates as serial numbers whose meaning depends on the workbook:
// in the 1900 system day 1 is 1900-01-01 and day 60 the 29 February 1900
// that never was; in the 1904 system day 0 is 1904-01-01. Inside the SQL
// engine a date is ISO text ("yyyy-mm-dd" or "yyyy-mm-dd hh:mm:ss").
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ketrova::excel {

struct CellValue {
  enum class Kind { kEmpty, kNumber, kText, kBoolean, kError };
  Kind kind = Kind::kEmpty;
  double number = 0;        // kNumber; kBoolean as 0 or 1
  std::string text;         // kText (UTF-8), kError ("#DIV/0!")
  std::uint32_t style = 0;  // index of the cell's format in the workbook

  bool empty() const { return kind == Kind::kEmpty; }
};

// What a number format shows a number as.
enum class NumberKind { kPlain, kDate, kCurrency };

// The kind of a format by its code ("dd.mm.yyyy", "#,##0.00 €"); quoted
// texts, escaped characters and colours do not count.
NumberKind KindOfFormatCode(std::string_view code);
// The kind of one of the built-in formats (0..163) that workbooks name by
// number only.
NumberKind KindOfBuiltinFormat(int id);

// A serial number of the workbook's date system as an OLE date (days since
// 1899-12-30) and back.
double OleFromSerial(double serial, bool date1904);
double SerialFromOle(double ole, bool date1904);

// The engine's ISO text of an OLE date, and the reverse (nullopt for a text
// that is no such date).
std::string IsoFromOle(double ole);
std::optional<double> OleFromIso(std::string_view iso);

// Column letters and numbers: 1 is "A", 27 "AA". A reference "B12" as its
// 1-based column and row; nullopt for anything else. "$" signs are allowed.
std::string ColumnLetters(int column);
struct CellRef {
  int column = 0;
  std::int64_t row = 0;
};
std::optional<CellRef> ParseCellRef(std::string_view ref);

// The number of characters of a UTF-8 text, as a cell's limit counts them.
std::size_t CharacterCount(std::string_view utf8);
inline constexpr std::size_t kMaxCellCharacters = 32767;

}  // namespace ketrova::excel
