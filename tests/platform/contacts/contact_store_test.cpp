#include "platform/contacts/contact_store.h"

#include <gtest/gtest.h>

#include "platform/contacts/contact_fields.h"
#include "platform/contacts/contact_folder.h"
#include "platform/contacts/restriction.h"
#include "support/ole_date.h"
#include "support/vb_error.h"

namespace ketrova::contacts {
namespace {

namespace fs = std::filesystem;
using ketrova::testing::ContactFolderTest;

std::string Card(const std::string& body) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + body + "END:VCARD\r\n";
}

std::string Text(const Variant& v) {
  return v.IsNull() ? "<null>" : v.ToText();
}

TEST(ContactFields, TableHasTheNinetyColumnsInOrder) {
  const auto& table = ContactFieldTable();
  EXPECT_EQ(table.front().name, "AssistantName");
  EXPECT_EQ(table[3].name, "Birthday");
  EXPECT_EQ(table[55].name, "LastModificationTime");
  EXPECT_EQ(table.back().name, "YomiLastName");
  int readOnly = 0;
  for (const auto& f : table) readOnly += f.readOnly ? 1 : 0;
  EXPECT_EQ(readOnly, 7);
  EXPECT_EQ(ContactFieldIndex("fileas"), ContactFieldIndex("FileAs"));
  EXPECT_EQ(ContactFieldIndex("Spouse"), -1);
}

class ContactStore : public ContactFolderTest {
 protected:
  std::vector<std::string> errors_;
  std::unique_ptr<Session> Open() {
    return std::make_unique<Session>(root_.string(),
                                     [this](const std::string& e) { errors_.push_back(e); });
  }
};

TEST_F(ContactStore, ReadsKhardsCardIntoTheFieldsAndDerivesTheRest) {
  KhardNew(root_ / "Ablage" / "Kunden",
           "First name : Jürgen\nLast name : Müller\nPrefix : Dr.\n"
           "Organisation :\n    -\n        - Acme; Söhne\n        - Vertrieb\n"
           "Title : Leiter\nRole : Ingenieur\nBirthday : 1970-03-04\n"
           "Phone :\n    work : +49 30 1\n    cell : +49 170 2\n    home : 030 3\n"
           "    fax : 030 4\n"
           "Email :\n    work : j@example.com\n    home : jm@example.org\n"
           "Address :\n    work :\n        Street : Hauptstraße 1, Hof\n        Code : 10115\n"
           "        City : Berlin\n        Country : Deutschland\n        Box :\n"
           "        Extended :\n        Region :\n"
           "Note : bleibt\n");
  auto session = Open();
  auto items = Folder(session.get(), (root_ / "Ablage" / "Kunden").string()).GetItems();
  ASSERT_EQ(items->Count(), 1);
  ContactItemPtr item = items->GetFirst();
  EXPECT_EQ(item->TypeName(), "ContactItem");
  EXPECT_EQ(Text(item->Get("FirstName")), "Jürgen");
  EXPECT_EQ(Text(item->Get("Title")), "Dr.");  // the name prefix
  EXPECT_EQ(Text(item->Get("JobTitle")), "Leiter");
  EXPECT_EQ(Text(item->Get("Profession")), "Ingenieur");
  EXPECT_EQ(Text(item->Get("CompanyName")), "Acme; Söhne");
  EXPECT_EQ(Text(item->Get("Department")), "Vertrieb");
  EXPECT_EQ(Text(item->Get("FileAs")), "Müller, Jürgen");
  EXPECT_EQ(Text(item->Get("FullName")), "Dr. Jürgen Müller");
  EXPECT_EQ(Text(item->Get("LastNameAndFirstName")), "Müller, Jürgen");
  EXPECT_EQ(Text(item->Get("BusinessTelephoneNumber")), "+49 30 1");
  EXPECT_EQ(Text(item->Get("MobileTelephoneNumber")), "+49 170 2");
  EXPECT_EQ(Text(item->Get("HomeTelephoneNumber")), "030 3");
  EXPECT_EQ(Text(item->Get("OtherFaxNumber")), "030 4");
  EXPECT_EQ(Text(item->Get("Email1Address")), "j@example.com");
  EXPECT_EQ(Text(item->Get("Email1AddressType")), "SMTP");
  EXPECT_EQ(Text(item->Get("Email2DisplayName")), "Dr. Jürgen Müller (jm@example.org)");
  EXPECT_EQ(Text(item->Get("Email3AddressType")), "");
  EXPECT_EQ(Text(item->Get("BusinessAddressStreet")), "Hauptstraße 1, Hof");
  EXPECT_EQ(Text(item->Get("BusinessAddress")),
            "Hauptstraße 1, Hof\r\n10115 Berlin\r\nDeutschland");
  EXPECT_EQ(item->Get("Birthday").ToDouble(), DateSerial(1970, 3, 4));
  EXPECT_EQ(item->Get("LastModificationTime").Type(), vbDate);
  EXPECT_EQ(Text(item->Get("Importance")), "1");
  EXPECT_EQ(Text(item->Get("Gender")), "0");
}

TEST_F(ContactStore, ACardWithoutBirthdayShowsTheNoDateMark) {
  Write("S/F/a.vcf", Card("FN:A\r\nN:A;;;;\r\n"));
  auto session = Open();
  auto item = Folder(session.get(), (root_ / "S/F").string()).GetItems()->GetFirst();
  EXPECT_EQ(item->Get("Birthday").ToDouble(), NoDate());
}

TEST_F(ContactStore, SavingChangesOnlyWhatChangedAndKeepsWhatItDoesNotKnow) {
  const fs::path file =
      Write("S/F/a.vcf", Card("UID:a\r\nFN:Anna Alt\r\nN:Alt;Anna;;;\r\n"
                              "TEL;TYPE=work:1\r\nTEL;TYPE=pager:99\r\n"
                              "PHOTO;ENCODING=b;TYPE=JPEG:AAAA\r\nNOTE:Notiz\\, lang\r\n"
                              "X-FOO;X-A=1:bar\r\nitem1.X-ABLabel:Etikett\r\n"));
  auto session = Open();
  auto item = Folder(session.get(), (root_ / "S/F").string()).GetItems()->GetFirst();
  item->Set("BusinessTelephoneNumber", Variant("2"));
  item->Set("Business2TelephoneNumber", Variant("3"));
  item->Set("HomeAddressCity", Variant("Köln"));
  item->Set("FileAs", Variant("Chefin"));
  item->Save();
  const std::string text = Read(file);
  EXPECT_NE(text.find("TEL;TYPE=work:2\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("TEL;TYPE=WORK,VOICE:3\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("TEL;TYPE=pager:99\r\n"), std::string::npos);
  EXPECT_NE(text.find("PHOTO;ENCODING=b;TYPE=JPEG:AAAA\r\n"), std::string::npos);
  EXPECT_NE(text.find("NOTE:Notiz\\, lang\r\n"), std::string::npos);
  EXPECT_NE(text.find("X-FOO;X-A=1:bar\r\n"), std::string::npos);
  EXPECT_NE(text.find("item1.X-ABLABEL:Etikett\r\n"), std::string::npos);
  EXPECT_NE(text.find("ADR;TYPE=HOME:;;;Köln;;;\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("X-KETROVA-FILEAS:Chefin\r\n"), std::string::npos);
  EXPECT_EQ(text.find("\nLABEL"), std::string::npos);  // the address says no more than its parts
  EXPECT_NE(text.find("REV:"), std::string::npos);
  // No temporary file is left beside the card.
  EXPECT_EQ(std::distance(fs::directory_iterator(root_ / "S/F"), fs::directory_iterator()), 1);
  // Read again: the second business number stays the second.
  auto again = Open();
  auto reread = Folder(again.get(), (root_ / "S/F").string()).GetItems()->GetFirst();
  EXPECT_EQ(Text(reread->Get("BusinessTelephoneNumber")), "2");
  EXPECT_EQ(Text(reread->Get("Business2TelephoneNumber")), "3");
  EXPECT_EQ(Text(reread->Get("FileAs")), "Chefin");
}

TEST_F(ContactStore, ANewContactIsACardThatKhardLists) {
  auto session = Open();
  FolderPtr folder = session->GetDefaultFolder(olFolderContacts);
  EXPECT_EQ(fs::path(folder->Path()), root_ / kDefaultStore / kDefaultContactsFolder);
  ContactItemPtr item = folder->GetItems()->Add();
  item->Set("FirstName", Variant("Zoë"));
  item->Set("LastName", Variant("Ünal"));
  item->Set("BusinessTelephoneNumber", Variant("+49 1"));
  item->Set("MobileTelephoneNumber", Variant("+49 2"));
  item->Set("HomeAddressStreet", Variant("Weg 1; Hof"));
  item->Set("HomeAddressCity", Variant("Köln"));
  item->Set("Birthday", Variant::FromDate(DateSerial(1980, 12, 31)));
  item->UserProperties().push_back({"Farbe", Variant("blau, grün")});
  item->Save();
  EXPECT_TRUE(fs::path(item->Path()).filename().string().ends_with(".vcf"));
  const std::string config = KhardConfig({folder->Path()}).string();
  EXPECT_EQ(Run("/usr/bin/khard -c " + config + " list --parsable 2>&1 | cut -f2"), "Zoë Ünal\n");
  EXPECT_EQ(Run("/usr/bin/khard -c " + config + " phone --parsable 2>&1 | cut -f1,3 | sort"),
            "+49 1\tWORK, VOICE\n+49 2\tCELL\n");
  EXPECT_EQ(Run("/usr/bin/khard -c " + config + " birthdays --parsable 2>&1 | cut -f1"),
            "1980.12.31\n");
  auto again = Open();
  auto reread = Folder(again.get(), folder->Path()).GetItems()->GetFirst();
  ASSERT_EQ(reread->UserProperties().size(), 1u);
  EXPECT_EQ(reread->UserProperties()[0].Name, "Farbe");
  EXPECT_EQ(Text(reread->UserProperties()[0].Value), "blau, grün");
  EXPECT_THROW(reread->Set("FullNameAndCompany", Variant("x")), VbError);
}

TEST_F(ContactStore, FoldersStoresItemTypesAndBadFiles) {
  Write("B-Store/Kontakte/a.vcf", Card("FN:A\r\n"));
  Write("B-Store/Kontakte/Team/g.vcf", Card("FN:Team\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n"));
  Write("B-Store/Post/.ketrova-itemtype", "mail\n");
  Write("B-Store/Kontakte/broken.vcf", "BEGIN:VCARD\r\nFN:kaputt\r\n");
  Write("B-Store/Kontakte/notes.txt", "keine Karte");
  Write("A-Store/.hidden/x.vcf", Card("FN:X\r\n"));
  auto session = Open();
  std::vector<FolderPtr> stores = session->Folders();
  ASSERT_EQ(stores.size(), 2u);
  EXPECT_EQ(stores[0]->Name(), "A-Store");
  EXPECT_TRUE(stores[0]->Folders().empty());
  std::vector<FolderPtr> folders = stores[1]->Folders();
  ASSERT_EQ(folders.size(), 2u);
  EXPECT_EQ(folders[0]->Name(), "Kontakte");
  EXPECT_EQ(folders[0]->DefaultItemType(), olContactItem);
  EXPECT_EQ(folders[1]->DefaultItemType(), olMailItem);
  auto items = folders[0]->GetItems();
  EXPECT_EQ(items->Count(), 1);
  ASSERT_EQ(errors_.size(), 1u);
  EXPECT_NE(errors_[0].find("broken.vcf: END:VCARD fehlt"), std::string::npos);
  folders[0]->GetItems();
  EXPECT_EQ(errors_.size(), 1u);  // reported once
  auto team = folders[0]->Folders()[0]->GetItems();
  EXPECT_EQ(team->GetFirst()->TypeName(), "DistListItem");
  EXPECT_EQ(folders[0]->AddFolder("Neu")->DefaultItemType(), olContactItem);
  EXPECT_THROW(folders[0]->AddFolder("Neu"), VbError);
  // The default contacts folder lies in the first store.
  EXPECT_EQ(fs::path(session->GetDefaultFolder(olFolderContacts)->Path()),
            root_ / "A-Store" / kDefaultContactsFolder);
}

TEST_F(ContactStore, SortRestrictAndRemove) {
  Write("S/F/1.vcf", Card("FN:x\r\nN:Zander;Anna;;;\r\nX-KETROVA-USER1:7\r\nBDAY:1990-01-02\r\n"));
  Write("S/F/2.vcf", Card("FN:x\r\nN:Adler;Bert;;;\r\nX-KETROVA-USER1:10\r\n"));
  Write("S/F/3.vcf", Card("FN:x\r\nN:O'Neil;Cleo;;;\r\nX-KETROVA-USER1:xxxxxxxx\r\n"));
  auto session = Open();
  Folder folder(session.get(), (root_ / "S/F").string());
  auto items = folder.GetItems();
  auto names = [](Items& list) {
    std::string out;
    for (auto i = list.GetFirst(); i; i = list.GetNext()) out += Text(i->Get("LastName")) + " ";
    return out;
  };
  EXPECT_EQ(names(*items), "Zander Adler O'Neil ");
  items->Sort("[FileAs]", false);
  EXPECT_EQ(names(*items), "Adler O'Neil Zander ");
  items->Sort("LastName", true);
  EXPECT_EQ(names(*items), "Zander O'Neil Adler ");

  auto restrict = [&](const std::string& filter) { return names(*items->Restrict(filter)); };
  EXPECT_EQ(restrict(" [User1] = 'xxxxxxxx'"), "O'Neil ");
  EXPECT_EQ(restrict("FirstName  LIKE '%nn%'\r\n"), "Zander ");
  EXPECT_EQ(restrict("FirstName  NOT LIKE '%nn%'\r\n AND LastName  <> 'adler'\r\n"), "O'Neil ");
  // Numbers compare as numbers, a text with a number as text.
  EXPECT_EQ(restrict("User1  > 8\r\n"), "O'Neil Adler ");
  EXPECT_EQ(restrict("[LastName] = 'O''Neil' OR ([User1] >= '10' AND [User1] < '9')"), "O'Neil ");
  EXPECT_EQ(restrict("Birthday  < '01.01.2000'\r\n"), "Zander ");
  try {
    items->Restrict("[LastName] = 'O'Neil'");
    ADD_FAILURE();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, "Die Bedingung kann nicht analysiert werden. Fehler bei \"Neil'\".");
  }
  EXPECT_THROW(items->Restrict("[Nachname] = 'x'"), VbError);
  EXPECT_THROW(items->Restrict("[LastName] = "), VbError);

  items->Sort("[FileAs]", false);
  items->Remove(1);
  EXPECT_EQ(items->Count(), 2);
  EXPECT_FALSE(fs::exists(root_ / "S/F/2.vcf"));
  EXPECT_EQ(folder.GetItems()->Count(), 2);
}

}  // namespace
}  // namespace ketrova::contacts
