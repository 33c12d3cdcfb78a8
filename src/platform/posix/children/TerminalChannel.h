#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/Threads.h"
#include "platform/posix/children/ChildRegistry.h"
#include "platform/posix/children/OutputQueue.h"
#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <variant>

namespace driftmark {

/// Both ends of a pseudo-terminal in its default mode. No child inherits them unless it is given
/// them, and neither becomes the controlling terminal of this process.
struct Terminal {
  FileDescriptor master; ///< reads never block
  FileDescriptor slave;

  /// Opens a new pseudo-terminal, or says at which stage that failed. Any thread.
  static std::variant<Terminal, LaunchError> open();
};

/// The path of one child's output and exit: the I/O thread reads them from the terminal and the
/// exit descriptor, the main queue delivers them to the handlers. As long as the I/O thread runs,
/// only that thread reads and closes the descriptors.
class TerminalChannel : public std::enable_shared_from_this<TerminalChannel> {
public:
  /// What a channel works with. All of it outlives the I/O thread.
  struct Context {
    MainQueue& mainQueue;
    std::shared_ptr<ChildRegistry> children;
    std::shared_ptr<Wakeup> ioThreadWakeup;
  };

  TerminalChannel(Context context, std::shared_ptr<PosixChildProcess> process,
                  FileDescriptor master, ChildProcesses::DataHandler onData,
                  ChildProcesses::ExitHandler onExit);

  // I/O thread

  /// Does what needs no waiting: closes a released terminal, and after the child's end reads the
  /// output that it left. `scratch` is memory to read into.
  void advance(std::span<char> scratch);

  /// The descriptor to poll for output; -1 while the queue is full, or when there is no terminal.
  int masterToPoll();

  /// The descriptor to poll for the child's end; -1 after the end.
  int exitToPoll() const { return process_->exitDescriptor(); }

  /// Handles a terminal that has something to read.
  void readReady(std::span<char> scratch);

  /// Handles the child's end.
  void childEnded();

  /// Whether neither output nor an exit can follow.
  bool isFinished() const { return exitQueued_ && !master_.isOpen(); }

  // Main thread

  /// Stops deliveries of output for good and has the terminal closed.
  void releaseTerminal();

  /// Releases handlers and terminal; no handler is called from now on. Only once the I/O thread has
  /// ended.
  void abandon();

private:
  enum class Reading { mayHoldMore, empty, ended };

  // I/O thread
  Reading read(std::span<char> scratch);
  void drain(std::span<char> scratch);
  void queueExit();
  bool hasCapacity();

  // Main thread
  void deliver();
  void handle(OutputQueue::Item item);

  // Any thread
  void deliverSoon(std::unique_lock<std::mutex> lock);

  const Context context_;
  const std::shared_ptr<PosixChildProcess> process_;

  // I/O thread
  FileDescriptor master_;
  bool draining_ = false;
  bool exitQueued_ = false;
  std::size_t drained_ = 0;

  // Main thread; the caller of a running handler keeps it alive
  std::shared_ptr<const ChildProcesses::DataHandler> onData_;
  ChildProcesses::ExitHandler onExit_;

  std::mutex mutex_; ///< guards what follows
  OutputQueue queue_;
  bool deliveryPosted_ = false; ///< it waits on the main queue
  bool waitsForCapacity_ = false;
  bool released_ = false;
};

} // namespace driftmark
