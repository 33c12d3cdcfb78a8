#pragma once

#include "bird/Progress.h"

#include <cstddef>
#include <string>
#include <utility>

namespace icloud {

/// Something that a client changed, and when that was in terms of the story.
struct ClientOperation {
  enum class Kind { eviction, download };

  Kind kind = Kind::eviction;
  std::string path;         ///< inside the drive
  std::size_t restarts = 0; ///< so often had the story been gone on with
  std::size_t next = 0;     ///< of the events, the first that had not happened
  Milliseconds at{};        ///< on the story's clock

  /// Whether it had happened when a story had come so far.
  bool isDueAt(const Progress& progress) const {
    return std::pair(restarts, next) <= std::pair(progress.restarts.size(), progress.next);
  }

  bool operator==(const ClientOperation&) const = default;
};

} // namespace icloud
