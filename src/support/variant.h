// Variant: the one value type of Ketrova, shared by record access, the script
// engines and the project core. It has VB's subtypes and VarType codes and VB's
// conversion rules (CStr, CLng, CDbl, CBool, CDate, ...).
//
// A Variant is cheap to copy and to move: numbers are held inline, strings are
// std::string (UTF-8), objects and arrays are shared pointers. Arrays have value
// semantics as in VB: copying a Variant shares the array until one side writes
// to it through MutableArray(), which detaches (copy on write).
//
// Conversions that fail raise VbError with VB's number and German description:
// 13 "Typen unverträglich", 6 "Überlauf", 94 "Unzulässige Verwendung von Null",
// 424 "Objekt erforderlich". Text is parsed and written under the regional
// settings of support/regional.h.
//
// Texts as VB wrote them on a system of the regional language: CStr of a
// Double is the shortest text with up to 15 significant digits and the
// regional decimal separator ("1,5", "1E+20"); of a Date the short date, with
// " hh:mm:ss" when there is a time, only the time when the date part is 0; of
// a Boolean "Wahr"/"Falsch" under German (and C / POSIX) settings and
// "True"/"False" under any other language, so a log line that concatenates a
// Boolean reads "Job.CancelOnError = Falsch". CBool accepts "True", "False",
// "Wahr" and "Falsch" in any case, whatever the settings, and numbers.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ketrova {

class Object;
using ObjectPtr = std::shared_ptr<Object>;

// VB's VarType codes. An array answers vbArray + the element type (8204 for an
// array of Variants).
enum VarType : int {
  vbEmpty = 0,
  vbNull = 1,
  vbInteger = 2,
  vbLong = 3,
  vbSingle = 4,
  vbDouble = 5,
  vbCurrency = 6,
  vbDate = 7,
  vbString = 8,
  vbObject = 9,
  vbError = 10,
  vbBoolean = 11,
  vbVariant = 12,
  vbDataObject = 13,
  vbDecimal = 14,
  vbByte = 17,
  vbArray = 8192,
};

// Currency: a 64-bit integer scaled by 10,000 (four decimal places).
struct Currency {
  std::int64_t scaled = 0;
  friend bool operator==(Currency, Currency) = default;
  friend auto operator<=>(Currency, Currency) = default;
};

// Date: an OLE date, days since 1899-12-30 with the time as fraction.
struct Date {
  double value = 0.0;
  friend bool operator==(Date, Date) = default;
  friend auto operator<=>(Date, Date) = default;
};

// Decimal: VB's 96-bit scaled integer, held as a 128-bit mantissa and a scale
// of 0 to 28 decimal places.
struct Decimal {
  __extension__ using Int128 = __int128;
  Int128 mantissa = 0;
  int scale = 0;
};

// An error value (VT_ERROR). Code 0x80020004 marks a missing optional argument.
struct ErrorCode {
  std::int32_t code = 0;
};
inline constexpr std::int32_t kParamNotFound = static_cast<std::int32_t>(0x80020004u);

class Variant;

// A VB array: one or more dimensions, each with its own lower bound, elements
// stored in row-major order (the last index varies fastest).
struct SafeArray {
  struct Bound {
    std::int32_t lower = 0;
    std::int32_t count = 0;
  };
  VarType elementType = vbVariant;
  std::vector<Bound> bounds;
  std::vector<Variant> data;
};
using ArrayPtr = std::shared_ptr<SafeArray>;

class Variant {
 public:
  struct EmptyTag {
    friend bool operator==(EmptyTag, EmptyTag) = default;
  };
  struct NullTag {
    friend bool operator==(NullTag, NullTag) = default;
  };

  // Empty.
  Variant() = default;
  // Boolean, Long, Double, String and Object are the common subtypes and convert
  // implicitly; the others are built by the named factories below.
  Variant(bool v) : value_(v) {}
  Variant(int v) : value_(static_cast<std::int32_t>(v)) {}
  Variant(double v) : value_(v) {}
  Variant(std::string v) : value_(std::move(v)) {}
  Variant(std::string_view v) : value_(std::string(v)) {}
  Variant(const char* v) : value_(std::string(v)) {}
  Variant(ObjectPtr v) : value_(std::move(v)) {}  // nullptr is Nothing
  Variant(Currency v) : value_(v) {}
  Variant(Date v) : value_(v) {}
  Variant(Decimal v) : value_(v) {}
  Variant(ErrorCode v) : value_(v) {}
  Variant(ArrayPtr v) : value_(std::move(v)) {}

  static Variant Null() { return Variant(NullTag{}); }
  static Variant Integer(std::int16_t v) { return Variant(v); }
  static Variant Long(std::int32_t v) { return Variant(static_cast<int>(v)); }
  static Variant Single(float v) { return Variant(v); }
  static Variant Byte(std::uint8_t v) { return Variant(v); }
  static Variant FromDate(double oleDate) { return Variant(Date{oleDate}); }
  static Variant FromCurrency(double v);  // rounded to four places
  static Variant Missing() { return Variant(ErrorCode{kParamNotFound}); }
  static Variant Nothing() { return Variant(ObjectPtr{}); }

  // The VarType code of the value.
  VarType Type() const;
  // VB's TypeName: "Empty", "Null", "Integer", "Long", "String", "Variant()", an
  // object's own TypeName, "Nothing" ...
  std::string TypeName() const;

  bool IsEmpty() const { return value_.index() == kEmpty; }
  bool IsNull() const { return value_.index() == kNull; }
  bool IsObject() const { return value_.index() == kObject; }
  bool IsNothing() const { return IsObject() && !std::get<ObjectPtr>(value_); }
  bool IsArray() const { return value_.index() == kArray; }
  bool IsString() const { return value_.index() == kString; }
  bool IsMissing() const {
    return value_.index() == kError && std::get<ErrorCode>(value_).code == kParamNotFound;
  }
  // A number subtype: Integer, Long, Single, Double, Currency, Decimal, Byte
  // (not Boolean, not Date).
  bool IsNumber() const;
  // Empty, Null or a string that is empty after trimming blanks.
  bool IsBlank() const;

  // Direct access; the caller must have checked the subtype.
  bool AsBool() const { return std::get<bool>(value_); }
  std::int16_t AsInteger() const { return std::get<std::int16_t>(value_); }
  std::int32_t AsLong() const { return std::get<std::int32_t>(value_); }
  float AsSingle() const { return std::get<float>(value_); }
  double AsDouble() const { return std::get<double>(value_); }
  Currency AsCurrency() const { return std::get<Currency>(value_); }
  Date AsDate() const { return std::get<Date>(value_); }
  const std::string& AsString() const { return std::get<std::string>(value_); }
  std::string& AsString() { return std::get<std::string>(value_); }
  const ObjectPtr& AsObject() const { return std::get<ObjectPtr>(value_); }
  ErrorCode AsError() const { return std::get<ErrorCode>(value_); }
  Decimal AsDecimal() const { return std::get<Decimal>(value_); }
  std::uint8_t AsByte() const { return std::get<std::uint8_t>(value_); }
  const ArrayPtr& AsArray() const { return std::get<ArrayPtr>(value_); }
  // The array for writing; detaches it first when it is shared.
  SafeArray& MutableArray();

  // VB's conversions. Each raises VbError as VB does (13, 6, 94, 424).
  std::string ToString() const;  // CStr; Empty gives "", Null raises 94
  bool ToBool() const;           // CBool; text "True"/"False" or a number
  std::uint8_t ToByte() const;   // CByte
  std::int16_t ToInteger() const;  // CInt, banker's rounding
  std::int32_t ToLong() const;     // CLng, banker's rounding
  float ToSingle() const;          // CSng
  double ToDouble() const;         // CDbl; text in the regional number format
  Currency ToCurrency() const;     // CCur
  Date ToDate() const;             // CDate; text in the regional date format
  Decimal ToDecimal() const;       // CDec
  ObjectPtr ToObject() const;      // Object required (424) unless an object
  // CStr, except that Null and Empty give "" (what a field shows for NULL).
  std::string ToText() const;
  // The value changed to the given subtype, as VB's CVar(...) conversions do.
  Variant ConvertTo(VarType type) const;

  // The value without its subtype tag, for std::visit by callers that must.
  using Storage = std::variant<EmptyTag, NullTag, bool, std::int16_t, std::int32_t, float, double,
                               Currency, Date, std::string, ObjectPtr, ErrorCode, Decimal,
                               std::uint8_t, ArrayPtr>;
  const Storage& storage() const { return value_; }

 private:
  // Indexes into Storage.
  enum : std::size_t {
    kEmpty = 0,
    kNull,
    kBool,
    kInteger,
    kLong,
    kSingle,
    kDouble,
    kCurrency,
    kDate,
    kString,
    kObject,
    kError,
    kDecimal,
    kByte,
    kArray
  };
  explicit Variant(NullTag t) : value_(t) {}
  explicit Variant(std::int16_t v) : value_(v) {}
  explicit Variant(float v) : value_(v) {}
  explicit Variant(std::uint8_t v) : value_(v) {}

  Storage value_;
};

// VB's comparison of two values (the operators =, <, > of VBScript with
// vbBinaryCompare, or text compare that ignores case). Numbers compare as
// numbers, strings as strings, a number and a numeric string as numbers, Empty
// as 0 or "". A Null on either side gives kNull.
enum class CompareResult { kLess = -1, kEqual = 0, kGreater = 1, kNull = 2 };
CompareResult Compare(const Variant& a, const Variant& b, bool textCompare = false);

// True when both hold the same subtype and value (strings compared exactly,
// objects by identity). Not VB's "=": it never converts, Null equals Null.
bool SameValue(const Variant& a, const Variant& b);

// VB's IsNumeric: numbers, Booleans, Empty, and text that reads as a number in
// the regional format.
bool IsNumeric(const Variant& v);
// VB's IsDate: dates and text that reads as a date in the regional format.
bool IsDate(const Variant& v);

// Banker's rounding of a double to an integer value, as CLng and CInt do.
double RoundHalfEven(double v);

}  // namespace ketrova
