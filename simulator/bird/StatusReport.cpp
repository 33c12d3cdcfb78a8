// How the status report lists the jobs of the drive by folder.
#include "bird/Cloud.h"
#include "common/Record.h"

#include <map>
#include <vector>

namespace icloud {
namespace {

struct Job {
  const char* kind;
  std::string name;
};

/// Jobs by folder, the folders in order of appearance.
class JobList {
public:
  void add(const std::string& folder, Job job) {
    const auto [place, isNew] = index_.try_emplace(folder, folders_.size());
    if (isNew)
      folders_.push_back({folder, {}});
    folders_[place->second].second.push_back(std::move(job));
  }

  const auto& folders() const { return folders_; }

private:
  std::map<std::string, std::size_t> index_;
  std::vector<std::pair<std::string, std::vector<Job>>> folders_;
};

const char* kindOf(ItemState state) {
  if (state == ItemState::uploading)
    return "upload";
  if (state == ItemState::downloading)
    return "download";
  return state == ItemState::other ? "waiting-upload" : nullptr;
}

void addItem(JobList& jobs, const Item& item) {
  const char* kind = kindOf(item.state);
  if (kind == nullptr)
    return;
  const auto slash = item.path.rfind('/');
  if (slash == std::string::npos)
    jobs.add("", {kind, item.path});
  else
    jobs.add(item.path.substr(0, slash), {kind, item.path.substr(slash + 1)});
}

void addJobs(JobList& jobs, const AddJobs& added) {
  const char* kind = added.direction == Direction::upload ? "upload" : "download";
  for (unsigned number = 1; number <= added.count; ++number)
    jobs.add(added.folder, {kind, "item " + std::to_string(number)});
}

} // namespace

std::string statusReport(const Cloud& cloud) {
  JobList jobs;
  for (const AddJobs& added : cloud.jobs.all())
    addJobs(jobs, added);
  for (ItemId id = 0; id < cloud.drive.count(); ++id)
    addItem(jobs, cloud.drive.item(id));

  std::string out;
  appendRecord(out, {"items", std::to_string(cloud.drive.count())});
  for (const auto& [folder, list] : jobs.folders()) {
    const auto path = folder.empty() ? cloud.drive.folder() : cloud.drive.folder() / folder;
    appendRecord(out, {"folder", path.string()});
    for (const Job& job : list)
      appendRecord(out, {"job", job.kind, job.name});
  }
  appendRecord(out, {"done"});
  return out;
}

} // namespace icloud
