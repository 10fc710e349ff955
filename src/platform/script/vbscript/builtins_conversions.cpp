// Conversions (CStr, CLng, ... on Variant's own rules), Hex and Oct, and the
// type tests.
#include <string>

#include "platform/script/vbscript/builtins_common.h"
#include "platform/script/vbscript/program.h"
#include "support/number_text.h"
#include "support/object.h"

namespace ketrova::script::vbscript {

Variant BiCBool(Args args) {
  return Variant(args[0].ToBool());
}
// CByte(True) is 255: the Boolean's 16 bits, not the number -1.
Variant BiCByte(Args args) {
  if (args[0].Type() == vbBoolean) return Variant::Byte(args[0].AsBool() ? 255 : 0);
  return Variant::Byte(args[0].ToByte());
}
Variant BiCCur(Args args) {
  return Variant(args[0].ToCurrency());
}
// CDate reads a text that is no date but a number as that number of days
// (CDate("1") is 31.12.1899).
Variant BiCDate(Args args) {
  if (args[0].Type() == vbString) {
    try {
      return Variant(args[0].ToDate());
    } catch (const VbError& e) {
      auto days = ParseNumber(args[0].AsString());
      if (e.Number != 13 || !days) throw;
      return Variant(Variant(*days).ToDate());
    }
  }
  return Variant(args[0].ToDate());
}
Variant BiCDbl(Args args) {
  return Variant(args[0].ToDouble());
}
Variant BiCInt(Args args) {
  return Variant::Integer(args[0].ToInteger());
}
Variant BiCLng(Args args) {
  return Variant::Long(args[0].ToLong());
}
Variant BiCSng(Args args) {
  return Variant::Single(args[0].ToSingle());
}
Variant BiCStr(Args args) {
  return Variant(args[0].ToString());
}

namespace {

// Hex and Oct work on the value's own width: an Integer, Byte or Boolean as 16
// bits (Hex(-1) is "FFFF"), anything else as a Long (Hex(CLng(-1)) is
// "FFFFFFFF").
Variant Radix(Args args, unsigned bitsPerDigit) {
  const Variant& v = args[0];
  if (v.IsNull()) return Variant::Null();
  std::uint32_t value;
  switch (v.Type()) {
    case vbInteger:
    case vbBoolean:
      value = static_cast<std::uint16_t>(v.ToInteger());
      break;
    case vbByte:
      value = v.AsByte();
      break;
    default:
      value = static_cast<std::uint32_t>(v.ToLong());
  }
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out;
  do {
    out.insert(out.begin(), kDigits[value & ((1u << bitsPerDigit) - 1)]);
    value >>= bitsPerDigit;
  } while (value != 0);
  return Variant(out);
}

}  // namespace

Variant BiHex(Args args) {
  return Radix(args, 4);
}
Variant BiOct(Args args) {
  return Radix(args, 3);
}

Variant BiIsArray(Args args) {
  return Variant(args[0].IsArray());
}
Variant BiIsDate(Args args) {
  return Variant(IsDate(args[0]));
}
Variant BiIsEmpty(Args args) {
  return Variant(args[0].IsEmpty());
}
Variant BiIsNull(Args args) {
  return Variant(args[0].IsNull());
}
Variant BiIsNumeric(Args args) {
  return Variant(IsNumeric(args[0]));
}
Variant BiIsObject(Args args) {
  return Variant(args[0].IsObject());
}
Variant BiTypeName(Args args) {
  return Variant(args[0].TypeName());
}

// VarType of an object with a default member is the type of that member's
// value (VarType(rs("Name")) is vbString for a text field); of one without, or
// of Nothing, vbObject.
Variant BiVarType(Args args) {
  const Variant& v = args[0];
  if (v.IsObject() && v.AsObject()) {
    try {
      Variant value = v.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
      if (!value.IsObject()) return Variant::Integer(static_cast<std::int16_t>(value.Type()));
    } catch (const VbError&) {
    }
    return Variant::Integer(vbObject);
  }
  return Variant::Integer(static_cast<std::int16_t>(v.Type()));
}

}  // namespace ketrova::script::vbscript
