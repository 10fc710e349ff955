// The rows of one worksheet part of an .xlsx package, parsed by expat as the
// zip entry inflates, a few kilobytes at a time. Rows without any value are
// passed over; cells are given as stored (shared strings resolved, inline
// and rich strings as plain text, formulas as their cached value).
#pragma once

#include <expat.h>
#include <zip.h>

#include <deque>
#include <memory>
#include <string>

#include "platform/ado/providers/excel/sheet_rows.h"

namespace ketrova::excel {

class XlsxPackage;

class XlsxRowReader : public RowReader {
 public:
  // Raises VbError naming the file when the part is missing.
  XlsxRowReader(const XlsxPackage& package, const std::string& part);
  ~XlsxRowReader() override;
  XlsxRowReader(const XlsxRowReader&) = delete;
  XlsxRowReader& operator=(const XlsxRowReader&) = delete;

  bool Next(RawRow& row) override;
  // Parses the rest without making values: only the cells' columns count.
  std::optional<std::pair<int, int>> RemainingColumns() override;

 private:
  static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** attrs);
  static void XMLCALL OnEnd(void* self, const XML_Char* name);
  static void XMLCALL OnText(void* self, const XML_Char* text, int length);
  void Start(std::string_view name, const XML_Char** attrs);
  void End(std::string_view name);
  void FinishCell();

  const XlsxPackage& package_;
  std::string part_;
  zip_file_t* entry_ = nullptr;
  XML_Parser parser_ = nullptr;
  bool done_ = false;
  std::deque<RawRow> ready_;

  // The row and cell being parsed.
  RawRow row_;
  std::int64_t last_row_ = 0;
  int last_column_ = 0;
  RawCell cell_;
  std::string type_;
  std::string text_;
  bool in_value_ = false;
  bool in_inline_ = false;
  bool in_inline_text_ = false;
  bool in_phonetic_ = false;
  bool has_value_ = false;
  bool columns_only_ = false;
  std::optional<std::pair<int, int>> extent_;
};

}  // namespace ketrova::excel
