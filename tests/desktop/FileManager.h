#pragma once

#include "desktop/SessionBus.h"

#include <optional>
#include <vector>

#include <QDBusVirtualObject>
#include <QStringList>

namespace driftmark::test {

/// A file manager on a session bus. It records what it is asked to show.
class FileManager final : public QDBusVirtualObject {
public:
  /// Throws std::runtime_error when the bus has one already.
  explicit FileManager(const SessionBus& bus);

  /// Answers all later requests with an error.
  void refuse() { refuses_ = true; }

  /// Waits for the next request. Returns the URLs of the items. Throws TimedOut.
  QStringList next();

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
  std::vector<QStringList> requests_;
  bool refuses_ = false;
};

} // namespace driftmark::test
