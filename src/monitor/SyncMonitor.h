#pragma once

#include "monitor/LineBuffer.h"
#include "monitor/PathHash.h"
#include "monitor/PathTree.h"
#include "monitor/model/ActiveItem.h"
#include "monitor/model/CompletedItem.h"
#include "monitor/model/Direction.h"
#include "monitor/model/GlobalActivity.h"
#include "monitor/model/MonitorTally.h"
#include "monitor/model/OverallState.h"
#include "monitor/model/RecentKind.h"
#include "monitor/model/StatusActivity.h"
#include "ports/ChildProcesses.h"
#include "ports/Clock.h"
#include "ports/MainQueue.h"
#include "ports/Platform.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace driftmark {

struct ItemLine;

/// The model of iCloud Drive activity: runs `brctl`, reads what it prints, and answers what the
/// interface shows. One instance lives as long as the application, held by a shared pointer; all of
/// it runs on the main thread.
class SyncMonitor : public std::enable_shared_from_this<SyncMonitor> {
  struct Private {}; ///< only `make` can pass one

public:
  using ActiveItems = std::unordered_map<std::string, ActiveItem, PathHash, std::equal_to<>>;
  using Issues = std::unordered_map<std::string, std::string, PathHash, std::equal_to<>>;

  /// What a monitor needs of the platform.
  struct Ports {
    Clock& clock;
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    ChildProcesses& childProcesses;
    SystemLog& systemLog;
    FileSystem& fileSystem;
    Environment& environment;
    Text& text;
  };

  /// A monitor at rest. The ports outlive it. The stall threshold is taken from the environment
  /// here and never again.
  static std::shared_ptr<SyncMonitor> make(const Platform& platform);
  static std::shared_ptr<SyncMonitor> make(const Ports& ports);
  SyncMonitor(Private pass, const Ports& ports);
  SyncMonitor(const SyncMonitor&) = delete;
  SyncMonitor& operator=(const SyncMonitor&) = delete;
  ~SyncMonitor();

  /// Launches both monitors, asks for the quota and begins the status polls. Call it once.
  void start();

  /// Ends every child process; what exits from now on is not restarted.
  void stop();

  /// Asks `brctl quota` for the remaining storage, unless an answer is already on its way.
  void refreshQuota();

  /// Ends the sync daemon, which the system brings back and which then resumes pending transfers,
  /// and gives every transfer a fresh start of its stall clock. Waits for `killall`.
  void restartSyncDaemon();

  /// Called after any change that the interface may show, on the main thread. May be empty.
  std::function<void()> onChange;

  /// The transfers in flight, by path.
  const ActiveItems& active() const { return active_; }

  /// The last finished events: newest first, one per path, at most `maxRecent`.
  const std::vector<CompletedItem>& recent() const { return recent_; }

  /// The current sync issues: path to the state text that named the issue.
  const Issues& issues() const { return issues_; }

  /// What the last `brctl status` confirmed; absent when it found nothing.
  const std::optional<StatusActivity>& statusActivity() const { return statusActivity_; }

  /// Remaining iCloud storage in bytes, by the last good answer.
  std::optional<std::int64_t> quotaRemaining() const { return quotaRemaining_; }

  /// What has been read so far, for diagnosis.
  const MonitorTally& tally() const { return tally_; }

  /// The state that the icon shows, computed against the clock.
  OverallState overall() const;

  /// Mean percentage of the transfers that have one and are not stalled.
  std::optional<double> progress() const;

  /// Whether a transfer has had no news for longer than the stall threshold.
  bool isStalled(const ActiveItem& item) const;

  /// Seconds since the last news of the transfer that has stalled longest.
  std::optional<double> longestStall() const;

  /// Whether some transfer has stalled for more than twice the threshold.
  bool shouldOfferRestart() const;

  /// The transfers heard of on the global feed within the last `globalWindow`; absent when none.
  std::optional<GlobalActivity> globalActivity() const;

  /// The local iCloud Drive folder.
  static std::string cloudDocsPath(const FileSystem& fileSystem);

  /// `cloudDocsPath` with `path` appended as it is.
  static std::string containerPath(const FileSystem& fileSystem, std::string_view path);

  /// Reads a whole `brctl status` report. Absent when it names no active job.
  static std::optional<StatusActivity> parseStatus(std::string_view text);

  static constexpr Seconds holdDuration{3.0};  ///< a finished direction stays on the icon
  static constexpr Seconds globalWindow{60.0}; ///< a global transfer counts after its last news
  static constexpr Seconds statusPollInterval{20.0}; ///< from one poll's answer to the next poll
  static constexpr Seconds restartDelay{10.0};       ///< from a monitor's exit to its relaunch
  static constexpr std::size_t maxRecent = 10;

private:
  /// The last known local state of a path.
  enum class KnownState : PathTree::Value { current = 1, evicted = 2 };

  /// A transfer heard of on the global feed, known by its size alone.
  struct GlobalEvent {
    std::int64_t total; ///< bytes
    Date date;          ///< of its last report
  };

  /// What a line says of an item whose folder is known.
  struct SettledName {
    std::string_view name;
    bool evicted;
  };

  /// One of the two long-running monitors.
  struct MonitorChild {
    std::string title; ///< as the log names it
    std::vector<std::string> arguments;
    bool (SyncMonitor::*parseLine)(std::string_view line);
    std::shared_ptr<ChildProcess> process;
    std::unique_ptr<ReadHandle> masterHandle;
    LineBuffer lineBuffer;
  };

  // SyncMonitor.cpp
  void log(std::initializer_list<std::string_view> parts) const;
  void notify() const;

  // ProcessRunner.cpp
  void launchMonitor(MonitorChild& child);
  std::optional<TerminalChild> spawn(const std::vector<std::string>& arguments,
                                     ChildProcesses::DataHandler onData,
                                     ChildProcesses::ExitHandler onExit);
  void ingest(std::string_view chunk, MonitorChild& child);
  void monitorDied(MonitorChild& child);

  // LineParser.cpp
  bool parse(std::string_view line);
  std::optional<SettledName> nextInFolder(std::string_view line) const;
  bool parseItem(const ItemLine& item);
  bool parseProgress(std::string_view path, std::string_view remainder, Direction direction);
  bool parseUnrecognized(std::string_view path, std::string_view state);
  bool parseSettled(std::string_view path, std::string_view lastName, bool evicted);
  void enterFolder(std::string_view folder);
  std::string_view fullPath(std::string_view path);
  bool clearIssue(const HashedPath& fullPath);
  void markInvolved(std::string_view path);

  // TransferTracking.cpp
  void complete(const ActiveItem& item);
  void addRecent(std::string_view path, RecentKind kind);
  void startSweepTimer();
  void sweep();

  // GlobalMonitor.cpp
  bool parseGlobal(std::string_view line);
  void pruneGlobalEvents();
  void scheduleGlobalExpiry();

  // StatusPoller.cpp
  void startPolling();
  void pollStatus();
  void statusArrived(std::optional<StatusActivity> result);

  // QuotaRefresh.cpp
  void quotaArrived(std::optional<std::int64_t> result);

  const Ports platform_;
  const std::string mobileDocs_; ///< the folder that the printed paths lie in
  const double stalledAfter_;    ///< seconds

  ActiveItems active_;
  std::vector<CompletedItem> recent_;
  std::optional<Direction> holdDirection_;
  Date holdUntil_ = distantPast;
  std::unique_ptr<Timer> sweepTimer_;
  Issues issues_;
  std::unordered_set<std::string, PathHash, std::equal_to<>> loggedUnknownStates_;
  PathTree knownState_; ///< keyed by the printed path, since all of them share `mobileDocs_`

  bool stopping_ = false;
  MonitorChild itemMonitor_{
      "brctl monitor", {"monitor", "-i", "com.apple.CloudDocs"}, &SyncMonitor::parse, {}, {}, {}};
  MonitorChild globalMonitor_{
      "brctl monitor -g", {"monitor", "-g", "-i"}, &SyncMonitor::parseGlobal, {}, {}, {}};

  std::vector<GlobalEvent> globalEvents_;
  bool globalExpiryPending_ = false;

  std::optional<StatusActivity> statusActivity_;
  bool statusPolling_ = false; ///< from the start of a chain of polls to its end
  std::shared_ptr<ToolRun> statusProcess_;

  std::optional<std::int64_t> quotaRemaining_;
  bool quotaRefreshing_ = false;
  std::shared_ptr<ToolRun> quotaProcess_;

  MonitorTally tally_;
  std::string fullPath_;    ///< `mobileDocs_` and the path at hand
  std::string withoutAnsi_; ///< storage of a cleaned line

  /// How a line begins that is about another item of the folder of the last settled one, and that
  /// folder in `knownState_`.
  std::string folderPrefix_;
  PathTree::FolderIndex folder_ = 0;
};

} // namespace driftmark
