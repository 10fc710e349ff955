// The providers of the file stores: text folders, Excel workbooks, Access
// files, dBase and Paradox folders.
#pragma once

namespace ketrova::ado {

// Registers the file providers with the provider factory (provider.h), once
// per process; later calls do nothing. Whoever opens connections for a user
// calls it first: a store's open, and a script's ADODB.Connection, whose
// connection string may name a workbook or a folder before any store of the
// process was opened. Thread-safe.
void RegisterFileProviders();

}  // namespace ketrova::ado
