// SqliteLibrary: how this process sets up the SQLite library before its first
// connection (the file engine's in-memory databases and the native SQLite
// provider's files).
#pragma once

namespace ketrova::ado {

// Leaves out SQLite's count of the memory it holds, which takes a lock of the
// whole library at every allocation: nothing here asks for the count or sets
// a heap limit. Call before any connection is opened; the first call does it,
// later ones do nothing. Where the library was set up before (another part of
// the process opened a database first), it stays as it is.
void SetUpSqliteLibrary();

}  // namespace ketrova::ado
