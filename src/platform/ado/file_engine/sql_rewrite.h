// Turns the SQL that the system writes for file stores into SQLite's syntax,
// in one place for all file providers. Blanks, line breaks and everything not
// named here pass through unchanged.
//
//   `C:\Daten`\Kunden.csv.TXT    Kunden   ->  "C:\Daten\Kunden.csv.TXT" "Kunden"
//       (a folder in back quotes, a backslash and a file name, and an alias:
//       the table is the quoted path, folder and name split at the last "\")
//   [Name]                                ->  "Name"
//   #2002-12-31#, #12/31/2002#, #31.12.2002 10:30#  ->  '2002-12-31', ... (ISO)
//   'Kunden'  in place of a table (after FROM, JOIN, INTO, UPDATE, TABLE), or
//   'Kunden'.'Nr' as a qualified name, or 'Name' at the start of a condition
//   with a comparison behind it  ->  "Kunden", "Kunden"."Nr", "Name"
//       (the text store's identifier quote is the apostrophe)
#pragma once

#include <string>
#include <string_view>

namespace ketrova::file_engine {

std::string RewriteFileSql(std::string_view sql);

// The quoted identifier "name" (inner double quotes doubled).
std::string QuoteSqlIdentifier(std::string_view name);

}  // namespace ketrova::file_engine
