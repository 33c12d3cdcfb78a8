// The table of known items against a map.
//
// Every three bytes of the input are one exchange, or several for consecutive paths.

#include "monitor/KnownItems.h"

#include "Target.h"

#include <map>
#include <string>
#include <utility>

namespace driftmark::fuzz {

namespace {

/// Few places and few segments: a search passes the slots of other paths.
Fingerprint weakFingerprint(std::uint64_t number) {
  return {(number % 5) << 61 | number % 60, number / 60 << 60 | number / 60};
}

Fingerprint strongFingerprint(std::uint64_t number) {
  static const KeyedHash hash(KeyedHash::Key{1, 20, 300, 4000, 50000, 600000});
  return hash("/Folder/" + std::to_string(number));
}

} // namespace

void check(std::string_view input) {
  KnownItems items;
  std::map<std::pair<bool, std::uint64_t>, KnownItems::Value> expected;
  for (; input.size() >= 3; input.remove_prefix(3)) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(input[i]); };
    const std::uint64_t first = byte(0) | (byte(1) & 0x0fU) << 8U;
    const std::uint64_t count = 1 + (byte(1) >> 4U) * 4U;
    const auto value = static_cast<KnownItems::Value>(1 + byte(2) % 7);
    const auto kept = static_cast<KnownItems::Value>(byte(2) >> 3U & 7U);
    const bool isWeak = byte(2) >> 6U != 0;
    for (std::uint64_t number = first; number < first + count; ++number) {
      const Fingerprint path = isWeak ? weakFingerprint(number) : strongFingerprint(number);
      KnownItems::Value& known = expected[{isWeak, number}];
      items.prefetch(path);
      require(items.exchange(path, value, kept) == known, "a known value differs");
      known = static_cast<KnownItems::Value>(value | (known & kept));
    }
  }
}

} // namespace driftmark::fuzz
