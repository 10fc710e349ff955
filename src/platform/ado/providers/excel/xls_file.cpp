#include "platform/ado/providers/excel/xls_file.h"

#include <freexl.h>

#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr const char* kSource = "Ketrova.Excel";

[[noreturn]] void Unreadable(const std::filesystem::path& file, int rc) {
  throw VbError(ado::kErrGeneral,
                "Die Datei '" + file.string() + "' ist keine lesbare Excel-Arbeitsmappe (FreeXL " +
                    std::to_string(rc) + ")",
                kSource);
}

class XlsRowReader : public RowReader {
 public:
  XlsRowReader(const std::filesystem::path& file, const void* handle, unsigned short sheet)
      : file_(file), handle_(handle), sheet_(sheet) {
    Select();
    int rc = freexl_worksheet_dimensions(handle_, &rows_, &columns_);
    if (rc != FREEXL_OK) Unreadable(file_, rc);
    if (rows_ > 0 && columns_ > 0) used = CellRange{1, columns_, 1, rows_};
  }

  bool Next(RawRow& row) override {
    Select();
    while (next_ < rows_) {
      row.row = next_ + 1;
      row.cells.clear();
      for (unsigned short c = 0; c < columns_; ++c) {
        FreeXL_CellValue cell;
        int rc = freexl_get_cell_value(handle_, next_, c, &cell);
        if (rc != FREEXL_OK) Unreadable(file_, rc);
        RawCell raw;
        raw.column = c + 1;
        CellValue& v = raw.value;
        switch (cell.type) {
          case FREEXL_CELL_INT:
            v.kind = CellValue::Kind::kNumber;
            v.number = cell.value.int_value;
            break;
          case FREEXL_CELL_DOUBLE:
            v.kind = CellValue::Kind::kNumber;
            v.number = cell.value.double_value;
            break;
          case FREEXL_CELL_TEXT:
          case FREEXL_CELL_SST_TEXT:
            v.kind = CellValue::Kind::kText;
            v.text = cell.value.text_value ? cell.value.text_value : "";
            break;
          case FREEXL_CELL_DATE:
          case FREEXL_CELL_DATETIME:
          case FREEXL_CELL_TIME: {
            std::string text = cell.value.text_value ? cell.value.text_value : "";
            if (cell.type == FREEXL_CELL_TIME) text = "1899-12-30 " + text;
            if (auto ole = OleFromIso(text)) {
              v.kind = CellValue::Kind::kNumber;
              v.number = SerialFromOle(*ole, false);
              v.style = kXlsDateStyle;
            } else {
              v.kind = CellValue::Kind::kText;
              v.text = text;
            }
            break;
          }
          default:
            continue;
        }
        row.cells.push_back(std::move(raw));
      }
      ++next_;
      if (!row.cells.empty()) return true;
    }
    return false;
  }

 private:
  void Select() {
    int rc = freexl_select_active_worksheet(handle_, sheet_);
    if (rc != FREEXL_OK) Unreadable(file_, rc);
  }

  std::filesystem::path file_;
  const void* handle_;
  unsigned short sheet_;
  unsigned int rows_ = 0;
  unsigned short columns_ = 0;
  unsigned int next_ = 0;
};

}  // namespace

XlsFile::XlsFile(const std::filesystem::path& file) : file_(file) {
  int rc = freexl_open(file.c_str(), &handle_);
  // FreeXL can give up on a record with no code of its own but no handle.
  if (rc != FREEXL_OK || handle_ == nullptr) {
    freexl_close(handle_);
    handle_ = nullptr;
    Unreadable(file_, rc);
  }
  unsigned int info = 0;
  // FreeXL answers anything but "plain" for a protected workbook (its
  // "obfuscated" answer is never given).
  if (freexl_get_info(handle_, FREEXL_BIFF_PASSWORD, &info) == FREEXL_OK &&
      info != FREEXL_BIFF_PLAIN) {
    freexl_close(handle_);
    handle_ = nullptr;
    throw VbError(ado::kErrGeneral,
                  "Die Excel-Arbeitsmappe '" + file.string() +
                      "' ist mit einem Kennwort verschlüsselt und kann nicht gelesen werden",
                  kSource);
  }
  unsigned int count = 0;
  freexl_get_info(handle_, FREEXL_BIFF_SHEET_COUNT, &count);
  for (unsigned int i = 0; i < count; ++i) {
    const char* name = nullptr;
    if (freexl_get_worksheet_name(handle_, static_cast<unsigned short>(i), &name) == FREEXL_OK)
      sheets_.emplace_back(name ? name : "");
  }
}

XlsFile::~XlsFile() {
  if (handle_) freexl_close(handle_);
}

std::unique_ptr<RowReader> XlsFile::OpenSheet(std::size_t sheet) const {
  return std::make_unique<XlsRowReader>(file_, handle_, static_cast<unsigned short>(sheet));
}

}  // namespace ketrova::excel
