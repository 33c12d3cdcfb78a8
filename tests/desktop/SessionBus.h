#pragma once

#include "common/Descriptor.h"
#include "harness/Channel.h"
#include "process/ChildProcess.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include <QDBusConnection>

namespace driftmark::test {

/// A message bus for one session. The only service it can start is that of accessibility.
class SessionBus {
public:
  using Variables = std::map<std::string, std::optional<std::string>>;

  /// Keeps its files in `folder`, which exists. Services get `variables`. Throws std::runtime_error
  /// when the bus does not start.
  SessionBus(const std::filesystem::path& folder, Variables variables);
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  ~SessionBus();

  const std::string& address() const { return address_; }
  pid_t process() const { return daemon_.identifier(); }

  /// The connection of the test itself.
  QDBusConnection connection() const { return connection_; }

  /// Ends the bus. Its programs lose their connections.
  void close();

private:
  Channel output_ = Channel::pipe();
  icloud::Descriptor null_;
  icloud::ChildProcess daemon_;
  std::string address_;
  QDBusConnection connection_;
};

} // namespace driftmark::test
