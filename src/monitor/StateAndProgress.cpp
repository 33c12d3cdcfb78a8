// Which state the icon shows, in which order of precedence, and the mean progress. Each answer is
// computed anew against the clock.

#include "monitor/SyncMonitor.h"

namespace driftmark {

/// Live transfers come first, then what needs the user, then the direction that is held, then what
/// `brctl status` confirmed, then the global feed.
OverallState SyncMonitor::overall() const {
  bool stalled = false, uploading = false, downloading = false;
  for (const auto& [path, item] : active_) {
    if (isStalled(item))
      stalled = true;
    else
      (item.direction == Direction::upload ? uploading : downloading) = true;
  }
  if (uploading)
    return downloading ? OverallState::both : OverallState::uploading;
  if (downloading)
    return OverallState::downloading;
  if (stalled || !issues_.empty())
    return OverallState::attention;

  if (holdDirection_ && ports_.clock.now() < holdUntil_)
    return *holdDirection_ == Direction::upload ? OverallState::uploading
                                                : OverallState::downloading;
  if (statusActivity_ && statusActivity_->uploads >= 1)
    return statusActivity_->downloads > 0 ? OverallState::both : OverallState::uploading;
  if (statusActivity_ && statusActivity_->downloads > 0)
    return OverallState::downloading;
  return globalActivity() ? OverallState::syncing : OverallState::idle;
}

std::optional<double> SyncMonitor::progress() const {
  double sum = 0;
  int count = 0;
  for (const auto& [path, item] : active_) {
    if (!item.percent || isStalled(item))
      continue;
    sum += *item.percent;
    ++count;
  }
  return count > 0 ? std::optional(sum / count) : std::nullopt;
}

} // namespace driftmark
