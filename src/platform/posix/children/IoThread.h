#pragma once

#include "platform/posix/Threads.h"
#include "platform/posix/children/TerminalChannel.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace driftmark {

/// Runs the one thread that waits for terminals and for the ends of children on them, and hands
/// their events to the channels. The thread sleeps until one of them, or the wake-up, is ready.
/// This object belongs to the main thread; only `run` and the functions it calls run on the thread
/// itself.
class IoThread {
public:
  /// Throws std::system_error when the system has no descriptors left.
  IoThread();
  IoThread(const IoThread&) = delete;
  IoThread& operator=(const IoThread&) = delete;
  ~IoThread() { stop(); }

  /// Starts the thread unless it runs. Throws std::system_error when the system cannot start one.
  void start();

  /// Hands a channel over to the running thread, which drops it when it is finished.
  void add(std::shared_ptr<TerminalChannel> channel);

  /// Ends the thread and drops its channels. It cannot be started again.
  void stop();

  /// Makes the thread check its channels. The wake-up is for any thread.
  const std::shared_ptr<Wakeup>& wakeup() const { return wakeup_; }

private:
  // I/O thread
  void run();
  bool adoptNewChannels();

  const std::shared_ptr<Wakeup> wakeup_;
  std::thread thread_;
  std::vector<std::shared_ptr<TerminalChannel>> channels_; ///< used by the I/O thread while it runs

  std::mutex mutex_; ///< guards what follows
  std::vector<std::shared_ptr<TerminalChannel>> newChannels_;
  bool stopping_ = false;
};

} // namespace driftmark
