#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace driftmark {

/// What a child has written and the main thread has not seen yet, and the child's end among it, in
/// order. Waiting bytes are joined into chunks of at most `ChildProcesses::largestChunk`. One
/// thread at a time.
class OutputQueue {
public:
  /// A chunk of output, or the child's end.
  struct Item {
    std::string bytes;
    bool isExit = false;
  };

  void appendBytes(std::string_view bytes);
  void appendExit();

  bool isEmpty() const { return items_.empty(); }

  /// Whether a whole chunk or the child's end waits.
  bool isUrgent() const;

  /// Whether so many bytes wait that no more should be read.
  bool isFull() const;

  /// Whether few enough bytes wait to go on reading after the queue was full.
  bool isDrained() const;

  /// Takes the oldest item out. The queue must not be empty.
  Item takeFirst();

  /// Hands a chunk's memory back for later chunks.
  void recycle(std::string bytes);

  /// Drops all output; the child's end stays.
  void dropBytes();

private:
  bool needsNewChunk() const;

  std::deque<Item> items_;
  std::size_t waitingBytes_ = 0;
  std::string spare_;
};

} // namespace driftmark
