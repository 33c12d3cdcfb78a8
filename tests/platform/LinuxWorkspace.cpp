// How files are opened where no session bus is reachable.

#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;

class LinuxWorkspaceTest : public testing::Test {
protected:
  LinuxWorkspaceTest() {
    root_.writeScript("usr/bin/xdg-open", "printf '%s\\0' \"$@\" > '" + root_.path("written") +
                                              "'\nmv '" + root_.path("written") + "' '" + call_ +
                                              "'");
  }

  /// Waits for `xdg-open` to be called. Returns its arguments.
  std::vector<std::string> opened() const {
    EXPECT_TRUE(pollUntil([this] { return std::filesystem::exists(call_); }));
    std::ifstream file(call_);
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(file, argument, '\0');)
      arguments.push_back(argument);
    return arguments;
  }

  TemporaryFolder root_;
  const std::string call_ = root_.path("call");
  LinuxMainQueue mainQueue_;
  PosixChildProcesses children_{mainQueue_, root_.path()};
  LinuxWorkspace workspace_{children_};
};

class LinuxWorkspacePaths : public LinuxWorkspaceTest,
                            public testing::WithParamInterface<const char*> {};

TEST_P(LinuxWorkspacePaths, pathIsOpenedUnchanged) {
  workspace_.open(GetParam());
  EXPECT_THAT(opened(), ElementsAre(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Paths, LinuxWorkspacePaths,
                         testing::Values("/drive/plain.txt", "/drive/two  spaces .txt",
                                         "/drive/50%20off%.txt", "/drive/a#b?c;d&e=f,g.txt",
                                         "/Grüße/日本.txt", "/drive/\xff\xfe\x80.txt",
                                         "/drive/'\"\\$(x)`y`.txt", "/drive/-two\nlines"));

TEST_F(LinuxWorkspaceTest, folderIsOpenedWithoutSessionBus) {
  workspace_.activateFileViewerSelecting("/some folder/\xff/a.txt");
  EXPECT_THAT(opened(), ElementsAre("/some folder/\xff"));
}

} // namespace
} // namespace driftmark::test
