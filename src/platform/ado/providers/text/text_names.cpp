#include "platform/ado/providers/text/text_names.h"

#include <algorithm>
#include <system_error>

#include "support/text.h"

namespace ketrova::text_provider {

namespace {

// The file of that name in the folder, case ignored; an exact match first.
std::optional<std::filesystem::path> FindInFolder(const std::filesystem::path& folder,
                                                  const std::string& name) {
  if (name.empty()) return std::nullopt;
  std::error_code ec;
  auto exact = folder / name;
  if (std::filesystem::is_regular_file(exact, ec)) return exact;
  const std::string wanted = AsciiLower(name);
  for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
    if (!entry.is_regular_file(ec)) continue;
    if (AsciiLower(entry.path().filename().string()) == wanted) return entry.path();
  }
  return std::nullopt;
}

}  // namespace

bool IsTextTableFile(const std::filesystem::path& file) {
  std::string ext = AsciiLower(file.extension().string());
  if (AsciiLower(file.filename().string()) == "schema.ini") return false;
  return ext.empty() || ext == ".asc" || ext == ".csv" || ext == ".tab" || ext == ".txt";
}

std::optional<std::filesystem::path> ResolveTextFile(const std::filesystem::path& folder,
                                                     std::string_view name) {
  std::filesystem::path where = folder;
  std::string file(name);
  auto split = file.find_last_of("\\/");
  if (split != std::string::npos) {
    std::string given = file.substr(0, split);
    std::replace(given.begin(), given.end(), '\\', '/');
    file = file.substr(split + 1);
    std::error_code ec;
    std::filesystem::path candidate = given;
    if (candidate.is_relative()) candidate = folder / candidate;
    if (!given.empty() && std::filesystem::is_directory(candidate, ec)) where = candidate;
  }
  if (file.size() > 4 && AsciiLower(file.substr(file.size() - 4)) == ".txt") {
    if (auto found = FindInFolder(where, file)) return found;
    file.resize(file.size() - 4);
  }
  if (auto found = FindInFolder(where, file)) return found;
  // Jet wrote the dot of a file name as "#" (Kunden#csv).
  if (file.find('#') != std::string::npos) {
    std::replace(file.begin(), file.end(), '#', '.');
    return FindInFolder(where, file);
  }
  return std::nullopt;
}

std::vector<std::string> ListTextTables(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
    if (!entry.is_regular_file(ec) || !IsTextTableFile(entry.path())) continue;
    std::string name = entry.path().filename().string();
    if (name.starts_with(".")) continue;  // hidden files and our temporary files
    names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace ketrova::text_provider
