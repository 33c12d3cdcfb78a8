// How a child's output waits: in chunks, bounded, with its exit in order.

#include "platform/posix/children/OutputQueue.h"

#include "ports/ChildProcesses.h"

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

constexpr std::size_t largest = ChildProcesses::maxChunkSize;

TEST(OutputQueue, waitingBytesAreJoined) {
  OutputQueue queue;
  queue.appendBytes("one ");
  queue.appendBytes("two");
  EXPECT_EQ(queue.takeFirst().bytes, "one two");
  EXPECT_TRUE(queue.isEmpty());
}

TEST(OutputQueue, chunksStayWithinTheirMaximum) {
  OutputQueue queue;
  const std::string bytes(largest * 2 + 5, 'x');
  queue.appendBytes(bytes);
  queue.appendBytes("end");
  EXPECT_EQ(queue.takeFirst().bytes.size(), largest);
  EXPECT_EQ(queue.takeFirst().bytes.size(), largest);
  EXPECT_EQ(queue.takeFirst().bytes, "xxxxxend");
  EXPECT_TRUE(queue.isEmpty());
}

TEST(OutputQueue, emptyOutputAddsNoChunk) {
  OutputQueue queue;
  queue.appendBytes("");
  EXPECT_TRUE(queue.isEmpty());
}

TEST(OutputQueue, exitKeepsItsPlaceAmongTheBytes) {
  OutputQueue queue;
  queue.appendBytes("before");
  queue.appendExit();
  queue.appendBytes("after");
  EXPECT_EQ(queue.takeFirst().bytes, "before");
  EXPECT_TRUE(queue.takeFirst().isExit);
  const OutputQueue::Item last = queue.takeFirst();
  EXPECT_EQ(last.bytes, "after");
  EXPECT_FALSE(last.isExit);
}

TEST(OutputQueue, fullQueueIsDrainedAtHalfItsSize) {
  OutputQueue queue;
  for (int chunk = 0; chunk < 4; ++chunk) {
    EXPECT_FALSE(queue.isFull());
    queue.appendBytes(std::string(largest, 'x'));
  }
  EXPECT_TRUE(queue.isFull());
  EXPECT_FALSE(queue.isDrained());
  queue.takeFirst();
  EXPECT_FALSE(queue.isFull());
  EXPECT_FALSE(queue.isDrained());
  queue.takeFirst();
  EXPECT_TRUE(queue.isDrained());
}

TEST(OutputQueue, exitStaysWhenBytesAreDropped) {
  OutputQueue queue;
  queue.appendBytes(std::string(largest * 4, 'x'));
  queue.appendExit();
  queue.dropBytes();
  EXPECT_TRUE(queue.isDrained());
  EXPECT_TRUE(queue.takeFirst().isExit);
  EXPECT_TRUE(queue.isEmpty());
}

TEST(OutputQueue, recycledMemoryHoldsNoOldBytes) {
  OutputQueue queue;
  queue.appendBytes("old");
  queue.recycle(queue.takeFirst().bytes);
  queue.appendBytes("new");
  EXPECT_EQ(queue.takeFirst().bytes, "new");
}

} // namespace
} // namespace driftmark::test
