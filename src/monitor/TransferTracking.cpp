// Keeps the transfers in flight and the recent list in order between the lines.

#include "monitor/SyncMonitor.h"
#include "ports/FileSystem.h"
#include "support/Paths.h"
#include "support/Weakly.h"

#include <algorithm>

namespace driftmark {

namespace {

constexpr Seconds redrawAfterHold{0.1};

} // namespace

void SyncMonitor::complete(const ActiveItem& item) {
  const bool isDownload = item.direction == Direction::download;
  addRecent(item.path, isDownload ? RecentKind::download : RecentKind::upload);
  log({"synced ", lastPathComponent(item.path), " (", isDownload ? "download" : "upload", ")"});
  ++tally_.transfersFinished;
  holdDirection_ = item.direction;
  holdUntil_ = later(platform_.clock.now(), holdDuration);
  platform_.mainQueue.after(
      holdDuration + redrawAfterHold,
      weakly(shared_from_this(), [](const SyncMonitor& self) { self.notify(); }));
}

void SyncMonitor::addRecent(std::string_view path, RecentKind kind) {
  std::erase_if(recent_, [&](const CompletedItem& item) { return item.path == path; });
  recent_.insert(recent_.begin(), {std::string(path), kind, platform_.clock.now()});
  if (recent_.size() > maxRecent)
    recent_.resize(maxRecent);
}

void SyncMonitor::startSweepTimer() {
  const Seconds interval{std::max(std::min(stalledAfter_ / 3, 30.0), 5.0)};
  sweepTimer_ = platform_.mainQueue.repeat(
      interval, interval / 10, weakly(shared_from_this(), [](SyncMonitor& self) { self.sweep(); }));
}

/// Drops the transfers whose file is gone. The change is announced every time, so that ages and
/// stalls are drawn anew while something is in flight.
void SyncMonitor::sweep() {
  for (auto item = active_.begin(); item != active_.end();) {
    if (platform_.fileSystem.fileExists(item->first)) {
      ++item;
      continue;
    }
    log({"dropped vanished transfer ", lastPathComponent(item->first)});
    item = active_.erase(item);
  }
  if (active_.empty())
    sweepTimer_.reset();
  notify();
}

} // namespace driftmark
