// When `brctl status` is polled, and what its answers change.

#include "monitor/Brctl.h"
#include "monitor/SyncMonitor.h"
#include "support/Weakly.h"

#include <functional>
#include <utility>

namespace driftmark {

/// Begins a chain of polls, unless one is running.
void SyncMonitor::startPolling() {
  if (statusPolling_ || *stopping_)
    return;
  statusPolling_ = true;
  pollStatus();
}

void SyncMonitor::pollStatus() {
  if (*stopping_) {
    statusPolling_ = false;
    return;
  }
  statusProcess_ = requestReport(
      ports_, "status",
      [stopping = stopping_](const std::string& text) { return parseStatus(text, stopping.get()); },
      weakly(shared_from_this(), std::mem_fn(&SyncMonitor::statusArrived)));
}

void SyncMonitor::statusArrived(std::optional<StatusActivity> result) {
  statusProcess_.reset();
  if (result != statusActivity_) {
    statusActivity_ = std::move(result);
    if (statusActivity_) {
      std::string directories;
      for (const std::string& directory : statusActivity_->directories)
        directories += (directories.empty() ? "" : ", ") + directory;
      log({"status confirms ", std::to_string(statusActivity_->downloads), " download(s), ",
           std::to_string(statusActivity_->uploads), " upload(s) in ", directories});
    }
    notify();
  }

  const bool quiet = !statusActivity_ && !globalActivity();
  if (quiet || *stopping_) {
    statusPolling_ = false;
    return;
  }
  // Unlike every other callback this one keeps the monitor alive until it has run.
  ports_.mainQueue.after(statusPollInterval, [self = shared_from_this()] { self->pollStatus(); });
}

} // namespace driftmark
