#pragma once

#include "platform/posix/FileDescriptor.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace driftmark::test {

/// Makes a terminal the standard error of this process as long as this object lives: there the
/// system's log writes its lines, too. One at a time.
class StandardErrorTerminal {
public:
  /// Throws std::system_error.
  StandardErrorTerminal();
  StandardErrorTerminal(const StandardErrorTerminal&) = delete;
  StandardErrorTerminal& operator=(const StandardErrorTerminal&) = delete;
  ~StandardErrorTerminal();

  /// The first `count` lines, without their line ends; fewer after a minute.
  std::vector<std::string> lines(std::size_t count);

private:
  void read();

  FileDescriptor master_;
  FileDescriptor before_;
  std::mutex mutex_;
  std::condition_variable grown_;
  std::vector<std::string> lines_; ///< guarded by the mutex
  std::thread reader_;
};

} // namespace driftmark::test
