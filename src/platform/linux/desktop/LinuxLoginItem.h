#pragma once

#include "ports/LoginItem.h"

#include <string>
#include <utility>

#include <QString>

namespace driftmark {

/// An entry in the user's autostart folder, as the desktops read it. Its state is the file's own:
/// whoever changes or removes the file changes the state.
class LinuxLoginItem final : public LoginItem {
public:
  /// `executable` is the absolute path of the program to start.
  explicit LinuxLoginItem(std::string executable) : executable_(std::move(executable)) {}

  /// Enabled when there is an entry that is neither hidden nor switched off.
  Status status() const override;

  /// Writes the entry, with the path of this program.
  std::optional<PlatformError> registerItem() override;

  /// Removes the entry. One that is gone already is no failure.
  std::optional<PlatformError> unregisterItem() override;

  /// Where the entry lies.
  static QString entryPath();

private:
  const std::string executable_;
};

} // namespace driftmark
