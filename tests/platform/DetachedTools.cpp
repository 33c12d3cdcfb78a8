// How detached tools start, outlive this process and are reaped.

#include "ChildProcessesTest.h"
#include "harness/Orphans.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace driftmark::test {
namespace {

/// Runs detached tools and reads the output of their shell commands.
class DetachedTools : public ChildProcessesTest {
protected:
  /// Ends and reaps the tools that outlived the shutdown.
  void TearDown() override {
    children_.reset();
    for (const int child : Orphans::children())
      Orphans::end(child);
  }

  /// Runs `commands` with their output in a file. Waits for the file and returns its words.
  std::vector<std::string> wordsOf(const std::string& commands) {
    EXPECT_FALSE(children_
                     ->launchDetached(shell("(" + commands + ") >" + file_ + ".new && mv " + file_ +
                                            ".new " + file_))
                     .has_value());
    EXPECT_TRUE(pollUntil([&] { return std::filesystem::exists(file_); }));
    std::ifstream file(file_);
    std::vector<std::string> words;
    for (std::string word; file >> word;)
      words.push_back(word);
    return words;
  }

  static ToolCommand shell(const std::string& commands) { return {"/bin/sh", {"-c", commands}}; }

  /// Starts a tool that waits for a signal. Returns its identifier.
  int startWaiting() {
    EXPECT_FALSE(children_->launchDetached(childTool({"wait"})).has_value());
    const std::vector<int> children = Orphans::children();
    EXPECT_EQ(children.size(), 1U);
    return children.empty() ? 0 : children.front();
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.path("words");
};

TEST_F(DetachedTools, standardDescriptorsAreTheNullDevice) {
  const std::string null = "/dev/null";
  EXPECT_EQ(wordsOf("for fd in 0 2; do readlink /proc/$$/fd/$fd; done"),
            (std::vector<std::string>{null, null}));
  std::filesystem::remove(file_);
  EXPECT_EQ(wordsOf("readlink /proc/$$/fd/1; ls /proc/$$/fd | tail -n 1"),
            (std::vector<std::string>{null, "2"}));
}

TEST_F(DetachedTools, toolLeadsASessionOfItsOwn) {
  const auto words = wordsOf("echo $$; cut -d' ' -f6 /proc/$$/stat");
  ASSERT_EQ(words.size(), 2U);
  EXPECT_EQ(words[0], words[1]);
  EXPECT_NE(words[1], std::to_string(getsid(0)));
}

TEST_F(DetachedTools, toolRunsOnAfterTheShutdown) {
  const int tool = startWaiting();
  children_.reset();
  EXPECT_EQ(kill(tool, 0), 0);
  EXPECT_TRUE(Orphans::end(tool));
}

TEST_F(DetachedTools, endedToolIsReapedWhenTheNextChildStarts) {
  const int first = startWaiting();
  kill(first, SIGKILL);
  EXPECT_TRUE(pollUntil([&] {
    spawn({})->child.masterHandle.reset();
    return kill(first, 0) != 0;
  }));
}

TEST_F(DetachedTools, endedToolIsReapedByTheShutdown) {
  EXPECT_FALSE(children_->launchDetached(childTool({})).has_value());
  const int tool = Orphans::children().at(0);
  EXPECT_TRUE(pollUntil([&] {
    std::ifstream stat("/proc/" + std::to_string(tool) + "/stat");
    std::string number;
    std::string name;
    std::string state;
    stat >> number >> name >> state;
    return state == "Z";
  }));
  children_.reset();
  EXPECT_FALSE(hasChildren());
}

TEST_F(DetachedTools, systemRootIsPutBeforeTheTool) {
  folder_.writeScript("root/usr/bin/open", "echo \"$0\" \"$1\" >" + file_ + ".new; mv " + file_ +
                                               ".new " + file_ + "\n");
  PosixChildProcesses children(mainQueue_, folder_.path("root"));
  EXPECT_FALSE(children.launchDetached({"/usr/bin/open", {"x y"}}).has_value());
  ASSERT_TRUE(pollUntil([&] { return std::filesystem::exists(file_); }));
  std::string line;
  std::ifstream file(file_);
  std::getline(file, line);
  EXPECT_EQ(line, folder_.path("root/usr/bin/open") + " x y");
}

TEST_F(DetachedTools, failedLaunchIsDescribed) {
  const std::optional<LaunchError> error = children_->launchDetached({"/missing/tool", {}});
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->stage, LaunchError::Stage::launch);
  EXPECT_EQ(error->description, "No such file or directory");
  EXPECT_FALSE(hasChildren());
}

TEST_F(DetachedTools, nothingIsLaunchedAfterTheShutdown) {
  children_->shutdown();
  EXPECT_TRUE(children_->launchDetached(childTool({})).has_value());
  EXPECT_FALSE(hasChildren());
}

} // namespace
} // namespace driftmark::test
