// The plug-in's module state: the host's objects and the folders and colours
// that the start sequence reads, shared by the connector and by the navigator
// and toolbar code. Written only while the plug-in starts; read afterwards.
#pragma once

#include <string>
#include <string_view>

namespace ketrova::host {

class HostApplication;
class NavigatorItems;

// The plug-in's name, as the host knows it.
inline constexpr const char* kPlugInName = "Ketrovator";

// The `thisApp` of the start; null before it and after the end.
extern HostApplication* gApplication;
// thisApp.NavigatorItems.
extern NavigatorItems* gNavigatorItems;
// The host's application folder, ending in a separator.
extern std::string gszApplicationPath;
// The published Images folder, ending in a separator.
extern std::string gszImagesPath;
extern std::string gszBackColorStart;
extern std::string gszBackColorEnd;
extern std::string gszFontColor;

// The pictures that the navigator's bars show. The old plug-in kept them on a
// hidden form; here they are files of the published Images folder: `picRes`,
// the bars' background, is Background_ToolBar.jpg, and `ImageApplication` is
// btn_Property.gif. A missing file, or a form not loaded, gives "" (no
// picture).
class FormPictures {
 public:
  void Load() { loaded_ = true; }
  void Unload() { loaded_ = false; }
  std::string picRes() const;
  std::string ImageApplication() const;

 private:
  std::string Picture(const char* name) const;
  bool loaded_ = false;
};
extern FormPictures frmPictures;

// Whether an event addressed to `snapInName` is this plug-in's: the name is
// "OnLoad" or `plugInName` (blanks trimmed, case ignored).
bool IsLoadEvent(std::string_view snapInName, std::string_view plugInName);

}  // namespace ketrova::host
