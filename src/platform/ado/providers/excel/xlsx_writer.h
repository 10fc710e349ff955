// Writes the changes of a Workbook into its .xlsx file: sheets made by CREATE
// TABLE as new worksheet parts, changed sheets with their rows edited in the
// sheet's XML (cells, formats, column widths and everything else of the part
// kept), every other part of the package copied as it was. libzip writes the
// archive to a temporary file in the same folder and renames it over the
// original, so a failure leaves the original as it was.
//
// Written text goes into inline strings, so that the shared strings of the
// other sheets stay untouched.
#pragma once

#include <zip.h>

#include <list>
#include <memory>
#include <string>

namespace ketrova::excel {

class Workbook;

class XlsxWriter {
 public:
  explicit XlsxWriter(Workbook& workbook) : workbook_(workbook) {}
  // Raises VbError naming the file.
  void Write();

 private:
  [[noreturn]] void Fail(const std::string& why) const;
  void Close(std::unique_ptr<zip_t, void (*)(zip_t*)> zip);

  Workbook& workbook_;
  std::list<std::string> buffers_;  // the new parts, alive until the archive is written
};

}  // namespace ketrova::excel
