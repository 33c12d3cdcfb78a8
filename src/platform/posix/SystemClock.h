#pragma once

#include "platform/Clock.h"

namespace driftmark {

/// The system's wall clock.
class SystemClock final : public Clock {
public:
  Date now() const override { return std::chrono::system_clock::now(); }
};

} // namespace driftmark
