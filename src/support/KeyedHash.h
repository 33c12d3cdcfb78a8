#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace driftmark {

/// 128 bits that stand for a text.
struct Fingerprint {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
};

/// Gives fingerprints by a key, without which nobody can find two texts with the same one. Any
/// thread.
class KeyedHash {
public:
  using Key = std::array<std::uint64_t, 6>;

  /// With a key from the system's source of random numbers.
  KeyedHash();
  explicit KeyedHash(const Key& key) : key_(key) {}

  Fingerprint operator()(std::string_view text) const;

private:
  Key key_;
};

} // namespace driftmark
