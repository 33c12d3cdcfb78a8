#pragma once

#include "ports/MainQueue.h"
#include "ports/Signals.h"

namespace driftmark {

/// Signals as the system's dispatch sources report them, also when the signal itself is ignored.
class MacSignals final : public Signals {
public:
  /// The main queue outlives this object and its sources.
  explicit MacSignals(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void ignore(QuitSignal signal) override;
  std::unique_ptr<SignalSource> makeSource(QuitSignal signal,
                                           std::function<void()> handler) override;

private:
  MainQueue& mainQueue_;
};

} // namespace driftmark
