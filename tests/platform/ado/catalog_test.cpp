// ADOX on every back-end: tables, columns and indexes read from the store, and
// Append turned into the store's DDL.
#include "platform/ado/adox/catalog.h"

#include <gtest/gtest.h>

#include "backend.h"
#include "platform/ado/adox/ddl.h"
#include "support/vb_error.h"

namespace ketrova::adox {
namespace {

using ado::testing::BackendTest;

ColumnPtr NewColumn(const std::string& name, ado::DataTypeEnum type, int size = 0) {
  auto c = std::make_shared<Column>();
  c->Name = name;
  c->Type = type;
  c->DefinedSize = size;
  return c;
}

class CatalogTest : public BackendTest {};

TEST_P(CatalogTest, AppendCreatesTableColumnsAndIndexesThatReadBack) {
  DropTable("Artikel");
  DropTable("Zaehler");
  if (Dialect() == "postgresql") ExecQuietly("DROP INDEX IF EXISTS \"IX_Artikel_Name\"");
  auto catalog = std::make_shared<Catalog>();
  catalog->SetActiveConnection(db);

  auto table = std::make_shared<Table>();
  table->Name = "Artikel";
  table->GetColumns().Append(Variant(ObjectPtr(NewColumn("Nr", ado::adInteger))));
  table->GetColumns().Append(Variant(ObjectPtr(NewColumn("Bezeichnung", ado::adVarWChar, 50))));
  auto preis = NewColumn("Preis", ado::adNumeric);
  preis->Precision = 10;
  preis->NumericScale = 2;
  table->GetColumns().Append(Variant(ObjectPtr(preis)));
  table->GetColumns().Append(Variant("Lieferdatum"), ado::adDBTimeStamp);
  auto pk = std::make_shared<Index>();
  pk->Name = "PK_Artikel";
  pk->PrimaryKey = true;
  pk->Unique = true;
  pk->GetColumns().Append(Variant("Nr"));
  table->GetIndexes().Append(Variant(ObjectPtr(pk)));
  table->GetIndexes().Append(Variant("IX_Artikel_Name"), Variant("Bezeichnung"));
  catalog->GetTables().Append(Variant(ObjectPtr(table)));

  // A column appended to a table of the store is added at once.
  catalog->GetTables().Item("artikel").GetColumns().Append(Variant("Bemerkung"), ado::adVarWChar,
                                                           20);
  EXPECT_THROW(catalog->GetTables().Append(Variant("Artikel")), VbError);

  auto fresh = std::make_shared<Catalog>();
  fresh->SetActiveConnection(Variant(ObjectPtr(db)));
  Table& read = fresh->GetTables().Item("Artikel");
  EXPECT_EQ(read.Type, "TABLE");
  Columns& columns = read.GetColumns();
  ASSERT_EQ(columns.Count(), 5);
  EXPECT_EQ(columns.Item(0).Name, "Nr");
  EXPECT_EQ(columns.Item("nr").Type, ado::adInteger);
  EXPECT_TRUE(columns.Item("Bezeichnung").Type == ado::adVarChar ||
              columns.Item("Bezeichnung").Type == ado::adVarWChar);
  EXPECT_EQ(columns.Item("Bezeichnung").DefinedSize, 50);
  EXPECT_EQ(columns.Item("Preis").Type, ado::adNumeric);
  EXPECT_EQ(columns.Item("Preis").Precision, 10);
  EXPECT_EQ(columns.Item("Preis").NumericScale, 2);
  EXPECT_EQ(columns.Item("Lieferdatum").Type, ado::adDBTimeStamp);
  EXPECT_EQ(columns.Item(4).Name, "Bemerkung");
  EXPECT_THROW(columns.Item("Fehlt"), VbError);

  bool primaryKey = false, byName = false;
  for (const auto& i : read.GetIndexes().Items()) {
    if (i->PrimaryKey) {
      primaryKey = true;
      ASSERT_EQ(i->GetColumns().Count(), 1);
      EXPECT_EQ(i->GetColumns().Item(0).Name, "Nr");
    }
    if (i->Name == "IX_Artikel_Name") {
      byName = true;
      EXPECT_FALSE(i->Unique);
      EXPECT_EQ(i->GetColumns().Item(0).Name, "Bezeichnung");
    }
  }
  EXPECT_TRUE(primaryKey);
  EXPECT_TRUE(byName);

  // The new table takes records at once, through a fresh record set.
  auto rs = std::make_shared<ado::Recordset>();
  rs->Open("SELECT * FROM [Artikel] T WHERE [Nr] = 1", Variant(ObjectPtr(db)), ado::adOpenKeyset,
           ado::adLockBatchOptimistic);
  rs->AddNew();
  rs->GetFields().Item("Nr").SetValue(Variant(1));
  rs->GetFields().Item("Preis").SetValue(Variant("12,5"));
  rs->Update();
  rs->UpdateBatch();
  rs->Close();
  EXPECT_EQ(Scalar("SELECT [Preis] FROM [Artikel]").ToText(), "12,5");
}

TEST_P(CatalogTest, AutoincrementColumnsCountByThemselves) {
  DropTable("Zaehler");
  auto catalog = std::make_shared<Catalog>();
  catalog->SetActiveConnection(db);
  auto table = std::make_shared<Table>();
  table->Name = "Zaehler";
  auto id = NewColumn("ID", ado::adInteger);
  id->GetProperties().Item("Autoincrement").Value = Variant(true);
  table->GetColumns().Append(Variant(ObjectPtr(id)));
  table->GetColumns().Append(Variant(ObjectPtr(NewColumn("Text", ado::adVarWChar, 10))));
  catalog->GetTables().Append(Variant(ObjectPtr(table)));
  db->Execute("INSERT INTO [Zaehler] ([Text]) VALUES ('a')");
  db->Execute("INSERT INTO [Zaehler] ([Text]) VALUES ('b')");
  EXPECT_EQ(Scalar("SELECT MAX([ID]) FROM [Zaehler]").ToLong(), 2);
}

INSTANTIATE_TEST_SUITE_P(Backends, CatalogTest, ::testing::ValuesIn(ado::testing::TestBackends()),
                         ado::testing::BackendName);

}  // namespace
}  // namespace ketrova::adox
