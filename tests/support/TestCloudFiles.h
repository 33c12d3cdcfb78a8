#pragma once

#include "ports/CloudFiles.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// Cloud files in memory: a walk visits the items that the test listed for a folder, in that order.
class TestCloudFiles final : public CloudFiles {
public:
  /// A downloaded file of the cloud that takes `bytes`.
  static WalkEntry downloaded(std::string path, std::int64_t bytes) {
    return {.path = std::move(path),
            .values = ResourceValues{.isRegularFile = true,
                                     .isUbiquitousItem = true,
                                     .downloadingStatus = DownloadingStatus::current,
                                     .totalFileAllocatedSize = bytes}};
  }

  /// Sets the items that a walk of `folder` visits.
  void list(const std::string& folder, std::vector<WalkEntry> entries) {
    const std::scoped_lock lock(mutex_);
    entries_[folder] = std::move(entries);
  }

  /// Makes every eviction of the file at `path` fail with this description.
  void failEviction(const std::string& path, std::string description) {
    const std::scoped_lock lock(mutex_);
    failures_[path] = std::move(description);
  }

  /// Makes every eviction fail with this description.
  void failEvictions(std::string description) {
    const std::scoped_lock lock(mutex_);
    generalFailure_ = PlatformError{std::move(description)};
  }

  /// Makes walks visit what `change` makes of the items; without a value, no item.
  void changeWalks(std::function<std::optional<WalkEntry>(WalkEntry)> change) {
    const std::scoped_lock lock(mutex_);
    change_ = std::move(change);
  }

  /// Returns the files whose eviction was requested, in order, failed ones included, and clears the
  /// list.
  std::vector<std::string> takeEvictions() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(evictions_, {});
  }

  /// Returns the walked folders and clears the list.
  std::vector<std::string> takeWalks() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(walks_, {});
  }

  void walk(const std::string& folder, const EntryHandler& visit) const override {
    std::vector<WalkEntry> entries;
    {
      const std::scoped_lock lock(mutex_);
      walks_.push_back(folder);
      if (const auto found = entries_.find(folder); found != entries_.end())
        entries = found->second;
    }
    for (const WalkEntry& entry : entries)
      if (const auto visited = change_(entry))
        visit(*visited);
  }

  std::optional<PlatformError> evict(const std::string& path) override {
    const std::scoped_lock lock(mutex_);
    evictions_.push_back(path);
    const auto failure = failures_.find(path);
    return failure == failures_.end() ? generalFailure_
                                      : std::optional(PlatformError{failure->second});
  }

private:
  mutable std::mutex mutex_;
  std::map<std::string, std::vector<WalkEntry>> entries_;
  std::map<std::string, std::string> failures_;
  std::optional<PlatformError> generalFailure_;
  std::function<std::optional<WalkEntry>(WalkEntry)> change_ = [](WalkEntry entry) {
    return entry;
  };
  std::vector<std::string> evictions_;
  mutable std::vector<std::string> walks_;
};

} // namespace driftmark::test
