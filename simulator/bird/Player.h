#pragma once

#include "bird/ClientOperation.h"
#include "bird/Cloud.h"
#include "bird/Host.h"
#include "bird/Progress.h"
#include "scenario/Scenario.h"
#include "scenario/Timeline.h"

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// Plays a scenario on a cloud: the stage at once, the story on its own clock. The clock goes on
/// while no player plays: another one that is given the progress goes on from there.
class Player {
public:
  using Clock = Progress::Clock;

  Player(const Scenario& scenario, Cloud& cloud, Host& host);

  /// Makes what is there before the story begins. Throws ScenarioError.
  void setStage();

  /// Goes on after `setStage`, in place of a player that came so far. What had happened happens
  /// again, untold, and so do the acts of clients; a transfer that had stalled moves again from now
  /// on.
  void resume(const Progress& progress, std::deque<ClientOperation> acts, Clock::time_point now);

  void begin(Clock::time_point now);
  bool hasBegun() const { return progress_.origin.has_value(); }

  /// Does everything that is due. A step that cannot be done is told as trouble.
  void advance(Clock::time_point now);

  /// Does what a client asks for with an item. A download moves with the story's clock, however
  /// the story ends. Returns what a later player has to know of it; nothing when there was nothing
  /// to do. Throws Refusal or std::system_error.
  std::optional<ClientOperation> obey(ClientOperation::Kind kind, ItemId id, Clock::time_point now);

  /// An act of now, for a later player.
  ClientOperation act(ClientOperation::Kind kind, ItemId id, Clock::time_point now) const;

  /// When the next thing is due; nothing while the clock stands still or after the end.
  std::optional<Clock::time_point> nextDue() const;

  /// What another player needs to go on.
  const Progress& progress() const { return progress_; }

  /// How far the story is.
  Milliseconds elapsed(Clock::time_point now) const;

private:
  void perform(const TimelineEvent& event);
  void recallUntil(std::size_t next);
  void recallOperations();
  bool carryOut(const ClientOperation& act);
  void beginDownload(ItemId id, Milliseconds at);
  void endStalls(Milliseconds at);
  void tell(const char* word, const std::string& text);
  void fail(const TimelineEvent& event, const std::string& problem);
  const Transfer& transferOf(std::size_t step) const;
  const Transfer* running(std::size_t step) const;
  ItemId itemOf(const std::string& path) const;
  void stop(ItemId id);

  void happen(const RunStep& event);
  void happen(const TransferTick& event);
  void happen(const TransferPause& event);
  void happen(const TransferEnd& event);
  void happen(const GlobalTick& event);

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
  void run(const KillDaemon& action);
  void run(const AwaitMonitors& action);
  void run(const Print& action) { host_.print(action.feed, action.bytes); }
  void run(const EndStory& action);

  const Scenario& scenario_;
  Cloud& cloud_;
  Host& host_;
  std::vector<TimelineEvent> events_;
  std::vector<Transfer> downloads_;  ///< of clients; their steps come after those of the story
  std::deque<ClientOperation> acts_; ///< that are still to be recalled
  Progress progress_;
  bool recalling_ = false; ///< what happens had happened before
  std::size_t step_ = 0;   ///< the line of the story that is run now
  std::map<ItemId, std::size_t> transfers_;
};

} // namespace icloud
