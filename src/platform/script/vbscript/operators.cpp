#include "platform/script/vbscript/operators.h"

#include <cassert>
#include <climits>
#include <cmath>

#include "support/number_text.h"
#include "support/object.h"
#include "support/vb_error.h"

namespace ketrova::script::vbscript {
namespace {

// Numeric ranks in the order VBScript widens them.
enum Rank { kByte = 1, kInteger = 2, kLong = 3, kSingle = 4, kDouble = 5, kCurrency = 6 };

Rank RankOf(const Variant& v) {
  switch (v.Type()) {
    case vbByte:
      return kByte;
    case vbEmpty:
    case vbBoolean:
    case vbInteger:
      return kInteger;
    case vbLong:
      return kLong;
    case vbSingle:
      return kSingle;
    case vbCurrency:
      return kCurrency;
    default:
      return kDouble;  // Double, Decimal, Date, String
  }
}

// The whole number that Empty, a Boolean, a Byte, an Integer or a Long stands
// for; false for the other subtypes.
bool WholeNumber(const Variant& v, std::int64_t& n) {
  switch (v.Type()) {
    case vbEmpty:
      n = 0;
      return true;
    case vbBoolean:
      n = v.AsBool() ? -1 : 0;
      return true;
    case vbByte:
      n = v.AsByte();
      return true;
    case vbInteger:
      n = v.AsInteger();
      return true;
    case vbLong:
      n = v.AsLong();
      return true;
    default:
      return false;
  }
}

double Num(const Variant& v) {
  if (std::int64_t n = 0; WholeNumber(v, n)) return static_cast<double>(n);
  switch (v.Type()) {
    case vbSingle:
      return v.AsSingle();
    case vbDouble:
      return v.AsDouble();
    case vbDate:
      return v.AsDate().value;
    case vbObject:
      throw VbError(v.IsNothing() ? 91 : 438);
    case vbArray:
      throw VbError(13);
    default:
      return v.ToDouble();
  }
}

std::int64_t IntOf(const Variant& v) {
  if (std::int64_t n = 0; WholeNumber(v, n)) return n;
  switch (v.Type()) {
    case vbArray:
      throw VbError(13);
    default:
      return v.ToLong();
  }
}

// An integer result of the given rank, widened when it does not fit.
Variant IntegerResult(std::int64_t r, Rank rank) {
  if (rank == kByte && r >= 0 && r <= 255) return Variant::Byte(static_cast<std::uint8_t>(r));
  if (rank <= kInteger && r >= -32768 && r <= 32767)
    return Variant::Integer(static_cast<std::int16_t>(r));
  if (r >= INT32_MIN && r <= INT32_MAX) return Variant::Long(static_cast<std::int32_t>(r));
  return Variant(static_cast<double>(r));
}

Variant FloatResult(double r, Rank rank) {
  if (std::isinf(r) || std::isnan(r)) throw VbError(6);
  if (rank == kSingle) {
    if (std::fabs(r) > 3.402823466e38) return Variant(r);
    return Variant::Single(static_cast<float>(r));
  }
  if (rank == kCurrency) return Variant::FromCurrency(r);
  return Variant(r);
}

Variant DateResult(double r) {
  if (r < -657434.0 || r >= 2958466.0) throw VbError(6);
  return Variant::FromDate(r);
}

// +, - or * on two numbers of one kind (the operands of Arithmetic).
template <typename T>
T Apply(Op op, T x, T y) {
  switch (op) {
    case Op::kAdd:
      return x + y;
    case Op::kSub:
      return x - y;
    default:
      assert(op == Op::kMul);
      return x * y;
  }
}

Variant Arithmetic(Op op, const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  Rank rank = std::max(RankOf(a), RankOf(b));
  bool dateResult = (a.Type() == vbDate || b.Type() == vbDate) && op != Op::kMul;
  if (op == Op::kSub && a.Type() == vbDate && b.Type() == vbDate) dateResult = false;
  if (a.Type() == vbString || b.Type() == vbString) rank = std::max(rank, kDouble);
  if (!dateResult && rank <= kLong) {
    const std::int64_t r = Apply(op, IntOf(a), IntOf(b));
    if (rank == kByte && (a.Type() != vbByte || b.Type() != vbByte)) rank = kInteger;
    if (rank == kByte && (r < 0 || r > 255)) rank = kInteger;
    return IntegerResult(r, rank);
  }
  const double r = Apply(op, Num(a), Num(b));
  if (dateResult) return DateResult(r);
  return FloatResult(r, rank == kCurrency || rank == kSingle ? rank : kDouble);
}

Variant Add(const Variant& a, const Variant& b) {
  if (a.IsString() && b.IsString()) return Variant(a.AsString() + b.AsString());
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  if (a.IsString() && b.IsEmpty()) return a;
  if (b.IsString() && a.IsEmpty()) return b;
  return Arithmetic(Op::kAdd, a, b);
}

Variant Divide(const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  double x = Num(a), y = Num(b);
  if (y == 0) throw VbError(x == 0 ? 6 : 11);
  Rank rank = std::max(RankOf(a), RankOf(b));
  return FloatResult(x / y, rank == kSingle ? kSingle : kDouble);
}

Variant IntegerDivide(Op op, const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  std::int64_t x = IntOf(a), y = IntOf(b);
  if (y == 0) throw VbError(11);
  Rank rank = std::max(RankOf(a), RankOf(b));
  if (rank > kLong) rank = kLong;
  if (rank == kByte && (a.Type() != vbByte || b.Type() != vbByte)) rank = kInteger;
  return IntegerResult(op == Op::kIntDiv ? x / y : x % y, rank);
}

Variant Power(const Variant& a, const Variant& b) {
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  double x = Num(a), y = Num(b);
  if ((x == 0 && y < 0) || (x < 0 && y != std::floor(y))) throw VbError(5);
  double r = std::pow(x, y);
  if (std::isinf(r) || std::isnan(r)) throw VbError(6);
  return Variant(r);
}

Variant Concat(const Variant& a, const Variant& b) {
  if (a.IsNull() && b.IsNull()) return Variant::Null();
  if (a.IsArray() || b.IsArray()) throw VbError(13);
  std::string s = a.IsNull() ? std::string() : a.ToString();
  s += b.IsNull() ? std::string() : b.ToString();
  return Variant(std::move(s));
}

Variant Comparison(Op op, const Variant& a, const Variant& b) {
  if (a.IsArray() || b.IsArray()) throw VbError(13);
  CompareResult c = Compare(a, b, false);
  if (c == CompareResult::kNull) return Variant::Null();
  switch (op) {
    case Op::kEq:
      return Variant(c == CompareResult::kEqual);
    case Op::kNe:
      return Variant(c != CompareResult::kEqual);
    case Op::kLt:
      return Variant(c == CompareResult::kLess);
    case Op::kGt:
      return Variant(c == CompareResult::kGreater);
    case Op::kLe:
      return Variant(c != CompareResult::kGreater);
    default:
      return Variant(c != CompareResult::kLess);
  }
}

bool IsTrueValue(const Variant& v) {
  return v.Type() == vbBoolean ? v.AsBool() : IntOf(v) != 0;
}

Variant Logical(Op op, const Variant& a, const Variant& b) {
  bool an = a.IsNull(), bn = b.IsNull();
  if (an || bn) {
    if (an && bn) return Variant::Null();
    const Variant& other = an ? b : a;
    switch (op) {
      case Op::kAnd:
        if (!IsTrueValue(other) && IntOf(other) == 0)
          return other.Type() == vbBoolean
                     ? Variant(false)
                     : IntegerResult(0, RankOf(other) > kLong ? kLong : RankOf(other));
        return Variant::Null();
      case Op::kOr:
        if (other.Type() == vbBoolean && other.AsBool()) return Variant(true);
        if (other.Type() != vbBoolean && IntOf(other) == -1)
          return IntegerResult(-1, RankOf(other) > kLong ? kLong : RankOf(other));
        return Variant::Null();
      case Op::kImp:
        if (an)
          return IsTrueValue(b) ? (b.Type() == vbBoolean ? Variant(true) : IntegerResult(-1, kLong))
                                : Variant::Null();
        return IsTrueValue(a) ? Variant::Null()
                              : (a.Type() == vbBoolean ? Variant(true) : IntegerResult(-1, kLong));
      default:
        return Variant::Null();
    }
  }
  if (a.Type() == vbBoolean && b.Type() == vbBoolean) {
    bool x = a.AsBool(), y = b.AsBool();
    switch (op) {
      case Op::kAnd:
        return Variant(x && y);
      case Op::kOr:
        return Variant(x || y);
      case Op::kXor:
        return Variant(x != y);
      case Op::kEqv:
        return Variant(x == y);
      default:
        return Variant(!x || y);
    }
  }
  Rank rank = std::max(RankOf(a), RankOf(b));
  if (rank > kLong) rank = kLong;
  if (rank == kByte && (a.Type() != vbByte || b.Type() != vbByte)) rank = kInteger;
  std::int32_t x = static_cast<std::int32_t>(IntOf(a)), y = static_cast<std::int32_t>(IntOf(b)), r;
  switch (op) {
    case Op::kAnd:
      r = x & y;
      break;
    case Op::kOr:
      r = x | y;
      break;
    case Op::kXor:
      r = x ^ y;
      break;
    case Op::kEqv:
      r = ~(x ^ y);
      break;
    default:
      r = ~x | y;
      break;
  }
  if (rank == kByte) return Variant::Byte(static_cast<std::uint8_t>(r));
  if (rank == kInteger) return Variant::Integer(static_cast<std::int16_t>(r));
  return Variant::Long(r);
}

}  // namespace

Variant BinaryOp(Op op, const Variant& a, const Variant& b) {
  switch (op) {
    case Op::kAdd:
      return Add(a, b);
    case Op::kSub:
    case Op::kMul:
      return Arithmetic(op, a, b);
    case Op::kDiv:
      return Divide(a, b);
    case Op::kIntDiv:
    case Op::kMod:
      return IntegerDivide(op, a, b);
    case Op::kPow:
      return Power(a, b);
    case Op::kConcat:
      return Concat(a, b);
    case Op::kEq:
    case Op::kNe:
    case Op::kLt:
    case Op::kGt:
    case Op::kLe:
    case Op::kGe:
      return Comparison(op, a, b);
    case Op::kIs:
      if (!a.IsObject() || !b.IsObject()) throw VbError(424);
      return Variant(a.AsObject() == b.AsObject());
    case Op::kAnd:
    case Op::kOr:
    case Op::kXor:
    case Op::kEqv:
    case Op::kImp:
      return Logical(op, a, b);
    default:
      throw VbError(5);
  }
}

Variant UnaryOp(Op op, const Variant& a) {
  if (a.IsNull()) return Variant::Null();
  if (op == Op::kNot) {
    switch (a.Type()) {
      case vbBoolean:
        return Variant(!a.AsBool());
      case vbEmpty:
        return Variant::Integer(-1);
      case vbByte:
        return Variant::Byte(static_cast<std::uint8_t>(~a.AsByte()));
      case vbInteger:
        return Variant::Integer(static_cast<std::int16_t>(~a.AsInteger()));
      case vbString:
        // A text that reads as no number but as a Boolean word ("Wahr",
        // "#FALSE#") is negated as that Boolean; any other is a number or 13.
        if (!ParseNumber(a.AsString())) return Variant(!a.ToBool());
        return Variant::Long(~static_cast<std::int32_t>(IntOf(a)));
      default:
        return Variant::Long(~static_cast<std::int32_t>(IntOf(a)));
    }
  }
  switch (a.Type()) {
    case vbEmpty:
      return Variant::Integer(0);
    case vbBoolean:
      return Variant::Integer(a.AsBool() ? 1 : 0);
    case vbByte:
      return Variant::Integer(static_cast<std::int16_t>(-a.AsByte()));
    case vbInteger:
      return IntegerResult(-static_cast<std::int64_t>(a.AsInteger()), kInteger);
    case vbLong:
      return IntegerResult(-static_cast<std::int64_t>(a.AsLong()), kLong);
    case vbSingle:
      return Variant::Single(-a.AsSingle());
    case vbCurrency: {
      Currency c = a.AsCurrency();
      c.scaled = -c.scaled;
      return Variant(c);
    }
    case vbDate:
      return Variant::FromDate(-a.AsDate().value);
    default:
      return Variant(-Num(a));
  }
}

bool IsTrue(const Variant& v) {
  switch (v.Type()) {
    case vbBoolean:
      return v.AsBool();
    case vbNull:
    case vbEmpty:
      return false;
    case vbString:
      return v.ToBool();
    default:
      return Num(v) != 0;
  }
}

}  // namespace ketrova::script::vbscript
