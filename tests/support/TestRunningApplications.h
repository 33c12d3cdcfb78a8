#pragma once

#include "ports/Clock.h"
#include "ports/RunningApplications.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// Processes that the test controls. Signals are recorded as text such as "terminate 17".
class TestRunningApplications final : public RunningApplications {
public:
  explicit TestRunningApplications(const Clock& clock) : clock_(clock) {}

  std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const override {
    std::vector<std::int32_t> found;
    for (const auto& [bundle, process] : copies_)
      if (bundle == identifier)
        found.push_back(process);
    return found;
  }

  std::optional<StartTime> startTime(std::int32_t process) const override {
    const auto found = startTimes_.find(process);
    return found != startTimes_.end() ? std::optional(found->second) : std::nullopt;
  }

  void sendTerminate(std::int32_t process) override {
    signals_.push_back("terminate " + std::to_string(process));
    if (const auto copy = processes_.find(process);
        !losesSignals_ && copy != processes_.end() && copy->second.endsAfter)
      copy->second.endsAt = later(clock_.now(), *copy->second.endsAfter);
  }

  void sendKill(std::int32_t process) override {
    signals_.push_back("kill " + std::to_string(process));
  }

  bool isRunning(std::int32_t process) const override {
    const auto copy = processes_.find(process);
    return copy != processes_.end() &&
           !(copy->second.endsAt && *copy->second.endsAt <= clock_.now());
  }

  /// Adds a process of the application. It ends `endsAfter` a request to end; without a value it
  /// ignores requests.
  void add(const std::string& identifier, std::int32_t process, std::optional<Seconds> endsAfter) {
    copies_.emplace_back(identifier, process);
    processes_[process] = {endsAfter, std::nullopt};
  }

  /// Sets when a process started. Until then that is unknown.
  void setStartTime(std::int32_t process, StartTime time) { startTimes_[process] = time; }

  /// Ends a process.
  void remove(std::int32_t process) {
    std::erase_if(copies_, [process](const auto& copy) { return copy.second == process; });
    processes_.erase(process);
    startTimes_.erase(process);
  }

  /// Makes no signal reach a process.
  void loseSignals() { losesSignals_ = true; }

  /// Returns all signals so far and clears the list.
  std::vector<std::string> take() { return std::exchange(signals_, {}); }

private:
  struct Process {
    std::optional<Seconds> endsAfter;
    std::optional<Date> endsAt;
  };

  const Clock& clock_;
  std::vector<std::pair<std::string, std::int32_t>> copies_;
  std::map<std::int32_t, Process> processes_;
  std::map<std::int32_t, StartTime> startTimes_;
  std::vector<std::string> signals_;
  bool losesSignals_ = false;
};

} // namespace driftmark::test
