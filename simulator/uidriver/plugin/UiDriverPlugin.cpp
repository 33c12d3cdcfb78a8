// When the plug-in becomes active in a program.

#include "uidriver/plugin/PluginConnection.h"

#include <QGenericPlugin>

namespace icloud {

/// Connects the program to the UI driver that listens at the socket named by `ICLOUD_UI_DRIVER`.
/// Inactive when the variable is not set.
class UiDriverPlugin : public QGenericPlugin {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "uidriver.json")

public:
  QObject* create(const QString& /*name*/, const QString& /*specification*/) override {
    const QByteArray socket = qgetenv("ICLOUD_UI_DRIVER");
    return socket.isEmpty() ? nullptr : new PluginConnection(socket.toStdString());
  }
};

} // namespace icloud

#include "UiDriverPlugin.moc"
