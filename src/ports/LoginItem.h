#pragma once

#include "ports/PlatformError.h"

#include <optional>

namespace driftmark {

/// Whether this program starts when the user logs in. Main thread only.
class LoginItem {
public:
  enum class Status { notRegistered, enabled, requiresApproval, notFound };

  virtual ~LoginItem() = default;

  /// As the system has it at this moment.
  virtual Status status() const = 0;

  /// Both return no value when they succeeded.
  [[nodiscard]] virtual std::optional<PlatformError> registerItem() = 0;
  [[nodiscard]] virtual std::optional<PlatformError> unregisterItem() = 0;
};

} // namespace driftmark
