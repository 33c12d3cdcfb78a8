#pragma once

#include "platform/FileSystem.h"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>

namespace driftmark::test {

/// A file system of paths, compared byte by byte.
class TestFileSystem final : public FileSystem {
public:
  bool fileExists(const std::string& path) const override {
    const std::lock_guard lock(mutex_);
    ++questions_;
    const auto link = links_.find(path);
    return everythingExists_ || paths_.contains(link == links_.end() ? path : link->second);
  }

  std::string homeDirectory() const override {
    const std::lock_guard lock(mutex_);
    return home_;
  }

  void add(const std::string& path) {
    const std::lock_guard lock(mutex_);
    paths_.insert(path);
  }

  void addLink(const std::string& path, const std::string& target) {
    const std::lock_guard lock(mutex_);
    links_[path] = target;
  }

  void remove(const std::string& path) {
    const std::lock_guard lock(mutex_);
    paths_.erase(path);
    links_.erase(path);
  }

  /// Answers yes for every path from now on.
  void pretendEverythingExists() {
    const std::lock_guard lock(mutex_);
    everythingExists_ = true;
  }

  void setHome(std::string home) {
    const std::lock_guard lock(mutex_);
    home_ = std::move(home);
  }

  /// How often `fileExists` was asked.
  int questions() const {
    const std::lock_guard lock(mutex_);
    return questions_;
  }

private:
  mutable std::mutex mutex_;
  mutable int questions_ = 0;
  bool everythingExists_ = false;
  std::set<std::string> paths_;
  std::map<std::string, std::string> links_;
  std::string home_ = "/Users/ada";
};

} // namespace driftmark::test
