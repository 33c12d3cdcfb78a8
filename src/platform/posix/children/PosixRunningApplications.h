#pragma once

#include "ports/RunningApplications.h"

namespace driftmark {

/// Signals to other processes, each to a single one: numbers that would mean several do nothing.
/// The fronts say which processes are applications.
class PosixRunningApplications : public RunningApplications {
public:
  void sendTerminate(std::int32_t process) override;
  void sendKill(std::int32_t process) override;
  bool isRunning(std::int32_t process) const override;
};

} // namespace driftmark
