#include "uidriver/plugin/PluginConnection.h"

#include <QGenericPlugin>

namespace icloud {

/// Lets a user into the program when `ICLOUD_UI_DRIVER` names the socket at which one listens.
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
