#pragma once

#include <functional>
#include <memory>

namespace driftmark {

/// The signals that ask a program to end.
enum class QuitSignal {
  terminate, ///< SIGTERM
  interrupt, ///< SIGINT
};

/// Delivers a signal until it is released. Released on the main thread.
class SignalSource {
public:
  virtual ~SignalSource() = default;
};

/// How this process handles signals. Main thread only.
class Signals {
public:
  virtual ~Signals() = default;

  /// Takes the default action from the signal: it no longer ends this process. A source only
  /// observes a signal and does not replace its default action, so `ignore` comes before
  /// `makeSource`.
  virtual void ignore(QuitSignal signal) = 0;

  /// Gives the signal its default action again: it ends this process.
  virtual void restoreDefault(QuitSignal signal) = 0;

  /// Runs `handler` on the main queue after the signal has arrived, once for several that arrive
  /// together. The signal should be ignored, and is ignored again when the source is released. Null
  /// when the system cannot make a source.
  virtual std::unique_ptr<SignalSource> makeSource(QuitSignal signal,
                                                   std::function<void()> handler) = 0;
};

} // namespace driftmark
