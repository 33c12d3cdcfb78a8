#pragma once

#include "scenario/Action.h"

#include <utility>
#include <vector>

namespace icloud {

/// The jobs that only the status report shows, in the order they came.
class StatusJobs {
public:
  /// A folder's jobs of a direction are replaced by these.
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

} // namespace icloud
