// How a finished transfer is recorded, and how long its direction is held on the icon.

#include "monitor/SyncMonitor.h"
#include "support/Paths.h"
#include "support/Weakly.h"

namespace driftmark {

void SyncMonitor::complete(const ActiveItem& item) {
  const bool isDownload = item.direction == Direction::download;
  addRecent(item.path, isDownload ? RecentKind::download : RecentKind::upload);
  log({"synced ", lastPathComponent(item.path), " (", isDownload ? "download" : "upload", ")"});
  ++tally_.transfersFinished;
  holdDirection_ = item.direction;
  holdUntil_ = later(ports_.clock.now(), holdDuration);
  ports_.mainQueue.after(
      holdRedrawDelay, weakly(shared_from_this(), [](const SyncMonitor& self) { self.notify(); }));
}

void SyncMonitor::addRecent(std::string_view path, RecentKind kind) {
  std::erase_if(recent_, [&](const CompletedItem& item) { return item.path == path; });
  recent_.insert(recent_.begin(), {std::string(path), kind, ports_.clock.now()});
  if (recent_.size() > maxRecent)
    recent_.resize(maxRecent);
}

} // namespace driftmark
