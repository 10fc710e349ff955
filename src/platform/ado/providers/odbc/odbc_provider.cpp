#include "platform/ado/providers/odbc/odbc_provider.h"

#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/ado/providers/odbc/odbc_diagnostics.h"
#include "platform/ado/value_text.h"
#include "support/collection.h"

namespace ketrova::ado {

// A prepared statement and what describing its result told.
struct OdbcStatement {
  std::string sql;
  SQLHSTMT stmt = SQL_NULL_HSTMT;
  bool described = false;
  std::vector<ColumnInfo> columns;
  std::int64_t maxRows = 0;
  int timeout = -1;
  ~OdbcStatement() {
    if (stmt) SQLFreeHandle(SQL_HANDLE_STMT, stmt);
  }
};

namespace {

constexpr std::size_t kIdleStatements = 64;

SQLHENV Env() {
  static SQLHENV env = [] {
    SQLHENV e = SQL_NULL_HENV;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &e);
    SQLSetEnvAttr(e, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    return e;
  }();
  return env;
}

SQLWCHAR* W(std::u16string& s) {
  return reinterpret_cast<SQLWCHAR*>(s.data());
}

SQLCHAR* N(std::string& s) {
  return reinterpret_cast<SQLCHAR*>(s.data());
}

std::string FromW(const SQLWCHAR* s, std::size_t n) {
  return Utf16ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(s), n));
}

std::string Upper(std::string s) {
  for (auto& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

void Check(SQLRETURN rc, SQLSMALLINT type, SQLHANDLE h, OdbcPhase phase, bool narrow = false) {
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) ThrowOdbcError(type, h, phase, narrow);
}

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
  c.sqlType = sqlType;
  SQLLEN isUnsigned = SQL_FALSE, autoUnique = SQL_FALSE;
  SQLColAttribute(stmt, col, SQL_DESC_UNSIGNED, nullptr, 0, nullptr, &isUnsigned);
  SQLColAttribute(stmt, col, SQL_DESC_AUTO_UNIQUE_VALUE, nullptr, 0, nullptr, &autoUnique);
  c.typeName = ColumnAttribute(stmt, col, SQL_DESC_TYPE_NAME, narrow);
  c.baseTable = ColumnAttribute(stmt, col, SQL_DESC_BASE_TABLE_NAME, narrow);
  c.baseColumn = ColumnAttribute(stmt, col, SQL_DESC_BASE_COLUMN_NAME, narrow);
  c.type = AdoType(sqlType, isUnsigned == SQL_TRUE);
  // The SQLite3 driver describes declared decimals as text.
  std::string upperName = Upper(c.typeName);
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
  c.nullable = nullable != SQL_NO_NULLS;
  c.autoIncrement = autoUnique == SQL_TRUE;
  return c;
}

// Reads the whole of a long column with repeated SQLGetData calls.
template <typename Char>
bool GetChunks(SQLHSTMT stmt, SQLUSMALLINT col, SQLSMALLINT cType, std::basic_string<Char>& out,
               bool narrow = false) {
  out.clear();
  Char buf[2048];
  for (;;) {
    SQLLEN ind = 0;
    SQLRETURN rc = SQLGetData(stmt, col, cType, buf, sizeof buf, &ind);
    if (rc == SQL_NO_DATA) break;
    if (!SQL_SUCCEEDED(rc)) ThrowOdbcError(SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow);
    if (ind == SQL_NULL_DATA) return false;
    std::size_t terminator = (cType == SQL_C_BINARY) ? 0 : 1;
    std::size_t capacity = sizeof buf / sizeof(Char) - terminator;
    std::size_t got =
        (ind == SQL_NO_TOTAL || static_cast<std::size_t>(ind) / sizeof(Char) > capacity)
            ? capacity
            : static_cast<std::size_t>(ind) / sizeof(Char);
    out.append(buf, got);
    if (rc == SQL_SUCCESS) break;
  }
  return true;
}

Variant IntegerValue(std::int64_t v, DataTypeEnum type) {
  if (type == adSmallInt && v >= -32768 && v <= 32767)
    return Variant::Integer(static_cast<std::int16_t>(v));
  if (type == adUnsignedTinyInt && v >= 0 && v <= 255)
    return Variant::Byte(static_cast<std::uint8_t>(v));
  if (type == adTinyInt && v >= -128 && v <= 127)
    return Variant::Integer(static_cast<std::int16_t>(v));
  if (v >= std::numeric_limits<std::int32_t>::min() &&
      v <= std::numeric_limits<std::int32_t>::max())
    return Variant::Long(static_cast<std::int32_t>(v));
  return Variant(static_cast<double>(v));
}

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

// Buffers of bound parameters; they live until the statement has executed.
struct ParamBuffer {
  std::u16string text;
  std::string narrow;
  SQLBIGINT integer = 0;
  double real = 0;
  unsigned char bit = 0;
  SQL_TIMESTAMP_STRUCT timestamp{};
  std::vector<unsigned char> bytes;
  SQLLEN ind = 0;
};

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

class OdbcCursor : public Cursor {
 public:
  OdbcCursor(OdbcProvider& provider, std::unique_ptr<OdbcStatement> statement)
      : provider_(provider), statement_(std::move(statement)) {}
  ~OdbcCursor() override {
    SQLFreeStmt(statement_->stmt, SQL_CLOSE);
    // The SQLite3 driver goes on where a result was left at the next
    // execution: its statements are reused only after a complete read.
    if (atEnd_ || !provider_.Narrow()) provider_.Release(std::move(statement_));
  }
  const std::vector<ColumnInfo>& Columns() const override { return statement_->columns; }
  std::size_t Fetch(std::vector<Row>& rows, std::size_t count) override {
    std::size_t got = 0;
    SQLHSTMT stmt = statement_->stmt;
    const auto& cols = statement_->columns;
    while (!atEnd_ && got < count) {
      SQLRETURN rc = SQLFetch(stmt);
      if (rc == SQL_NO_DATA) {
        atEnd_ = true;
        break;
      }
      if (!SQL_SUCCEEDED(rc))
        ThrowOdbcError(SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, provider_.Narrow());
      Row row;
      row.reserve(cols.size());
      for (std::size_t i = 0; i < cols.size(); ++i)
        row.push_back(
            GetValue(stmt, static_cast<SQLUSMALLINT>(i + 1), cols[i], provider_.Narrow()));
      rows.push_back(std::move(row));
      ++got;
    }
    return got;
  }

 private:
  OdbcProvider& provider_;
  std::unique_ptr<OdbcStatement> statement_;
  bool atEnd_ = false;
};

bool IsDdl(const std::string& sql) {
  std::size_t i = sql.find_first_not_of(" \t\r\n");
  if (i == std::string::npos) return false;
  std::string head = Upper(sql.substr(i, 6));
  return head.rfind("CREATE", 0) == 0 || head.rfind("ALTER", 0) == 0 || head.rfind("DROP", 0) == 0;
}

}  // namespace

OdbcProvider::OdbcProvider(const ConnectionSpec& spec) {
  SQLHENV env = Env();
  if (!env) throw VbError(kErrGeneral, "ODBC-Umgebung nicht verfügbar", "Ketrova.ODBC");
  Check(SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc_), SQL_HANDLE_ENV, env, OdbcPhase::kConnect);
  Connect(spec.odbcString);
  SQLCHAR info[256] = {};
  SQLSMALLINT len = 0;
  if (SQL_SUCCEEDED(SQLGetInfo(dbc_, SQL_DBMS_NAME, info, sizeof info, &len)))
    dbms_ = reinterpret_cast<char*>(info);
  // The PostgreSQL and SQLite3 drivers read a whole result at execution unless
  // told to fetch through a cursor or step by step; a record set must cost a
  // block, not a table.
  std::string upperString = Upper(spec.odbcString);
  std::string more;
  if (Upper(dbms_).find("POSTGRES") != std::string::npos &&
      upperString.find("USEDECLAREFETCH") == std::string::npos)
    more = ";UseDeclareFetch=1;Fetch=64";
  if (Upper(dbms_).find("SQLITE") != std::string::npos) {
    // Each record commits on its own; WAL with synchronous NORMAL makes that
    // cheap. The driver sets these itself (a PRAGMA through it does not hold).
    if (upperString.find("STEPAPI") == std::string::npos) more += ";StepAPI=1";
    if (upperString.find("JOURNALMODE") == std::string::npos) more += ";JournalMode=WAL";
    if (upperString.find("SYNCPRAGMA") == std::string::npos) more += ";SyncPragma=NORMAL";
  }
  if (!more.empty()) {
    SQLDisconnect(dbc_);
    Connect(spec.odbcString + more);
  }
  Setup();
}

void OdbcProvider::Connect(const std::string& odbcString) {
  SQLSetConnectAttr(dbc_, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(15), 0);
  // The narrow call: connection strings are ASCII in practice, and a driver
  // without wide calls (SQLite3) then gets a UTF-8 file name unchanged.
  std::string in = odbcString;
  SQLCHAR out[2048];
  SQLSMALLINT outLen = 0;
  SQLRETURN rc = SQLDriverConnect(dbc_, nullptr, N(in), static_cast<SQLSMALLINT>(in.size()), out,
                                  sizeof out, &outLen, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(rc)) {
    auto records = ReadDiagnostics(SQL_HANDLE_DBC, dbc_, true);
    SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
    dbc_ = SQL_NULL_HDBC;
    std::string text = OdbcErrorText(records);
    if (text.empty()) text = "Verbindung fehlgeschlagen: " + odbcString;
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kConnect), text, "Ketrova.ODBC");
  }
}

void OdbcProvider::Setup() {
  SQLCHAR info[256] = {};
  SQLSMALLINT len = 0;
  std::string upper = Upper(dbms_);
  if (upper.find("SQLITE") != std::string::npos) {
    dialect_ = "sqlite";
    quote_ = "\"";
    narrow_ = true;
  } else if (upper.find("POSTGRES") != std::string::npos) {
    dialect_ = "postgresql";
    quote_ = "\"";
  } else if (upper.find("MYSQL") != std::string::npos ||
             upper.find("MARIADB") != std::string::npos) {
    dialect_ = "mysql";
    quote_ = "`";
  } else if (upper.find("SQL SERVER") != std::string::npos) {
    dialect_ = "mssql";
    quote_ = "[";
  } else if (SQL_SUCCEEDED(SQLGetInfo(dbc_, SQL_IDENTIFIER_QUOTE_CHAR, info, sizeof info, &len))) {
    quote_ = reinterpret_cast<char*>(info);
    if (quote_ == " " || quote_.empty()) quote_ = "\"";
  }
}

OdbcProvider::~OdbcProvider() {
  idle_.clear();
  if (dbc_) {
    if (inTransaction_) SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
    SQLDisconnect(dbc_);
    SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
  }
}

namespace {

// PostgreSQL knows none of the Jet type words that table creation writes for
// stores it cannot tell from Access; a CREATE TABLE gets PostgreSQL's words
// for them. Quoted names and literals are left alone.
std::string PostgresTypeWords(const std::string& sql) {
  static const std::pair<const char*, const char*> kWords[] = {{"LONG", "INTEGER"},
                                                               {"DOUBLE", "DOUBLE PRECISION"},
                                                               {"CURRENCY", "NUMERIC(19,4)"},
                                                               {"DATETIME", "TIMESTAMP"},
                                                               {"YESNO", "BOOLEAN"},
                                                               {"LONGTEXT", "TEXT"},
                                                               {"NVARCHAR", "VARCHAR"},
                                                               {"VARCHAR2", "VARCHAR"},
                                                               {"NUMBER", "NUMERIC"},
                                                               {"BINARY", "BYTEA"},
                                                               {"BLOB", "BYTEA"}};
  std::string out;
  std::size_t i = 0;
  while (i < sql.size()) {
    char c = sql[i];
    if (c == '\'' || c == '"') {
      std::size_t end = sql.find(c, i + 1);
      end = end == std::string::npos ? sql.size() : end + 1;
      out.append(sql, i, end - i);
      i = end;
      continue;
    }
    if (!std::isalpha(static_cast<unsigned char>(c))) {
      out.push_back(c);
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < sql.size() &&
           (std::isalnum(static_cast<unsigned char>(sql[end])) || sql[end] == '_'))
      ++end;
    std::string word = sql.substr(i, end - i);
    std::string upper = word;
    for (char& u : upper) u = static_cast<char>(std::toupper(static_cast<unsigned char>(u)));
    const char* replacement = nullptr;
    for (const auto& [from, to] : kWords)
      if (upper == from) replacement = to;
    // BYTEA takes no length, and TEXT none either.
    std::size_t next = end;
    while (next < sql.size() && sql[next] == ' ') ++next;
    bool sized = next < sql.size() && sql[next] == '(';
    if ((upper == "BINARY" || upper == "BLOB") && sized) {
      end = sql.find(')', next);
      end = end == std::string::npos ? sql.size() : end + 1;
    } else if (upper == "TEXT" && sized) {
      replacement = "VARCHAR";
    } else if (upper == "DOUBLE" && next + 9 <= sql.size() &&
               std::equal(sql.begin() + next, sql.begin() + next + 9, "PRECISION",
                          [](char a, char b) { return std::toupper(a) == b; })) {
      replacement = nullptr;  // PostgreSQL's own spelling
    }
    out += replacement ? replacement : word;
    i = end;
  }
  return out;
}

bool IsCreateTable(const std::string& sql) {
  std::size_t start = sql.find_first_not_of(" \t\r\n");
  if (start == std::string::npos || sql.size() - start < 12) return false;
  std::string head = sql.substr(start, 12);
  for (char& c : head) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return head == "CREATE TABLE";
}

}  // namespace

std::string OdbcProvider::Rewrite(const std::string& sql) const {
  if (dialect_ == "postgresql") {
    std::string rewritten = RewriteBrackets(sql, quote_, quote_);
    return IsCreateTable(rewritten) ? PostgresTypeWords(rewritten) : rewritten;
  }
  if (dialect_ == "mysql") return RewriteBrackets(sql, quote_, quote_);
  return sql;
}

SQLRETURN OdbcProvider::Prepare(SQLHSTMT stmt, const std::string& sql) {
  if (narrow_) {
    std::string s = sql;
    return SQLPrepare(stmt, N(s), static_cast<SQLINTEGER>(s.size()));
  }
  std::u16string w = Utf8ToUtf16(sql);
  return SQLPrepareW(stmt, W(w), static_cast<SQLINTEGER>(w.size()));
}

SQLRETURN OdbcProvider::ExecDirectText(SQLHSTMT stmt, const std::string& sql) {
  if (narrow_) {
    std::string s = sql;
    return SQLExecDirect(stmt, N(s), static_cast<SQLINTEGER>(s.size()));
  }
  std::u16string w = Utf8ToUtf16(sql);
  return SQLExecDirectW(stmt, W(w), static_cast<SQLINTEGER>(w.size()));
}

std::string OdbcProvider::ColumnText(SQLHSTMT stmt, SQLUSMALLINT col) {
  if (narrow_) {
    std::string text;
    if (!GetChunks(stmt, col, SQL_C_CHAR, text, true)) return {};
    return text;
  }
  std::u16string text;
  if (!GetChunks(stmt, col, SQL_C_WCHAR, text)) return {};
  return Utf16ToUtf8(text);
}

void OdbcProvider::ExecDirect(const std::string& sql) {
  SQLHSTMT stmt = SQL_NULL_HSTMT;
  Check(SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &stmt), SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther,
        narrow_);
  SQLRETURN rc = ExecDirectText(stmt, sql);
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) {
    auto records = ReadDiagnostics(SQL_HANDLE_STMT, stmt, narrow_);
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kStatement), OdbcErrorText(records),
                  "Ketrova.ODBC");
  }
  SQLFreeHandle(SQL_HANDLE_STMT, stmt);
}

std::unique_ptr<OdbcStatement> OdbcProvider::Acquire(const std::string& sql) {
  for (auto it = idle_.begin(); it != idle_.end(); ++it) {
    if ((*it)->sql == sql) {
      auto s = std::move(*it);
      idle_.erase(it);
      return s;
    }
  }
  auto s = std::make_unique<OdbcStatement>();
  s->sql = sql;
  Check(SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &s->stmt), SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther,
        narrow_);
  SQLRETURN rc = Prepare(s->stmt, Rewrite(sql));
  if (!SQL_SUCCEEDED(rc)) {
    auto records = ReadDiagnostics(SQL_HANDLE_STMT, s->stmt, narrow_);
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kStatement), OdbcErrorText(records),
                  "Ketrova.ODBC");
  }
  return s;
}

void OdbcProvider::Release(std::unique_ptr<OdbcStatement> statement) {
  if (!statement) return;
  SQLFreeStmt(statement->stmt, SQL_RESET_PARAMS);
  idle_.push_front(std::move(statement));
  if (idle_.size() > kIdleStatements) idle_.pop_back();
}

ExecuteResult OdbcProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                    std::int64_t maxRows) {
  if (IsDdl(sql)) {
    // The shape of tables may change: prepared statements would describe the old one.
    idle_.clear();
    ExecDirect(Rewrite(sql));
    return {};
  }
  auto s = Acquire(sql);
  SQLHSTMT stmt = s->stmt;
  if (s->maxRows != maxRows) {
    SQLSetStmtAttr(
        stmt, SQL_ATTR_MAX_ROWS,
        reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(std::max<std::int64_t>(maxRows, 0))), 0);
    s->maxRows = maxRows;
  }
  if (s->timeout != timeout_) {
    SQLSetStmtAttr(stmt, SQL_ATTR_QUERY_TIMEOUT,
                   reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(std::max(timeout_, 0))), 0);
    s->timeout = timeout_;
  }
  std::vector<ParamBuffer> buffers(params.size());
  for (std::size_t i = 0; i < params.size(); ++i)
    BindParam(stmt, static_cast<SQLUSMALLINT>(i + 1), params[i], buffers[i], narrow_);
  SQLRETURN rc = SQLExecute(stmt);
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) {
    auto records = ReadDiagnostics(SQL_HANDLE_STMT, stmt, narrow_);
    // A statement that failed may be in a state the driver cannot reuse.
    s.reset();
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kStatement), OdbcErrorText(records),
                  "Ketrova.ODBC");
  }
  SQLSMALLINT columns = 0;
  SQLNumResultCols(stmt, &columns);
  ExecuteResult result;
  if (columns > 0) {
    if (!s->described || s->columns.size() != static_cast<std::size_t>(columns)) {
      s->columns.clear();
      for (SQLSMALLINT c = 1; c <= columns; ++c)
        s->columns.push_back(Describe(stmt, static_cast<SQLUSMALLINT>(c), narrow_));
      if (dialect_ == "sqlite") DeclaredDecimals(s->columns);
      s->described = true;
    }
    result.cursor = std::make_unique<OdbcCursor>(*this, std::move(s));
  } else {
    SQLLEN count = -1;
    SQLRowCount(stmt, &count);
    result.rowsAffected = count;
    SQLFreeStmt(stmt, SQL_CLOSE);
    Release(std::move(s));
  }
  return result;
}

void OdbcProvider::DeclaredDecimals(std::vector<ColumnInfo>& columns) {
  // SQLite keeps the declared "DECIMAL(p,s)" only in the table's definition.
  for (auto& c : columns) {
    if (c.type != adNumeric || c.baseTable.empty()) continue;
    auto& declared = declaredTypes_[c.baseTable];
    if (declared.empty()) {
      SQLHSTMT stmt = NewCatalogStatement();
      std::string table = c.baseTable;
      if (SQL_SUCCEEDED(SQLColumns(stmt, nullptr, 0, nullptr, 0, N(table), SQL_NTS, nullptr, 0))) {
        while (SQL_SUCCEEDED(SQLFetch(stmt))) {
          std::string column = ColumnText(stmt, 4);
          declared[column] = ColumnText(stmt, 6);
        }
      }
      SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    }
    auto it = declared.find(c.baseColumn.empty() ? c.name : c.baseColumn);
    if (it == declared.end()) continue;
    unsigned p = 0, sc = 0;
    auto open = it->second.find('(');
    if (open == std::string::npos) continue;
    if (std::sscanf(it->second.c_str() + open, "(%u,%u)", &p, &sc) >= 1) {
      c.precision = static_cast<std::uint8_t>(std::min(p, 255u));
      c.numericScale = static_cast<std::uint8_t>(std::min(sc, 255u));
    }
  }
}

void OdbcProvider::BeginTrans() {
  Check(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                          reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0),
        SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  inTransaction_ = true;
}

void OdbcProvider::CommitTrans() {
  if (!inTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", "Ketrova.ODBC");
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_COMMIT);
  SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
  inTransaction_ = false;
  Check(rc, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

void OdbcProvider::RollbackTrans() {
  if (!inTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", "Ketrova.ODBC");
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
  SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
  inTransaction_ = false;
  Check(rc, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

SQLHSTMT OdbcProvider::NewCatalogStatement() {
  SQLHSTMT stmt = SQL_NULL_HSTMT;
  Check(SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &stmt), SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther,
        narrow_);
  return stmt;
}

namespace {
struct StmtGuard {
  SQLHSTMT stmt;
  ~StmtGuard() { SQLFreeHandle(SQL_HANDLE_STMT, stmt); }
};
}  // namespace

SQLRETURN OdbcProvider::CatalogCall(SQLHSTMT stmt, CatalogFunction function,
                                    const std::string& table, const std::string& extra) {
  // Empty text means "no argument" (a null pointer), as the catalog calls take it.
  if (narrow_) {
    std::string t = table, x = extra;
    SQLCHAR* tp = t.empty() ? nullptr : N(t);
    SQLCHAR* xp = x.empty() ? nullptr : N(x);
    switch (function) {
      case CatalogFunction::kTables:
        return SQLTables(stmt, nullptr, 0, nullptr, 0, nullptr, 0, xp, xp ? SQL_NTS : 0);
      case CatalogFunction::kPrimaryKeys:
        return SQLPrimaryKeys(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS);
      case CatalogFunction::kStatistics:
        return SQLStatistics(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS, SQL_INDEX_ALL, SQL_QUICK);
    }
  }
  std::u16string t = Utf8ToUtf16(table), x = Utf8ToUtf16(extra);
  SQLWCHAR* tp = t.empty() ? nullptr : W(t);
  SQLWCHAR* xp = x.empty() ? nullptr : W(x);
  switch (function) {
    case CatalogFunction::kTables:
      if (dialect_ == "postgresql") {
        // Only the public schema, as a user of the database sees it.
        std::u16string schema = u"public";
        return SQLTablesW(stmt, nullptr, 0, W(schema), SQL_NTS, nullptr, 0, xp, xp ? SQL_NTS : 0);
      }
      if (dialect_ == "mysql") {
        // Only the connection's database; the driver lists every one it may see.
        SQLWCHAR current[256] = {};
        SQLINTEGER length = 0;
        if (SQL_SUCCEEDED(SQLGetConnectAttrW(dbc_, SQL_ATTR_CURRENT_CATALOG, current,
                                             sizeof current, &length)) &&
            current[0] != 0)
          return SQLTablesW(stmt, current, SQL_NTS, nullptr, 0, nullptr, 0, xp, xp ? SQL_NTS : 0);
      }
      return SQLTablesW(stmt, nullptr, 0, nullptr, 0, nullptr, 0, xp, xp ? SQL_NTS : 0);
    case CatalogFunction::kPrimaryKeys:
      return SQLPrimaryKeysW(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS);
    case CatalogFunction::kStatistics:
      return SQLStatisticsW(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS, SQL_INDEX_ALL, SQL_QUICK);
  }
  return SQL_ERROR;
}

std::vector<TableInfo> OdbcProvider::Tables() {
  SQLHSTMT stmt = NewCatalogStatement();
  StmtGuard guard{stmt};
  Check(CatalogCall(stmt, CatalogFunction::kTables, {}, "TABLE,VIEW,SYSTEM TABLE"), SQL_HANDLE_STMT,
        stmt, OdbcPhase::kOther, narrow_);
  std::vector<TableInfo> tables;
  while (SQL_SUCCEEDED(SQLFetch(stmt))) {
    TableInfo t;
    t.catalog = ColumnText(stmt, 1);
    t.schema = ColumnText(stmt, 2);
    t.name = ColumnText(stmt, 3);
    t.type = Upper(ColumnText(stmt, 4));
    if (t.type == "BASE TABLE") t.type = "TABLE";
    tables.push_back(std::move(t));
  }
  return tables;
}

std::string OdbcProvider::ActualTableName(const std::string& table) {
  auto tables = Tables();
  for (const auto& t : tables)
    if (t.name == table) return table;
  for (const auto& t : tables)
    if (KeyEquals(t.name, table)) return t.name;
  throw VbError(kErrUnknownTable, "Die Tabelle '" + table + "' existiert nicht.", "Ketrova.ODBC");
}

std::vector<std::pair<int, std::string>> OdbcProvider::PrimaryKey(const std::string& table,
                                                                  std::string* name) {
  std::vector<std::pair<int, std::string>> keyed;
  SQLHSTMT stmt = NewCatalogStatement();
  StmtGuard guard{stmt};
  if (!SQL_SUCCEEDED(CatalogCall(stmt, CatalogFunction::kPrimaryKeys, table))) return keyed;
  while (SQL_SUCCEEDED(SQLFetch(stmt))) {
    SQLSMALLINT seq = 0;
    SQLLEN ind = 0;
    SQLGetData(stmt, 5, SQL_C_SSHORT, &seq, 0, &ind);
    keyed.emplace_back(seq, ColumnText(stmt, 4));
    if (name) *name = ColumnText(stmt, 6);
  }
  std::sort(keyed.begin(), keyed.end());
  return keyed;
}

std::vector<ColumnInfo> OdbcProvider::TableColumns(const std::string& table) {
  std::string name = ActualTableName(table);
  std::vector<ColumnInfo> columns;
  {
    SQLHSTMT stmt = NewCatalogStatement();
    StmtGuard guard{stmt};
    Check(ExecDirectText(stmt, Rewrite("SELECT * FROM [" + name + "] WHERE 1=0")), SQL_HANDLE_STMT,
          stmt, OdbcPhase::kStatement, narrow_);
    SQLSMALLINT n = 0;
    SQLNumResultCols(stmt, &n);
    for (SQLSMALLINT c = 1; c <= n; ++c) {
      ColumnInfo info = Describe(stmt, static_cast<SQLUSMALLINT>(c), narrow_);
      if (info.baseTable.empty()) info.baseTable = name;
      if (info.baseColumn.empty()) info.baseColumn = info.name;
      columns.push_back(std::move(info));
    }
  }
  if (dialect_ == "sqlite") DeclaredDecimals(columns);
  for (const auto& [seq, col] : PrimaryKey(name, nullptr))
    for (auto& c : columns)
      if (c.name == col) c.keyColumn = true;
  return columns;
}

std::vector<IndexInfo> OdbcProvider::TableIndexes(const std::string& table) {
  std::string name = ActualTableName(table);
  std::string pkName;
  std::vector<std::string> pkColumns;
  for (auto& [seq, col] : PrimaryKey(name, &pkName)) pkColumns.push_back(col);
  std::vector<IndexInfo> indexes;
  {
    SQLHSTMT stmt = NewCatalogStatement();
    StmtGuard guard{stmt};
    Check(CatalogCall(stmt, CatalogFunction::kStatistics, name), SQL_HANDLE_STMT, stmt,
          OdbcPhase::kOther, narrow_);
    while (SQL_SUCCEEDED(SQLFetch(stmt))) {
      SQLSMALLINT type = 0, nonUnique = 0;
      SQLLEN ind = 0;
      SQLGetData(stmt, 7, SQL_C_SSHORT, &type, 0, &ind);
      if (type == SQL_TABLE_STAT) continue;
      SQLGetData(stmt, 4, SQL_C_SSHORT, &nonUnique, 0, &ind);
      std::string indexName = ColumnText(stmt, 6);
      std::string column = ColumnText(stmt, 9);
      auto it = std::find_if(indexes.begin(), indexes.end(),
                             [&](const IndexInfo& i) { return i.name == indexName; });
      if (it == indexes.end()) {
        IndexInfo info;
        info.name = indexName;
        info.unique = nonUnique == SQL_FALSE;
        info.clustered = type == SQL_INDEX_CLUSTERED;
        indexes.push_back(info);
        it = indexes.end() - 1;
      }
      it->columns.push_back(column);
    }
  }
  if (!pkColumns.empty()) {
    bool found = false;
    for (auto& i : indexes) {
      if ((!pkName.empty() && i.name == pkName) || (i.unique && i.columns == pkColumns)) {
        i.primaryKey = true;
        found = true;
        break;
      }
    }
    if (!found) {
      IndexInfo pk;
      pk.name = pkName.empty() ? "PrimaryKey" : pkName;
      pk.unique = true;
      pk.primaryKey = true;
      pk.columns = pkColumns;
      indexes.insert(indexes.begin(), pk);
    }
  }
  return indexes;
}

std::string OdbcProvider::ColumnTypeSql(const ColumnInfo& c) const {
  const std::string& d = dialect_;
  auto size = [&](std::int64_t fallback) {
    std::int64_t s = c.definedSize > 0 ? c.definedSize : fallback;
    return std::to_string(s);
  };
  if (c.autoIncrement) {
    if (d == "sqlite") return "INTEGER PRIMARY KEY AUTOINCREMENT";
    if (d == "postgresql") return c.type == adBigInt ? "BIGSERIAL" : "SERIAL";
    if (d == "mysql")
      return (c.type == adBigInt ? std::string("BIGINT") : std::string("INTEGER")) +
             " NOT NULL AUTO_INCREMENT";
    if (d == "mssql") return "INTEGER IDENTITY(1,1)";
  }
  switch (c.type) {
    case adSmallInt:
    case adTinyInt:
    case adUnsignedTinyInt:
      return "SMALLINT";
    case adInteger:
    case adUnsignedSmallInt:
      return "INTEGER";
    case adBigInt:
    case adUnsignedInt:
    case adUnsignedBigInt:
      return "BIGINT";
    case adSingle:
      return "REAL";
    case adDouble:
      return d == "postgresql" ? "DOUBLE PRECISION" : d == "mssql" ? "FLOAT" : "DOUBLE";
    case adCurrency:
      return "NUMERIC(19,4)";
    case adNumeric:
    case adDecimal:
    case adVarNumeric: {
      int p = c.precision > 0 && c.precision != 255 ? c.precision : 18;
      int s = c.numericScale != 255 ? c.numericScale : 0;
      p = std::min(p, 38);
      s = std::min(s, p);
      return "NUMERIC(" + std::to_string(p) + "," + std::to_string(s) + ")";
    }
    case adBoolean:
      return d == "mssql" ? "BIT" : d == "mysql" ? "TINYINT(1)" : "BOOLEAN";
    case adDBDate:
      return "DATE";
    case adDBTime:
      return "TIME";
    case adDate:
    case adDBTimeStamp:
    case adFileTime:
      return d == "postgresql" || d == "sqlite" ? "TIMESTAMP" : "DATETIME";
    case adBinary:
    case adVarBinary:
      if (d == "postgresql") return "BYTEA";
      if (d == "sqlite") return "BLOB";
      return "VARBINARY(" + size(255) + ")";
    case adLongVarBinary:
      return d == "postgresql" ? "BYTEA"
             : d == "mysql"    ? "LONGBLOB"
             : d == "mssql"    ? "VARBINARY(MAX)"
                               : "BLOB";
    case adLongVarChar:
    case adLongVarWChar:
      return d == "mysql" ? "LONGTEXT" : d == "mssql" ? "NVARCHAR(MAX)" : "TEXT";
    case adGUID:
      return "VARCHAR(38)";
    case adChar:
    case adWChar:
    case adVarChar:
    case adVarWChar:
    case adBSTR:
    default:
      if (c.definedSize > 65535 || c.definedSize < 0)
        return d == "mysql" ? "LONGTEXT" : d == "mssql" ? "NVARCHAR(MAX)" : "TEXT";
      return (d == "mssql" ? "NVARCHAR(" : "VARCHAR(") + size(255) + ")";
  }
}

}  // namespace ketrova::ado
