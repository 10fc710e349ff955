// The application folder that the host hands to its plug-ins: $HOME/Ketrova/,
// visible to the user, who keeps projects and error files there. Its path must
// hold no ".", since plug-ins cut paths at their first "." when they make
// picture keys and file names. On first start "Images" and "HTMRoot" are
// seeded from the installed data folder.
#pragma once

#include <QString>
#include <string>

namespace kor {

struct ApplicationFolder {
  // The folder, ending in "/".
  std::string path;
  // German warnings for the user (a "." in the path, a seed that failed);
  // empty when all is well.
  QString warnings;
};

// Makes the folder under `home` and copies the data folder's "Images" and
// "HTMRoot" into it where they do not exist yet. Never throws.
ApplicationFolder PrepareApplicationFolder(const QString& home, const QString& dataFolder);

// The installed data folder (<prefix>/share/ketrova beside the binary's
// <prefix>/bin), else the source tree's data folder of this build.
QString DataFolder();

// The plug-ins folder: "plugins" beside the binary (the build tree), else
// <prefix>/lib/<multiarch>/ketrova/plugins.
QString PluginFolder();

}  // namespace kor
