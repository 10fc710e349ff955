#include "platform/ado/file_engine/store_folder.h"

#include <algorithm>

#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

std::filesystem::path StoreFolder(const std::string& dataSource, const std::string& what,
                                  const std::string& source) {
  std::string folder = dataSource;
  std::replace(folder.begin(), folder.end(), '\\', '/');
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  std::error_code ec;
  if (folder.empty() || !std::filesystem::is_directory(folder, ec)) {
    throw VbError(ado::kErrGeneral,
                  "Der Ordner '" + dataSource + "' der " + what + " wurde nicht gefunden", source);
  }
  return folder;
}

}  // namespace ketrova::file_engine
