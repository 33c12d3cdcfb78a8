#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace icloud {

/// How an item stands towards iCloud.
enum class ItemState : std::uint8_t {
  folder,
  current,     ///< the same here and there
  evicted,     ///< contents only there
  uploading,   ///< contents only here, on their way
  downloading, ///< contents only there, on their way
  other,       ///< in a state of its own, which the drive keeps as a text
  gone,        ///< deleted
};

/// A file or a folder of the drive.
struct Item {
  std::string path; ///< inside the drive
  std::uint64_t bytes = 0;
  std::uint64_t fetched = 0;    ///< bytes that a download under way has brought
  std::optional<float> percent; ///< of a transfer that reports it
  ItemState state = ItemState::folder;
  bool contentsHere = true;
};

using ItemId = std::size_t;

} // namespace icloud
