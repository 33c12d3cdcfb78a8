#pragma once

#include <string_view>

namespace driftmark {

/// The one state that the status icon shows.
enum class OverallState {
  idle,
  uploading,
  downloading,
  both,      ///< uploads and downloads at once
  syncing,   ///< something moves, the direction is not known
  attention, ///< a sync issue or a stalled transfer needs the user
};

/// The state's own name, as in "idle".
constexpr std::string_view name(OverallState state) {
  switch (state) {
  case OverallState::idle:
    return "idle";
  case OverallState::uploading:
    return "uploading";
  case OverallState::downloading:
    return "downloading";
  case OverallState::both:
    return "both";
  case OverallState::syncing:
    return "syncing";
  case OverallState::attention:
    return "attention";
  }
  return "";
}

} // namespace driftmark
