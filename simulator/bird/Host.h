#pragma once

#include "scenario/Action.h"

#include <optional>
#include <string>

namespace icloud {

/// What a story needs from the daemon that plays it.
class Host {
public:
  virtual ~Host() = default;

  /// Whether both feeds have a monitor at this moment.
  virtual bool isWatched() const = 0;
  virtual void killMonitors(std::optional<Feed> only) = 0;

  /// Kills the daemon as soon as what has happened is noted.
  virtual void killDaemon() = 0;
  virtual void print(Feed feed, const std::string& bytes) = 0;

  /// Sends the monitors what changed.
  virtual void sendChanges() = 0;

  /// Tells whoever follows the story. `word` says what kind of news `text` is.
  virtual void tell(const char* word, const std::string& text) = 0;
};

} // namespace icloud
