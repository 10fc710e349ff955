// Which file a table name of a text store means, and which files are tables.
//
// The folder is the database. Each file with the extension asc, csv, tab or
// txt is a table named by its file name, and so is a file without extension
// (the header file that table creation writes). A name resolves to a file as
// written or without a trailing ".TXT" (which the system appends to every
// name), in both cases without regard to case; "#" stands for the dot of the
// file name as Jet wrote it (Kunden#csv). A name may carry a folder,
// "folder\name" as the text-driver syntax writes it; a folder that does not
// exist here (a path from another machine) is read as the store's folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ketrova::text_provider {

std::optional<std::filesystem::path> ResolveTextFile(const std::filesystem::path& folder,
                                                     std::string_view name);

// The tables of the folder: file names, sorted.
std::vector<std::string> ListTextTables(const std::filesystem::path& folder);

// True for the extensions that make a file a table (and for none at all).
bool IsTextTableFile(const std::filesystem::path& file);

}  // namespace ketrova::text_provider
