#pragma once

#include "desktop/SessionBus.h"

#include <optional>
#include <vector>

#include <QDBusVirtualObject>
#include <QStringList>

namespace driftmark::test {

/// A file manager at a session bus, which keeps what it is asked to show.
class FileManager final : public QDBusVirtualObject {
public:
  /// Throws std::runtime_error when the bus has one already.
  explicit FileManager(const SessionBus& bus);

  /// From now on it can show nothing.
  void refuse() { refuses_ = true; }

  /// Waits for the next request. The addresses of the items; none when no request comes.
  QStringList next();

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
  std::vector<QStringList> requests_;
  bool refuses_ = false;
};

} // namespace driftmark::test
