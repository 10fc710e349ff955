// ketrova on contact folders: projects made by `ketrova new` with an Outlook
// store on one side, run as a user runs them. The contacts are written by
// python3-vobject, and khard reads what the runs write.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "apps/ketrova/run_ketrova.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/contacts/contact_folder.h"

namespace ketrova {
namespace {

namespace fs = std::filesystem;
using Outcome = testing::KetrovaOutcome;

// n contacts with a name, three phones and a business address each.
constexpr const char* kGenerator = R"(
import sys, vobject
folder, n = sys.argv[1], int(sys.argv[2])
for i in range(n):
    c = vobject.vCard()
    c.add('uid').value = 'kontakt-%04d' % i
    c.add('x-ketrova-user1').value = 'k%04d' % i
    c.add('n').value = vobject.vcard.Name(family='Müller-%d' % i, given='Jürgen %d' % i)
    c.add('fn').value = 'Jürgen %d Müller-%d' % (i, i)
    for kind, number in (('WORK', '+49 30 %07d' % i), ('CELL', '+49 170 %d' % i),
                         ('HOME', '030 %d' % i)):
        t = c.add('tel'); t.value = number; t.type_param = kind
    a = c.add('adr')
    a.value = vobject.vcard.Address(street='Hauptstraße %d, Hof' % i, city='Köln',
                                    code='%05d' % (50000 + i), country='Deutschland')
    a.type_param = 'WORK'
    c.add('note').value = 'Notiz; mit Zeichen, die escaped werden\n%d' % i
    open('%s/kontakt-%04d.vcf' % (folder, i), 'w', encoding='utf-8').write(c.serialize())
)";

class OutlookRunTest : public testing::ContactFolderTest {
 protected:
  Outcome Ketrova(const fs::path& contacts, const std::string& arguments) {
    return testing::RunKetrova(root_, "--contacts '" + contacts.string() + "' " + arguments);
  }

  std::vector<std::string> Rows(const std::string& sql) {
    auto db = std::make_shared<ado::Connection>();
    db->Open("Driver={SQLite3};Database=" + (root_ / "kontakte.sqlite").string());
    std::vector<std::string> rows;
    auto rs = db->Execute(sql);
    for (; !rs->Eof(); rs->MoveNext()) {
      std::string row;
      for (const auto& field : rs->GetFields()) {
        Variant v = field->Value();
        row += (row.empty() ? "" : "|") + (v.IsNull() ? std::string("<null>") : v.ToText());
      }
      rows.push_back(row);
    }
    rs->Close();
    db->Close();
    return rows;
  }

  void Sql(const std::string& sql) {
    auto db = std::make_shared<ado::Connection>();
    db->Open("Driver={SQLite3};Database=" + (root_ / "kontakte.sqlite").string());
    db->Execute(sql);
    db->Close();
  }

  // khard's view of an address book: name, phones and addresses, sorted.
  std::string Khard(const fs::path& book) {
    const std::string config = KhardConfig({book}).string();
    const std::string khard = "/usr/bin/khard -c " + config;
    return Run(khard + " list --parsable | cut -f2 | sort") + "--\n" +
           Run(khard + " phone --parsable | cut -f1,2 | sort") + "--\n" +
           Run(khard + " postaddress --parsable | cut -f1,2 | sort");
  }
};

TEST_F(OutlookRunTest, AThousandContactsGoIntoSQLiteAndBackIntoANewFolder) {
  const fs::path source = root_ / "quelle";
  fs::create_directories(source / "Privat" / "Adressen");
  Python(kGenerator, "'" + (source / "Privat" / "Adressen").string() + "' 1000");

  // The folders are listed as tables: one job, for the folder Adressen.
  Outcome made =
      Ketrova(source,
              "new hin.cpf --name Hin --source outlook --dest odbc --dest-driver SQLite3 "
              "--dest-database kontakte.sqlite");
  ASSERT_EQ(made.status, 0) << made.out << made.err;
  EXPECT_NE(made.out.find("1 Aufgabe(n)"), std::string::npos) << made.out;
  Outcome run = Ketrova(source, "run hin.cpf --yes --quiet");
  ASSERT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM Adressen"), (std::vector<std::string>{"1000"}));
  EXPECT_EQ(Rows("SELECT FirstName, LastName, BusinessTelephoneNumber, MobileTelephoneNumber, "
                 "BusinessAddressStreet, BusinessAddressPostalCode FROM Adressen "
                 "WHERE LastName = 'Müller-7'"),
            (std::vector<std::string>{"Jürgen 7|Müller-7|+49 30 0000007|+49 170 7|"
                                      "Hauptstraße 7, Hof|50007"}));

  // And back into a new folder of another root.
  const fs::path target = root_ / "ziel";
  fs::create_directories(target / "Privat" / "Kontakte");
  made = Ketrova(target,
                 "new her.cpf --name Her --source odbc --source-driver SQLite3 "
                 "--source-database kontakte.sqlite --dest outlook");
  ASSERT_EQ(made.status, 0) << made.out << made.err;
  run = Ketrova(target, "run her.cpf --yes --quiet");
  ASSERT_EQ(run.status, 0) << run.out << run.err;
  const fs::path written = target / "Privat" / "Kontakte" / "Adressen";
  ASSERT_TRUE(fs::is_directory(written));
  EXPECT_EQ(Khard(written), Khard(source / "Privat" / "Adressen"));

  // Update by key: one changed record changes its card and no other file.
  std::map<fs::path, std::string> before;
  for (const auto& e : fs::directory_iterator(written)) before[e.path()] = Read(e.path());
  ASSERT_EQ(before.size(), 1000u);
  Sql("DELETE FROM Adressen WHERE User1 <> 'k0007'");
  Sql("UPDATE Adressen SET MobileTelephoneNumber = '+49 171 7777' WHERE User1 = 'k0007'");
  std::string project = Read(root_ / "her.cpf");
  for (auto [from, to] : {std::pair<std::string, std::string>{"DESTINATIONUPDATE=\"FALSE\"",
                                                              "DESTINATIONUPDATE=\"TRUE\""},
                          {"KEYFIELD=\"\"", "KEYFIELD=\"User1\""}})
    for (std::size_t at; (at = project.find(from)) != std::string::npos;)
      project.replace(at, from.size(), to);
  Write("her.cpf", project);
  run = Ketrova(target, "run her.cpf --yes --quiet");
  ASSERT_EQ(run.status, 0) << run.out << run.err;
  std::vector<std::string> changed;
  for (const auto& e : fs::directory_iterator(written))
    if (before[e.path()] != Read(e.path())) changed.push_back(Read(e.path()));
  ASSERT_EQ(changed.size(), 1u);
  EXPECT_NE(changed[0].find("X-KETROVA-USER1:k0007\r\n"), std::string::npos) << changed[0];
  EXPECT_NE(changed[0].find("TEL;TYPE=CELL:+49 171 7777\r\n"), std::string::npos) << changed[0];
  EXPECT_EQ(std::distance(fs::directory_iterator(written), fs::directory_iterator()), 1000);
}

}  // namespace
}  // namespace ketrova
