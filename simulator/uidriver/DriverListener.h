#pragma once

#include "common/Descriptor.h"
#include "uidriver/UiDriver.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace icloud {

/// A place before the screen: programs that start with its variables are attended from here, one
/// after the other or several at once.
class DriverListener {
public:
  /// Listens at a socket in `folder`. Throws std::system_error.
  explicit DriverListener(std::filesystem::path folder);
  ~DriverListener();
  DriverListener(const DriverListener&) = delete;
  DriverListener& operator=(const DriverListener&) = delete;

  std::filesystem::path socket() const;

  /// What a program's environment must say so that the user inside it comes to this seat. Passed
  /// on to what the program starts.
  std::map<std::string, std::optional<std::string>> environment() const;

  /// Waits for the next program to come up. Throws std::runtime_error when none does.
  UiDriver awaitProgram();

  /// The next program, if one came up within `limit`.
  std::optional<UiDriver> programWithin(std::chrono::milliseconds limit);

private:
  std::filesystem::path folder_;
  Descriptor listener_;
};

} // namespace icloud
