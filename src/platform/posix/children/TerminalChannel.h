#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/children/OutputQueue.h"
#include "platform/posix/children/RunningChildren.h"
#include "platform/posix/children/Wakeup.h"
#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>

namespace driftmark {

/// The road of one child's output and of its end: from the terminal and the exit descriptor, which
/// the I/O thread polls, to the handlers, which the main queue calls. The I/O thread alone reads
/// and closes the descriptors as long as it runs.
class TerminalChannel : public std::enable_shared_from_this<TerminalChannel> {
public:
  /// What a channel works with. All of it outlives the I/O thread.
  struct Surroundings {
    MainQueue& mainQueue;
    std::shared_ptr<RunningChildren> children;
    std::shared_ptr<Wakeup> ioThread;
  };

  TerminalChannel(Surroundings surroundings, std::shared_ptr<PosixChildProcess> process,
                  FileDescriptor master, ChildProcesses::DataHandler onData,
                  ChildProcesses::ExitHandler onExit);

  /// Does what can be done without waiting: closes a released terminal, and after the child's end
  /// reads what it left. `scratch` is memory to read into. I/O thread.
  void advance(std::span<char> scratch);

  /// What to poll for output; -1 while there is no room for more, or no terminal. I/O thread.
  int masterToPoll();

  /// What to poll for the child's end; -1 once that came. I/O thread.
  int exitToPoll() const { return process_->exitDescriptor(); }

  /// The terminal has something to read. I/O thread.
  void readReady(std::span<char> scratch);

  /// The child has ended. I/O thread.
  void childEnded();

  /// Whether nothing more can come. I/O thread.
  bool isFinished() const { return exitQueued_ && !master_.isOpen(); }

  /// Stops deliveries for good and has the terminal closed. Main thread.
  void releaseTerminal();

  /// Lets go of handlers and terminal; nothing is called any more. Main thread, once the I/O thread
  /// has ended.
  void abandon();

private:
  enum class Reading { mayHoldMore, empty, ended };

  /// The next delivery is not asked for, waits on the main queue, or is put off for a moment so
  /// that more can be joined to it.
  enum class Delivery { none, posted, resting };

  Reading read(std::span<char> scratch);
  void drain(std::span<char> scratch);
  void queueExit();
  void deliverSoon(std::unique_lock<std::mutex> lock);
  void deliver();
  void handle(OutputQueue::Item item);
  void deliverOrRest();
  void rested();
  bool hasRoom();

  const Surroundings surroundings_;
  const std::shared_ptr<PosixChildProcess> process_;

  // I/O thread
  FileDescriptor master_;
  bool draining_ = false;
  bool exitQueued_ = false;
  std::size_t drained_ = 0;

  // Main thread; a handler that is running is kept alive by its caller
  std::shared_ptr<const ChildProcesses::DataHandler> onData_;
  ChildProcesses::ExitHandler onExit_;
  bool restEnds_ = false; ///< the end of a rest waits on the main queue

  std::mutex mutex_; ///< guards what follows
  OutputQueue queue_;
  Delivery delivery_ = Delivery::none;
  bool waitsForRoom_ = false;
  bool released_ = false;
};

} // namespace driftmark
