#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

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

  /// Notes how far a transfer is; one that is complete is forgotten after that.
  void report(std::size_t number, Progress progress) {
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

} // namespace icloud
