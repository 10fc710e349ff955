#include "image_list.h"

#include "support/utf8.h"
#include "support/vb_error.h"

namespace kor {

std::int32_t ImageList::Add(const std::string& key, const std::string& path) {
  QPixmap pixmap;
  if (!pixmap.load(QString::fromStdString(path)))
    throw ketrova::VbError(ketrova::host::kErrInvalidPicture, "Ungültiges Bild");
  std::string upper = ketrova::UpperCase(key);
  for (const Image& image : images_)
    if (image.key == upper)
      throw ketrova::VbError(ketrova::host::kErrKeyNotUnique,
                             "Schlüssel ist in dieser Auflistung nicht eindeutig");
  images_.push_back({upper, pixmap});
  return Count();
}

std::int32_t ImageList::Index(const std::string& key) const {
  std::string upper = ketrova::UpperCase(key);
  for (std::size_t i = 0; i < images_.size(); ++i)
    if (images_[i].key == upper) return static_cast<std::int32_t>(i + 1);
  throw ketrova::VbError(35601, "Element nicht gefunden");
}

QIcon ImageList::Icon(std::int32_t index) const {
  if (index < 1 || index > Count()) return {};
  return QIcon(images_[index - 1].pixmap);
}

}  // namespace kor
