#pragma once

#include "ports/SystemLog.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// A log in memory.
class TestSystemLog final : public SystemLog {
public:
  void log(std::string_view line) override {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
  }

  /// All lines since the start or the last `take`.
  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

  /// Returns the lines and clears the log.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

  std::size_t count(std::string_view line) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
  }

private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

} // namespace driftmark::test
