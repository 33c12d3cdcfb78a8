#pragma once

#include "uidriver/UiDriver.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace icloud {

/// The driver's end of the socket: requests, their replies, and notices in between. Errors as
/// `UiDriver` reports them.
class UiDriver::Connection {
public:
  explicit Connection(Descriptor socket);

  pid_t process() const { return process_; }
  const std::filesystem::path& program() const { return program_; }

  /// Sends a request and waits for its reply. Drops the notices before the reply, which is newer.
  nlohmann::json request(nlohmann::json message);

  std::vector<Window> windows();

  /// Waits for the next notice.
  void awaitNotice();

  /// Waits until the program closes the socket.
  void awaitEnd();

private:
  nlohmann::json nextMessage();
  bool readSome(); // false at the end

  Descriptor socket_;
  std::string received_;
  int lastRequest_ = 0;
  pid_t process_ = 0;
  std::filesystem::path program_;
};

} // namespace icloud
