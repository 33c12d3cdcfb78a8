#include "platform/posix/CrashHandler.h"

#include "harness/Orphans.h"
#include "harness/Waiting.h"
#include "platform/posix/children/LiveChildren.h"
#include "support/TestSystemLog.h"

#include <array>
#include <cstddef>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

/// Calls itself until the stack is full.
int fillStack(int depth) {
  std::array<volatile char, 4096> block{};
  block[static_cast<std::size_t>(depth) % block.size()] = 1;
  return depth < 0 ? 0 : fillStack(depth + 1) + block[0];
}

/// Starts a child that waits for a signal.
void startChild() {
  const LiveChildren::Launch launch;
  const pid_t child = fork();
  if (child == 0)
    for (;;)
      pause();
  LiveChildren::add(child);
}

TEST(CrashHandlerTest, stackOverflowLeavesNoChild) {
  const Orphans adopted;
  const pid_t process = fork();
  ASSERT_GE(process, 0);
  if (process == 0) {
    TestSystemLog log;
    const CrashHandler handler(log);
    startChild();
    _exit(fillStack(1));
  }
  int status = 0;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  EXPECT_NE(status, 0);
  EXPECT_THAT(Orphans::endAll({}, maxWait), testing::IsEmpty());
}

} // namespace
} // namespace driftmark::test
