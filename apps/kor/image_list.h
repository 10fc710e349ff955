// An image list of the host: pictures loaded from files, kept under keys
// (compared without regard to case) and 1-based indexes. The toolbars and the
// navigator each have one.
#pragma once

#include <QIcon>
#include <QPixmap>
#include <string>
#include <vector>

#include "host/host_application.h"

namespace kor {

class ImageList : public ketrova::host::ImageList, public ketrova::host::ImageHolder {
 public:
  // Raises 481 for a file Qt cannot read as a picture, 35602 for a key taken.
  std::int32_t Add(const std::string& key, const std::string& path) override;
  // Raises 35601 for an unknown key.
  std::int32_t Index(const std::string& key) const override;
  std::int32_t Count() const override { return static_cast<std::int32_t>(images_.size()); }
  ketrova::host::ImageList& ListImages() override { return *this; }

  // The picture at `index`; a null icon for -1 or any index out of range.
  QIcon Icon(std::int32_t index) const;

 private:
  struct Image {
    std::string key;  // upper case
    QPixmap pixmap;
  };
  std::vector<Image> images_;
};

}  // namespace kor
