// How the desktop is asked to show or open a file.

#include "platform/linux/desktop/LinuxAdapters.h"
#include "support/Paths.h"

#include <memory>

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>
#include <QString>
#include <QStringList>

namespace driftmark {

namespace {

/// Paths are byte strings, so each byte is encoded.
QString fileUri(const std::string& path) {
  return QStringLiteral("file://") +
         QString::fromLatin1(QByteArray::fromStdString(path).toPercentEncoding("/"));
}

QDBusMessage showItems(const std::string& path) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"),
      QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  message.setArguments({QStringList{fileUri(path)}, QString()});
  return message;
}

} // namespace

void LinuxWorkspace::activateFileViewerSelecting(const std::string& path) {
  const auto openFolder = [children = &childProcesses_, path] {
    LinuxWorkspace(*children).open(deletingLastPathComponent(path));
  };
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    openFolder();
    return;
  }
  auto watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(showItems(path)));
  QDBusPendingCallWatcher* const waiting = watcher.release(); // deletes itself after the reply
  QObject::connect(waiting, &QDBusPendingCallWatcher::finished, waiting, [waiting, openFolder] {
    if (waiting->isError())
      openFolder();
    waiting->deleteLater();
  });
}

void LinuxWorkspace::open(const std::string& path) {
  static_cast<void>(childProcesses_.launchDetached({"/usr/bin/xdg-open", {path}}));
}

} // namespace driftmark
