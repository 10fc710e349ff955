#include "platform/ado/providers/odbc/odbc_values.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

#include "platform/ado/providers/odbc/odbc_calls.h"
#include "platform/ado/value_text.h"

namespace ketrova::ado::odbc {
namespace {}  // namespace

Variant GetValue(SQLHSTMT stmt, SQLUSMALLINT col, const ColumnInfo& c, bool narrow) {
  SQLLEN ind = 0;
  auto get = [&](SQLSMALLINT cType, void* buf, SQLLEN size) {
    SQLRETURN rc = SQLGetData(stmt, col, cType, buf, size, &ind);
    if (!SQL_SUCCEEDED(rc)) ThrowOdbcError(SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow);
    return ind != SQL_NULL_DATA;
  };
  switch (c.type) {
    case adSmallInt:
    case adInteger:
    case adTinyInt:
    case adUnsignedTinyInt:
    case adUnsignedSmallInt:
    case adUnsignedInt:
    case adBigInt:
    case adUnsignedBigInt: {
      SQLBIGINT v = 0;
      if (!get(SQL_C_SBIGINT, &v, sizeof v)) return Variant::Null();
      return IntegerValue(v, c.type);
    }
    case adSingle: {
      float v = 0;
      if (!get(SQL_C_FLOAT, &v, sizeof v)) return Variant::Null();
      return Variant::Single(v);
    }
    case adDouble: {
      double v = 0;
      if (!get(SQL_C_DOUBLE, &v, sizeof v)) return Variant::Null();
      return Variant(v);
    }
    case adBoolean: {
      // Some drivers answer a bit column with text ("t"); read it as text.
      char v[16] = {};
      if (!get(SQL_C_CHAR, v, sizeof v)) return Variant::Null();
      // MySQL's BOOLEAN is a TINYINT(1), which may hold any small number: a
      // number other than 0, 1 and -1 keeps its value, a Boolean would lose it.
      char* end = nullptr;
      const long number = std::strtol(v, &end, 10);
      if (end != v && *end == '\0' && number != 0 && number != 1 && number != -1 &&
          number >= INT16_MIN && number <= INT16_MAX)
        return Variant::Integer(static_cast<std::int16_t>(number));
      char f = static_cast<char>(std::tolower(static_cast<unsigned char>(v[0])));
      return Variant(!(f == '0' || f == 'f' || f == 'n' || f == 0));
    }
    case adCurrency: {
      double v = 0;
      if (!get(SQL_C_DOUBLE, &v, sizeof v)) return Variant::Null();
      return Variant::FromCurrency(v);
    }
    case adNumeric:
    case adDecimal:
    case adVarNumeric: {
      char v[128] = {};
      if (!get(SQL_C_CHAR, v, sizeof v)) return Variant::Null();
      Variant d = DecimalFromText(v);
      if (d.IsEmpty()) return Variant(std::strtod(v, nullptr));
      return d;
    }
    case adDBDate: {
      SQL_DATE_STRUCT v{};
      if (!get(SQL_C_TYPE_DATE, &v, sizeof v)) return Variant::Null();
      DateParts p{v.year, v.month, v.day};
      return Variant::FromDate(OleDateFromParts(p));
    }
    case adDBTime: {
      SQL_TIME_STRUCT v{};
      if (!get(SQL_C_TYPE_TIME, &v, sizeof v)) return Variant::Null();
      DateParts p;
      p.hour = v.hour;
      p.minute = v.minute;
      p.second = v.second;
      return Variant::FromDate(OleDateFromParts(p));
    }
    case adDate:
    case adDBTimeStamp: {
      SQL_TIMESTAMP_STRUCT v{};
      if (!get(SQL_C_TYPE_TIMESTAMP, &v, sizeof v)) return Variant::Null();
      DateParts p{v.year, v.month, v.day, v.hour, v.minute, v.second, v.fraction};
      return Variant::FromDate(OleDateFromParts(p));
    }
    case adBinary:
    case adVarBinary:
    case adLongVarBinary: {
      std::basic_string<unsigned char> bytes;
      if (!GetChunks(stmt, col, SQL_C_BINARY, bytes, narrow)) return Variant::Null();
      auto array = std::make_shared<SafeArray>();
      array->elementType = vbByte;
      array->bounds.push_back({0, static_cast<std::int32_t>(bytes.size())});
      array->data.reserve(bytes.size());
      for (unsigned char b : bytes) array->data.push_back(Variant::Byte(b));
      return Variant(array);
    }
    default: {
      if (narrow) {
        std::string text;
        if (!GetChunks(stmt, col, SQL_C_CHAR, text, narrow)) return Variant::Null();
        return Variant(std::move(text));
      }
      std::u16string text;
      if (!GetChunks(stmt, col, SQL_C_WCHAR, text)) return Variant::Null();
      return Variant(Utf16ToUtf8(text));
    }
  }
}

void BindParam(SQLHSTMT stmt, SQLUSMALLINT n, const Variant& v, ParamBuffer& b, bool narrow) {
  SQLRETURN rc;
  switch (v.Type()) {
    case vbEmpty:
    case vbNull:
      b.ind = SQL_NULL_DATA;
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 1, 0, nullptr, 0,
                            &b.ind);
      break;
    case vbBoolean:
      b.bit = v.AsBool() ? 1 : 0;
      b.ind = 0;
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_BIT, SQL_BIT, 1, 0, &b.bit, 0, &b.ind);
      break;
    case vbInteger:
    case vbLong:
    case vbByte:
      b.integer = v.Type() == vbInteger ? v.AsInteger()
                  : v.Type() == vbLong  ? v.AsLong()
                                        : v.AsByte();
      b.ind = 0;
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_SBIGINT, SQL_BIGINT, 19, 0, &b.integer,
                            0, &b.ind);
      break;
    case vbSingle:
    case vbDouble:
      b.real = v.Type() == vbSingle ? v.AsSingle() : v.AsDouble();
      b.ind = 0;
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 15, 0, &b.real, 0,
                            &b.ind);
      break;
    case vbCurrency:
    case vbDecimal: {
      b.narrow =
          v.Type() == vbCurrency ? CurrencyToText(v.AsCurrency()) : DecimalToText(v.AsDecimal());
      b.ind = static_cast<SQLLEN>(b.narrow.size());
      auto dot = b.narrow.find('.');
      SQLSMALLINT scale =
          dot == std::string::npos ? 0 : static_cast<SQLSMALLINT>(b.narrow.size() - dot - 1);
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_NUMERIC,
                            std::max<SQLULEN>(b.narrow.size(), 1), scale, b.narrow.data(),
                            static_cast<SQLLEN>(b.narrow.size()), &b.ind);
      break;
    }
    case vbDate: {
      DateParts p = PartsFromOleDate(v.AsDate().value);
      b.timestamp = {static_cast<SQLSMALLINT>(p.year),
                     static_cast<SQLUSMALLINT>(p.month),
                     static_cast<SQLUSMALLINT>(p.day),
                     static_cast<SQLUSMALLINT>(p.hour),
                     static_cast<SQLUSMALLINT>(p.minute),
                     static_cast<SQLUSMALLINT>(p.second),
                     0};
      b.ind = sizeof b.timestamp;
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 19,
                            0, &b.timestamp, sizeof b.timestamp, &b.ind);
      break;
    }
    default:
      if (v.IsArray()) {
        b.bytes.clear();
        for (const auto& e : v.AsArray()->data) b.bytes.push_back(e.ToByte());
        b.ind = static_cast<SQLLEN>(b.bytes.size());
        rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_BINARY, SQL_LONGVARBINARY,
                              std::max<SQLULEN>(b.bytes.size(), 1), 0, b.bytes.data(),
                              static_cast<SQLLEN>(b.bytes.size()), &b.ind);
        break;
      }
      if (narrow) {
        b.narrow = v.ToText();
        b.ind = static_cast<SQLLEN>(b.narrow.size());
        rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR,
                              std::max<SQLULEN>(b.narrow.size(), 1), 0, b.narrow.data(),
                              static_cast<SQLLEN>(b.narrow.size()), &b.ind);
        break;
      }
      b.text = Utf8ToUtf16(v.ToText());
      b.ind = static_cast<SQLLEN>(b.text.size() * sizeof(char16_t));
      rc = SQLBindParameter(stmt, n, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR,
                            std::max<SQLULEN>(b.text.size(), 1), 0, b.text.data(),
                            static_cast<SQLLEN>(b.text.size() * sizeof(char16_t)), &b.ind);
      break;
  }
  Check(rc, SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow);
}

}  // namespace ketrova::ado::odbc
