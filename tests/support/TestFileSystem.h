#pragma once

#include "ports/FileSystem.h"

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace driftmark::test {

/// A file system of paths in memory, compared byte by byte. An item needs no folders above it, and
/// a link is only followed as a whole path. The operations that change something are recorded as
/// text such as "move /a to /b".
class TestFileSystem final : public FileSystem {
public:
  bool fileExists(const std::string& path) const override {
    const std::lock_guard lock(mutex_);
    ++questions_;
    return everythingExists_.value_or(resolves(path));
  }

  bool itemExists(const std::string& path) const override {
    const std::lock_guard lock(mutex_);
    return everythingExists_.value_or(items_.contains(path));
  }

  bool isLink(const std::string& path) const override {
    const std::lock_guard lock(mutex_);
    const auto item = items_.find(path);
    return item != items_.end() && !item->second.empty();
  }

  bool areSameItem(const std::string& one, const std::string& other) const override {
    const std::lock_guard lock(mutex_);
    return everythingExists_.value_or(true) && resolves(one) && resolves(other) &&
           targetOf(one) == targetOf(other);
  }

  std::string homeDirectory() const override {
    const std::lock_guard lock(mutex_);
    return home_;
  }

  std::variant<std::string, PlatformError> temporaryDirectory() const override {
    const std::lock_guard lock(mutex_);
    if (temporaryError_)
      return *temporaryError_;
    return "/private/tmp/ada/";
  }

  std::optional<PlatformError> createDirectory(const std::string& path) override {
    const std::lock_guard lock(mutex_);
    if (auto error = begin("create " + path))
      return error;
    items_.emplace(path, std::string());
    return std::nullopt;
  }

  std::optional<PlatformError> removeItem(const std::string& path) override {
    const std::lock_guard lock(mutex_);
    if (auto error = begin("remove " + path))
      return error;
    return take(path).empty() ? missing(path) : std::nullopt;
  }

  std::optional<PlatformError> moveItem(const std::string& from, const std::string& to) override {
    const std::lock_guard lock(mutex_);
    if (auto error = begin("move " + from + " to " + to))
      return error;
    if (items_.contains(to))
      return PlatformError{"\"" + to + "\" exists already"};
    auto moved = take(from);
    if (moved.empty())
      return missing(from);
    for (auto& [path, target] : moved)
      items_[to + path.substr(from.size())] = std::move(target);
    return std::nullopt;
  }

  std::variant<std::unique_ptr<MovedItem>, PlatformError>
  moveItemReversibly(const std::string& from, const std::string& to) override {
    if (auto error = moveItem(from, to))
      return *std::move(error);
    return std::make_unique<TestMovedItem>(*this, from, to);
  }

  std::optional<PlatformError> trashItem(const std::string& path) override {
    const std::lock_guard lock(mutex_);
    if (auto error = begin("trash " + path))
      return error;
    return take(path).empty() ? missing(path) : std::nullopt;
  }

  PlatformError unknownWriteError() const override { return {"The file could not be saved."}; }

  void add(const std::string& path) {
    const std::lock_guard lock(mutex_);
    items_[path] = "";
  }

  void addLink(const std::string& path, const std::string& target) {
    const std::lock_guard lock(mutex_);
    items_[path] = target;
  }

  void remove(const std::string& path) {
    const std::lock_guard lock(mutex_);
    items_.erase(path);
  }

  /// Makes the operation with this text fail with this description, or every operation that has
  /// this first word, such as "move".
  void fail(const std::string& operation, std::string description) {
    const std::lock_guard lock(mutex_);
    failures_[operation] = std::move(description);
  }

  /// Records another event among the operations.
  void note(std::string event) {
    const std::lock_guard lock(mutex_);
    operations_.push_back(std::move(event));
  }

  /// Makes the folder for temporary files unavailable.
  void failTemporaryDirectory(std::string description) {
    const std::lock_guard lock(mutex_);
    temporaryError_ = PlatformError{std::move(description)};
  }

  /// Makes every path exist.
  void pretendEverythingExists() {
    const std::lock_guard lock(mutex_);
    everythingExists_ = true;
  }

  /// Makes no path exist, as when that cannot be determined.
  void pretendNothingExists() {
    const std::lock_guard lock(mutex_);
    everythingExists_ = false;
  }

  void setHome(std::string home) {
    const std::lock_guard lock(mutex_);
    home_ = std::move(home);
  }

  /// The number of `fileExists` calls.
  int questions() const {
    const std::lock_guard lock(mutex_);
    return questions_;
  }

  /// Returns the attempted operations and clears the list.
  std::vector<std::string> takeOperations() {
    const std::lock_guard lock(mutex_);
    return std::exchange(operations_, {});
  }

private:
  /// Paths, each with the target of its link; "" for an item that is not a link.
  using Items = std::map<std::string, std::string>;

  /// Goes back by a move that is recorded as such.
  class TestMovedItem final : public MovedItem {
  public:
    TestMovedItem(TestFileSystem& fileSystem, std::string from, std::string to)
        : fileSystem_(fileSystem), from_(std::move(from)), to_(std::move(to)) {}

    std::optional<PlatformError> putBack() override { return fileSystem_.moveItem(to_, from_); }

  private:
    TestFileSystem& fileSystem_;
    const std::string from_;
    const std::string to_;
  };

  std::string targetOf(const std::string& path) const {
    const std::string& target = items_.at(path);
    return target.empty() ? path : target;
  }

  bool resolves(const std::string& path) const {
    const auto item = items_.find(path);
    return item != items_.end() && (item->second.empty() || items_.contains(item->second));
  }

  std::optional<PlatformError> begin(const std::string& operation) {
    operations_.push_back(operation);
    auto failure = failures_.find(operation);
    if (failure == failures_.end())
      failure = failures_.find(operation.substr(0, operation.find(' ')));
    return failure == failures_.end() ? std::nullopt
                                      : std::optional(PlatformError{failure->second});
  }

  /// Removes and returns an item with its contents.
  Items take(const std::string& path) {
    Items taken;
    for (auto item = items_.begin(); item != items_.end();) {
      const bool isInside = item->first == path || item->first.starts_with(path + "/");
      const auto current = item++;
      if (isInside)
        taken.insert(items_.extract(current));
    }
    return taken;
  }

  static std::optional<PlatformError> missing(const std::string& path) {
    return PlatformError{"\"" + path + "\" does not exist"};
  }

  mutable std::mutex mutex_;
  mutable int questions_ = 0;
  std::optional<bool> everythingExists_; ///< absent: as the items say
  std::optional<PlatformError> temporaryError_;
  Items items_;
  std::map<std::string, std::string> failures_;
  std::vector<std::string> operations_;
  std::string home_ = "/Users/ada";
};

} // namespace driftmark::test
