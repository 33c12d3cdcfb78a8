#include "StandardErrorCapture.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <array>
#include <string>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

TEST(LinuxSystemLog, lineHasNoPrefix) {
  const StandardErrorCapture capture;
  LinuxSystemLog().log("Driftmark: one");
  EXPECT_EQ(capture.text(), "Driftmark: one\n");
}

TEST(LinuxSystemLog, lineAndLineEndAreWrittenInOneCall) {
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  const FileDescriptor reader(ends[0]);
  FileDescriptor writer(ends[1]);
  const FileDescriptor before = replaceStandardError(writer.number());
  LinuxSystemLog log;
  log.log("Driftmark: first");
  log.log("Driftmark: second");
  dup2(before.number(), STDERR_FILENO);
  for (const std::string& expected : {"Driftmark: first\n"s, "Driftmark: second\n"s}) {
    std::array<char, 100> packet{};
    const ssize_t size = recv(reader.number(), packet.data(), packet.size(), 0);
    EXPECT_EQ(std::string(packet.data(), static_cast<std::size_t>(size)), expected);
  }
}

TEST(LinuxSystemLog, controlCharactersAreEscaped) {
  const StandardErrorCapture capture;
  LinuxSystemLog().log("a\nb\r\tc\x1b[31m\0\x7f \\n end"s);
  EXPECT_EQ(capture.text(), "a\\nb\\r\tc\\x1b[31m\\x00\\x7f \\n end\n");
}

TEST(LinuxSystemLog, invalidBytesAreUnchanged) {
  const StandardErrorCapture capture;
  LinuxSystemLog().log("caf\xe9 \xff\xc3\xa9");
  EXPECT_EQ(capture.text(), "caf\xe9 \xff\xc3\xa9\n");
}

TEST(LinuxSystemLog, emptyLineIsLineEnd) {
  const StandardErrorCapture capture;
  LinuxSystemLog().log("");
  EXPECT_EQ(capture.text(), "\n");
}

TEST(LinuxSystemLog, closedReaderDoesNotEndProcess) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  FileDescriptor writer(ends[1]);
  const FileDescriptor before = replaceStandardError(writer.number());
  LinuxSystemLog().log("Driftmark: nobody reads this");
  dup2(before.number(), STDERR_FILENO);
}

TEST(LinuxSystemLog, closedStandardErrorIsIgnored) {
  const FileDescriptor before = replaceStandardError(STDERR_FILENO);
  close(STDERR_FILENO);
  LinuxSystemLog().log("Driftmark: nowhere to go");
  dup2(before.number(), STDERR_FILENO);
}

} // namespace
} // namespace driftmark::test
