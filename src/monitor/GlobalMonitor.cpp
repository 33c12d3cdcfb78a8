// What a line of the global feed changes, and how long its transfers count. The feed reports the
// size of a transfer, but neither its file nor its direction.

#include "monitor/Patterns.h"
#include "monitor/SyncMonitor.h"
#include "ports/Text.h"
#include "support/Fatal.h"
#include "support/Numbers.h"
#include "support/Utf8.h"
#include "support/Weakly.h"

#include <algorithm>

namespace driftmark {

bool SyncMonitor::parseGlobal(std::string_view line) {
  if (!isUtf8(line))
    return false;
  const auto match = firstGlobal(withoutAnsi(line, withoutAnsi_));
  if (!match)
    return false;
  const auto fraction = toDouble(match->fraction);
  const auto total = toInt64(match->total);
  if (!fraction || !total || *total < 1)
    return false;

  const bool before = globalActivity().has_value();
  pruneGlobalEvents();
  const auto known = std::find_if(globalEvents_.begin(), globalEvents_.end(),
                                  [&](const GlobalEvent& event) { return event.total == *total; });
  if (*fraction >= 1.0) {
    if (known != globalEvents_.end())
      globalEvents_.erase(known);
  } else {
    const Date now = ports_.clock.now();
    if (known != globalEvents_.end()) {
      known->date = now;
    } else {
      globalEvents_.push_back({*total, now});
      log({"global transfer started (", ports_.text.byteCount(*total), ")"});
    }
    scheduleGlobalExpiry();
    startPolling();
  }
  return globalActivity().has_value() != before;
}

std::optional<GlobalActivity> SyncMonitor::globalActivity() const {
  const Date cutoff = earlier(ports_.clock.now(), globalWindow);
  GlobalActivity activity;
  for (const GlobalEvent& event : globalEvents_) {
    if (event.date <= cutoff)
      continue;
    const auto bytes = sum(activity.bytes, event.total);
    if (!bytes)
      fatalError("the sizes of the global transfers exceed 64 bits");
    activity.bytes = *bytes;
    ++activity.count;
  }
  return activity.count > 0 ? std::optional(activity) : std::nullopt;
}

void SyncMonitor::pruneGlobalEvents() {
  const Date cutoff = earlier(ports_.clock.now(), globalWindow);
  std::erase_if(globalEvents_, [&](const GlobalEvent& event) { return event.date <= cutoff; });
}

void SyncMonitor::scheduleGlobalExpiry() {
  if (globalExpiryPending_)
    return;
  globalExpiryPending_ = true;
  ports_.mainQueue.after(globalExpiryDelay, weakly(shared_from_this(), [](SyncMonitor& self) {
                           self.globalExpiryPending_ = false;
                           self.pruneGlobalEvents();
                           self.notify();
                           if (!self.globalEvents_.empty())
                             self.scheduleGlobalExpiry();
                         }));
}

} // namespace driftmark
