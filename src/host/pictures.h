// The plug-in's pictures in the host's image lists. A picture's key is the
// upper-case plug-in prefix, "_" and the file's name up to its first ".":
// the path is cut at its first "." before the folder is dropped, so a "." in
// a folder's name cuts the key there. That is how the keys have always come
// about, and other code finds pictures by these keys.
#pragma once

#include <cstdint>
#include <string>

namespace ketrova::host {

class ImageHolder;

// The key under which `path` goes into an image list with `prefix`.
std::string PictureKey(const std::string& path, const std::string& prefix);

// Adds the picture at `path` to the holder's list, or finds it when its key is
// there already; answers its index. -1 when the file does not exist or holds
// no picture. Raises nothing.
std::int32_t AddPictureToImageList(const std::string& path, ImageHolder& imageHolder,
                                   const std::string& prefix);

// Adds every plain file of `folder`, in the order the file system lists them;
// files that are no pictures are skipped. A missing folder adds nothing.
void LoadPicturesFromFolder(const std::string& folder, ImageHolder& imageHolder,
                            const std::string& prefix);

}  // namespace ketrova::host
