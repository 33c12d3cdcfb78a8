#pragma once

#include "monitor/model/Items.h"

#include <optional>
#include <string>
#include <string_view>

namespace driftmark {

/// What one line of the per-item monitor says.
struct ItemLine {
  enum class Kind {
    invalid,      ///< not UTF-8
    other,        ///< not about an item
    ignored,      ///< about a hidden item or one in the trash
    progress,     ///< a transfer starts or continues
    current,      ///< the item is in sync
    evicted,      ///< the item is only in iCloud
    unrecognized, ///< the item is in any other state
  };

  Kind kind = Kind::other;
  std::string_view path;                   ///< as printed, from its "/" on
  Direction direction = Direction::upload; ///< of a transfer
  std::optional<double> percent;           ///< of a transfer; absent when the line has none
  std::string_view state;                  ///< an unrecognized one, without the cloud before it
};

/// Reads a line without its newline. The result refers to `line`, or to `storage`, which keeps the
/// text of a line with colour sequences in it.
ItemLine readItemLine(std::string_view line, std::string& storage);

} // namespace driftmark
