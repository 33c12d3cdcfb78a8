// How the state of millions of items is remembered in some seventeen bytes each.

#include "monitor/KnownItems.h"

#include <cmath>
#include <utility>

namespace driftmark {

namespace {

constexpr std::uint32_t valueMask = 7;

/// A segment is never fuller than seven eighths: beyond that, searches become long.
bool isFull(std::uint32_t count, std::uint32_t capacity) {
  return count >= capacity - capacity / 8;
}

} // namespace

void KnownItems::prefetch(const Fingerprint& path) const {
  const Segment& segment = segments_[segmentNumber(path)];
  if (segment.capacity == 0)
    return;
  const auto word1 = static_cast<std::uint32_t>(path.low >> 32);
  const Slot* const slot = &segment.slots[place(word1, segment)];
  __builtin_prefetch(slot);
  __builtin_prefetch(slot + 3); // a search often goes beyond the first cache line
}

KnownItems::Value KnownItems::exchange(const Fingerprint& path, Value value, Value kept) {
  const std::size_t number = segmentNumber(path);
  Segment& segment = segments_[number];
  if (isFull(segment.count, segment.capacity))
    grow(number);
  const auto word0 = static_cast<std::uint32_t>(path.low);
  const auto word1 = static_cast<std::uint32_t>(path.low >> 32);
  const std::uint32_t word2 = static_cast<std::uint32_t>(path.high) << 3;
  for (std::uint32_t at = place(word1, segment);; at = at + 1 < segment.capacity ? at + 1 : 0) {
    Slot& slot = segment.slots[at];
    const std::uint32_t before = slot.word2 & valueMask;
    if (before == 0) {
      slot = {word0, word1, word2 | value};
      ++segment.count;
      return 0;
    }
    if (slot.word0 == word0 && slot.word1 == word1 && slot.word2 - before == word2) {
      slot.word2 = word2 | value | (before & kept);
      return static_cast<Value>(before);
    }
  }
}

/// Makes a segment half as large again. The first sizes are spread over that range, so that the
/// segments grow one after the other, not all at once.
void KnownItems::grow(std::size_t number) {
  constexpr double smallest = 16;
  constexpr double factor = 1.5;
  Segment& segment = segments_[number];
  const double share = static_cast<double>(number) / static_cast<double>(segments_.size());
  Segment larger;
  larger.capacity = static_cast<std::uint32_t>(
      segment.capacity == 0 ? smallest * std::pow(factor, share) : segment.capacity * factor);
  larger.count = segment.count;
  larger.slots = std::make_unique<Slot[]>(larger.capacity);
  for (std::uint32_t at = 0; at < segment.capacity; ++at) {
    const Slot& slot = segment.slots[at];
    if ((slot.word2 & valueMask) == 0)
      continue;
    std::uint32_t free = place(slot.word1, larger);
    while ((larger.slots[free].word2 & valueMask) != 0)
      free = free + 1 < larger.capacity ? free + 1 : 0;
    larger.slots[free] = slot;
  }
  segment = std::move(larger);
}

} // namespace driftmark
