#include "platform/ado/providers/odbc/odbc_columns.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "platform/ado/providers/odbc/odbc_calls.h"

namespace ketrova::ado::odbc {
namespace {

// ADO's type for an ODBC SQL type, as the ODBC provider of ADO chose it.
DataTypeEnum AdoType(SQLSMALLINT sqlType, bool isUnsigned) {
  switch (sqlType) {
    case SQL_CHAR:
      return adChar;
    case SQL_VARCHAR:
      return adVarChar;
    case SQL_LONGVARCHAR:
      return adLongVarChar;
    case SQL_WCHAR:
      return adWChar;
    case SQL_WVARCHAR:
      return adVarWChar;
    case SQL_WLONGVARCHAR:
      return adLongVarWChar;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return adNumeric;
    case SQL_SMALLINT:
      return isUnsigned ? adUnsignedSmallInt : adSmallInt;
    case SQL_INTEGER:
      return isUnsigned ? adUnsignedInt : adInteger;
    case SQL_TINYINT:
      return isUnsigned ? adUnsignedTinyInt : adTinyInt;
    case SQL_BIGINT:
      return isUnsigned ? adUnsignedBigInt : adBigInt;
    case SQL_REAL:
      return adSingle;
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return adDouble;
    case SQL_BIT:
      return adBoolean;
    case SQL_TYPE_DATE:
    case SQL_DATE:
      return adDBDate;
    case SQL_TYPE_TIME:
    case SQL_TIME:
      return adDBTime;
    case SQL_TYPE_TIMESTAMP:
    case SQL_TIMESTAMP:
      return adDBTimeStamp;
    case SQL_BINARY:
      return adBinary;
    case SQL_VARBINARY:
      return adVarBinary;
    case SQL_LONGVARBINARY:
      return adLongVarBinary;
    case SQL_GUID:
      return adGUID;
    default:
      return adVarChar;
  }
}

// The ADO type of a Jet type word that a driver described as text.
std::optional<DataTypeEnum> JetTypeWord(const std::string& upperName) {
  static const std::pair<const char*, DataTypeEnum> words[] = {
      {"CURRENCY", adCurrency},       {"MONEY", adCurrency}, {"LONG", adInteger},
      {"COUNTER", adInteger},         {"YESNO", adBoolean},  {"LONGTEXT", adLongVarWChar},
      {"MEMO", adLongVarWChar},       {"NUMBER", adNumeric}, {"BINARY", adLongVarBinary},
      {"LONGBINARY", adLongVarBinary}};
  for (const auto& [word, type] : words)
    if (upperName == word) return type;
  return std::nullopt;
}

// DefinedSize, Precision and NumericScale as ADO reports them: bytes for fixed
// types, characters for text, 255 where a value has no meaning.
void SetSizes(ColumnInfo& c, SQLULEN columnSize, SQLSMALLINT digits) {
  auto size = static_cast<std::int64_t>(columnSize);
  c.numericScale = 255;
  switch (c.type) {
    case adSmallInt:
    case adUnsignedSmallInt:
      c.definedSize = 2;
      c.precision = 5;
      break;
    case adInteger:
    case adUnsignedInt:
      c.definedSize = 4;
      c.precision = 10;
      break;
    case adTinyInt:
    case adUnsignedTinyInt:
      c.definedSize = 1;
      c.precision = 3;
      break;
    case adBigInt:
    case adUnsignedBigInt:
      c.definedSize = 8;
      c.precision = 19;
      break;
    case adSingle:
      c.definedSize = 4;
      c.precision = 7;
      break;
    case adDouble:
      c.definedSize = 8;
      c.precision = 15;
      break;
    case adBoolean:
      c.definedSize = 2;
      c.precision = 255;
      break;
    case adDBDate:
      c.definedSize = 6;
      c.precision = 10;
      c.numericScale = 0;
      break;
    case adDBTime:
      c.definedSize = 6;
      c.precision = 8;
      c.numericScale = 0;
      break;
    case adDBTimeStamp:
      c.definedSize = 16;
      c.precision = 19;
      c.numericScale = static_cast<std::uint8_t>(std::clamp<int>(digits, 0, 9));
      break;
    case adNumeric:
      c.definedSize = 19;
      c.precision = static_cast<std::uint8_t>(std::clamp<std::int64_t>(size, 0, 255));
      c.numericScale = static_cast<std::uint8_t>(std::clamp<int>(digits, 0, 255));
      break;
    case adCurrency:
      c.definedSize = 8;
      c.precision = 19;
      break;
    case adGUID:
      c.definedSize = 16;
      c.precision = 255;
      break;
    default:
      c.definedSize = size > std::numeric_limits<std::int32_t>::max() || size <= 0 ? -1 : size;
      c.precision = 255;
      break;
  }
}

// A text attribute of a result column.
std::string ColumnAttribute(SQLHSTMT stmt, SQLUSMALLINT col, SQLUSMALLINT field, bool narrow) {
  SQLSMALLINT len = 0;
  if (narrow) {
    SQLCHAR text[1024] = {};
    if (!SQL_SUCCEEDED(SQLColAttribute(stmt, col, field, text, sizeof text, &len, nullptr)))
      return {};
    return reinterpret_cast<char*>(text);
  }
  SQLWCHAR text[512];
  if (!SQL_SUCCEEDED(SQLColAttributeW(stmt, col, field, text, sizeof text, &len, nullptr)))
    return {};
  return FromW(
      text, std::min<std::size_t>(
                static_cast<std::size_t>(std::max<SQLSMALLINT>(len, 0)) / sizeof(SQLWCHAR), 511));
}

}  // namespace

ColumnInfo Describe(SQLHSTMT stmt, SQLUSMALLINT col, bool narrow) {
  SQLSMALLINT nameLen = 0, sqlType = 0, digits = 0, nullable = SQL_NULLABLE_UNKNOWN;
  SQLULEN size = 0;
  ColumnInfo c;
  if (narrow) {
    SQLCHAR name[1024] = {};
    Check(
        SQLDescribeCol(stmt, col, name, sizeof name, &nameLen, &sqlType, &size, &digits, &nullable),
        SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow);
    c.name = reinterpret_cast<char*>(name);
  } else {
    SQLWCHAR name[512];
    Check(SQLDescribeColW(stmt, col, name, 512, &nameLen, &sqlType, &size, &digits, &nullable),
          SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement);
    c.name = FromW(name, static_cast<std::size_t>(std::min<SQLSMALLINT>(nameLen, 511)));
  }
  // A driver that does not tell these has a signed column, not counted up by
  // itself, and no type name or base table (which the update then asks for).
  SQLLEN isUnsigned = SQL_FALSE, autoUnique = SQL_FALSE;
  if (!SQL_SUCCEEDED(
          SQLColAttribute(stmt, col, SQL_DESC_UNSIGNED, nullptr, 0, nullptr, &isUnsigned)))
    isUnsigned = SQL_FALSE;
  if (!SQL_SUCCEEDED(
          SQLColAttribute(stmt, col, SQL_DESC_AUTO_UNIQUE_VALUE, nullptr, 0, nullptr, &autoUnique)))
    autoUnique = SQL_FALSE;
  c.typeName = ColumnAttribute(stmt, col, SQL_DESC_TYPE_NAME, narrow);
  c.baseTable = ColumnAttribute(stmt, col, SQL_DESC_BASE_TABLE_NAME, narrow);
  c.baseColumn = ColumnAttribute(stmt, col, SQL_DESC_BASE_COLUMN_NAME, narrow);
  c.nullable = nullable != SQL_NO_NULLS;
  c.autoIncrement = autoUnique == SQL_TRUE;
  SetAdoType(c, sqlType, size, digits, isUnsigned == SQL_TRUE);
  return c;
}

void SetAdoType(ColumnInfo& c, SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT digits,
                bool isUnsigned) {
  c.sqlType = sqlType;
  c.type = AdoType(sqlType, isUnsigned);
  // The SQLite3 driver describes declared decimals as text.
  std::string upperName = AsciiUpper(c.typeName);
  if ((sqlType == SQL_VARCHAR || sqlType == SQL_CHAR || sqlType == SQL_DOUBLE ||
       sqlType == SQL_FLOAT) &&
      (upperName.rfind("DECIMAL", 0) == 0 || upperName.rfind("NUMERIC", 0) == 0))
    c.type = adNumeric;
  // It describes every type word it does not know as text, also the Jet words
  // that tables created by a conversion declare; read them as Jet meant them.
  if (sqlType == SQL_VARCHAR || sqlType == SQL_CHAR) {
    if (auto jet = JetTypeWord(upperName)) c.type = *jet;
  }
  SetSizes(c, size, digits);
}

}  // namespace ketrova::ado::odbc
