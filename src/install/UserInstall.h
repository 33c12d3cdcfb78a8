#pragma once

#include "ports/Platform.h"
#include "ports/PlatformError.h"

#include <string>
#include <variant>

namespace driftmark {

/// The one-time offer to move the application into an Applications folder. Main thread only, which
/// waits while the bundle is copied.
class UserInstall {
public:
  UserInstall() = delete;

  /// Asks where the application does not lie in an Applications folder yet, and moves it there when
  /// the user agrees. True when the copy is about to be opened and this process about to end: the
  /// caller then starts nothing more.
  static bool offerIfNeeded(const Platform& platform);

private:
  /// The path of the new copy, or why there is none.
  using Installed = std::variant<std::string, PlatformError>;

  static Installed install(const Platform& platform);
  static Installed install(const Platform& platform, const std::string& folder);
  static void trash(const Platform& platform, const std::string& path);
};

} // namespace driftmark
