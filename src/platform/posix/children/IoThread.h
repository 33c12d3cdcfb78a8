#pragma once

#include "platform/posix/children/TerminalChannel.h"
#include "platform/posix/children/Wakeup.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace driftmark {

/// The one thread that waits for terminals and for children to end. It sleeps until one of them, or
/// a wake-up, has something for it. Main thread only.
class IoThread {
public:
  /// Throws std::system_error when the system has no descriptors left.
  IoThread();
  IoThread(const IoThread&) = delete;
  IoThread& operator=(const IoThread&) = delete;
  ~IoThread() { stop(); }

  /// Starts the thread unless it runs. Throws std::system_error when the system has none left.
  void start();

  /// Hands a channel to the running thread, which drops it when nothing more can come from it.
  void add(std::shared_ptr<TerminalChannel> channel);

  /// Ends the thread and drops its channels. It cannot be started again.
  void stop();

  /// Makes the thread look at its channels. For any thread.
  const std::shared_ptr<Wakeup>& wakeup() const { return wakeup_; }

private:
  void run();
  bool adoptNewChannels();

  const std::shared_ptr<Wakeup> wakeup_;
  std::thread thread_;
  std::vector<std::shared_ptr<TerminalChannel>> channels_; ///< the I/O thread's as long as it runs

  std::mutex mutex_; ///< guards what follows
  std::vector<std::shared_ptr<TerminalChannel>> newChannels_;
  bool stopping_ = false;
};

} // namespace driftmark
