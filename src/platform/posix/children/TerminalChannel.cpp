#include "platform/posix/children/TerminalChannel.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace driftmark {

namespace {

/// More than any terminal holds: what comes after so much was not written by the ended child.
constexpr std::size_t mostLeftInTerminal = std::size_t{1} << 20;

constexpr Seconds restBetweenDeliveries{0.001};

} // namespace

TerminalChannel::TerminalChannel(Surroundings surroundings,
                                 std::shared_ptr<PosixChildProcess> process, FileDescriptor master,
                                 ChildProcesses::DataHandler onData,
                                 ChildProcesses::ExitHandler onExit)
    : surroundings_(std::move(surroundings)), process_(std::move(process)),
      master_(std::move(master)),
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
  return hasRoom() ? master_.number() : -1;
}

bool TerminalChannel::hasRoom() {
  const std::lock_guard lock(mutex_);
  waitsForRoom_ = queue_.isFull() || (waitsForRoom_ && !queue_.isDrained());
  return !waitsForRoom_;
}

void TerminalChannel::readReady(std::span<char> scratch) {
  read(scratch);
}

void TerminalChannel::childEnded() {
  surroundings_.children->reap(*process_);
  draining_ = true;
}

/// Reads until the terminal is empty or `scratch` is full, and queues what came.
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

/// Reads what the ended child has left. Whoever else keeps the terminal open cannot hold up the
/// news of its end.
void TerminalChannel::drain(std::span<char> scratch) {
  while (master_.isOpen() && drained_ < mostLeftInTerminal) {
    if (!hasRoom())
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

/// At most one delivery waits on the main queue.
void TerminalChannel::deliverSoon(std::unique_lock<std::mutex> lock) {
  const bool mayRest = delivery_ == Delivery::resting && !queue_.isUrgent();
  if (delivery_ == Delivery::posted || mayRest || queue_.isEmpty())
    return;
  delivery_ = Delivery::posted;
  lock.unlock();
  surroundings_.mainQueue.async([self = shared_from_this()] { self->deliver(); });
}

/// One item each time, so that other tasks of the main queue get their turn in between.
void TerminalChannel::deliver() {
  std::unique_lock lock(mutex_);
  delivery_ = Delivery::none;
  if (queue_.isEmpty())
    return;
  OutputQueue::Item item = queue_.takeFirst();
  const bool roomAgain = waitsForRoom_ && queue_.isDrained();
  lock.unlock();

  if (roomAgain)
    surroundings_.ioThread->wake();
  handle(std::move(item));
  deliverOrRest();
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

/// Puts the next delivery off when nothing waits: a terminal hands out small pieces, and each would
/// wake the main thread.
void TerminalChannel::deliverOrRest() {
  std::unique_lock lock(mutex_);
  if (!queue_.isEmpty() || delivery_ == Delivery::posted || released_) {
    deliverSoon(std::move(lock));
    return;
  }
  delivery_ = Delivery::resting;
  lock.unlock();
  if (!std::exchange(restEnds_, true))
    surroundings_.mainQueue.after(restBetweenDeliveries,
                                  [self = shared_from_this()] { self->rested(); });
}

void TerminalChannel::rested() {
  restEnds_ = false;
  std::unique_lock lock(mutex_);
  if (delivery_ != Delivery::resting)
    return;
  delivery_ = Delivery::none;
  deliverSoon(std::move(lock));
}

void TerminalChannel::releaseTerminal() {
  onData_.reset();
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(released_, true))
      return;
    queue_.dropBytes();
  }
  surroundings_.ioThread->wake();
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
