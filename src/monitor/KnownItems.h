#pragma once

#include "support/KeyedHash.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace driftmark {

/// A small value for each of millions of paths. No path's text is kept: a path is known by the
/// `KeyedHash` of its bytes, of which 101 independent bits are compared. One thread.
class KnownItems {
public:
  /// From 1 to 7; 0 stands for a path that has none.
  using Value = std::uint8_t;

  /// Asks the processor to load the place of a path into its cache, for an `exchange` to come.
  void prefetch(const Fingerprint& path) const;

  /// Stores `value` together with those bits of the value before that are in `kept`, and returns
  /// the value before. The two together are not 0. Amortised constant time.
  Value exchange(const Fingerprint& path, Value value, Value kept = 0);

private:
  /// 93 bits of a fingerprint and the value; all zero in an empty slot.
  struct Slot {
    std::uint32_t word0;
    std::uint32_t word1;
    std::uint32_t word2; ///< the value in the lowest three bits
  };

  /// A table with open addressing that grows by itself: growth moves a small part of all slots.
  struct Segment {
    std::unique_ptr<Slot[]> slots;
    std::uint32_t capacity = 0;
    std::uint32_t count = 0;
  };

  static constexpr std::size_t segmentBits = 8;

  static std::size_t segmentNumber(const Fingerprint& path) {
    return path.high >> (64 - segmentBits);
  }
  static std::uint32_t place(std::uint32_t word1, const Segment& segment) {
    return static_cast<std::uint32_t>(std::uint64_t{word1} * segment.capacity >> 32);
  }
  void grow(std::size_t number);

  std::array<Segment, std::size_t{1} << segmentBits> segments_;
};

} // namespace driftmark
