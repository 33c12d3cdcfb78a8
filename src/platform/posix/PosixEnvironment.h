#pragma once

#include "ports/Environment.h"

namespace driftmark {

/// The environment that this process was started with.
class PosixEnvironment final : public Environment {
public:
  std::optional<std::string> variable(const std::string& name) const override;
};

} // namespace driftmark
