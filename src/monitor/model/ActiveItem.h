#pragma once

#include "monitor/model/Direction.h"
#include "ports/Clock.h"

#include <optional>
#include <string>

namespace driftmark {

/// One transfer in flight.
struct ActiveItem {
  std::string path; ///< absolute; the key under which the item is kept
  Direction direction = Direction::upload;
  std::optional<double> percent; ///< 0 to 100; absent when the latest progress line gave none
  Date lastUpdate{};             ///< of the latest progress line, whether or not it moved on
};

} // namespace driftmark
