#pragma once

#include "bird/Drive.h"
#include "scenario/Action.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace icloud {

/// The transfers that only the global monitor shows, by their numbers.
class GlobalTransfers {
public:
  struct Progress {
    std::uint64_t completed = 0;
    std::uint64_t total = 0;
  };
  using Changed = std::function<void(std::size_t number, Progress)>;

  explicit GlobalTransfers(Changed changed) : changed_(std::move(changed)) {}

  /// Publishes the progress of a transfer, and forgets the transfer once it is complete.
  void update(std::size_t number, Progress progress) {
    running_[number] = progress;
    changed_(number, progress);
    if (progress.completed >= progress.total)
      running_.erase(number);
  }

  const std::map<std::size_t, Progress>& running() const { return running_; }

private:
  Changed changed_;
  std::map<std::size_t, Progress> running_;
};

/// The jobs that only the status report shows, oldest first.
class StatusJobs {
public:
  /// Replaces the jobs of the same folder and direction.
  void set(AddJobs jobs) {
    std::erase_if(jobs_, [&](const AddJobs& other) {
      return other.folder == jobs.folder && other.direction == jobs.direction;
    });
    if (jobs.count > 0)
      jobs_.push_back(std::move(jobs));
  }

  void clear() { jobs_.clear(); }
  const std::vector<AddJobs>& all() const { return jobs_; }

private:
  std::vector<AddJobs> jobs_;
};

/// Everything that the daemon knows and its clients ask for.
struct Cloud {
  Drive drive;
  GlobalTransfers globalTransfers;
  StatusJobs jobs;
  std::int64_t quota = 0;
};

// StatusReport.cpp

/// The records that answer a status request: the folders that have jobs, and their jobs.
std::string statusReport(const Cloud& cloud);

} // namespace icloud
