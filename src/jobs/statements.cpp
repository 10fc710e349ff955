// Statement generation: the exact SQL texts of a job's sides. Every blank, CR LF
// and TAB below is part of the text the stores receive and the log shows.
#include <array>
#include <optional>
#include <utility>

#include "core/error_text.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "platform/ado/fields.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "stores/field_types.h"
#include "support/format.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

constexpr const char* kCrLf = "\r\n";
constexpr const char* kTab = "\t";

// CheckTableName works on its argument; the side's name must stay as it is.
std::string TableName(const CDatabase& database, const std::string& name, bool bCut) {
  std::string copy = name;
  return database.CheckTableName(copy, bCut);
}

// The file-based from-part of a text store: the folder path and the file, then
// the name once more as the alias.
std::string TextFromPart(const CDatabase& database, const std::string& name) {
  return std::string(" FROM ") + "   " + database.GetFileBasedDriverPath() +
         TableName(database, name, false) + " " + "   " + TableName(database, name, true);
}

CDatabase& StoreOf(const CJobItem& side) {
  CDatabase* database = side.Database();
  if (!database) throw VbError(91);
  return *database;
}

}  // namespace

std::string CJobItem::GetSelectColumn(const std::string& szColumn,
                                      const std::string& szAlias) const {
  CDatabase& database = StoreOf(*this);
  const std::string& L = database.ColBracketLeft();
  const std::string& R = database.ColBracketRight();
  switch (JobType) {
    case jitTableView:
      if (database.DatabaseTypeNative() == dbtParadox)
        return kCrLf + std::string(kTab) + QuoteString(szColumn) + ",";
      return kCrLf + std::string(kTab) + L + szColumn + R + " AS " + L + szAlias + R + ",";
    case jitText:
      return kCrLf + std::string(kTab) + QuoteString(szColumn) + ",";
    case jitExcel:
      return kCrLf + std::string(kTab) + "[" + szColumn + "] AS [" + szAlias + "],";
    default:
      return {};
  }
}

std::string CJobItem::GetListFields() const {
  std::string list;
  try {
    const bool source = Direction == jidSource;
    for (const CJobItemColumn& column : *columns_) {
      bool listed = column.Visible;
      if (!source) {
        // A target column follows the visibility of the source column of its name.
        listed = true;
        if (Job)
          if (const CJobItemColumn* fed = Job->JobSource().ColumnByName(column.Name))
            listed = fed->Visible;
      }
      if (!listed) continue;
      const std::string& szColumn = source ? column.Name : column.DisplayName;
      std::string szAlias = ConvertUmlautsEscape(column.DisplayName, false);
      if (szAlias.empty()) szAlias = source ? column.Name : column.DisplayName;
      list += GetSelectColumn(szColumn, szAlias);
    }
  } catch (...) {
    // A failure ends the list with what it has.
    return list;
  }
  list = RemoveSuffix(list, ",");
  if (list.empty()) list = "*";
  return list + kCrLf;
}

std::string CJobItem::GetSourceSQL() const {
  CDatabase& database = StoreOf(*this);
  const std::int32_t native = database.DatabaseTypeNative();
  std::string fromPart;
  if (native == dbtParadox)
    fromPart =
        std::string(" FROM ") + "   " + QuoteString(TableName(database, ItemObjectName, true));
  else
    fromPart = " FROM " + database.ColBracketLeft() + ItemObjectName + database.ColBracketRight();
  std::string sql;
  switch (JobType) {
    case jitTableView:
      if (columns_->Count() == 0 || native == dbtMySQL)
        sql = " SELECT * " + fromPart;
      else
        sql = " SELECT " + GetListFields() + fromPart;
      break;
    case jitUDFView:
    case jitSQLInsertUpdate:
      sql = SQL;
      break;
    case jitText:
      if (columns_->Count() == 0)
        sql = " SELECT * " + TextFromPart(database, ItemObjectName);
      else
        sql = " SELECT " + GetListFields() + kCrLf + TextFromPart(database, ItemObjectName);
      break;
    case jitExcel:
      sql = std::string(" SELECT * ") + " FROM " + "[" + ItemObjectName + "]";
      break;
    default:
      break;
  }
  return sql + GetFilter(sql);
}

std::string CJobItem::GetFilter(const std::string& szBaseSQL) const {
  if (!Filtered) return {};
  // A hand-written statement is never extended.
  if (JobType != jitTableView && JobType != jitText && JobType != jitExcel && JobType != jitOutlook)
    return {};
  CDatabase& database = StoreOf(*this);
  std::string text;
  bool first = true;
  for (const CJobItemFilter& filter : *filters_) {
    if (!first) text += " " + filter.AndOr + " ";
    first = false;
    text += database.ColBracketLeft() + filter.Column + database.ColBracketRight() + " " +
            filter.GetFilter() + kCrLf;
  }
  if (text.empty()) return text;
  // The contact store takes the bare conditions as its restriction.
  if (database.DatabaseTypeNative() == dbtOutlook) return text;
  if (FindString("WHERE", szBaseSQL) > 0) return " AND (" + text + ")";
  return " WHERE (" + text + ")";
}

std::string CJobItem::GenerateSQLCount() const {
  CDatabase& database = StoreOf(*this);
  std::string szObject = ItemObjectName;
  if (!database.IsFileBased()) szObject = MakeIdentifier(szObject);
  switch (database.DatabaseTypeNative()) {
    case dbtOutlook:
      return {};
    case dbtText:
      return std::string(" SELECT COUNT(*)") + kCrLf + TextFromPart(database, ItemObjectName);
    case dbtMySQL:
      return std::string("SELECT count(*) ") + " FROM " + szObject;
    default:
      return "SELECT COUNT(*) FROM " + database.ColBracketLeft() + szObject +
             database.ColBracketRight();
  }
}

std::string CJobItem::GenerateSQLDelete() const {
  CDatabase& database = StoreOf(*this);
  std::string sql;
  switch (database.DatabaseTypeNative()) {
    case dbtOutlook:
      // A word for the contact store, not SQL.
      return "ALL";
    case dbtText:
      sql = "DELETE FROM " + database.GetFileBasedDriverPath() +
            TableName(database, ItemObjectName, false);
      break;
    default:
      sql =
          "DELETE FROM " + database.ColBracketLeft() + ItemObjectName + database.ColBracketRight();
      break;
  }
  return sql + GetFilter(sql);
}

std::string CJobItem::GenerateSQLInsertRecord(std::string& szError) {
  static const char* const kSource = "JobItem.GenerateSQLInsertRecord";
  std::string sql;
  try {
    if (!Job) throw VbError(91, {}, kSource);
    CJobItem& source = Job->JobSource();
    CJobItem& dest = Job->JobDest();
    CDatabase& database = StoreOf(*this);
    CDatabase& destDatabase = StoreOf(dest);
    // The source's key value of the current record, read only where a branch needs it.
    auto sourceKey = [&]() {
      if (!source.Recordset) throw VbError(91, {}, kSource);
      return Nvl(source.Recordset->GetFields().Item(source.KeyField).Value());
    };
    const std::string& L = database.ColBracketLeft();
    const std::string& R = database.ColBracketRight();
    // The record loop calls this once per record, and finding a store's native
    // type reads the ODBC configuration: it is asked once per store here.
    const std::int32_t native = database.DatabaseTypeNative();
    const std::int32_t destNative =
        &destDatabase == &database ? native : destDatabase.DatabaseTypeNative();

    if (destNative == dbtOutlook) {
      if (Job->DestinationUpdate)
        sql = "[" + dest.KeyField + "]" + " = " + dest.KeyFieldBracket + sourceKey() +
              dest.KeyFieldBracket;
      else
        sql = " [User1] = 'xxxxxxxx'";  // matches nothing: a plain insert sees an empty set
    } else if (!Job->DestinationUpdate) {
      if (columns_->Count() == 0) throw VbError(1000, "Keine Zielfelder definiert", kSource);
      switch (native) {
        case dbtMySQL:
          // Asks for a row assumed not to exist, so that the opened set stays small.
          sql = std::string(" SELECT * ") + kCrLf + " FROM " + "   " + ItemObjectName + " WHERE " +
                L + columns_->Item(1).DisplayName + L + "= -99999";
          break;
        case dbtExcel:
          sql = std::string(" SELECT * ") + " FROM " + "   " + L + ItemObjectName + R;
          break;
        case dbtText:
          sql = " SELECT " + GetListFields() + kCrLf + TextFromPart(database, ItemObjectName);
          break;
        default:
          // Once per record: written into one buffer of the right size.
          sql.reserve(24 + L.size() + R.size() + 2 * ItemObjectName.size());
          sql.append(" SELECT * ")
              .append(kCrLf)
              .append(" FROM ")
              .append("   ")
              .append(L)
              .append(ItemObjectName)
              .append(R)
              .append(" ")
              .append("   ")
              .append(ItemObjectName);
          break;
      }
    } else if (DestinationFilterUserDefined) {
      if (!ScriptControl) throw VbError(424, {}, kSource);
      std::array<Variant, 1> args{Variant("txSQLSearchResult")};
      sql = ScriptControl->Call("Run", args).ToString();
    } else {
      std::string szObject = ItemObjectName;
      if (!database.IsFileBased()) {
        // The record loop asks once per record: the name is made once.
        thread_local std::optional<std::pair<std::string, std::string>> made;
        if (!made || made->first != szObject) made.emplace(szObject, MakeIdentifier(szObject));
        szObject = made->second;
      }
      const std::string& DL = destDatabase.ColBracketLeft();
      const std::string& DR = destDatabase.ColBracketRight();
      sql = "SELECT * FROM " + DL + szObject + DR + " WHERE " + " " + DL + dest.ItemObjectName +
            DR + "." + DL + dest.KeyField + DR + " = " + dest.KeyFieldBracket + sourceKey() +
            dest.KeyFieldBracket;
    }
    szError.clear();
  } catch (...) {
    // A failure is reported through szError with an empty statement.
    SetPendingError(std::current_exception());
    szError = BuildErrorText(1, std::string(), std::string());
    Err().Clear();
    return {};
  }
  return sql;
}

std::string CJob::GenerateUpdateInsertSQLFieldValues(ado::Recordset& objRSSource, bool bInsert,
                                                     std::int32_t) {
  CJobItem& dest = JobDest();
  CDatabase& database = StoreOf(dest);
  const std::string& L = database.ColBracketLeft();
  const std::string& R = database.ColBracketRight();
  ado::Fields& fields = objRSSource.GetFields();
  // Built as a column list too, though neither statement names its columns.
  std::string names;
  std::string values;
  for (const CJobItemColumn& column : dest.Columns()) {
    if (column.SourceColumn.empty()) continue;
    names += kCrLf + L + column.DisplayName + L + ",";
    const std::string& Q = column.Quote;
    Variant V;
    if (IsDateFieldType(column.FieldType)) {
      V = fields.Item(column.SourceColumn).Value();
      if (!V.IsNull()) V = Variant("`" + Format(V, "yyyy-mm-dd") + "`");
      if (V.IsString() && V.ToString().empty()) V = Variant::Null();
    } else {
      std::string text = Nvl(fields.Item(column.SourceColumn).Value(), column.DefaultValue);
      text = ReplaceAll(text, "'", "\\'");
      V = Variant(text);
    }
    if (!V.IsNull()) {
      // A date is already in its statement form; only other values take the
      // regional number form.
      std::string text = IsDateFieldType(column.FieldType)
                             ? V.ToString()
                             : FormatValue(V, column.FieldType, {}, true);
      if (IsNumericFieldType(column.FieldType)) {
        text = ToDouble(Variant(text));
        if (text.empty()) text = "0";
      }
      if (IsBooleanFieldType(column.FieldType)) text = UpperCase(text) == "TRUE" ? "1" : "0";
      V = Variant(text);
    }
    const std::string value = V.IsNull() ? std::string("NULL") : V.ToString();
    if (bInsert)
      values += kCrLf + std::string(kTab) + Q + value + Q + ",";
    else
      values +=
          kCrLf + std::string(kTab) + L + column.SourceColumn + L + " = " + Q + value + Q + ",";
  }
  names = RemoveSuffix(names, ",");
  values = RemoveSuffix(values, ",");
  if (bInsert)
    return " INSERT INTO " + L + dest.ItemObjectName + R + kCrLf + " VALUES " + kCrLf + " (" +
           values + ")" + kCrLf;

  CJobItem& source = JobSource();
  const CJobItemColumn* keyColumn = source.ColumnByName(source.KeyField);
  if (!keyColumn) throw VbError(91);
  std::string K = Nvl(fields.Item(source.KeyField).Value(), keyColumn->DefaultValue);
  K = ReplaceAll(K, "'", "`");
  if (IsNumericFieldType(keyColumn->FieldType) && K.empty()) K = "0";
  return " UPDATE " + L + dest.ItemObjectName + R + kCrLf + " SET " + kCrLf + " " + values + " " +
         kCrLf + kCrLf + " WHERE " + kCrLf + kTab + dest.ItemObjectName + "." + L + dest.KeyField +
         R + " = " + dest.KeyFieldBracket + K + dest.KeyFieldBracket;
}

}  // namespace ketrova
