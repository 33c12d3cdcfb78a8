#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace driftmark {

/// A child's output that has not been delivered yet, and its exit, in order. Waiting bytes are
/// joined into chunks of at most `ChildProcesses::maxChunkSize`. One thread at a time.
class OutputQueue {
public:
  /// A chunk of output, or the child's exit.
  struct Item {
    std::string bytes;
    bool isExit = false;
  };

  void appendBytes(std::string_view bytes);
  void appendExit();

  bool isEmpty() const { return items_.empty(); }

  /// Whether so many bytes wait that no more are to be read.
  bool isFull() const;

  /// Whether few enough bytes wait to read again after the queue was full.
  bool isDrained() const;

  /// Removes and returns the oldest item. The queue must not be empty.
  Item takeFirst();

  /// Gives a chunk's memory back for later chunks.
  void recycle(std::string bytes);

  /// Drops all output. The exit stays.
  void dropBytes();

private:
  bool needsNewChunk() const;

  std::deque<Item> items_;
  std::size_t waitingBytes_ = 0;
  std::string spare_;
};

} // namespace driftmark
