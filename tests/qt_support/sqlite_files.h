// SQLite files for the desktop's tests, through Ketrova's own record access
// (the same driver name a project uses): statements run on a file, and the
// rows a query reads back.
#pragma once

#include <QString>
#include <string>
#include <vector>

namespace ketrova::testing {

// Runs each statement on the file, which is made when missing.
void ExecuteSqlite(const std::string& file, const std::vector<std::string>& statements);
// The rows of `sql`, each as its values joined by "|".
std::vector<std::string> SqliteRows(const QString& file, const std::string& sql);

}  // namespace ketrova::testing
