#pragma once

#include "platform/MainQueue.h"
#include "platform/posix/SystemCalls.h"

#include <array>
#include <csignal>
#include <functional>
#include <memory>

#include <QSocketNotifier>

namespace driftmark {

/// Turns SIGTERM and SIGINT into a task on the main queue instead of the end of this process. At
/// most one such object exists at a time, on the main thread; destroying it brings back what the
/// signals did before.
class SignalSources {
public:
  /// `onSignal` runs after each of the signals, once for several that come together. The main queue
  /// outlives this object. Throws std::system_error when the system has no descriptors left.
  SignalSources(MainQueue& mainQueue, std::function<void()> onSignal);
  SignalSources(const SignalSources&) = delete;
  SignalSources& operator=(const SignalSources&) = delete;
  ~SignalSources();

private:
  static constexpr std::array caught{SIGTERM, SIGINT};

  void arm();
  void forward();

  MainQueue& mainQueue_;
  const std::shared_ptr<const std::function<void()>> onSignal_;
  const system_calls::Pipe pipe_;
  QSocketNotifier notifier_;
  std::array<struct sigaction, caught.size()> before_{};
};

} // namespace driftmark
