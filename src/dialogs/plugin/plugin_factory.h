// How a desktop host finds a plug-in. A plug-in is a shared library in the
// host's plugins folder that Qt's plug-in loader opens; its root object
// implements PluginFactory and makes the plug-in object (host/plugin.h) that
// the host then starts, sends events to and ends.
//
// This stands in for the old component's exports: loading the library and
// asking it for the factory takes the place of DllGetClassObject, placing the
// file in the plugins folder the place of DllRegisterServer, and the host
// never unloads a plug-in while it runs (DllCanUnloadNow).
#pragma once

#include <QtPlugin>
#include <memory>

#include "host/plugin.h"

namespace ketrova::host {

class PluginFactory {
 public:
  virtual ~PluginFactory() = default;
  // A new plug-in object, not yet started. Also makes the plug-in's screen
  // services (message boxes, file choosers, dialogs) the process's own.
  virtual std::unique_ptr<IPlugin> CreatePlugin() = 0;
};

}  // namespace ketrova::host

#define KetrovaPluginFactory_iid "de.halvorn.kor.PluginFactory/1.0"
Q_DECLARE_INTERFACE(ketrova::host::PluginFactory, KetrovaPluginFactory_iid)
