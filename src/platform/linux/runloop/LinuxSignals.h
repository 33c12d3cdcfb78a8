#pragma once

#include "ports/MainQueue.h"
#include "ports/Signals.h"

namespace driftmark {

/// Signals caught by handlers that only wake the event loop up. For each signal at most one source
/// exists at a time.
class LinuxSignals final : public Signals {
public:
  /// The main queue outlives this object and its sources.
  explicit LinuxSignals(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void ignore(QuitSignal signal) override;
  void restoreDefault(QuitSignal signal) override;
  std::unique_ptr<SignalSource> makeSource(QuitSignal signal,
                                           std::function<void()> handler) override;

private:
  MainQueue& mainQueue_;
};

} // namespace driftmark
