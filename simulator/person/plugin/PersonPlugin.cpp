#include "person/plugin/Visitor.h"

#include <QGenericPlugin>

namespace icloud {

/// Lets a person into the program when `ICLOUD_PERSON` names the socket at which one listens.
class PersonPlugin : public QGenericPlugin {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "person.json")

public:
  QObject* create(const QString& /*name*/, const QString& /*specification*/) override {
    const QByteArray socket = qgetenv("ICLOUD_PERSON");
    return socket.isEmpty() ? nullptr : new Visitor(socket.toStdString());
  }
};

} // namespace icloud

#include "PersonPlugin.moc"
