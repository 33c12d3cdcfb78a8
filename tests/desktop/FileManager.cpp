// How a test plays the file manager of a desktop.

#include "desktop/FileManager.h"

#include "harness/Waiting.h"

#include <stdexcept>

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace driftmark::test {

FileManager::FileManager(const SessionBus& bus) {
  QDBusConnection connection = bus.connection();
  if (!connection.registerVirtualObject("/org/freedesktop/FileManager1", this) ||
      !connection.registerService("org.freedesktop.FileManager1"))
    throw std::runtime_error("the bus has a file manager already");
}

QStringList FileManager::next() {
  QTimer wakeUp;
  wakeUp.start(maxWait);
  const QDeadlineTimer deadline(maxWait);
  QEventLoop loop;
  while (requests_.empty() && !deadline.hasExpired())
    loop.processEvents(QEventLoop::WaitForMoreEvents);
  if (requests_.empty())
    throw TimedOut("a request to the file manager");
  const QStringList first = requests_.front();
  requests_.erase(requests_.begin());
  return first;
}

QString FileManager::introspect(const QString& /*path*/) const {
  return {};
}

bool FileManager::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  const bool isRequest = message.interface() == "org.freedesktop.FileManager1" &&
                         message.member() == "ShowItems" && message.signature() == "ass";
  if (!isRequest)
    return false;
  requests_.push_back(message.arguments().front().toStringList());
  return connection.send(refuses_ ? message.createErrorReply(QDBusError::Failed, "nothing to show")
                                  : message.createReply());
}

} // namespace driftmark::test
