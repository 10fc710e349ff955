// LIKE as the Windows text driver compared: without regard to case for all
// letters, umlauts included ("MÜLLER" LIKE '%müller%'), where SQLite's own
// LIKE folds only ASCII. "%" and "_" are the wildcards; the optional third
// argument is the ESCAPE character.
#pragma once

struct sqlite3;

namespace ketrova::file_engine {

void RegisterLikeFunction(sqlite3* db);

}  // namespace ketrova::file_engine
