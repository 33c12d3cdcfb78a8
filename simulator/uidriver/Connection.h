#pragma once

#include "uidriver/UiDriver.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

namespace icloud {

/// The conversation with the user's side inside the program: requests, their replies, and notices
/// in between. Failures as `UiDriver` says.
class UiDriver::Connection {
public:
  explicit Connection(Descriptor socket);

  pid_t process() const { return process_; }
  const std::filesystem::path& program() const { return program_; }

  /// Sends a request and waits for its reply. Notices that came before the reply are dropped: what
  /// the reply says is newer.
  nlohmann::json ask(nlohmann::json request);

  /// Waits for the next notice.
  void awaitNotice();

  /// Waits until the other side is gone.
  void awaitEnd();

private:
  nlohmann::json next();
  bool readSome();

  Descriptor socket_;
  std::string received_;
  int lastRequest_ = 0;
  pid_t process_ = 0;
  std::filesystem::path program_;
};

} // namespace icloud
