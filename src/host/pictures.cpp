#include "host/pictures.h"

#include <filesystem>
#include <system_error>

#include "host/host_application.h"
#include "support/files.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::host {

std::string PictureKey(const std::string& path, const std::string& prefix) {
  std::string name = path.substr(0, path.find('.'));
  auto slash = name.find_last_of("\\/");
  if (slash != std::string::npos) name.erase(0, slash + 1);
  return UpperCase(prefix + "_" + name);
}

std::int32_t AddPictureToImageList(const std::string& path, ImageHolder& imageHolder,
                                   const std::string& prefix) {
  if (!FileExists(path)) return -1;
  ImageList& images = imageHolder.ListImages();
  std::string key = PictureKey(path, prefix);
  try {
    return images.Add(key, path);
  } catch (const VbError& e) {
    // A key already taken is the usual case: the start loads every picture of
    // the folder, and the navigator asks for the same item picture again.
    if (e.Number != kErrKeyNotUnique) return -1;
  }
  try {
    return images.Index(key);
  } catch (const VbError&) {
    return -1;
  }
}

void LoadPicturesFromFolder(const std::string& folder, ImageHolder& imageHolder,
                            const std::string& prefix) {
  std::error_code ec;
  std::filesystem::directory_iterator it(folder, ec), end;
  for (; !ec && it != end; it.increment(ec)) {
    if (!it->is_regular_file(ec)) continue;
    AddPictureToImageList(it->path().string(), imageHolder, prefix);
  }
}

}  // namespace ketrova::host
