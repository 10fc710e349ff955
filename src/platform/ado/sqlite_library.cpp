#include "platform/ado/sqlite_library.h"

#include <sqlite3.h>

namespace ketrova::ado {

void SetUpSqliteLibrary() {
  static const bool done = [] {
    // SQLITE_MISUSE when the library runs already: it keeps its settings.
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    return sqlite3_initialize() == SQLITE_OK;
  }();
  (void)done;
}

}  // namespace ketrova::ado
