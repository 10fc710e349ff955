#include "sqlite_files.h"

#include <memory>

#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"

namespace ketrova::testing {

void ExecuteSqlite(const std::string& file, const std::vector<std::string>& statements) {
  auto connection = std::make_shared<ado::Connection>();
  connection->Open("Driver={SQLite3};Database=" + file);
  for (const std::string& sql : statements) connection->Execute(sql);
  connection->Close();
}

std::vector<std::string> SqliteRows(const QString& file, const std::string& sql) {
  auto connection = std::make_shared<ado::Connection>();
  connection->Open("Driver={SQLite3};Database=" + file.toStdString());
  std::vector<std::string> rows;
  ado::RecordsetPtr rs = connection->Execute(sql);
  for (; !rs->Eof(); rs->MoveNext()) {
    std::string row;
    for (int i = 0; i < rs->GetFields().Count(); ++i)
      row += (i ? "|" : "") + rs->GetFields().Item(i).Value().ToText();
    rows.push_back(row);
  }
  rs->Close();
  connection->Close();
  return rows;
}

}  // namespace ketrova::testing
