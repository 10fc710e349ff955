// Connection and Recordset on every back-end.
#include <gtest/gtest.h>

#include "backend.h"
#include "platform/ado/enums.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::ado::testing {
namespace {

class RecordAccess : public BackendTest {
 protected:
  // A table with a key and the common column types.
  void CreateTypesTable() {
    DropTable("Kunden");
    db->Execute(
        "CREATE TABLE [Kunden] ([ID] INTEGER NOT NULL PRIMARY KEY, [Klein] SMALLINT, "
        "[Gross] BIGINT, [Name] VARCHAR(40), [Notiz] TEXT, [Betrag] DECIMAL(10,2), "
        "[Faktor] DOUBLE PRECISION, [Geboren] DATE, [Zeitpunkt] TIMESTAMP NULL, [Aktiv] BOOLEAN)");
  }

  // The engine's write pattern: open the target by key for a batch update,
  // add a record, set the fields, Update and UpdateBatch.
  void WriteLikeTheEngine(int id, const std::string& name, const Variant& betrag) {
    auto rs = std::make_shared<Recordset>();
    rs->Open("SELECT * FROM [Kunden] T WHERE [ID] = " + std::to_string(id), Variant(ObjectPtr(db)),
             adOpenKeyset, adLockBatchOptimistic);
    if (rs->Eof()) rs->AddNew();
    rs->GetFields().Item("ID").SetValue(Variant(id));
    rs->GetFields().Item("name").SetValue(Variant(name));
    rs->GetFields().Item("Betrag").SetValue(betrag);
    rs->Update();
    rs->UpdateBatch(adAffectAll);
    rs->Close();
  }
};

TEST_P(RecordAccess, OpenStateAndSecondOpenOfTheSameConnection) {
  EXPECT_EQ(db->State(), adStateOpen);
  try {
    db->Open();
    FAIL() << "a second Open of an open connection must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, kErrObjectOpen);
    EXPECT_EQ(e.Description, "Der Vorgang ist für ein geöffnetes Objekt nicht zulässig.");
  }
  db->Close();
  EXPECT_EQ(db->State(), adStateClosed);
  db->Open();
  EXPECT_EQ(db->State(), adStateOpen);
  // Every record commits on its own: SQLite must run in WAL for that to be cheap.
  if (Dialect() == "sqlite") {
    EXPECT_EQ(Scalar("PRAGMA journal_mode").ToText(), "wal");
  }
}

TEST_P(RecordAccess, UnknownDsnAndRefusedStatementCarryTheDriversDiagnostic) {
  auto other = std::make_shared<Connection>();
  try {
    other->Open("Provider=MSDASQL.1;Data Source=ketrova_gibt_es_nicht;Persist Security Info=False");
    FAIL() << "an unknown DSN must fail";
  } catch (const VbError& e) {
    EXPECT_LT(e.Number, 0);
    // The driver manager's own diagnostic.
    EXPECT_NE(e.Description.find("Data source name not found"), std::string::npos) << e.Description;
  }
  EXPECT_EQ(other->State(), adStateClosed);

  try {
    db->Execute("SELEKT 1");
    FAIL() << "a statement the store refuses must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, kErrStatementRefused);
    EXPECT_FALSE(e.Description.empty());
  }
  try {
    db->Execute("SELECT * FROM [GibtEsNicht]");
    FAIL();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, kErrUnknownTable) << e.Description;
  }
  // The connection stays usable.
  EXPECT_EQ(Scalar("SELECT 1 + 1").ToLong(), 2);
}

TEST_P(RecordAccess, RefusedLoginAndServerDownAreProviderFailures) {
  if (Dialect() == "sqlite") GTEST_SKIP() << "a file has neither login nor server";
  auto other = std::make_shared<Connection>();
  if (Dialect() == "mysql") {
    try {
      other->Open(ServerString() + ";PWD=falsch");
      FAIL() << "a wrong password must be refused";
    } catch (const VbError& e) {
      EXPECT_EQ(e.Number, kErrLoginRefused) << e.Description;
    }
  }
  std::string down = Dialect() == "mysql"
                         ? "Driver={MariaDB Unicode};Server=127.0.0.1;Port=1;Database=x"
                         : "Driver={PostgreSQL Unicode};Servername=127.0.0.1;Port=1;Database=x";
  try {
    other->Open(down);
    FAIL() << "a server that is down cannot be opened";
  } catch (const VbError& e) {
    EXPECT_LT(e.Number, 0);
    EXPECT_FALSE(e.Description.empty());
  }
  EXPECT_EQ(other->State(), adStateClosed);
}

TEST_P(RecordAccess, SchemaListsTablesAndViewsWithAdosColumns) {
  CreateTypesTable();
  DropTable("KundenSicht");
  db->Execute("CREATE VIEW [KundenSicht] AS SELECT [ID], [Name] FROM [Kunden]");
  auto rs = db->OpenSchema(adSchemaTables);
  ASSERT_EQ(rs->GetFields().Item(0).Name(), "TABLE_CATALOG");
  ASSERT_EQ(rs->GetFields().Item(1).Name(), "TABLE_SCHEMA");
  ASSERT_EQ(rs->GetFields().Item(2).Name(), "TABLE_NAME");
  ASSERT_EQ(rs->GetFields().Item(3).Name(), "TABLE_TYPE");
  std::string kundenType, sichtType;
  for (; !rs->Eof(); rs->MoveNext()) {
    std::string name = rs->GetFields().Item("TABLE_NAME").Value().ToText();
    if (name == "Kunden") kundenType = rs->GetFields().Item("TABLE_TYPE").Value().ToText();
    if (name == "KundenSicht") sichtType = rs->GetFields().Item("TABLE_TYPE").Value().ToText();
  }
  EXPECT_EQ(kundenType, "TABLE");
  EXPECT_EQ(sichtType, "VIEW");
  db->Execute("DROP VIEW [KundenSicht]");
}

TEST_P(RecordAccess, ValuesKeepTheirTypesNullsUmlautsDatesAndDecimals) {
  CreateTypesTable();
  db->Execute(
      "INSERT INTO [Kunden] VALUES (1, 7, 5000000000, 'Müller & Söhne ß', 'lang', 1234.56, 0.25, "
      "'2024-02-29', '2024-02-29 13:45:10', TRUE)");
  db->Execute("INSERT INTO [Kunden] ([ID]) VALUES (2)");
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Kunden] ORDER BY [ID]", Variant(ObjectPtr(db)), adOpenForwardOnly,
           adLockReadOnly);
  Fields& f = rs->GetFields();
  ASSERT_EQ(f.Count(), 10);
  EXPECT_EQ(f.Item(0).Name(), "ID");
  EXPECT_EQ(f.Item("id").Type(), adInteger);
  EXPECT_EQ(f.Item("Klein").Type(), adSmallInt);
  EXPECT_EQ(f.Item("Gross").Type(), adBigInt);
  EXPECT_TRUE(f.Item("Name").Type() == adVarChar || f.Item("Name").Type() == adVarWChar);
  EXPECT_EQ(f.Item("Name").DefinedSize(), 40);
  EXPECT_EQ(f.Item("Betrag").Type(), adNumeric);
  EXPECT_EQ(f.Item("Betrag").Precision(), 10);
  EXPECT_EQ(f.Item("Betrag").NumericScale(), 2);
  EXPECT_EQ(f.Item("Faktor").Type(), adDouble);
  EXPECT_EQ(f.Item("Geboren").Type(), adDBDate);
  EXPECT_EQ(f.Item("Zeitpunkt").Type(), adDBTimeStamp);

  EXPECT_EQ(f.Item("ID").Value().Type(), vbLong);
  EXPECT_EQ(f.Item("Klein").Value().Type(), vbInteger);
  EXPECT_DOUBLE_EQ(f.Item("Gross").Value().ToDouble(), 5000000000.0);
  EXPECT_EQ(f.Item("Name").Value().ToText(), "Müller & Söhne ß");
  EXPECT_EQ(f.Item("Name").ActualSize(), 16);
  EXPECT_EQ(f.Item("Betrag").Value().Type(), vbDecimal);
  EXPECT_EQ(DecimalToText(f.Item("Betrag").Value().AsDecimal()), "1234.56");
  EXPECT_EQ(f.Item("Faktor").Value().Type(), vbDouble);
  EXPECT_EQ(f.Item("Geboren").Value().Type(), vbDate);
  DateParts born = PartsFromOleDate(f.Item("Geboren").Value().AsDate().value);
  EXPECT_EQ(born.year * 10000 + born.month * 100 + born.day, 20240229);
  DateParts stamp = PartsFromOleDate(f.Item("Zeitpunkt").Value().AsDate().value);
  EXPECT_EQ(stamp.hour * 10000 + stamp.minute * 100 + stamp.second, 134510);
  EXPECT_TRUE(f.Item("Aktiv").Value().ToBool());

  rs->MoveNext();
  ASSERT_FALSE(rs->Eof());
  for (int i = 1; i < f.Count(); ++i) EXPECT_TRUE(f.Item(i).Value().IsNull()) << f.Item(i).Name();
  rs->MoveNext();
  EXPECT_TRUE(rs->Eof());
  EXPECT_EQ(rs->RecordCount(), -1);  // forward-only
}

TEST_P(RecordAccess, JetTypeWordsOfCreatedTablesReadAsJetMeantThem) {
  // Tables a conversion creates declare Access's type words; SQLite keeps the
  // words and its driver calls them text, so a German "2500,5" written into a
  // CURRENCY column would stay text.
  if (Dialect() != "sqlite") GTEST_SKIP() << "only SQLite keeps foreign type words";
  db->Execute("CREATE TABLE [Jet] ([Betrag] CURRENCY, [Nr] LONG, [Ja] YESNO, [Notiz] LONGTEXT)");
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Jet]", Variant(ObjectPtr(db)), adOpenKeyset, adLockOptimistic);
  Fields& f = rs->GetFields();
  EXPECT_EQ(f.Item("Betrag").Type(), adCurrency);
  EXPECT_EQ(f.Item("Nr").Type(), adInteger);
  EXPECT_EQ(f.Item("Ja").Type(), adBoolean);
  EXPECT_EQ(f.Item("Notiz").Type(), adLongVarWChar);
  rs->AddNew();
  f.Item("Betrag").SetValue(Variant(std::string("2500,5")));
  f.Item("Nr").SetValue(Variant(std::string("42")));
  rs->Update();
  rs->Close();
  EXPECT_EQ(Scalar("SELECT typeof(Betrag) || '|' || Betrag || '|' || typeof(Nr) FROM Jet").ToText(),
            "real|2500.5|integer");
  rs->Open("SELECT * FROM [Jet]", Variant(ObjectPtr(db)), adOpenForwardOnly, adLockReadOnly);
  EXPECT_EQ(rs->GetFields().Item("Betrag").Value().Type(), vbCurrency);
  EXPECT_DOUBLE_EQ(rs->GetFields().Item("Betrag").Value().ToDouble(), 2500.5);
}

TEST_P(RecordAccess, MySqlBooleansAreBooleansAndKeepOtherNumbers) {
  // BOOLEAN is MySQL's name for TINYINT(1), which holds any small number.
  if (Dialect() != "mysql") GTEST_SKIP() << "MySQL's BOOLEAN";
  DropTable("Schalter");
  db->Execute("CREATE TABLE Schalter (Nr INTEGER PRIMARY KEY, Ja BOOLEAN)");
  db->Execute("INSERT INTO Schalter VALUES (1, 0), (2, 1), (3, 2), (4, -5), (5, NULL)");
  auto rs = db->Execute("SELECT Ja FROM Schalter ORDER BY Nr");
  EXPECT_EQ(rs->GetFields().Item(0).Type(), adBoolean);
  std::vector<std::string> values;
  for (; !rs->Eof(); rs->MoveNext()) {
    const Variant v = rs->GetFields().Item(0).Value();
    values.push_back(v.TypeName() + " " + v.ToText());
  }
  EXPECT_EQ(values, (std::vector<std::string>{"Boolean Falsch", "Boolean Wahr", "Integer 2",
                                              "Integer -5", "Null "}));
  DropTable("Schalter");
}

TEST_P(RecordAccess, InsertAndUpdateThroughRecordSets) {
  CreateTypesTable();
  for (int id = 1; id <= 3; ++id)
    WriteLikeTheEngine(id, "Kunde " + std::to_string(id), Variant(2.5));
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Kunden]").ToLong(), 3);

  // The same pattern on an existing key edits the row in place.
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Kunden] T WHERE [ID] = 2", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockBatchOptimistic);
  ASSERT_FALSE(rs->Eof());
  EXPECT_EQ(rs->EditMode(), adEditNone);
  rs->GetFields().Item("Name").SetValue(Variant("Änderung"));
  EXPECT_EQ(rs->EditMode(), adEditInProgress);
  EXPECT_EQ(rs->GetFields().Item("Name").OriginalValue().ToText(), "Kunde 2");
  rs->GetFields().Item("Geboren").SetValue(Variant::FromDate(OleDateFromParts({1970, 1, 2})));
  rs->Update();
  rs->UpdateBatch(adAffectAll);
  rs->Close();

  EXPECT_EQ(Scalar("SELECT [Name] FROM [Kunden] WHERE [ID] = 2").ToText(), "Änderung");
  EXPECT_EQ(Scalar("SELECT [Name] FROM [Kunden] WHERE [ID] = 3").ToText(), "Kunde 3");
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Kunden]").ToLong(), 3);
  DateParts p =
      PartsFromOleDate(Scalar("SELECT [Geboren] FROM [Kunden] WHERE [ID] = 2").ToDate().value);
  EXPECT_EQ(p.year * 10000 + p.month * 100 + p.day, 19700102);

  // An optimistic lock writes at Update.
  rs->Open("SELECT [ID], [Name] FROM [Kunden] WHERE [ID] = 3", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockOptimistic);
  rs->GetFields().Item("Name").SetValue(Variant("Sofort"));
  rs->Update();
  EXPECT_EQ(Scalar("SELECT [Name] FROM [Kunden] WHERE [ID] = 3").ToText(), "Sofort");
  rs->Close();
}

TEST_P(RecordAccess, UpdateWithoutPrimaryKeyFindsTheRowByItsOriginalValues) {
  DropTable("Ohne");
  db->Execute("CREATE TABLE [Ohne] ([A] INTEGER, [B] VARCHAR(10))");
  db->Execute("INSERT INTO [Ohne] VALUES (1, 'x')");
  db->Execute("INSERT INTO [Ohne] ([A]) VALUES (2)");
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Ohne] ORDER BY [A]", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockOptimistic);
  rs->MoveNext();
  rs->GetFields().Item("A").SetValue(Variant(20));
  rs->Update();
  rs->Close();
  EXPECT_EQ(Scalar("SELECT [A] FROM [Ohne] WHERE [B] IS NULL").ToLong(), 20);
  EXPECT_EQ(Scalar("SELECT [A] FROM [Ohne] WHERE [B] = 'x'").ToLong(), 1);
}

TEST_P(RecordAccess, ReadOnlyAndJoinedRecordSetsRefuseChanges) {
  CreateTypesTable();
  db->Execute("INSERT INTO [Kunden] ([ID]) VALUES (1)");
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Kunden]", Variant(ObjectPtr(db)), adOpenForwardOnly, adLockReadOnly);
  EXPECT_THROW(rs->AddNew(), VbError);
  rs->Close();
  rs->Open("SELECT COUNT(*) AS N FROM [Kunden]", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockOptimistic);
  EXPECT_THROW(rs->GetFields().Item("N").SetValue(Variant(3)), VbError);
  rs->Close();
}

TEST_P(RecordAccess, BadValuesFailWithoutWritingAndLeaveTheConnectionUsable) {
  CreateTypesTable();
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Kunden] WHERE [ID] = 1", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockBatchOptimistic);
  rs->AddNew();
  rs->GetFields().Item("ID").SetValue(Variant(1));
  try {
    rs->GetFields().Item("Klein").SetValue(Variant(100000));
    FAIL() << "a value that does not fit SMALLINT must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, kErrMultipleStep);
  }
  EXPECT_THROW(rs->GetFields().Item("Geboren").SetValue(Variant("kein Datum")), VbError);
  rs->Update();
  rs->UpdateBatch();
  rs->Close();

  // A duplicate key is refused by the store, with its diagnostic.
  rs->Open("SELECT * FROM [Kunden] WHERE [ID] = 1", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockBatchOptimistic);
  rs->AddNew();
  rs->GetFields().Item("ID").SetValue(Variant(1));
  rs->GetFields().Item("Name").SetValue(Variant("doppelt"));
  rs->Update();
  try {
    rs->UpdateBatch();
    FAIL() << "a duplicate key must fail";
  } catch (const VbError& e) {
    EXPECT_LT(e.Number, 0);
    EXPECT_FALSE(e.Description.empty());
  }
  rs->Close();
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Kunden]").ToLong(), 1);
  EXPECT_TRUE(Scalar("SELECT [Name] FROM [Kunden]").IsNull());

  if (Dialect() != "sqlite") {
    // Servers check the length of a text column; SQLite does not.
    rs->Open("SELECT * FROM [Kunden] WHERE [ID] = 2", Variant(ObjectPtr(db)), adOpenKeyset,
             adLockBatchOptimistic);
    rs->AddNew();
    rs->GetFields().Item("ID").SetValue(Variant(2));
    rs->GetFields().Item("Name").SetValue(Variant(std::string(60, 'x')));
    rs->Update();
    EXPECT_THROW(rs->UpdateBatch(), VbError);
    rs->Close();
    EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Kunden]").ToLong(), 1);
  }
}

TEST_P(RecordAccess, MovingMaxRecordsRecordCountAndASecondOpen) {
  DropTable("Zahlen");
  db->Execute("CREATE TABLE [Zahlen] ([N] INTEGER)");
  db->BeginTrans();
  for (int i = 1; i <= 150; ++i)
    db->Execute("INSERT INTO [Zahlen] VALUES (" + std::to_string(i) + ")");
  db->CommitTrans();

  auto rs = std::make_shared<Recordset>();
  rs->SetMaxRecords(5);
  rs->Open("SELECT [N] FROM [Zahlen] ORDER BY [N]", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockReadOnly);
  EXPECT_EQ(rs->RecordCount(), 5);
  rs->MoveLast();
  EXPECT_EQ(rs->GetFields().Item(0).Value().ToLong(), 5);
  rs->MovePrevious();
  EXPECT_EQ(rs->GetFields().Item(0).Value().ToLong(), 4);
  rs->MoveFirst();
  EXPECT_TRUE(!rs->Bof() && !rs->Eof());
  rs->MovePrevious();
  EXPECT_TRUE(rs->Bof());
  EXPECT_THROW(rs->Open("SELECT 1", Variant(ObjectPtr(db))), VbError);  // still open
  rs->Close();

  // A second Open of the same object reads anew, past the first block.
  rs->SetMaxRecords(0);
  rs->Open("SELECT [N] FROM [Zahlen] ORDER BY [N]", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockReadOnly);
  int count = 0, last = 0;
  for (; !rs->Eof(); rs->MoveNext()) {
    ++count;
    last = rs->GetFields().Item("n").Value().ToLong();
  }
  EXPECT_EQ(count, 150);
  EXPECT_EQ(last, 150);
  EXPECT_EQ(rs->RecordCount(), 150);
  EXPECT_THROW(rs->MoveNext(), VbError);
  rs->Close();
  EXPECT_EQ(rs->State(), adStateClosed);
  EXPECT_THROW(rs->Eof(), VbError);

  // The engine's target for plain inserts is the whole table, opened per
  // record: adding to it must not wait on the rows it did not read.
  for (int n = 151; n <= 153; ++n) {
    rs->Open(" SELECT * \r\n FROM    [Zahlen] Zahlen", Variant(ObjectPtr(db)), adOpenKeyset,
             adLockBatchOptimistic);
    ASSERT_FALSE(rs->Eof());
    rs->AddNew();
    rs->GetFields().Item("N").SetValue(Variant(n));
    rs->Update();
    rs->UpdateBatch(adAffectAll);
    rs->Close();
  }
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Zahlen]").ToLong(), 153);
}

TEST_P(RecordAccess, RollbackUndoesAndExecuteCountsAffectedRows) {
  DropTable("Zahlen");
  db->Execute("CREATE TABLE [Zahlen] ([N] INTEGER)");
  db->Execute("INSERT INTO [Zahlen] VALUES (1)");
  db->Execute("INSERT INTO [Zahlen] VALUES (2)");
  db->BeginTrans();
  db->Execute("INSERT INTO [Zahlen] VALUES (3)");
  db->RollbackTrans();
  EXPECT_EQ(Scalar("SELECT COUNT(*) FROM [Zahlen]").ToLong(), 2);
  Variant affected;
  auto rs = db->Execute("UPDATE [Zahlen] SET [N] = [N] + 10", &affected);
  EXPECT_EQ(affected.ToLong(), 2);
  EXPECT_EQ(rs->State(), adStateClosed);
}

INSTANTIATE_TEST_SUITE_P(Backends, RecordAccess, ::testing::ValuesIn(TestBackends()), BackendName);

// The record set without a connection, as the contact store builds it.
TEST(InMemoryRecordset, AppendOpenAddNewUpdateAndMove) {
  auto rs = std::make_shared<Recordset>();
  rs->GetFields().Append("TABLE_NAME", adWChar, 50, adFldIsNullable);
  rs->GetFields().Append("TABLE_TYPE", adWChar, 50, adFldIsNullable);
  rs->GetFields().Append("Weg", adInteger);
  EXPECT_THROW(rs->GetFields().Append("table_name", adWChar, 50), VbError);
  rs->GetFields().Delete(Variant("Weg"));
  EXPECT_EQ(rs->GetFields().Count(), 2);
  rs->Open();
  EXPECT_TRUE(rs->Eof() && rs->Bof());
  EXPECT_THROW(rs->GetFields().Append("Zu spät", adWChar, 5), VbError);
  for (const char* name : {"Kontakte", "Aufgaben"}) {
    rs->AddNew();
    rs->GetFields().Item("TABLE_NAME").SetValue(Variant(name));
    rs->GetFields().Item(1).SetValue(Variant("TABLE"));
    rs->Update();
  }
  EXPECT_EQ(rs->RecordCount(), 2);
  rs->MoveFirst();
  EXPECT_EQ(rs->GetFields().Item("table_name").Value().ToText(), "Kontakte");
  EXPECT_EQ(rs->GetFields().Item("TABLE_NAME").Attributes(), adFldIsNullable);
  rs->MoveNext();
  rs->AddNew();
  rs->GetFields().Item(0).SetValue(Variant("verworfen"));
  rs->CancelUpdate();
  EXPECT_EQ(rs->RecordCount(), 2);
  rs->Close();
  EXPECT_EQ(rs->GetFields().Count(), 2);  // the appended fields stay for the next Open
}

TEST_P(RecordAccess, LongResultsStreamAndMovesBackReadThemAgain) {
  // Rows far behind the current one are let go while a long result streams;
  // a move back to them reads the result anew.
  db->Execute("CREATE TABLE [Reihe] ([N] INTEGER)");
  for (int block = 0; block < 30; ++block) {
    std::string values;
    for (int i = 1; i <= 100; ++i)
      values += (values.empty() ? "(" : ",(") + std::to_string(block * 100 + i) + ")";
    db->Execute("INSERT INTO [Reihe] VALUES " + values);
  }
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT [N] FROM [Reihe] ORDER BY [N]", Variant(ObjectPtr(db)), adOpenKeyset,
           adLockOptimistic);
  auto n = [&] { return rs->GetFields().Item("N").Value().ToLong(); };
  std::int32_t sum = 0;
  for (; !rs->Eof(); rs->MoveNext()) sum += n();
  EXPECT_EQ(sum, 3000 * 3001 / 2);
  rs->MovePrevious();
  EXPECT_EQ(n(), 3000);
  rs->MoveFirst();
  EXPECT_EQ(n(), 1);
  for (int i = 1; i < 2500; ++i) rs->MoveNext();
  for (int i = 0; i < 2000; ++i) rs->MovePrevious();
  EXPECT_EQ(n(), 500);
  EXPECT_EQ(rs->RecordCount(), 3000);
  DropTable("Reihe");
}

}  // namespace
}  // namespace ketrova::ado::testing
