// Copying a table's definition from the source store to this one through two
// catalogues: what the destination lacks of the table, its columns and (on SQL
// stores) its indexes is added; what it has stays as it is.
#include <algorithm>

#include "core/converter.h"
#include "core/error_text.h"
#include "platform/ado/adox/catalog.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// The wide form of a narrow text type; others unchanged.
ado::DataTypeEnum WideType(ado::DataTypeEnum type) {
  switch (type) {
    case ado::adChar:
      return ado::adWChar;
    case ado::adVarChar:
      return ado::adVarWChar;
    case ado::adLongVarChar:
      return ado::adLongVarWChar;
    default:
      return type;
  }
}

bool PropertyIsTrue(ado::Properties& properties, const char* name) {
  ado::Property* property = properties.Find(name);
  return property && property->Value.ToBool();
}

adox::ColumnPtr NewColumn(ado::Field& field) {
  auto column = std::make_shared<adox::Column>();
  column->Name = MakeIdentifier(field.Name());
  column->Type = WideType(field.Type());
  ado::Properties& properties = field.GetProperties();
  ResumeNext([&] {
    if (properties.Count() > 0 && PropertyIsTrue(properties, "Autoincrement")) {
      column->GetProperties().Set("Autoincrement", Variant(true));
      column->GetProperties().Set("Increment", field.Value());
    }
  });
  column->Attributes = field.Attributes();
  column->DefinedSize = field.DefinedSize();
  column->NumericScale = field.NumericScale();
  column->Precision = field.Precision();
  return column;
}

// Indexes of the source table that the destination table lacks.
void CopyIndexes(adox::Table& source, adox::Table& dest) {
  for (const adox::IndexPtr& index : source.GetIndexes().Items()) {
    if (FindString("s_", index->Name) > 0) continue;
    std::string name = MakeIdentifier(index->Name);
    if (dest.GetIndexes().Items().end() !=
        std::find_if(dest.GetIndexes().Items().begin(), dest.GetIndexes().Items().end(),
                     [&](const adox::IndexPtr& i) { return IsEqual(i->Name, name); }))
      continue;
    auto copy = std::make_shared<adox::Index>();
    copy->Name = name;
    copy->Clustered = index->Clustered;
    copy->IndexNulls = index->IndexNulls;
    copy->PrimaryKey = index->PrimaryKey;
    copy->Unique = index->Unique;
    for (const adox::ColumnPtr& column : index->GetColumns().Items()) {
      auto keyColumn = std::make_shared<adox::Column>();
      keyColumn->Name = MakeIdentifier(column->Name);
      copy->GetColumns().Append(Variant(ObjectPtr(keyColumn)), ado::adVarWChar, 0);
    }
    ResumeNext([&] { dest.GetIndexes().Append(Variant(ObjectPtr(copy))); });
  }
}

}  // namespace

bool CDatabase::IsSQLStore() const {
  switch (DatabaseType) {
    case dbtODBC:
    case dbtMySQL:
    case dbtOracle:
    case dbtInterbase:
    case dbtSQLServer:
    case dbtAccess:
      return true;
    default:
      return false;
  }
}

std::string CDatabase::CreateTableFromSource(std::string& szTableName) {
  auto rs = std::make_shared<ado::Recordset>();
  try {
    CDatabase& sourceStore = Converter->SourceDataBase();
    adox::Catalog source;
    adox::Catalog dest;
    source.SetActiveConnection(sourceStore.Connection);
    dest.SetActiveConnection(Connection);

    // A table that is not there answers an error, which is passed over.
    adox::TablePtr sourceTable;
    ResumeNext([&] { sourceTable = source.GetTables().ItemPtr(szTableName); });
    std::string newName = IsFileBased() ? szTableName : MakeIdentifier(szTableName);
    adox::TablePtr destTable;
    ResumeNext([&] { destTable = dest.GetTables().ItemPtr(newName); });
    Err().Clear();
    bool newTable = !destTable;
    if (newTable) {
      destTable = std::make_shared<adox::Table>();
      destTable->Name = newName;
    }

    rs->SetMaxRecords(1);
    rs->Open(Variant("SELECT * FROM [" + szTableName + "]"),
             Variant(ObjectPtr(sourceStore.Connection)), -1, -1, -1);
    for (const ado::FieldPtr& field : rs->GetFields()) {
      if (destTable->GetColumns().Find(MakeIdentifier(field->Name()))) continue;
      adox::ColumnPtr column = NewColumn(*field);
      destTable->GetColumns().Append(Variant(ObjectPtr(column)), ado::adVarWChar, 0);
      if (field->GetProperties().Count() > 0 &&
          PropertyIsTrue(field->GetProperties(), "Jet OLEDB:Allow Zero Length"))
        ResumeNext([&] { column->GetProperties().Set("Jet OLEDB:Allow Zero Length", true); });
    }

    if (IsSQLStore() && sourceTable && sourceTable->GetIndexes().Count() > 2)
      CopyIndexes(*sourceTable, *destTable);

    if (newTable) dest.GetTables().Append(Variant(ObjectPtr(destTable)));
    szTableName = newName;
    Err().Clear();  // of the steps that were passed over
  } catch (...) {
    // A failed copy answers the error text; what was made on the target stays.
    SetPendingError(std::current_exception());
    std::string text = BuildErrorText(1, std::string(), std::string());
    Err().Clear();
    CloseRecordset(rs.get());
    return text;
  }
  CloseRecordset(rs.get());
  return {};
}

}  // namespace ketrova
