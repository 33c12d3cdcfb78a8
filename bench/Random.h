#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace driftmark::bench {

/// A small seeded generator; the same numbers on every machine and with every standard library.
class Random {
public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    state_ += 0x9e3779b97f4a7c15;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
  }

  /// From 0 to `bound` - 1; 0 for no bound.
  std::size_t below(std::size_t bound) {
    return bound > 0 ? static_cast<std::size_t>(next() % bound) : 0;
  }

  /// Whether an event happens that happens `count` times in `of`.
  bool happens(std::size_t count, std::size_t of) { return below(of) < count; }

  template <class Value, std::size_t size>
  const Value& pick(const std::array<Value, size>& values) {
    return values[below(size)];
  }

private:
  std::uint64_t state_;
};

} // namespace driftmark::bench
