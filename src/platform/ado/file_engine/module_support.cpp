#include "platform/ado/file_engine/module_support.h"

#include <sqlite3.h>

#include <cstdio>

#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

std::string UnquoteModuleArgument(std::string_view arg) {
  while (!arg.empty() && arg.front() == ' ') arg.remove_prefix(1);
  while (!arg.empty() && arg.back() == ' ') arg.remove_suffix(1);
  if (arg.size() < 2 || arg.front() != '\'' || arg.back() != '\'') return std::string(arg);
  std::string out;
  for (std::size_t i = 1; i + 1 < arg.size(); ++i) {
    out.push_back(arg[i]);
    if (arg[i] == '\'' && i + 2 < arg.size() && arg[i + 1] == '\'') ++i;
  }
  return out;
}

int FailModule(sqlite3_vtab* vtab, const VbError& e) {
  sqlite3_free(vtab->zErrMsg);
  vtab->zErrMsg = sqlite3_mprintf("%s", e.Description.c_str());
  SetModuleErrorNumber(e.Number);
  return SQLITE_ERROR;
}

std::string IsoDateText(double oleDate) {
  ado::DateParts p = ado::PartsFromOleDate(oleDate);
  char buf[64];
  if (p.hour == 0 && p.minute == 0 && p.second == 0)
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", p.year, p.month, p.day);
  else
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                  p.minute, p.second);
  return buf;
}

}  // namespace ketrova::file_engine
