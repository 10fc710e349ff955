// Reading an Excel 97-2003 workbook (.xls, BIFF8 in a compound document)
// through FreeXL, which parses the whole workbook at open: the format keeps a
// sheet's cells in blocks that must be followed through the compound
// document's sector chains, and FreeXL holds them for the handle's life.
//
// FreeXL gives dates and times already as text in the workbook's own date
// system; they are passed on as numbers of the 1900 system with the style
// kXlsDateStyle. It does not give number formats, so currency reads as a
// number, nor defined names, so an .xls workbook's tables are its sheets.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/providers/excel/sheet_rows.h"

namespace ketrova::excel {

inline constexpr std::uint32_t kXlsDateStyle = 0xFFFFFF01;

class XlsFile {
 public:
  // Raises VbError naming the file when it is no readable BIFF8 workbook or
  // is protected by a password.
  explicit XlsFile(const std::filesystem::path& file);
  ~XlsFile();
  XlsFile(const XlsFile&) = delete;
  XlsFile& operator=(const XlsFile&) = delete;

  const std::vector<std::string>& sheets() const { return sheets_; }
  std::unique_ptr<RowReader> OpenSheet(std::size_t sheet) const;

 private:
  std::filesystem::path file_;
  const void* handle_ = nullptr;
  std::vector<std::string> sheets_;
};

}  // namespace ketrova::excel
