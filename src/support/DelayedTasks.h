#pragma once

#include "ports/MainQueue.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace driftmark {

/// The delayed tasks and repeating timers of a main queue, in the order of their deadlines, behind
/// one timer of the platform. A deadline is the due time plus the tolerance; where deadlines are
/// equal, the order of adding counts. A due task joins the waiting tasks of the queue. A repetition
/// whose task is late skips the turns that it missed. Tasks with the same delay are due in the
/// order of adding, so that a task costs the same however many of a few delays wait. The thread of
/// the queue only.
class DelayedTasks {
public:
  using Task = MainQueue::Task;
  using Duration = std::chrono::nanoseconds;

  /// A moment of the clock that the platform's timer runs on, since some moment in the past. This
  /// clock never goes back.
  using Time = std::chrono::nanoseconds;

  /// The timer of the platform, and its clock.
  class Alarm {
  public:
    virtual ~Alarm() = default;

    virtual Time now() const = 0;

    /// Has `fire` called soon after `due`, and up to `tolerance` later than that. An earlier
    /// request is replaced. A call before `due` is harmless.
    virtual void arm(Time due, Duration tolerance) = 0;

    /// Withdraws the request.
    virtual void disarm() = 0;
  };

  /// The queue and the alarm outlive this object.
  DelayedTasks(MainQueue& queue, Alarm& alarm) : queue_(queue), alarm_(alarm) {}
  DelayedTasks(const DelayedTasks&) = delete;
  DelayedTasks& operator=(const DelayedTasks&) = delete;

  ~DelayedTasks() { clear(); }

  /// As in `MainQueue`. A delay that is negative or no number is none.
  void after(Seconds delay, Task task);

  /// As in `MainQueue`. The interval is a millisecond at least.
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task);

  /// Hands the tasks that are due over to the queue, and arms the alarm for the next one.
  void fire();

  /// Drops all tasks. What they hold may use this object.
  void clear();

private:
  class Repetition;
  class RepeatingTimer;

  using Key = std::pair<Time, std::uint64_t>; ///< deadline, order of adding

  struct Entry {
    Key key;
    Time due;
    Task task;
  };

  /// The tasks with one delay, or the next turn of one repetition. The keys ascend.
  using Group = std::deque<Entry>;

  using GroupName = std::pair<Duration, const Repetition*>; ///< delay; null but for a repetition

  using Groups = std::map<GroupName, Group>;

  void add(const GroupName& name, Time due, Duration tolerance, Task task);
  void remove(const GroupName& name);
  Task takeFirst();
  void arm();

  MainQueue& queue_;
  Alarm& alarm_;
  Groups groups_;                          ///< none is empty
  std::map<Key, Groups::iterator> firsts_; ///< each group, by the key of its first task
  std::uint64_t lastOrder_ = 0;
};

} // namespace driftmark
