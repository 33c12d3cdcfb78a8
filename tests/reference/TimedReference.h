#pragma once

#include "monitor/SyncMonitor.h"
#include "reference/ReferenceMonitor.h"
#include "support/TestClock.h"
#include "support/TestSystemLog.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace driftmark::test {

/// The reference monitor, the moments at which the real one sweeps and redraws, and plain answers
/// to what the interface asks.
class TimedReference {
public:
  explicit TimedReference(Date now, Seconds stalledAfter = SyncMonitor::defaultStalledAfter);

  void addFile(const std::string& fullPath) { files_.insert(fullPath); }

  void ingest(std::string_view chunk);

  /// Moves time on. Sweeps and redraws happen when they are due.
  void advance(Seconds distance);

  /// Sets the clock alone, forward or back.
  void jump(Seconds distance);

  const ReferenceMonitor& monitor() const { return monitor_; }
  std::vector<std::string> takeLog() { return log_.take(); }

  /// How many changes were notified.
  int changes() const { return changes_; }

  std::size_t stalledCount() const;
  std::optional<double> longestStall() const;
  std::optional<double> progress() const;
  OverallState overall() const;

private:
  bool isStalled(const ActiveItem& item) const {
    return clock_.now() - item.lastUpdate > stalledAfter_;
  }

  const Seconds stalledAfter_;
  const Seconds sweepInterval_;
  TestClock clock_;
  TestSystemLog log_;
  ReferenceMonitor monitor_{clock_, log_, "/Users/ada"};
  std::set<std::string> files_;
  std::optional<Date> nextSweep_;
  std::multiset<Date> redraws_;
  int changes_ = 0;
};

/// In what a monitor that reads the per-item feed alone differs from the reference; empty when the
/// two agree.
std::string difference(const SyncMonitor& monitor, const TimedReference& reference);

} // namespace driftmark::test
