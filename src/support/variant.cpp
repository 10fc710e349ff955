#include "support/variant.h"

#include <cmath>
#include <limits>

#include "support/date_text.h"
#include "support/number_text.h"
#include "support/object.h"
#include "support/regional.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

using Int128 = Decimal::Int128;

constexpr double kMinOleDate = -657434.0;         // 0100-01-01
constexpr double kMaxOleDate = 2958465.99999999;  // 9999-12-31 23:59:59

Int128 Pow10(int n) {
  Int128 p = 1;
  for (int i = 0; i < n; ++i) p *= 10;
  return p;
}

// 96 bits of mantissa, as VB's Decimal holds.
const Int128 kDecimalMax = (static_cast<Int128>(1) << 96) - 1;

double DecimalToDouble(Decimal d) {
  return static_cast<double>(d.mantissa) / static_cast<double>(Pow10(d.scale));
}

std::string DecimalToText(Decimal d, const std::string& separator) {
  bool negative = d.mantissa < 0;
  Int128 m = negative ? -d.mantissa : d.mantissa;
  std::string digits;
  do {
    digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(m % 10)));
    m /= 10;
  } while (m != 0);
  int scale = d.scale;
  while (static_cast<int>(digits.size()) <= scale) digits.insert(digits.begin(), '0');
  std::string whole = digits.substr(0, digits.size() - static_cast<std::size_t>(scale));
  std::string fraction = digits.substr(digits.size() - static_cast<std::size_t>(scale));
  while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
  std::string text = negative && (whole != "0" || !fraction.empty()) ? "-" : "";
  text += whole;
  if (!fraction.empty()) text += separator + fraction;
  return text;
}

// A C number text ("-12.5e3") as a Decimal; nullopt when it does not fit.
std::optional<Decimal> DecimalFromNormal(const std::string& normal) {
  std::size_t i = 0;
  bool negative = false;
  if (i < normal.size() && normal[i] == '-') {
    negative = true;
    ++i;
  }
  Int128 mantissa = 0;
  int scale = 0;
  bool fraction = false;
  int exponent = 0;
  for (; i < normal.size(); ++i) {
    char c = normal[i];
    if (c == '.') {
      fraction = true;
    } else if (c == 'e') {
      exponent = std::stoi(normal.substr(i + 1));
      break;
    } else {
      if (mantissa > kDecimalMax / 10) {
        // Further digits only matter before the point.
        if (!fraction) ++exponent;
        continue;
      }
      mantissa = mantissa * 10 + (c - '0');
      if (fraction) ++scale;
    }
  }
  scale -= exponent;
  while (scale < 0) {
    if (mantissa > kDecimalMax / 10) return std::nullopt;
    mantissa *= 10;
    ++scale;
  }
  while (scale > 28) {
    mantissa /= 10;
    --scale;
  }
  return Decimal{negative ? -mantissa : mantissa, scale};
}

// The value of an object's default member.
Variant DefaultValue(const ObjectPtr& object) {
  if (!object) throw VbError(91);
  try {
    return object->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
  } catch (const VbError& e) {
    if (e.Number == 438) throw VbError(13);
    throw;
  }
}

double CheckedDate(double v) {
  if (!(v >= kMinOleDate && v <= kMaxOleDate)) throw VbError(6);
  return v;
}

double TextToDouble(const std::string& text) {
  auto v = ParseNumber(text);
  if (!v) throw VbError(13);
  return *v;
}

template <typename T>
T RoundedInRange(double v) {
  double r = RoundHalfEven(v);
  if (!(r >= static_cast<double>(std::numeric_limits<T>::min()) &&
        r <= static_cast<double>(std::numeric_limits<T>::max())))
    throw VbError(6);
  return static_cast<T>(r);
}

// Folds a code point for text comparison: ASCII and Latin-1 letters.
char32_t FoldCase(char32_t c) {
  if (c >= 'a' && c <= 'z') return c - 32;
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 32;
  return c;
}

char32_t NextCodePoint(std::string_view s, std::size_t& i) {
  auto b = static_cast<unsigned char>(s[i++]);
  if (b < 0x80) return b;
  int extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
  char32_t c = b & (0x3F >> extra);
  for (int k = 0; k < extra && i < s.size(); ++k)
    c = (c << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
  return c;
}

int CompareText(std::string_view a, std::string_view b, bool textCompare) {
  if (!textCompare) {
    int c = a.compare(b);
    return c < 0 ? -1 : c > 0 ? 1 : 0;
  }
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    char32_t x = FoldCase(NextCodePoint(a, i)), y = FoldCase(NextCodePoint(b, j));
    if (x != y) return x < y ? -1 : 1;
  }
  if (i < a.size()) return 1;
  if (j < b.size()) return -1;
  return 0;
}

CompareResult FromInt(int c) {
  return c < 0 ? CompareResult::kLess : c > 0 ? CompareResult::kGreater : CompareResult::kEqual;
}

}  // namespace

Variant Variant::FromCurrency(double v) {
  double scaled = RoundHalfEven(v * 10000.0);
  if (!(std::fabs(scaled) < 9.2233720368547758e18)) throw VbError(6);
  return Variant(Currency{static_cast<std::int64_t>(scaled)});
}

VarType Variant::Type() const {
  switch (value_.index()) {
    case kEmpty:
      return vbEmpty;
    case kNull:
      return vbNull;
    case kBool:
      return vbBoolean;
    case kInteger:
      return vbInteger;
    case kLong:
      return vbLong;
    case kSingle:
      return vbSingle;
    case kDouble:
      return vbDouble;
    case kCurrency:
      return vbCurrency;
    case kDate:
      return vbDate;
    case kString:
      return vbString;
    case kObject:
      return vbObject;
    case kError:
      return vbError;
    case kDecimal:
      return vbDecimal;
    case kByte:
      return vbByte;
    case kArray: {
      const auto& a = AsArray();
      return static_cast<VarType>(vbArray + (a ? a->elementType : vbVariant));
    }
  }
  return vbEmpty;
}

namespace {
const char* SimpleTypeName(VarType t) {
  switch (t) {
    case vbEmpty:
      return "Empty";
    case vbNull:
      return "Null";
    case vbInteger:
      return "Integer";
    case vbLong:
      return "Long";
    case vbSingle:
      return "Single";
    case vbDouble:
      return "Double";
    case vbCurrency:
      return "Currency";
    case vbDate:
      return "Date";
    case vbString:
      return "String";
    case vbObject:
      return "Object";
    case vbError:
      return "Error";
    case vbBoolean:
      return "Boolean";
    case vbVariant:
      return "Variant";
    case vbDecimal:
      return "Decimal";
    case vbByte:
      return "Byte";
    default:
      return "Unknown";
  }
}
}  // namespace

std::string Variant::TypeName() const {
  if (IsObject()) {
    const auto& o = AsObject();
    return o ? o->TypeName() : "Nothing";
  }
  if (IsArray()) {
    const auto& a = AsArray();
    return std::string(SimpleTypeName(a ? a->elementType : vbVariant)) + "()";
  }
  return SimpleTypeName(Type());
}

bool Variant::IsNumber() const {
  switch (value_.index()) {
    case kInteger:
    case kLong:
    case kSingle:
    case kDouble:
    case kCurrency:
    case kDecimal:
    case kByte:
      return true;
    default:
      return false;
  }
}

bool Variant::IsBlank() const {
  if (IsEmpty() || IsNull()) return true;
  if (!IsString()) return false;
  for (char c : AsString())
    if (c != ' ') return false;
  return true;
}

SafeArray& Variant::MutableArray() {
  if (!IsArray()) throw VbError(13);
  auto& array = std::get<ArrayPtr>(value_);
  if (!array)
    array = std::make_shared<SafeArray>();
  else if (array.use_count() > 1)
    array = std::make_shared<SafeArray>(*array);
  return *array;
}

std::string Variant::ToString() const {
  const RegionalSettings& r = Regional();
  switch (value_.index()) {
    case kEmpty:
      return {};
    case kNull:
      throw VbError(94);
    case kBool:
      return AsBool() ? r.trueText : r.falseText;
    case kInteger:
      return std::to_string(AsInteger());
    case kLong:
      return std::to_string(AsLong());
    case kByte:
      return std::to_string(AsByte());
    case kSingle:
      return NumberToText(AsSingle(), 7, r);
    case kDouble:
      return NumberToText(AsDouble(), 15, r);
    case kCurrency:
      return DecimalToText(Decimal{AsCurrency().scaled, 4}, r.decimalSeparator);
    case kDecimal:
      return DecimalToText(AsDecimal(), r.decimalSeparator);
    case kDate:
      return DateToText(AsDate().value, r);
    case kString:
      return AsString();
    case kObject:
      return DefaultValue(AsObject()).ToString();
    case kError:
      return "Error " + std::to_string(AsError().code);
    default:
      throw VbError(13);
  }
}

std::string Variant::ToText() const {
  if (IsNull() || IsEmpty()) return {};
  return ToString();
}

bool Variant::ToBool() const {
  switch (value_.index()) {
    case kEmpty:
      return false;
    case kNull:
      throw VbError(94);
    case kBool:
      return AsBool();
    case kString: {
      std::string_view s = AsString();
      while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
      while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
      auto is = [&](std::string_view word) { return CompareText(s, word, true) == 0; };
      // Also the forms Write # stores Booleans in, as VB's conversion reads them.
      if (is("True") || is("Wahr") || is("#TRUE#")) return true;
      if (is("False") || is("Falsch") || is("#FALSE#")) return false;
      return TextToDouble(AsString()) != 0;
    }
    case kObject:
      return DefaultValue(AsObject()).ToBool();
    case kCurrency:
      return AsCurrency().scaled != 0;
    case kDecimal:
      return AsDecimal().mantissa != 0;
    default:
      return ToDouble() != 0;
  }
}

double Variant::ToDouble() const {
  switch (value_.index()) {
    case kEmpty:
      return 0;
    case kNull:
      throw VbError(94);
    case kBool:
      return AsBool() ? -1 : 0;
    case kInteger:
      return AsInteger();
    case kLong:
      return AsLong();
    case kByte:
      return AsByte();
    case kSingle:
      return AsSingle();
    case kDouble:
      return AsDouble();
    case kCurrency:
      return static_cast<double>(AsCurrency().scaled) / 10000.0;
    case kDecimal:
      return DecimalToDouble(AsDecimal());
    case kDate:
      return AsDate().value;
    case kString:
      return TextToDouble(AsString());
    case kObject:
      return DefaultValue(AsObject()).ToDouble();
    default:
      throw VbError(13);
  }
}

std::uint8_t Variant::ToByte() const {
  if (value_.index() == kByte) return AsByte();
  return RoundedInRange<std::uint8_t>(ToDouble());
}

std::int16_t Variant::ToInteger() const {
  if (value_.index() == kInteger) return AsInteger();
  return RoundedInRange<std::int16_t>(ToDouble());
}

std::int32_t Variant::ToLong() const {
  switch (value_.index()) {
    case kLong:
      return AsLong();
    case kInteger:
      return AsInteger();
    case kByte:
      return AsByte();
    case kBool:
      return AsBool() ? -1 : 0;
    case kCurrency: {
      // Exact: whole units with banker's rounding of the four places.
      std::int64_t s = AsCurrency().scaled;
      std::int64_t q = s / 10000, rem = s % 10000;
      if (rem > 5000 || (rem == 5000 && q % 2 != 0)) ++q;
      if (rem < -5000 || (rem == -5000 && q % 2 != 0)) --q;
      if (q < std::numeric_limits<std::int32_t>::min() ||
          q > std::numeric_limits<std::int32_t>::max())
        throw VbError(6);
      return static_cast<std::int32_t>(q);
    }
    default:
      return RoundedInRange<std::int32_t>(ToDouble());
  }
}

float Variant::ToSingle() const {
  if (value_.index() == kSingle) return AsSingle();
  double v = ToDouble();
  if (std::fabs(v) > std::numeric_limits<float>::max()) throw VbError(6);
  return static_cast<float>(v);
}

Currency Variant::ToCurrency() const {
  switch (value_.index()) {
    case kCurrency:
      return AsCurrency();
    case kInteger:
      return Currency{AsInteger() * std::int64_t{10000}};
    case kLong:
      return Currency{AsLong() * std::int64_t{10000}};
    case kByte:
      return Currency{AsByte() * std::int64_t{10000}};
    case kString: {
      auto normal = NormalizeNumberText(AsString(), Regional());
      if (!normal) throw VbError(13);
      auto d = DecimalFromNormal(*normal);
      if (!d) throw VbError(6);
      return Variant(*d).ToCurrency();
    }
    case kDecimal: {
      Decimal d = AsDecimal();
      Int128 m = d.mantissa;
      int scale = d.scale;
      while (scale < 4) {
        m *= 10;
        ++scale;
      }
      // Banker's rounding of the places beyond four.
      while (scale > 4) {
        Int128 q = m / 10, rem = m % 10;
        bool last = scale == 5;
        if (last) {
          if (rem > 5 || (rem == 5 && q % 2 != 0)) ++q;
          if (rem < -5 || (rem == -5 && q % 2 != 0)) --q;
        }
        m = q;
        --scale;
      }
      if (m > std::numeric_limits<std::int64_t>::max() ||
          m < std::numeric_limits<std::int64_t>::min())
        throw VbError(6);
      return Currency{static_cast<std::int64_t>(m)};
    }
    default:
      return FromCurrency(ToDouble()).AsCurrency();
  }
}

Date Variant::ToDate() const {
  switch (value_.index()) {
    case kDate:
      return AsDate();
    case kNull:
      throw VbError(94);
    case kString: {
      auto d = ParseDateText(AsString());
      if (!d) throw VbError(13);
      return Date{*d};
    }
    case kObject:
      return DefaultValue(AsObject()).ToDate();
    case kError:
    case kArray:
      throw VbError(13);
    default:
      return Date{CheckedDate(ToDouble())};
  }
}

Decimal Variant::ToDecimal() const {
  switch (value_.index()) {
    case kDecimal:
      return AsDecimal();
    case kEmpty:
      return Decimal{};
    case kNull:
      throw VbError(94);
    case kBool:
      return Decimal{AsBool() ? -1 : 0, 0};
    case kInteger:
      return Decimal{AsInteger(), 0};
    case kLong:
      return Decimal{AsLong(), 0};
    case kByte:
      return Decimal{AsByte(), 0};
    case kCurrency: {
      Decimal d{AsCurrency().scaled, 4};
      while (d.scale > 0 && d.mantissa % 10 == 0) {
        d.mantissa /= 10;
        --d.scale;
      }
      return d;
    }
    case kString: {
      auto normal = NormalizeNumberText(AsString(), Regional());
      if (!normal) throw VbError(13);
      auto d = DecimalFromNormal(*normal);
      if (!d) throw VbError(6);
      return *d;
    }
    case kObject:
      return DefaultValue(AsObject()).ToDecimal();
    default: {
      // A binary number goes through its 15-digit text, as VB converts it.
      double v = ToDouble();
      if (!std::isfinite(v)) throw VbError(6);
      RegionalSettings c;
      c.decimalSeparator = ".";
      c.thousandSeparator = ",";
      auto normal = NormalizeNumberText(NumberToText(v, 15, c), c);
      auto d = normal ? DecimalFromNormal(*normal) : std::nullopt;
      if (!d) throw VbError(6);
      return *d;
    }
  }
}

ObjectPtr Variant::ToObject() const {
  if (!IsObject()) throw VbError(424);
  return AsObject();
}

Variant Variant::ConvertTo(VarType type) const {
  switch (type) {
    case vbEmpty:
      return Variant();
    case vbNull:
      return Null();
    case vbInteger:
      return Integer(ToInteger());
    case vbLong:
      return Long(ToLong());
    case vbSingle:
      return Single(ToSingle());
    case vbDouble:
      return Variant(ToDouble());
    case vbCurrency:
      return Variant(ToCurrency());
    case vbDate:
      return Variant(ToDate());
    case vbString:
      return Variant(ToString());
    case vbObject:
      return Variant(ToObject());
    case vbBoolean:
      return Variant(ToBool());
    case vbVariant:
      return *this;
    case vbDecimal:
      return Variant(ToDecimal());
    case vbByte:
      return Byte(ToByte());
    case vbError:
      if (value_.index() == kError) return *this;
      return Variant(ErrorCode{ToLong()});
    default:
      throw VbError(13);
  }
}

double RoundHalfEven(double v) {
  // The default rounding mode rounds halves to even.
  return std::nearbyint(v);
}

namespace {

enum class Kind { kEmpty, kNull, kNumber, kString, kOther };

Kind KindOf(const Variant& v) {
  if (v.IsEmpty()) return Kind::kEmpty;
  if (v.IsNull()) return Kind::kNull;
  if (v.IsString()) return Kind::kString;
  switch (v.Type()) {
    case vbBoolean:
    case vbDate:
      return Kind::kNumber;
    default:
      return v.IsNumber() ? Kind::kNumber : Kind::kOther;
  }
}

CompareResult CompareNumbers(const Variant& a, const Variant& b) {
  if (a.Type() == vbCurrency && b.Type() == vbCurrency)
    return FromInt(a.AsCurrency().scaled < b.AsCurrency().scaled   ? -1
                   : a.AsCurrency().scaled > b.AsCurrency().scaled ? 1
                                                                   : 0);
  // A Single against a Double compares in single precision, as VB does:
  // CSng(0.001 * 0.001) = 0.000001 holds.
  if ((a.Type() == vbSingle && b.Type() == vbDouble) ||
      (a.Type() == vbDouble && b.Type() == vbSingle)) {
    float x = a.ToSingle(), y = b.ToSingle();
    return FromInt(x < y ? -1 : x > y ? 1 : 0);
  }
  double x = a.ToDouble(), y = b.ToDouble();
  return FromInt(x < y ? -1 : x > y ? 1 : 0);
}

}  // namespace

CompareResult Compare(const Variant& a, const Variant& b, bool textCompare) {
  if (a.IsObject()) return Compare(DefaultValue(a.AsObject()), b, textCompare);
  if (b.IsObject()) return Compare(a, DefaultValue(b.AsObject()), textCompare);
  Kind ka = KindOf(a), kb = KindOf(b);
  if (ka == Kind::kNull || kb == Kind::kNull) return CompareResult::kNull;
  if (ka == Kind::kOther || kb == Kind::kOther) throw VbError(13);
  if (ka == Kind::kEmpty && kb == Kind::kEmpty) return CompareResult::kEqual;
  if (ka == Kind::kString && kb == Kind::kString)
    return FromInt(CompareText(a.AsString(), b.AsString(), textCompare));
  if (ka == Kind::kEmpty)
    return kb == Kind::kString ? FromInt(b.AsString().empty() ? 0 : -1)
                               : CompareNumbers(Variant(0), b);
  if (kb == Kind::kEmpty)
    return ka == Kind::kString ? FromInt(a.AsString().empty() ? 0 : 1)
                               : CompareNumbers(a, Variant(0));
  if (ka == Kind::kNumber && kb == Kind::kNumber) return CompareNumbers(a, b);
  // A number and a string: as numbers when the string reads as one, else the
  // number is the smaller.
  const Variant& text = ka == Kind::kString ? a : b;
  auto number = ParseNumber(text.AsString());
  if (!number) return ka == Kind::kString ? CompareResult::kGreater : CompareResult::kLess;
  return ka == Kind::kString ? CompareNumbers(Variant(*number), b)
                             : CompareNumbers(a, Variant(*number));
}

bool SameValue(const Variant& a, const Variant& b) {
  if (a.storage().index() != b.storage().index()) return false;
  switch (a.Type()) {
    case vbDecimal:
      return a.AsDecimal().mantissa == b.AsDecimal().mantissa &&
             a.AsDecimal().scale == b.AsDecimal().scale;
    default:
      break;
  }
  if (a.IsArray()) {
    const auto &x = a.AsArray(), &y = b.AsArray();
    if (x == y) return true;
    if (!x || !y || x->elementType != y->elementType || x->data.size() != y->data.size())
      return false;
    if (x->bounds.size() != y->bounds.size()) return false;
    for (std::size_t i = 0; i < x->bounds.size(); ++i)
      if (x->bounds[i].lower != y->bounds[i].lower || x->bounds[i].count != y->bounds[i].count)
        return false;
    for (std::size_t i = 0; i < x->data.size(); ++i)
      if (!SameValue(x->data[i], y->data[i])) return false;
    return true;
  }
  return std::visit(
      [&](const auto& x) -> bool {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, ErrorCode>) {
          return x.code == std::get<ErrorCode>(b.storage()).code;
        } else if constexpr (std::is_same_v<T, Decimal> || std::is_same_v<T, ArrayPtr>) {
          return false;  // handled above
        } else {
          return x == std::get<T>(b.storage());
        }
      },
      a.storage());
}

bool IsNumeric(const Variant& v) {
  switch (v.Type()) {
    case vbEmpty:
    case vbBoolean:
      return true;
    case vbString:
      return ParseNumber(v.AsString()).has_value();
    default:
      return v.IsNumber();
  }
}

bool IsDate(const Variant& v) {
  if (v.Type() == vbDate) return true;
  if (!v.IsString()) return false;
  return ParseDateText(v.AsString()).has_value();
}

}  // namespace ketrova
