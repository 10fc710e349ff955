#include "support/dates.h"

#include "support/date_text.h"
#include "support/format.h"
#include "support/ole_date.h"
#include "support/regional.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

RegionalFormats& State() {
  static RegionalFormats formats;
  return formats;
}

std::string FieldOf(std::string_view digits) {
  if (digits == "12") return "mm";
  if (digits == "31") return "dd";
  return {};
}

// The positions of day, month and year in a pattern "dd?mm?yyyy" and its five
// other orders: 'd', 'm', 'y' in order, or "" when the pattern is none of them.
std::string OrderOf(const std::string& pattern, const std::string& separator) {
  static const char* const orders[] = {"dmy", "mdy", "ymd", "ydm", "myd", "dym"};
  for (const char* order : orders) {
    std::string p;
    for (int i = 0; i < 3; ++i) {
      if (i > 0) p += separator;
      p += order[i] == 'd' ? "dd" : order[i] == 'm' ? "mm" : "yyyy";
    }
    if (IsEqual(p, pattern)) return order;
  }
  return {};
}

// Cuts a text written in `order` ("dd.mm.yyyy" widths) into day, month, year.
bool CutFields(const std::string& text, const std::string& order, std::string& day,
               std::string& month, std::string& year) {
  std::size_t pos = 0;
  for (char f : order) {
    std::size_t width = f == 'y' ? 4 : 2;
    if (pos + width > text.size()) return false;
    std::string field = text.substr(pos, width);
    (f == 'd' ? day : f == 'm' ? month : year) = field;
    pos += width + 1;
  }
  return true;
}

double DateOf(const Variant& value) {
  if (value.Type() == vbDate) return value.AsDate().value;
  return value.ToDate().value;
}

}  // namespace

void InitRegionalFormats(std::string_view format) {
  RegionalFormats& s = State();
  if (s.filled) return;
  Variant testDate = Variant::FromDate(DateSerial(2002, 12, 31));
  std::string text = format.empty() ? ShortDateText(testDate.AsDate().value, Regional())
                                    : Format(testDate, format);
  std::string separator = SubText(text, 2, 1);
  s.dateSeparator = separator;
  s.dateFormat =
      FieldOf(SubText(text, 0, 2)) + separator + FieldOf(SubText(text, 3, 2)) + separator + "yyyy";
  s.germanDateFormat = "dd.mm.yyyy";
  std::string number = Format(Variant(100000.0), "#,##0.00");
  s.thousandSeparator = SubText(number, 3, 1);
  s.decimalSeparator = SubText(number, 7, 1);
  s.filled = true;
}

const RegionalFormats& GetRegionalFormats() {
  InitRegionalFormats();
  return State();
}

void ResetRegionalFormats() {
  State() = RegionalFormats{};
}

int IsDecimalPoint() {
  return GetRegionalFormats().decimalSeparator == "." ? 1 : 0;
}

std::string DateToLocalText(const Variant& value) {
  if (value.IsBlank()) return {};
  const RegionalFormats& s = GetRegionalFormats();
  double date = 0;
  std::string formatted = Format(value, s.dateFormat);
  bool dotted = formatted.find('.') != std::string::npos ||
                (value.IsString() && value.AsString().find('.') != std::string::npos);
  if (dotted && IsDecimalPoint() == 1) {
    // A German date under other settings: read it as day.month.year.
    std::string day, month, year;
    if (!CutFields(Trim(value.ToText()), "dmy", day, month, year)) throw VbError(13);
    date =
        DateSerial(Variant(year).ToInteger(), Variant(month).ToInteger(), Variant(day).ToInteger());
  } else {
    date = DateOf(value);
  }
  DateParts p = SplitDate(date);
  std::string dd = PadLeft(std::to_string(p.day), 2, "0");
  std::string mm = PadLeft(std::to_string(p.month), 2, "0");
  std::string yyyy = PadRight(std::to_string(p.year), 4, "0");
  std::string order = OrderOf(s.dateFormat, s.dateSeparator);
  if (order.empty()) order = Regional().DateOrder();
  std::string out;
  for (char f : order) {
    if (!out.empty()) out += s.dateSeparator;
    out += f == 'd' ? dd : f == 'm' ? mm : yyyy;
  }
  return out;
}

std::string DateToGermanText(const Variant& value) {
  if (value.IsBlank()) return {};
  const RegionalFormats& s = GetRegionalFormats();
  std::string local = DateToLocalText(value);
  std::string order = OrderOf(s.dateFormat, s.dateSeparator);
  if (order.empty()) return {};
  std::string day, month, year;
  if (!CutFields(local, order, day, month, year)) return {};
  return day + "." + month + "." + year;
}

}  // namespace ketrova
