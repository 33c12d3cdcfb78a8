#pragma once

#include "ports/PlatformError.h"

#include <optional>

namespace driftmark {

/// The registration that starts this program when the user logs in. Main thread only.
class LoginItem {
public:
  enum class Status { notRegistered, enabled, requiresApproval, notFound };

  virtual ~LoginItem() = default;

  /// The current status, read from the system.
  virtual Status status() const = 0;

  /// Both return no value on success.
  [[nodiscard]] virtual std::optional<PlatformError> registerItem() = 0;
  [[nodiscard]] virtual std::optional<PlatformError> unregisterItem() = 0;
};

} // namespace driftmark
