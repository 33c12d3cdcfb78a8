#pragma once

#include "ports/LoginItem.h"

#include <string>
#include <utility>

#include <QString>

namespace driftmark {

/// An entry in the user's autostart folder, as the desktops read it. The file is the only state:
/// other programs may change or remove it.
class LinuxLoginItem final : public LoginItem {
public:
  /// `executable` is the absolute path of the program to start.
  explicit LinuxLoginItem(std::string executable) : executable_(std::move(executable)) {}

  /// Enabled when the entry exists and is neither hidden nor switched off.
  Status status() const override;

  /// Writes the entry, with the path of this program.
  std::optional<PlatformError> registerItem() override;

  /// Removes the entry. A missing entry is no failure.
  std::optional<PlatformError> unregisterItem() override;

  /// The path of the entry.
  static QString entryPath();

private:
  const std::string executable_;
};

} // namespace driftmark
