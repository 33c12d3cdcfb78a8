#pragma once

#include "ports/Clock.h"

#include <thread>

namespace driftmark {

/// The system's wall clock.
class PosixClock final : public Clock {
public:
  Date now() const override { return std::chrono::system_clock::now(); }
  void sleep(Seconds duration) override { std::this_thread::sleep_for(duration); }
};

} // namespace driftmark
