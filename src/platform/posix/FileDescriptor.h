#pragma once

#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace driftmark {

/// Owns a file descriptor and closes it when released. One thread at a time.
class FileDescriptor {
public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { reset(); }

  bool isOpen() const { return number_ >= 0; }

  /// The descriptor's number; -1 when there is none. `poll` ignores -1.
  int number() const { return number_; }

  /// Gives the descriptor up without closing it.
  int release() { return std::exchange(number_, -1); }

  /// Closes the descriptor, if there is one.
  void reset() {
    if (number_ >= 0)
      ::close(std::exchange(number_, -1));
  }

private:
  int number_ = -1;
};

/// Opens the null device for each standard descriptor that this process was started without. Else a
/// file opened later would get its number and, with it, the output or input of this process. Call
/// it before anything else.
inline void openMissingStandardDescriptors() {
  // The system always assigns the lowest free number.
  FileDescriptor opened(open("/dev/null", O_RDWR));
  while (opened.isOpen() && opened.number() <= STDERR_FILENO) {
    opened.release();
    opened = FileDescriptor(open("/dev/null", O_RDWR));
  }
}

} // namespace driftmark
