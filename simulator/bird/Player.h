#pragma once

#include "bird/Cloud.h"
#include "bird/Journal.h"
#include "scenario/Scenario.h"
#include "scenario/Timeline.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// What a scenario needs from the daemon that plays it.
class Host {
public:
  virtual ~Host() = default;

  /// Whether both feeds have a monitor at this moment.
  virtual bool isWatched() const = 0;
  virtual void killMonitors(std::optional<Feed> only) = 0;

  /// Kills the daemon as soon as its progress is in the journal.
  virtual void killDaemon() = 0;
  virtual void print(Feed feed, const std::string& bytes) = 0;

  /// Sends the monitors what changed.
  virtual void sendChanges() = 0;

  /// Prints a line about the scenario. `word` is the kind of line that `text` is.
  virtual void report(const char* word, const std::string& text) = 0;
};

/// Plays a scenario on a cloud: the initial state at once, the steps on the scenario's own clock.
/// The clock also runs while no player exists: a later player that receives the progress continues
/// from there.
class Player {
public:
  using Clock = Progress::Clock;

  Player(const Scenario& scenario, Cloud& cloud, Host& host);

  /// Creates the initial state. Throws ScenarioError.
  void createInitialState();

  /// Continues in place of an earlier player. The states of files come from the disk. A download
  /// under way continues, an upload starts over; both finish without a stall.
  void resume(const Progress& progress, Clock::time_point now);

  void begin(Clock::time_point now);
  bool hasBegun() const { return progress_.origin.has_value(); }

  /// Applies everything that is due. Reports a step that fails as trouble.
  void advance(Clock::time_point now);

  /// Evicts a file for a client; does nothing when its contents are not here. Throws Refusal or
  /// std::system_error.
  void evict(ItemId id);

  /// Starts a download for a client, unless there is nothing to do. It runs on the scenario's
  /// clock, even after the end of the scenario. Throws Refusal or std::system_error.
  void download(ItemId id, Clock::time_point now);

  /// When the next event is due; nothing while the clock is stopped or after the last event.
  std::optional<Clock::time_point> nextDue() const;

  /// What a later player needs to continue.
  const Progress& progress() const { return progress_; }

  /// The time on the scenario's clock.
  Milliseconds elapsed(Clock::time_point now) const;

private:
  void perform(TimelineEvent event);
  void fail(const TimelineEvent& event, const std::string& problem);
  void startTransfer(ItemId id, Transfer transfer, Milliseconds at);
  Transfer interruptedTransfer(const Item& item) const;
  const Transfer& transferOf(std::size_t number) const;
  const Transfer* running(std::size_t number) const;

  void apply(const RunStep& event);
  void apply(const TransferTick& event);
  void apply(const TransferPause& event);
  void apply(const TransferEnd& event);
  void apply(const GlobalTick& event);

  // PlayerSteps.cpp
  void run(const MakeFolder& action);
  void run(const MakeFiles& action);
  void run(const Transfer& action);
  void run(const GlobalTransfer& /*action*/) {}
  void run(const SetState& action);
  void run(const ClearState& action);
  void run(const Evict& action);
  void run(const CancelDownload& action);
  void run(const Vanish& action);
  void run(const Lock& action);
  void run(const AddJobs& action) { cloud_.jobs.set(action); }
  void run(const ClearJobs& /*action*/) { cloud_.jobs.clear(); }
  void run(const SetQuota& action) { cloud_.quota = action.bytes; }
  void run(const KillMonitors& action) { host_.killMonitors(action.only); }
  void run(const KillDaemon& /*action*/) { host_.killDaemon(); }
  void run(const AwaitMonitors& action);
  void run(const Print& action) { host_.print(action.feed, action.bytes); }
  void run(const EndScenario& action);
  void run(const RepeatSteps& action);
  void dropComingSteps();
  void restore(const Action& action);
  ItemId itemOf(const std::string& path) const;

  const Scenario& scenario_;
  Cloud& cloud_;
  Host& host_;
  std::vector<TimelineEvent> events_;
  std::size_t nextEvent_ = 0;
  /// Transfers that clients or a restart started; their numbers follow those of the steps.
  std::vector<Transfer> extraTransfers_;
  Progress progress_;
  std::size_t step_ = 0; ///< the step that runs now
  std::map<ItemId, std::size_t> transfers_;
};

} // namespace icloud
