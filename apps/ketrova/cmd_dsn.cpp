// ketrova dsn: lists the ODBC data sources and the drivers behind them, as the
// data-store dialog offers them, without the dialog's "(Keine)" (no data
// source), which is a choice there and no data source here.
#include <iostream>

#include "commands.h"
#include "stores/list_controls.h"
#include "stores/odbc_sources.h"

namespace ketrova::cli {

int RunDsn(const Args& args) {
  if (!args.empty()) {
    std::cerr << "Aufruf: ketrova dsn\n";
    return 2;
  }
  TextList sources;
  TextList drivers;
  FillODBCDataSources(sources, &drivers);
  std::cout << "Datenquellen:\n";
  for (const TextList::Entry& entry : sources.entries)
    if (entry.text != "(Keine)") std::cout << "  " << entry.text << "\n";
  std::cout << "Treiber:\n";
  for (const TextList::Entry& entry : drivers.entries) std::cout << "  " << entry.text << "\n";
  return 0;
}

}  // namespace ketrova::cli
