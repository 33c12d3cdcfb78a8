#pragma once

#include "monitor/GlobalTransfers.h"
#include "monitor/ItemLine.h"
#include "monitor/KnownItems.h"
#include "monitor/LineBuffer.h"
#include "monitor/StatusReport.h"
#include "monitor/Transfers.h"
#include "monitor/model/Activity.h"
#include "monitor/model/Items.h"
#include "monitor/model/OverallState.h"
#include "ports/ChildProcesses.h"
#include "ports/Clock.h"
#include "ports/MainQueue.h"
#include "support/Paths.h"
#include "support/Strings.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace driftmark {

class BackgroundQueue;
class Environment;
class FileSystem;
class SystemLog;
class SystemText;

/// The model of iCloud Drive activity: runs `brctl`, reads its output, and answers what the
/// interface shows. One instance lives as long as the application, held by a shared pointer. Main
/// thread only; no locks.
class SyncMonitor : public std::enable_shared_from_this<SyncMonitor> {
  struct Private {}; ///< only `make` can pass one

public:
  using Issues = std::unordered_map<std::string, std::string, ItemPathHash, std::equal_to<>>;

  /// The part of the platform that a monitor needs.
  struct Ports {
    Clock& clock;
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    ChildProcesses& childProcesses;
    SystemLog& systemLog;
    FileSystem& fileSystem;
    Environment& environment;
    SystemText& text;
  };

  // The constants of the monitor's rules, all of them.
  static constexpr Seconds holdDuration{3.0};    ///< a finished direction stays on the icon
  static constexpr Seconds holdRedrawDelay{3.1}; ///< from a completion to the redraw after its hold
  static constexpr Seconds globalWindow{60.0};   ///< a global transfer counts after its last report
  static constexpr Seconds globalExpiryDelay{60.5};  ///< from a global report to the expiry check
  static constexpr Seconds statusPollInterval{20.0}; ///< from one poll's answer to the next poll
  static constexpr Seconds restartDelay{10.0};       ///< from a monitor's exit to its relaunch
  static constexpr Seconds defaultStalledAfter{300.0};
  static constexpr Seconds minSweepInterval{5.0};
  static constexpr Seconds maxSweepInterval{30.0};
  static constexpr Seconds maxSweepSlice{0.01}; ///< of one turn of the main queue
  static constexpr std::size_t maxRecent = 10;

  // SyncMonitor.cpp

  /// Makes a monitor that runs nothing yet. The ports outlive it. The stall threshold is read from
  /// the environment here, once.
  static std::shared_ptr<SyncMonitor> make(const Ports& ports);
  SyncMonitor(Private pass, const Ports& ports);
  SyncMonitor(const SyncMonitor&) = delete;
  SyncMonitor& operator=(const SyncMonitor&) = delete;
  ~SyncMonitor();

  /// The local iCloud Drive folder.
  static std::string cloudDocsPath(const FileSystem& fileSystem);

  /// `cloudDocsPath` with `path` appended as it is.
  static std::string containerPath(const FileSystem& fileSystem, std::string_view path);

  /// Called after any change that the interface may show, on the main thread. May be empty.
  std::function<void()> onChange;

  // MonitorProcesses.cpp

  /// Launches both monitors, asks for the quota and begins the status polls. Call it once.
  void start();

  /// Asks every child process to end. A monitor that exits from now on is not restarted.
  void stop();

  // ItemChanges.cpp

  /// The transfers in flight.
  const Transfers& active() const { return active_; }

  /// The current sync issues: path to the state text that named the issue.
  const Issues& issues() const { return issues_; }

  /// Counts over the output read so far, for diagnosis.
  const MonitorTally& tally() const { return tally_; }

  // FinishedTransfers.cpp

  /// The last finished events: newest first, one per path, at most `maxRecent`.
  const std::vector<CompletedItem>& recent() const { return recent_; }

  // StateAndProgress.cpp

  /// The state that the icon shows at this moment.
  OverallState overall() const;

  /// Whether something is in flight or its end is shown for a time; never after `stop`.
  bool isBusy() const;

  /// Mean percentage of the transfers that have one and are not stalled.
  std::optional<double> progress() const;

  // StallsAndRestart.cpp

  /// Whether the transfer's last update is older than the stall threshold.
  bool isStalled(const ActiveItem& item) const;

  /// How many transfers are stalled.
  std::size_t stalledCount() const;

  /// Seconds since the last update of the transfer that has stalled longest.
  std::optional<double> longestStall() const;

  /// Whether a transfer has stalled for more than twice the threshold.
  bool shouldOfferRestart() const;

  /// Ends the sync daemon and restarts the stall clock of every transfer. The system relaunches the
  /// daemon, which then resumes pending transfers. Blocks until `killall` has ended.
  void restartSyncDaemon();

  // GlobalMonitor.cpp

  /// The transfers that the global feed reported within `globalWindow`; absent when there are none.
  std::optional<GlobalActivity> globalActivity() const;

  // StatusPoller.cpp

  /// What the last `brctl status` confirmed; absent when it found nothing.
  const std::optional<StatusActivity>& statusActivity() const { return statusActivity_; }

  // QuotaRefresh.cpp

  /// Asks `brctl quota` for the remaining storage, unless an answer is already pending.
  void refreshQuota();

  /// Remaining iCloud storage in bytes, by the last good answer.
  std::optional<std::int64_t> quotaRemaining() const { return quotaRemaining_; }

private:
  // SyncMonitor.cpp
  void log(std::initializer_list<std::string_view> parts) const;
  void notify() const;

  const Ports ports_;
  const std::string mobileDocs_; ///< the folder that the printed paths lie in
  const Seconds stalledAfter_;

  // MonitorProcesses.cpp
  /// One of the two long-running monitors.
  struct MonitorChild {
    std::string title; ///< as the log names it
    std::vector<std::string> arguments;
    bool (SyncMonitor::*parse)(std::string_view line); ///< true for a change
    std::shared_ptr<ChildProcess> process;
    std::unique_ptr<ReadHandle> masterHandle;
    LineBuffer lineBuffer;
  };
  void launchMonitor(MonitorChild& child);
  std::optional<TerminalChild> spawn(const std::vector<std::string>& arguments,
                                     ChildProcesses::DataHandler onData,
                                     ChildProcesses::ExitHandler onExit);
  void ingest(std::string_view chunk, MonitorChild& child);
  void monitorDied(MonitorChild& child);

  MonitorChild itemMonitor_{
      "brctl monitor", {"monitor", "-i", "com.apple.CloudDocs"}, &SyncMonitor::parse, {}, {}, {}};
  MonitorChild globalMonitor_{
      "brctl monitor -g", {"monitor", "-g", "-i"}, &SyncMonitor::parseGlobal, {}, {}, {}};
  /// Shared with the background thread that reads a report.
  const std::shared_ptr<std::atomic<bool>> stopping_ = std::make_shared<std::atomic<bool>>(false);

  // ItemChanges.cpp
  /// The last known local state of a path.
  enum class KnownState : KnownItems::Value { current = 1, evicted = 2 };
  /// A line that was read and is to be applied.
  struct ReadLine {
    ItemLine item;
    Fingerprint fingerprint; ///< of the item's path
    std::string storage;     ///< of the text of a coloured line
  };
  bool parse(std::string_view line);
  bool applyReadLines();
  bool apply(const ReadLine& line, Date now);
  bool applyProgress(const ReadLine& line, Date now);
  bool applyUnrecognized(const ReadLine& line);
  bool applySettled(const ReadLine& line);
  ItemPath pathOf(const ReadLine& line) const;
  bool clearIssue(const ItemPath& path);

  const ItemPathHash pathHash_{{}, mobileDocs_.size()};
  Transfers active_{stalledAfter_, pathHash_};
  Issues issues_{0, pathHash_};
  KnownItems loggedUnknownStates_; ///< by their texts
  KnownItems knownState_;          ///< by the printed path, since all of them share `mobileDocs_`
  std::array<ReadLine, 16> readLines_;
  std::size_t readCount_ = 0;
  MonitorTally tally_;

  // FinishedTransfers.cpp
  void complete(const ActiveItem& item);
  void addRecent(std::string_view path, RecentKind kind);

  std::vector<CompletedItem> recent_;
  std::optional<Direction> holdDirection_; ///< of the transfer that finished last
  Date holdUntil_ = distantPast;

  // VanishedTransfers.cpp
  void startSweepTimer();
  void sweep();
  void sweepSlice();

  std::unique_ptr<Timer> sweepTimer_; ///< runs while there are transfers in flight
  bool sweeping_ = false;             ///< from the first slice of a sweep to its last

  // StallsAndRestart.cpp
  static Seconds stallThreshold(const Environment& environment);

  // GlobalMonitor.cpp
  bool parseGlobal(std::string_view line);
  void scheduleGlobalExpiry();

  GlobalTransfers globalEvents_{globalWindow};
  bool globalExpiryPending_ = false;

  // StatusPoller.cpp
  void startPolling();
  void pollStatus();
  void statusArrived(std::optional<StatusActivity> result);

  std::optional<StatusActivity> statusActivity_;
  bool statusPolling_ = false; ///< from the start of a chain of polls to its end
  std::shared_ptr<ToolRun> statusProcess_;

  // QuotaRefresh.cpp
  void quotaArrived(std::optional<std::int64_t> result);

  std::optional<std::int64_t> quotaRemaining_;
  bool quotaRefreshing_ = false;
  std::shared_ptr<ToolRun> quotaProcess_;
};

} // namespace driftmark
