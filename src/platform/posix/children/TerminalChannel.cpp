// How a pseudo-terminal is opened, and how a child's output and exit get from it to the main
// thread: in order, bounded, coalesced.

#include "platform/posix/children/TerminalChannel.h"

#include "platform/posix/SystemCalls.h"
#include "platform/posix/SystemErrors.h"

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// Bytes read after a child's end before its exit is reported. No terminal holds as much, so later
/// output is from another process.
constexpr std::size_t maxLeftInTerminal = std::size_t{1} << 20;

std::optional<std::string> slaveName(int master) {
  if (grantpt(master) != 0 || unlockpt(master) != 0)
    return std::nullopt;
  return terminalName(master);
}

} // namespace

std::variant<Terminal, LaunchError> Terminal::open() {
  using Stage = LaunchError::Stage;
  FileDescriptor master = openTerminalMaster();
  if (!master.isOpen())
    return launchError(Stage::allocateTerminal, errno);

  const std::optional<std::string> name = slaveName(master.number());
  if (!name) {
    const LaunchError error = launchError(Stage::allocateTerminal, errno);
    // Required behaviour: a master that could not be unlocked stays open for good.
    master.release();
    return error;
  }

  FileDescriptor slave(::open(name->c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!slave.isOpen() || !setNonBlocking(master.number()))
    return launchError(Stage::openTerminal, errno);
  return Terminal{std::move(master), std::move(slave)};
}

TerminalChannel::TerminalChannel(Context context, std::shared_ptr<PosixChildProcess> process,
                                 FileDescriptor master, ChildProcesses::DataHandler onData,
                                 ChildProcesses::ExitHandler onExit)
    : context_(std::move(context)), process_(std::move(process)), master_(std::move(master)),
      onData_(std::make_shared<const ChildProcesses::DataHandler>(std::move(onData))),
      onExit_(std::move(onExit)) {}

void TerminalChannel::advance(std::span<char> scratch) {
  {
    const std::lock_guard lock(mutex_);
    if (released_)
      master_.reset();
  }
  if (draining_)
    drain(scratch);
}

int TerminalChannel::masterToPoll() {
  return hasCapacity() ? master_.number() : -1;
}

bool TerminalChannel::hasCapacity() {
  const std::lock_guard lock(mutex_);
  waitsForCapacity_ = queue_.isFull() || (waitsForCapacity_ && !queue_.isDrained());
  return !waitsForCapacity_;
}

void TerminalChannel::readReady(std::span<char> scratch) {
  read(scratch);
}

void TerminalChannel::childEnded() {
  context_.children->reap(*process_);
  draining_ = true;
}

/// Reads until the terminal is empty or `scratch` is full, and queues the output.
TerminalChannel::Reading TerminalChannel::read(std::span<char> scratch) {
  auto reading = Reading::mayHoldMore;
  std::size_t size = 0;
  while (reading == Reading::mayHoldMore && size < scratch.size()) {
    const ssize_t count = ::read(master_.number(), scratch.data() + size, scratch.size() - size);
    if (count > 0)
      size += static_cast<std::size_t>(count);
    else if (count < 0 && errno == EAGAIN)
      reading = Reading::empty;
    else if (count == 0 || errno != EINTR)
      reading = Reading::ended;
  }
  if (reading == Reading::ended)
    master_.reset();
  drained_ += draining_ ? size : 0;

  std::unique_lock lock(mutex_);
  if (!released_)
    queue_.appendBytes({scratch.data(), size});
  deliverSoon(std::move(lock));
  return reading;
}

/// Reads the output that the ended child left. Another process that keeps the terminal open cannot
/// delay the exit.
void TerminalChannel::drain(std::span<char> scratch) {
  while (master_.isOpen() && drained_ < maxLeftInTerminal) {
    if (!hasCapacity())
      return;
    if (read(scratch) != Reading::mayHoldMore)
      break;
  }
  queueExit();
}

void TerminalChannel::queueExit() {
  draining_ = false;
  exitQueued_ = true;
  std::unique_lock lock(mutex_);
  queue_.appendExit();
  deliverSoon(std::move(lock));
}

/// Requests a delivery unless one waits on the main queue. Until that one runs, what arrives joins
/// the queue, so that a main thread with other work is not woken up for each small piece.
void TerminalChannel::deliverSoon(std::unique_lock<std::mutex> lock) {
  if (queue_.isEmpty() || std::exchange(deliveryPosted_, true))
    return;
  lock.unlock();
  context_.mainQueue.async([self = shared_from_this()] { self->deliver(); });
}

/// Delivers one item, so that other tasks of the main queue run between two items.
void TerminalChannel::deliver() {
  std::unique_lock lock(mutex_);
  deliveryPosted_ = false;
  if (queue_.isEmpty())
    return;
  OutputQueue::Item item = queue_.takeFirst();
  const bool hasCapacityAgain = waitsForCapacity_ && queue_.isDrained();
  lock.unlock();

  if (hasCapacityAgain)
    context_.ioThreadWakeup->wake();
  handle(std::move(item));
  deliverSoon(std::unique_lock(mutex_));
}

void TerminalChannel::handle(OutputQueue::Item item) {
  if (item.isExit) {
    if (const auto onExit = std::exchange(onExit_, nullptr))
      onExit();
    return;
  }
  if (const auto onData = onData_; onData && *onData)
    (*onData)(item.bytes);
  const std::lock_guard lock(mutex_);
  if (!released_)
    queue_.recycle(std::move(item.bytes));
}

void TerminalChannel::releaseTerminal() {
  onData_.reset();
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(released_, true))
      return;
    queue_.dropBytes();
  }
  context_.ioThreadWakeup->wake();
}

void TerminalChannel::abandon() {
  onData_.reset();
  onExit_ = nullptr;
  master_.reset();
  const std::lock_guard lock(mutex_);
  released_ = true;
  queue_ = {};
}

} // namespace driftmark
