// What the interface asks of the model; every answer is computed anew, against the clock.

#include "monitor/SyncMonitor.h"

#include <algorithm>

namespace driftmark {

bool SyncMonitor::isStalled(const ActiveItem& item) const {
  return Seconds(platform_.clock.now() - item.lastUpdate).count() > stalledAfter_;
}

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

  if (holdDirection_ && platform_.clock.now() < holdUntil_)
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

std::optional<double> SyncMonitor::longestStall() const {
  std::optional<double> longest;
  for (const auto& [path, item] : active_) {
    const double elapsed = Seconds(platform_.clock.now() - item.lastUpdate).count();
    if (elapsed > stalledAfter_)
      longest = std::max(longest.value_or(elapsed), elapsed);
  }
  return longest;
}

bool SyncMonitor::shouldOfferRestart() const {
  return longestStall().value_or(0) > stalledAfter_ + stalledAfter_;
}

} // namespace driftmark
