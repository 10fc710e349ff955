#include "host/plugin_module.h"

#include "support/files.h"
#include "support/text.h"

namespace ketrova::host {

HostApplication* gApplication = nullptr;
NavigatorItems* gNavigatorItems = nullptr;
std::string gszApplicationPath;
std::string gszImagesPath;
std::string gszBackColorStart;
std::string gszBackColorEnd;
std::string gszFontColor;
FormPictures frmPictures;

std::string FormPictures::Picture(const char* name) const {
  std::string path = gszImagesPath + name;
  return loaded_ && FileExists(path) ? path : std::string();
}

std::string FormPictures::picRes() const {
  return Picture("Background_ToolBar.jpg");
}

std::string FormPictures::ImageApplication() const {
  return Picture("btn_Property.gif");
}

bool IsLoadEvent(std::string_view snapInName, std::string_view plugInName) {
  return IsEqual(snapInName, "OnLoad") || IsEqual(snapInName, plugInName);
}

}  // namespace ketrova::host
