// Which state the icon shows, in which order of precedence, and the mean progress. Each answer
// holds for the moment of the question.

#include "monitor/SyncMonitor.h"

namespace driftmark {

/// Live transfers come first, then what needs the user, then the direction that is held, then what
/// `brctl status` confirmed, then the global feed.
OverallState SyncMonitor::overall() const {
  const Date now = ports_.clock.now();
  const Transfers::Live& live = active_.live(now);
  if (live.uploads > 0)
    return live.downloads > 0 ? OverallState::both : OverallState::uploading;
  if (live.downloads > 0)
    return OverallState::downloading;
  if (!active_.empty() || !issues_.empty()) // what is in flight is stalled
    return OverallState::attention;

  if (holdDirection_ && now < holdUntil_)
    return *holdDirection_ == Direction::upload ? OverallState::uploading
                                                : OverallState::downloading;
  if (statusActivity_ && statusActivity_->uploads >= 1)
    return statusActivity_->downloads > 0 ? OverallState::both : OverallState::uploading;
  if (statusActivity_ && statusActivity_->downloads > 0)
    return OverallState::downloading;
  return globalActivity() ? OverallState::syncing : OverallState::idle;
}

bool SyncMonitor::isBusy() const {
  const bool isHeld = ports_.clock.now() < holdUntil_;
  return !*stopping_ && (!active_.empty() || isHeld || statusActivity_ || globalActivity());
}

std::optional<double> SyncMonitor::progress() const {
  return active_.progress(ports_.clock.now());
}

} // namespace driftmark
