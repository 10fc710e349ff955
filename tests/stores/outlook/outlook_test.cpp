// COutLook on real contact folders: the folder list, the search, reading
// contacts into the in-memory record set and writing records back.
#include "stores/outlook/outlook.h"

#include <gtest/gtest.h>

#include "core/converter.h"
#include "platform/ado/recordset.h"
#include "platform/contacts/contact_folder.h"
#include "platform/ui/scripted_ui.h"
#include "stores/database.h"
#include "support/dates.h"
#include "support/ole_date.h"
#include "support/regional.h"
#include "support/regional_guard.h"

namespace ketrova {
namespace {

namespace fs = std::filesystem;

std::string Card(const std::string& body) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + body + "END:VCARD\r\n";
}

std::string Person(const std::string& last, const std::string& first,
                   const std::string& more = {}) {
  return Card("FN:" + first + " " + last + "\r\nN:" + last + ";" + first + ";;;\r\n" + more);
}

class OutlookTest : public testing::ContactFolderTest {
 protected:
  void SetUp() override {
    ContactFolderTest::SetUp();
    contacts::SetContactRootOverride(root_.string());
    ui_ = std::make_shared<ui::ScriptedUserInterface>();
    ui::SetCurrent(ui_);
    project_.DebugEvent = [this](const std::string& text) { debug_.push_back(text); };
    project_.ErrorEvent = [this](const std::string& text) { errors_.push_back(text); };
    outlook_ = std::make_unique<COutLook>(root_.string());
    outlook_->Converter = &project_;
  }
  void TearDown() override {
    ui::SetCurrent(nullptr);
    contacts::SetContactRootOverride({});
    ContactFolderTest::TearDown();
  }

  std::vector<std::string> Column(ado::Recordset& rs, const std::string& name) {
    std::vector<std::string> out;
    if (rs.RecordCount() == 0) return out;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) {
      Variant v = rs.GetFields().Item(name).Value();
      out.push_back(v.IsNull() ? "<null>" : v.ToText());
    }
    return out;
  }

  std::size_t Files(const fs::path& folder) {
    std::size_t n = 0;
    for (const auto& e : fs::directory_iterator(folder)) n += e.is_regular_file() ? 1 : 0;
    return n;
  }

  RegionalGuard german_{GermanRegional()};
  CConverter project_;
  std::shared_ptr<ui::ScriptedUserInterface> ui_;
  std::vector<std::string> debug_;
  std::vector<std::string> errors_;
  std::unique_ptr<COutLook> outlook_;
};

TEST_F(OutlookTest, TheFolderListIsFlatByBareNameWithItsDuplicates) {
  Write("Store1/Kontakte/Kunden/VIP/a.vcf", Person("A", "a"));
  Write("Store1/Post/.ketrova-itemtype", "mail\n");
  Write("Store2/Kunden/b.vcf", Person("B", "b"));
  EXPECT_EQ(outlook_->OpenConnection(), "");
  EXPECT_EQ(debug_, (std::vector<std::string>{"Outlook öffnen", "MAPI öffnen"}));
  std::string error;
  auto rs = outlook_->OpenSchema(2, error);
  EXPECT_EQ(error, "");
  ASSERT_EQ(rs->GetFields().Count(), 2);
  for (const auto& field : rs->GetFields()) {
    EXPECT_EQ(field->Type(), ado::adWChar);
    EXPECT_EQ(field->DefinedSize(), 50);
    EXPECT_EQ(field->Attributes(), ado::adFldIsNullable);
  }
  // A folder with subfolders that has subfolders of its own gives two rows.
  EXPECT_EQ(Column(*rs, "TABLE_NAME"),
            (std::vector<std::string>{"Kontakte", "Kunden", "Kunden", "VIP", "Kunden"}));
  EXPECT_EQ(Column(*rs, "TABLE_TYPE")[0], "TABLE");
  EXPECT_EQ(debug_[2], "Start OpenSchema");
  EXPECT_EQ(debug_.back(), "Finished OpenSchema");
}

TEST_F(OutlookTest, TheSearchTakesTheFirstContactFolderAndHandlesDeletedItems) {
  Write("Gelöschte Objekte/Archiv/a.vcf", Person("A", "a"));
  Write("Store/Gelöschte Objekte/Alt/b.vcf", Person("B", "b"));
  Write("Store/Post/Kunden/.ketrova-itemtype", "mail\n");
  Write("Store/Zentrale/Kunden/c.vcf", Person("C", "c"));
  Write("Store2/Kunden/d.vcf", Person("D", "d"));
  outlook_->OpenConnection();
  auto find = [&](const std::string& name) {
    bool found = false;
    contacts::FolderPtr folder = outlook_->FindObject(nullptr, name, 2, found);
    EXPECT_EQ(found, folder != nullptr);
    return folder ? fs::relative(folder->Path(), root_).string() : std::string("<none>");
  };
  EXPECT_EQ(find("archiv"), "Gelöschte Objekte/Archiv");  // walked on the first level
  EXPECT_EQ(find("Alt"), "<none>");                       // passed over deeper down
  EXPECT_EQ(find("KUNDEN"), "Store/Zentrale/Kunden");     // the mail folder is no match
  bool found = true;
  EXPECT_EQ(outlook_->FindObject(nullptr, "Kunden", 2, found), nullptr);
}

TEST_F(OutlookTest, ReadingAddsEveryItemButTheFirstTwiceAndSkipsLists) {
  Write("S/Kunden/1.vcf", Person("Caesar", "Carl", "BDAY:1970-03-04\r\nREV:20240102T030405\r\n"));
  Write("S/Kunden/2.vcf", Person("Adler", "Anna"));
  Write("S/Kunden/3.vcf", Card("FN:Team\r\nKIND:group\r\nN:Berta;;;;\r\n"));
  Write("S/Kunden/4.vcf", Person("Dora", "Dieter", "X-KETROVA-USER4:vier\r\n"));
  outlook_->OpenConnection();
  debug_.clear();
  auto rs = std::make_shared<ado::Recordset>();
  EXPECT_EQ(outlook_->RecordSetOpen("kunden", 0, rs, 2, "", "", true), "");
  EXPECT_EQ(Column(*rs, "LastName"),
            (std::vector<std::string>{"Adler", "Caesar", "Caesar", "Dora", "Dora"}));
  EXPECT_EQ(outlook_->RecordCount(), 4);  // the list counts as an item
  EXPECT_TRUE(outlook_->Eof());

  // The columns: 90, text 130/250/32 but the two dates.
  ASSERT_EQ(rs->GetFields().Count(), 90);
  const ado::Fields& fields = rs->GetFields();
  EXPECT_EQ(fields.Item(0).Name(), "AssistantName");
  EXPECT_EQ(fields.Item(0).Type(), ado::adWChar);
  EXPECT_EQ(fields.Item(0).DefinedSize(), 250);
  EXPECT_EQ(fields.Item(0).Attributes(), 32);
  EXPECT_EQ(fields.Item("Birthday").Type(), ado::adDBDate);
  EXPECT_EQ(fields.Item("Birthday").DefinedSize(), 15);
  EXPECT_EQ(fields.Item("LastModificationTime").Type(), ado::adDate);
  EXPECT_EQ(fields.Item("LastModificationTime").DefinedSize(), 20);
  // The second Append of three columns fails: three error events.
  ASSERT_EQ(errors_.size(), 3u);
  EXPECT_NE(errors_[0].find("Create Field -> CompanyMainTelephoneNumber"), std::string::npos);
  EXPECT_NE(errors_[1].find("Create Field -> CompanyName"), std::string::npos);
  EXPECT_NE(errors_[2].find("Create Field -> ComputerNetworkName"), std::string::npos);

  // No birthday reads as Null; the time of change has its time.
  rs->MoveFirst();
  EXPECT_TRUE(fields.Item("Birthday").Value().IsNull());
  rs->MoveNext();
  EXPECT_EQ(fields.Item("Birthday").Value().ToDouble(), DateSerial(1970, 3, 4));
  EXPECT_EQ(fields.Item("LastModificationTime").Value().ToDouble(),
            CombineDateTime(DateSerial(2024, 1, 2), TimeSerial(3, 4, 5)));

  EXPECT_EQ(debug_.front(), "RecordsetOpen.Start RecordsetOpen");
  EXPECT_EQ(debug_[1], "RecordsetOpen.Search Folder -> kunden");
  EXPECT_NE(std::find(debug_.begin(), debug_.end(), "RecordsetOpen.Sort Folder -> [FileAs]"),
            debug_.end());
  EXPECT_NE(std::find(debug_.begin(), debug_.end(), "Set Fieldvalue -> YomiLastName"),
            debug_.end());
  EXPECT_EQ(debug_[debug_.size() - 2], "RecordsetOpen.Recordset Position");
  EXPECT_EQ(debug_.back(), "RecordsetOpen.Finished RecordsetOpen");

  // With a row limit the list is not counted; with 1, rows come one by one.
  auto limited = std::make_shared<ado::Recordset>();
  EXPECT_EQ(outlook_->RecordSetOpen("Kunden", 3, limited, 2, "", "[LastName]", false), "");
  EXPECT_EQ(Column(*limited, "LastName"),
            (std::vector<std::string>{"Dora", "Caesar", "Caesar", "Adler", "Adler"}));
  auto single = std::make_shared<ado::Recordset>();
  outlook_->RecordSetOpen("Kunden", 1, single, 2, "", "", true);
  EXPECT_EQ(Column(*single, "LastName"), (std::vector<std::string>{"Adler"}));
  single->MoveFirst();
  // The next item is the list: no row, and the cursor stays where it was.
  outlook_->OutlookRSMoveNext();
  EXPECT_EQ(single->GetFields().Item("LastName").Value().ToText(), "Adler");
  outlook_->OutlookRSMoveNext();
  EXPECT_EQ(single->GetFields().Item("LastName").Value().ToText(), "Caesar");
  EXPECT_FALSE(outlook_->Eof());
}

TEST_F(OutlookTest, AFilterDropsTheSortAndABadOneLeavesTheOldRecords) {
  Write("S/Kunden/1.vcf", Person("Zander", "Zoe", "X-KETROVA-USER1:k\r\n"));
  Write("S/Kunden/2.vcf", Person("Adler", "Anna", "X-KETROVA-USER1:k\r\n"));
  Write("S/Kunden/3.vcf", Person("Moser", "Max"));
  outlook_->OpenConnection();
  auto rs = std::make_shared<ado::Recordset>();
  EXPECT_EQ(outlook_->RecordSetOpen("Kunden", 0, rs, 2, "User1  = 'k'\r\n", "", true), "");
  EXPECT_EQ(Column(*rs, "LastName"), (std::vector<std::string>{"Zander", "Adler", "Adler"}));
  EXPECT_EQ(outlook_->RecordSetOpen("Kunden", 0, rs, 2, "[User1] = 'k", "", true), "");
  EXPECT_EQ(ui_->Calls().size(), 1u);
  EXPECT_NE(ui_->Calls()[0].find("Ausgeführte Aktion: Filter Folder -> [User1] = ´k"),
            std::string::npos)
      << ui_->Calls()[0];
  EXPECT_EQ(Column(*rs, "LastName"), (std::vector<std::string>{"Zander", "Adler", "Adler"}));
}

TEST_F(OutlookTest, AnEmptyFolderGetsItsColumnsThroughADummyThatGoesAgain) {
  fs::create_directories(root_ / "S" / "Leer");
  outlook_->OpenConnection();
  auto rs = std::make_shared<ado::Recordset>();
  EXPECT_EQ(outlook_->RecordSetOpen("Leer", 1, rs, 2, "", "", true), "");
  EXPECT_EQ(rs->GetFields().Count(), 90);
  EXPECT_TRUE(rs->Eof());
  EXPECT_TRUE(outlook_->Eof());
  EXPECT_EQ(Files(root_ / "S" / "Kontakte"), 0u);  // the default folder, made for the dummy
  EXPECT_NE(std::find(debug_.begin(), debug_.end(), "Create Field -> AssistantName"), debug_.end());
}

TEST_F(OutlookTest, AMissingFolderIsMadeButThatOpenFails) {
  Write("S/Kontakte/a.vcf", Person("A", "a"));
  outlook_->OpenConnection();
  auto rs = std::make_shared<ado::Recordset>();
  const std::string error = outlook_->RecordSetOpen("Neu", 1, rs, 2, "", "", true);
  EXPECT_NE(error.find("Fehler Nr.: 91"), std::string::npos) << error;
  // The search's own steps are the last action.
  EXPECT_NE(error.find("Ausgeführte Aktion: Read Kontakte"), std::string::npos) << error;
  EXPECT_TRUE(fs::is_directory(root_ / "S" / "Kontakte" / "Neu"));
  // Made a second time, beneath the default folder again, it exists already.
  EXPECT_NE(outlook_->CreateFolder("Neu").find("existiert bereits"), std::string::npos);
}

TEST_F(OutlookTest, WritingFollowsTheColumnsWithItsQuirks) {
  Write("S/Kunden/1.vcf", Person("Alt", "Anna", "UID:1\r\nNOTE:bleibt\r\nX-KETROVA-USER1:k1\r\n"));
  Write("S/Kunden/2.vcf", Person("Berg", "Bert", "UID:2\r\nX-KETROVA-USER1:k2\r\n"));
  outlook_->OpenConnection();
  const std::string untouched = Read(root_ / "S/Kunden/2.vcf");
  // An update: the restriction finds the contact, the record is changed in place.
  auto rs = std::make_shared<ado::Recordset>();
  ASSERT_EQ(outlook_->RecordSetOpen("Kunden", 1, rs, 2, "[User1] = 'k1'", "", true), "");
  ASSERT_FALSE(outlook_->Eof());
  rs->GetFields().Item("FirstName").SetValue(Variant("Anne"));
  rs->GetFields().Item("User4").SetValue(Variant("vier"));
  rs->GetFields().Item("FullNameAndCompany").SetValue(Variant("übergangen"));
  std::string error = "alt";
  EXPECT_EQ(outlook_->RecordSetUpdate(rs, error, "unbenutzt"), "");
  EXPECT_EQ(error, "");
  const std::string card = Read(root_ / "S/Kunden/1.vcf");
  EXPECT_NE(card.find("N:Alt;Anne;;;\r\n"), std::string::npos) << card;
  EXPECT_NE(card.find("X-KETROVA-USER2:vier\r\n"), std::string::npos);  // User4 goes to User2
  EXPECT_EQ(card.find("X-KETROVA-USER4"), std::string::npos);
  EXPECT_NE(card.find("NOTE:bleibt\r\n"), std::string::npos);
  EXPECT_EQ(card.find("BDAY"), std::string::npos);  // a Null birthday is not written
  EXPECT_EQ(Read(root_ / "S/Kunden/2.vcf"), untouched);

  // An insert: the restriction matches nothing, a new item takes the record;
  // the target is closed before each open.
  for (const char* name : {"Carla", "Dirk", "Emil"}) {
    EXPECT_EQ(outlook_->RecordSetClose(), "");
    ASSERT_EQ(outlook_->RecordSetOpen("Kunden", 1, rs, 2, " [User1] = 'xxxxxxxx'", "", true), "");
    ASSERT_TRUE(outlook_->Eof());
    rs->AddNew();
    rs->GetFields().Item("LastName").SetValue(Variant(name));
    rs->GetFields().Item("Birthday").SetValue(Variant::FromDate(DateSerial(1999, 9, 9)));
    EXPECT_EQ(outlook_->RecordSetUpdate(rs, error, ""), "");
  }
  EXPECT_EQ(Files(root_ / "S/Kunden"), 5u);
  auto all = std::make_shared<ado::Recordset>();
  outlook_->RecordSetOpen("Kunden", 0, all, 2, "Birthday  = '09.09.1999'\r\n", "", true);
  EXPECT_EQ(outlook_->RecordCount(), 3);
}

TEST_F(OutlookTest, ARefusedSaveAnswersFalseAndIsHeard) {
  Write("S/Kunden/1.vcf", Person("Alt", "Anna", "X-KETROVA-USER1:k1\r\n"));
  outlook_->OpenConnection();
  std::vector<std::string> refused;
  outlook_->RecordRefused = [&](const std::string& text, ado::Recordset& record) {
    refused.push_back(text + "|" + record.GetFields().Item("LastName").Value().ToText());
  };
  auto rs = std::make_shared<ado::Recordset>();
  ASSERT_EQ(outlook_->RecordSetOpen("Kunden", 1, rs, 2, "[User1] = 'k1'", "", true), "");
  // A folder where the card was: the card cannot be renamed into place.
  fs::remove(root_ / "S/Kunden/1.vcf");
  fs::create_directory(root_ / "S/Kunden/1.vcf");
  std::string error;
  EXPECT_EQ(outlook_->RecordSetUpdate(rs, error, ""), "");  // RecordToItem's False says nothing
  EXPECT_EQ(error, "");
  ASSERT_EQ(refused.size(), 1u);
  EXPECT_NE(refused[0].find("Die Karte kann nicht geschrieben werden"), std::string::npos);
  EXPECT_TRUE(refused[0].ends_with("|Alt"));
}

// Through the store, a card that cannot be saved is also noted for the run's
// reject file, while RecordSetWrite itself keeps silent.
TEST_F(OutlookTest, TheStoreNotesARefusedCardForTheRejectFile) {
  Write("S/Kunden/1.vcf", Person("Alt", "Anna", "X-KETROVA-USER1:k1\r\n"));
  CDatabase& store = project_.SourceDataBase();
  store.DatabaseType = dbtOutlook;
  store.SetActive(true);
  std::shared_ptr<ado::Recordset> rs;
  ASSERT_EQ(store.RecordSetOpen(rs, "[User1] = 'k1'", "Kunden", 1, 1, 2), "");
  fs::remove(root_ / "S/Kunden/1.vcf");
  fs::create_directory(root_ / "S/Kunden/1.vcf");
  std::string outlookError, error;
  store.RecordSetWrite(rs, outlookError, error);
  EXPECT_EQ(error, "");
  EXPECT_NE(store.TakeRefusedWrite().find("Die Karte kann nicht geschrieben werden"),
            std::string::npos);
  EXPECT_EQ(store.TakeRefusedWrite(), "");  // answered once
}

TEST_F(OutlookTest, DeletingCountsOnceAndTakesTheFirstItemThatOften) {
  for (const char* n : {"A", "B", "C", "D"})
    Write(std::string("S/Kunden/") + n + ".vcf",
          Person(n, n, std::string("X-KETROVA-USER1:") + (n[0] < 'C' ? "weg" : "bleibt") + "\r\n"));
  outlook_->OpenConnection();
  debug_.clear();
  EXPECT_EQ(outlook_->DeleteItems("Kunden", "User1  = 'weg'\r\n", 2), "");
  EXPECT_EQ(Files(root_ / "S/Kunden"), 2u);
  EXPECT_TRUE(fs::exists(root_ / "S/Kunden/C.vcf"));
  EXPECT_EQ(std::count(debug_.begin(), debug_.end(), "Eintrag löschen"), 2);
  EXPECT_EQ(outlook_->DeleteItems("Kunden", "ALL", 2), "");
  EXPECT_EQ(Files(root_ / "S/Kunden"), 0u);
}

TEST_F(OutlookTest, TheStoreRoutesToANewAdapterAtEachOpen) {
  Write("S/Kunden/1.vcf", Person("Alt", "Anna"));
  Write("S/Kunden/2.vcf", Person("Berg", "Bert"));
  Write("S/Post/.ketrova-itemtype", "mail\n");
  CDatabase& store = project_.SourceDataBase();
  store.DatabaseType = dbtOutlook;
  EXPECT_FALSE(store.CanUseConnection());
  EXPECT_FALSE(store.IsFileBased());
  store.SetActive(true);
  ASSERT_TRUE(store.Active());
  EXPECT_EQ(store.ColBracketLeft(), "");
  EXPECT_EQ(store.Reload(), "");
  ASSERT_EQ(store.Objects().Count(), 1);
  EXPECT_EQ(store.Objects().Item(1).Name, "Kunden");
  EXPECT_EQ(store.Objects().Item(1).Fields().Count(), 90);
  EXPECT_TRUE(store.ObjectExists("kunden"));
  EXPECT_FALSE(store.ObjectExists("Post"));
  std::shared_ptr<ado::Recordset> rs;
  EXPECT_EQ(store.RecordSetOpen(rs, "", "Kunden", 1, 1, 2), "");
  EXPECT_EQ(store.RecordsetRecordCount(), 2);
  // The store's record set is the adapter's, and setting it keeps that one.
  EXPECT_EQ(store.Recordset(), store.OutLook()->Recordset);
  EXPECT_EQ(store.Recordset(), rs);
  store.SetRecordset(std::make_shared<ado::Recordset>());
  EXPECT_EQ(store.Recordset(), rs);
  EXPECT_EQ(rs->GetFields().Item("LastName").Value().ToText(), "Alt");
  // Reading a folder's columns in between leaves the reading cursor alone.
  store.Objects().Item(1).Fields().Clear();
  EXPECT_EQ(store.Objects().Item(1).LoadColumns(), "");
  EXPECT_FALSE(store.RecordsetMoveNext());
  EXPECT_EQ(rs->GetFields().Item("LastName").Value().ToText(), "Berg");
  EXPECT_FALSE(store.RecordsetEOF());
  EXPECT_FALSE(store.RecordsetMoveNext());
  EXPECT_TRUE(store.RecordsetEOF());
  EXPECT_EQ(store.CreateObject("Neu", ""), "");
  EXPECT_TRUE(fs::is_directory(root_ / "S/Kunden/Neu"));
  COutLook* first = store.OutLook();
  store.SetActive(false);
  EXPECT_FALSE(store.Active());
  EXPECT_EQ(store.OutLook(), nullptr);
  store.SetActive(true);
  EXPECT_NE(store.OutLook(), nullptr);
  (void)first;
}

TEST_F(OutlookTest, AMissingClientStillReadsActive) {
  const fs::path file = Write("blocker", "keine Ordner");
  contacts::SetContactRootOverride((file / "contacts").string());
  CDatabase& store = project_.SourceDataBase();
  store.DatabaseType = dbtOutlook;
  store.SetActive(true);
  EXPECT_TRUE(store.Active());
  EXPECT_EQ(store.ErrorNumber(), 0);
  ASSERT_EQ(errors_.size(), 1u);
  EXPECT_NE(errors_[0].find("Fehler Nr.: 429"), std::string::npos) << errors_[0];
  // Without a session OpenSchema fails, and that ends Reload.
  EXPECT_NE(store.Reload(), "");
  EXPECT_EQ(store.Objects().Count(), 0);
}

}  // namespace
}  // namespace ketrova
