#pragma once

#include "common/Descriptor.h"
#include "uidriver/UiDriver.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace icloud {

/// A socket at which the driver plug-ins of programs connect. Several programs can be connected at
/// once.
class DriverListener {
public:
  /// Listens at a socket in `folder`. Throws std::system_error.
  explicit DriverListener(std::filesystem::path folder);
  ~DriverListener();
  DriverListener(const DriverListener&) = delete;
  DriverListener& operator=(const DriverListener&) = delete;

  std::filesystem::path socket() const;

  /// The environment that a program needs to load the plug-in and connect here. What the program
  /// starts inherits it.
  std::map<std::string, std::optional<std::string>> environment() const;

  /// Waits until the next program connects. Throws std::runtime_error on a timeout.
  UiDriver awaitProgram();

  /// The next program, if one connects within `timeout`.
  std::optional<UiDriver> programWithin(std::chrono::milliseconds timeout);

private:
  std::filesystem::path folder_;
  Descriptor listener_;
};

} // namespace icloud
