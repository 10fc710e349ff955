// The engine's write pattern, record by record: open the target table for a
// batch update, AddNew, set ten fields, Update, UpdateBatch, Close. Prints the
// records per second. With --csv it writes the same rows as a CSV file
// instead, for the bulk loaders it is compared with.
//
//   record_loop <connection string> <records>
//   record_loop --csv <file> <records>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

using namespace ketrova;

namespace {

struct Person {
  int id;
  std::string name, vorname, strasse, plz, ort;
  double betrag;
  int menge;
  double faktor;
  ado::DateParts datum;
};

Person MakePerson(int i) {
  Person p;
  p.id = i;
  p.name = "Müller " + std::to_string(i);
  p.vorname = "Jörg";
  p.strasse = "Hauptstraße " + std::to_string(i % 200 + 1);
  p.plz = std::to_string(10000 + i % 89999);
  p.ort = "Köln";
  p.betrag = (i % 100000) / 100.0;
  p.menge = i % 1000;
  p.faktor = i / 7.0;
  p.datum = {2000 + i % 25, 1 + i % 12, 1 + i % 28};
  return p;
}

int WriteCsv(const std::string& file, int records) {
  std::ofstream out(file);
  for (int i = 1; i <= records; ++i) {
    Person p = MakePerson(i);
    char date[16];
    std::snprintf(date, sizeof date, "%04d-%02d-%02d", p.datum.year, p.datum.month, p.datum.day);
    char betrag[32], faktor[32];
    std::snprintf(betrag, sizeof betrag, "%.2f", p.betrag);
    std::snprintf(faktor, sizeof faktor, "%.10g", p.faktor);
    out << p.id << ',' << p.name << ',' << p.vorname << ',' << p.strasse << ',' << p.plz << ','
        << p.ort << ',' << betrag << ',' << p.menge << ',' << faktor << ',' << date << '\n';
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--csv") return WriteCsv(argv[2], std::stoi(argv[3]));
  if (argc != 3) {
    std::cerr << "usage: record_loop <connection string> <records> | --csv <file> <records>\n";
    return 2;
  }
  int records = std::stoi(argv[2]);
  try {
    auto db = std::make_shared<ado::Connection>();
    db->Open(argv[1]);
    try {
      db->Execute("DROP TABLE [T]");
    } catch (const VbError&) {
    }
    db->Execute(
        "CREATE TABLE [T] ([ID] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(40), [Vorname] "
        "VARCHAR(40), [Strasse] VARCHAR(60), [PLZ] VARCHAR(10), [Ort] VARCHAR(40), [Betrag] "
        "DECIMAL(10,2), [Menge] INTEGER, [Faktor] DOUBLE PRECISION, [Datum] DATE)");
    auto rs = std::make_shared<ado::Recordset>();
    auto start = std::chrono::steady_clock::now();
    for (int i = 1; i <= records; ++i) {
      Person p = MakePerson(i);
      rs->Open(" SELECT * \r\n FROM    [T] T", Variant(ObjectPtr(db)), ado::adOpenKeyset,
               ado::adLockBatchOptimistic);
      rs->AddNew();
      ado::Fields& f = rs->GetFields();
      f.Item("ID").SetValue(Variant(p.id));
      f.Item("Name").SetValue(Variant(p.name));
      f.Item("Vorname").SetValue(Variant(p.vorname));
      f.Item("Strasse").SetValue(Variant(p.strasse));
      f.Item("PLZ").SetValue(Variant(p.plz));
      f.Item("Ort").SetValue(Variant(p.ort));
      f.Item("Betrag").SetValue(Variant(p.betrag));
      f.Item("Menge").SetValue(Variant(p.menge));
      f.Item("Faktor").SetValue(Variant(p.faktor));
      f.Item("Datum").SetValue(Variant::FromDate(ado::OleDateFromParts(p.datum)));
      rs->Update();
      rs->UpdateBatch(ado::adAffectAll);
      rs->Close();
    }
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cout << static_cast<long>(records / seconds) << "\n";
  } catch (const VbError& e) {
    std::cerr << "record_loop: " << e.Number << " " << e.Description << "\n";
    return 1;
  }
  return 0;
}
