// Column types of text files, and how a field's text maps to a typed value.
//
// Text files carry no types. They come from schema.ini or are inferred from the
// first rows: a column is numeric or a date only when every non-empty,
// unquoted value of the sample reads as one; quoted values count as text. Numbers take "." or ","
// as decimal mark and no thousands separators; dates are yyyy-mm-dd or dd.mm.yyyy, with an optional
// time hh:mm[:ss]. Inside the SQL engine a date is the ISO text "yyyy-mm-dd" or "yyyy-mm-dd
// hh:mm:ss", which sorts and compares as a date.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ketrova::file_engine {

enum class ColumnType { kText, kInteger, kDouble, kCurrency, kDateTime, kBoolean, kMemo };

// The SQL type that the engine declares for a column ("TEXT", "INTEGER",
// "DOUBLE", "CURRENCY", "DATETIME", "BIT", "MEMO").
const char* SqlTypeName(ColumnType type);
// The reverse of SqlTypeName and of the type words of schema.ini ("Char",
// "Text", "Long", "Short", "Integer", "Byte", "Float", "Single", "Double",
// "Currency", "Date", "DateTime", "Bit", "Memo", "LongChar"); empty when
// unknown. Case is ignored.
std::optional<ColumnType> ParseTypeName(std::string_view name);

// Strict parsing, used to infer a type, takes a leading zero ("007") as the
// mark of a code, not a number; a column typed by schema.ini reads it as one.
std::optional<std::int64_t> ParseInteger(std::string_view text, bool strict = true);
std::optional<double> ParseNumber(std::string_view text, bool strict = true);
// The ISO form of a date text, or empty when it is none.
std::optional<std::string> ParseDateText(std::string_view text);
std::optional<bool> ParseBoolean(std::string_view text);

// Gathers the sample of the first rows and settles each column's type.
class TypeInference {
 public:
  explicit TypeInference(std::size_t columns);
  void Add(std::size_t column, std::string_view text, bool quoted);
  std::vector<ColumnType> Result() const;
  // The column's numbers use "," as decimal mark; its dates are dd.mm.yyyy.
  bool DecimalComma(std::size_t column) const { return states_.at(column).comma; }
  bool GermanDates(std::size_t column) const { return states_.at(column).dotted_date; }

 private:
  struct State {
    bool seen = false;
    bool integer = true;
    bool number = true;
    bool date = true;
    bool boolean = true;  // only the words True and False count
    bool comma = false;
    bool dotted_date = false;
    bool long_text = false;  // a value longer than 255 characters: a memo
  };
  std::vector<State> states_;
};

// Shortest text that reads back as the same double; with decimal_comma the
// mark is ",".
std::string FormatNumber(double value, bool decimal_comma = false);

// An ISO date text ("yyyy-mm-dd[ hh:mm:ss]") as dd.mm.yyyy[ hh:mm:ss]; other
// texts unchanged.
std::string GermanDateText(std::string_view iso);

}  // namespace ketrova::file_engine
