#pragma once

#include <functional>
#include <memory>

namespace driftmark {

/// The signals that ask a program to end.
enum class QuitSignal {
  terminate, ///< SIGTERM
  interrupt, ///< SIGINT
};

/// Delivers a signal as long as it lives. Released on the main thread.
class SignalSource {
public:
  virtual ~SignalSource() = default;
};

/// What signals do to this process. Main thread only.
class Signals {
public:
  virtual ~Signals() = default;

  /// From now on the signal by itself does nothing.
  virtual void ignore(QuitSignal signal) = 0;

  /// Runs `handler` on the main queue after the signal has come, once for several that come
  /// together. The signal should be ignored, and is again when the source is released. Null when
  /// the system has no descriptors left.
  virtual std::unique_ptr<SignalSource> makeSource(QuitSignal signal,
                                                   std::function<void()> handler) = 0;
};

} // namespace driftmark
