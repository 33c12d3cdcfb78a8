// How a child's output is cut into chunks, and when reading it pauses.

#include "platform/posix/children/OutputQueue.h"

#include "ports/ChildProcesses.h"

#include <algorithm>
#include <utility>

namespace driftmark {

namespace {

constexpr std::size_t maxChunkSize = ChildProcesses::maxChunkSize;
constexpr std::size_t fullAt = 4 * maxChunkSize; ///< reading pauses
constexpr std::size_t drainedAt = fullAt / 2;    ///< reading continues

} // namespace

bool OutputQueue::isFull() const {
  return waitingBytes_ >= fullAt;
}

bool OutputQueue::isDrained() const {
  return waitingBytes_ <= drainedAt;
}

bool OutputQueue::needsNewChunk() const {
  return items_.empty() || items_.back().isExit || items_.back().bytes.size() == maxChunkSize;
}

void OutputQueue::appendBytes(std::string_view bytes) {
  waitingBytes_ += bytes.size();
  while (!bytes.empty()) {
    if (needsNewChunk())
      items_.push_back({std::exchange(spare_, {}), false});
    std::string& chunk = items_.back().bytes;
    const std::size_t count = std::min(bytes.size(), maxChunkSize - chunk.size());
    chunk.append(bytes.substr(0, count));
    bytes.remove_prefix(count);
  }
}

void OutputQueue::appendExit() {
  items_.push_back({{}, true});
}

OutputQueue::Item OutputQueue::takeFirst() {
  Item item = std::move(items_.front());
  items_.pop_front();
  waitingBytes_ -= item.bytes.size();
  return item;
}

void OutputQueue::recycle(std::string bytes) {
  bytes.clear();
  spare_ = std::move(bytes);
}

void OutputQueue::dropBytes() {
  std::erase_if(items_, [](const Item& item) { return !item.isExit; });
  waitingBytes_ = 0;
  spare_ = {};
}

} // namespace driftmark
