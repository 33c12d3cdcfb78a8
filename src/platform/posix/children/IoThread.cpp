// How one thread waits for all terminals and exits at once.

#include "platform/posix/children/IoThread.h"

#include "ports/ChildProcesses.h"

#include <cstddef>
#include <iterator>
#include <span>
#include <utility>

#include <poll.h>

namespace driftmark {

namespace {

using Channels = std::vector<std::shared_ptr<TerminalChannel>>;

/// The wake-up comes first, then each channel's terminal and exit.
std::vector<pollfd> descriptorsToPoll(const Wakeup& wakeup, const Channels& channels) {
  std::vector<pollfd> descriptors{{wakeup.descriptor(), POLLIN, 0}};
  descriptors.reserve(1 + 2 * channels.size());
  for (const auto& channel : channels) {
    descriptors.push_back({channel->masterToPoll(), POLLIN, 0});
    descriptors.push_back({channel->exitToPoll(), POLLIN, 0});
  }
  return descriptors;
}

void handleEvents(const std::vector<pollfd>& descriptors, const Channels& channels,
                  std::span<char> scratch) {
  for (std::size_t i = 0; i < channels.size(); ++i) {
    if (descriptors[1 + 2 * i].revents != 0)
      channels[i]->readReady(scratch);
    if (descriptors[2 + 2 * i].revents != 0)
      channels[i]->childEnded();
  }
}

} // namespace

IoThread::IoThread() : wakeup_(std::make_shared<Wakeup>()) {}

void IoThread::start() {
  if (thread_.joinable())
    return;
  const SignalsBlocked guard;
  thread_ = std::thread([this] { run(); });
}

void IoThread::add(std::shared_ptr<TerminalChannel> channel) {
  {
    const std::lock_guard lock(mutex_);
    newChannels_.push_back(std::move(channel));
  }
  wakeup_->wake();
}

void IoThread::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wakeup_->wake();
  if (thread_.joinable())
    thread_.join();
  channels_.clear();
  newChannels_.clear();
}

void IoThread::run() {
  std::vector<char> scratch(ChildProcesses::maxChunkSize);
  while (adoptNewChannels()) {
    for (const auto& channel : channels_)
      channel->advance(scratch);
    std::erase_if(channels_, [](const auto& channel) { return channel->isFinished(); });
    auto descriptors = descriptorsToPoll(*wakeup_, channels_);
    if (poll(descriptors.data(), static_cast<nfds_t>(descriptors.size()), -1) < 0)
      continue;
    if (descriptors.front().revents != 0)
      wakeup_->clear();
    handleEvents(descriptors, channels_, scratch);
  }
}

/// False when the thread is to end.
bool IoThread::adoptNewChannels() {
  const std::lock_guard lock(mutex_);
  channels_.insert(channels_.end(), std::make_move_iterator(newChannels_.begin()),
                   std::make_move_iterator(newChannels_.end()));
  newChannels_.clear();
  return !stopping_;
}

} // namespace driftmark
