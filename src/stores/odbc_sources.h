// The ODBC side of the stores: the settings of a data source as the driver
// manager's configuration holds them, and the lists of data sources and their
// drivers that the data-store dialog and `ketrova dsn` show.
#pragma once

#include <string>

namespace ketrova {

class ListControl;

// A value of the data source's entry, the user's configuration first, then
// the machine's; `defaultValue` when neither holds a non-empty one.
std::string GetODBCRegistryValue(const std::string& szDSN, const std::string& szValueName,
                                 const std::string& defaultValue = {});

// The driver description that the configuration gives a data source name,
// the user's first; "" when the name is no data source.
std::string ODBCDataSourceDriver(const std::string& szDSN);

// Fills `cboDSN` with "(Keine)" and the data sources the driver manager knows,
// and `cboDrivers` (may be null) with their drivers, neighbouring duplicates
// removed; selects the first entry of `cboDSN`.
void FillODBCDataSources(ListControl& cboDSN, ListControl* cboDrivers);

}  // namespace ketrova
