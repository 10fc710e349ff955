// Table creation on the destination from a job's columns, and the type names
// of each store.
#include <algorithm>

#include "core/converter.h"
#include "core/error_text.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "stores/database.h"
#include "support/files.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// The column of the type table in which a store's names stand.
enum TypeColumn { kAccess, kSQLServer, kInterbase, kOracle, kMySQL, kExcel, kOthers };

TypeColumn ColumnOf(std::int32_t inDatabaseType) {
  switch (inDatabaseType) {
    case dbtAccess:
      return kAccess;
    case dbtSQLServer:
      return kSQLServer;
    case dbtInterbase:
      return kInterbase;
    case dbtOracle:
      return kOracle;
    case dbtMySQL:
      return kMySQL;
    case dbtExcel:
      return kExcel;
    default:
      return kOthers;
  }
}

bool OneOf(std::int32_t type, std::initializer_list<std::int32_t> set) {
  return std::find(set.begin(), set.end(), type) != set.end();
}

// A column's declaration after its name, by the type after the size rules.
std::string Declaration(std::int32_t type, const std::string& typeName, std::int32_t native,
                        const std::string& size, const std::string& scale) {
  const std::string sized = typeName + "(" + size + ")";
  if (OneOf(type, {5, 6, 14, 131, 139}))
    return native == dbtAccess ? typeName : typeName + "(" + size + "," + scale + ")";
  if (OneOf(type, {8, 72, 129, 130, 200, 202})) {
    if (native == dbtAccess) return typeName;
    if (native == dbtSQLServer) return " NVARCHAR (" + size + ")";
    return sized;
  }
  if (type == 16) return native == dbtMySQL ? typeName + "(1)" : typeName;
  if (type == 201 || type == 203) {
    if (native == dbtAccess || native == dbtMySQL || native == dbtWatcom) return typeName;
    if (native == dbtSQLServer) return " NVARCHAR (" + size + ")";
    return sized;
  }
  if (type == 204 || type == 205) return sized;
  return typeName;
}

}  // namespace

std::string CJobItem::GetSQLTypeName(std::int32_t& inFieldType, std::int32_t inDatabaseType) {
  TypeColumn column = ColumnOf(inDatabaseType);
  auto pick = [column](std::initializer_list<const char*> names) {
    return std::string(names.begin()[column]);
  };
  switch (inFieldType) {
    case 2:
      return pick({"LONG", "SMALLINT", "SMALLINT", "SMALLINT", "SMALLINT", "SMALLINT", "SMALLINT"});
    case 3:
    case 4:
    case 16:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
      return pick({"LONG", "INTEGER", "INTEGER", "INTEGER", "INTEGER", "INTEGER", "INTEGER"});
    case 5:
    case 131:
    case 139:
      return pick({"DOUBLE", "NUMERIC", "NUMERIC", "NUMBER", "NUMERIC", "NUMERIC", "NUMERIC"});
    case 6:
    case 14:
      return pick({"CURRENCY", "NUMERIC", "NUMERIC", "NUMBER", "NUMERIC", "NUMERIC", "NUMERIC"});
    case 7:
    case 64:
    case 133:
    case 134:
    case 135:
      return pick({"DATETIME", "DATETIME", "DATE", "DATE", "DATE", "DATE", "DATE"});
    case 8:
    case 72:
    case 129:
    case 130:
    case 200:
    case 202:
      return pick({"TEXT", "CHAR", "CHAR", "VARCHAR2", "CHAR", "CHAR", "CHAR"});
    case 11:
      return pick({"YESNO", "YESNO", "YESNO", "YESNO", "BOOL", "YESNO", "YESNO"});
    case 13:
      return "Unbekannt oder unbestimmt";
    case 201:
    case 203:
      if (column == kMySQL || column == kExcel) inFieldType = 13;
      return pick({"LONGTEXT", "TEXT", "VARCHAR", "VARCHAR2", "TEXT", "TEXT", "TEXT"});
    case 204:
    case 205:
      return pick({"BINARY", "BINARY", "BLOB", "BINARY", "BINARY", "BINARY", "BINARY"});
    default:
      return {};
  }
}

std::string CJobItem::GenerateTableStructure(std::string& szError,
                                             const std::string& szSourceObjectName) {
  std::string szStep;
  std::string sql;
  try {
    szError.clear();
    if (!Job || !Converter || !Database()) throw VbError(91);
    CDatabase& database = *Database();
    CDatabase& source = Converter->SourceDataBase();
    szStep = "Lese Datenbanktyp";
    std::int32_t native = database.DatabaseTypeNative();
    szStep = "Lese Tabellenobject in Quelltabelle";
    source.ObjectByName(szSourceObjectName, szError, false);
    if (!szError.empty() || native == dbtOutlook || native == dbtXML) return {};

    CJobItem& sourceSide = Job->JobSource();
    if (native == dbtText) {
      std::string header;
      for (const CJobItemColumn& column : *columns_) {
        const CJobItemColumn* sourceColumn = sourceSide.ColumnByName(column.Name);
        if (sourceColumn && !sourceColumn->Visible) continue;
        header += column.TargetColumn + ";";
      }
      if (!header.empty()) header.pop_back();
      std::string file = AddBackslash(database.DatabaseFileName) + ItemObjectName;
      DeleteFileWait(file);
      WriteTextFile(file, header);
      return {};
    }

    sql = "CREATE TABLE " + database.ColBracketLeft() + RemoveString(ItemObjectName, "$") +
          database.ColBracketRight() + "(\r\n";
    CDatabaseObject* object = source.ObjectByName(szSourceObjectName, szError, false);
    if (!szError.empty()) return {};
    bool fileBased = database.IsFileBased();
    std::int32_t i = 0;
    for (const CJobItemColumn& column : *columns_) {
      ++i;
      const CDatabaseObjectField* field = object ? object->ColumnByName(column.Name) : nullptr;
      const CJobItemColumn* sourceColumn = sourceSide.ColumnByName(column.Name);
      if (sourceColumn && !sourceColumn->Visible) continue;
      szStep = "Lese Feld : " + column.Name;
      std::string head = std::string(8, ' ') + (i == 1 ? "" : ",") + database.ColBracketLeft() +
                         column.TargetColumn + database.ColBracketRight() + " ";
      // Padded, never cut: a long name runs past the type column.
      std::size_t length = CodePointCount(head);
      if (length < 31) head.append(31 - length, ' ');

      std::int32_t type = 13;
      std::string typeName = "TEXT";
      std::int32_t size = 255;
      std::int32_t scale = 0;
      if (!fileBased) {
        if (!field) throw VbError(91);
        type = column.FieldType;
        typeName = GetSQLTypeName(type, native);
        size = field->DefinedSize;
        scale = field->NumericScale;
      }
      if (size > 1000) size = 1000;
      if (size > 255) type = 203;
      if (scale > 10) scale = 8;
      sql += head +
             Declaration(type, typeName, native, std::to_string(size), std::to_string(scale)) +
             "\r\n";
    }
    sql += ")\r\n";
  } catch (...) {
    // A failure is reported through szError, which is also the result.
    SetPendingError(std::current_exception());
    szError = BuildErrorText(1, szError, szStep);
    Err().Clear();
    return szError;
  }
  return sql;
}

}  // namespace ketrova
