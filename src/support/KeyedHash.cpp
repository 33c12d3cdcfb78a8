// How a text is hashed to 128 bits by a secret key.

#include "support/KeyedHash.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>

namespace driftmark {

namespace {

__extension__ using WideWord = unsigned __int128;

std::uint64_t load(const char* from) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

/// The two halves of the product, folded into one.
std::uint64_t fold(std::uint64_t a, std::uint64_t b) {
  const WideWord product = static_cast<WideWord>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// Sixteen bytes go into each of two lanes, which differ in their keys and in which word meets
/// what.
struct Lanes {
  void take(std::uint64_t a, std::uint64_t b, const KeyedHash::Key& key) {
    first = fold(a ^ key[0], b ^ first);
    second = fold(a ^ second, b ^ key[1]);
  }

  std::uint64_t first;
  std::uint64_t second;
};

KeyedHash::Key randomKey() {
  std::random_device source;
  std::uniform_int_distribution<std::uint64_t> word;
  KeyedHash::Key key;
  std::generate(key.begin(), key.end(), [&] { return word(source); });
  return key;
}

} // namespace

KeyedHash::KeyedHash() : key_(randomKey()) {}

/// Each lane is finished by a fold of its own: the halves of one product are not independent.
Fingerprint KeyedHash::operator()(std::string_view text) const {
  const char* at = text.data();
  const std::size_t size = text.size();
  Lanes lanes{key_[2] + size, key_[3] - size};
  if (size > 16) {
    const char* const lastBlock = at + size - 16;
    for (; at < lastBlock; at += 16)
      lanes.take(load(at), load(at + 8), key_);
    at = lastBlock; // some of its bytes perhaps for the second time
    lanes.take(load(at), load(at + 8), key_);
  } else if (size >= 8) {
    lanes.take(load(at), load(at + size - 8), key_);
  } else {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < size; ++i)
      word = word << 8 | static_cast<unsigned char>(at[i]);
    lanes.take(word, 0, key_);
  }
  return {fold(lanes.first ^ key_[4], key_[5] | 1), fold(lanes.second ^ key_[5], key_[4] | 1)};
}

} // namespace driftmark
