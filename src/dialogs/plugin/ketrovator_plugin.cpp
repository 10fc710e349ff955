// The plug-in library "ketrovator": the connector of libketrova with the Qt
// screen services of this folder's parent.
#include <QObject>

#include "core/dialogs.h"
#include "dialogs/plugin/plugin_factory.h"
#include "dialogs/qt_converter_dialogs.h"
#include "dialogs/qt_user_interface.h"
#include "host/connector.h"
#include "platform/ui/user_interface.h"

namespace ketrova::host {

class KetrovatorPlugin : public QObject, public PluginFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KetrovaPluginFactory_iid FILE "ketrovator.json")
  Q_INTERFACES(ketrova::host::PluginFactory)

 public:
  std::unique_ptr<IPlugin> CreatePlugin() override {
    ui::SetCurrent(std::make_shared<dialogs::QtUserInterface>());
    SetConverterDialogs(std::make_shared<dialogs::QtConverterDialogs>());
    return std::make_unique<Connector>();
  }
};

}  // namespace ketrova::host

#include "ketrovator_plugin.moc"
