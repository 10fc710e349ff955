// The folder of a file store (the Data Source or DBQ of its connection
// string), with "\" read as "/" and without a trailing separator.
#pragma once

#include <filesystem>
#include <string>

namespace ketrova::file_engine {

// Raises VbError kErrGeneral, "Der Ordner '<as given>' der <what> wurde nicht
// gefunden", with `source`, when the folder does not exist.
std::filesystem::path StoreFolder(const std::string& dataSource, const std::string& what,
                                  const std::string& source);

}  // namespace ketrova::file_engine
