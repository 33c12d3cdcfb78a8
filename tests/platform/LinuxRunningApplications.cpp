#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/children/LaunchTool.h"
#include "support/TestEnvironment.h"

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A process of a bundle. Killed by the destructor.
class Copy {
public:
  /// It keeps the property list of its bundle open.
  explicit Copy(const std::string& executable) {
    auto pipe = makePipe().value();
    const auto contents = std::filesystem::path(executable).parent_path().parent_path();
    const auto launched =
        launchTool(executable, {"open", contents / "Info.plist", "print", "up", "wait"},
                   {.standardOutput = pipe.writeEnd.number()});
    if (const auto* const error = std::get_if<LaunchError>(&launched))
      throw std::runtime_error(error->description);
    process_ = std::get<pid_t>(launched);
    char byte = 0;
    if (read(pipe.readEnd.number(), &byte, 1) != 1)
      throw std::runtime_error("the copy did not start");
  }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;
  ~Copy() {
    if (!ended_)
      ::kill(process_, SIGKILL);
    end();
  }

  /// Waits for the process to end. Returns the signal that ended it.
  int end() {
    if (!ended_)
      waitpid(process_, &status_, 0);
    ended_ = true;
    return WTERMSIG(status_);
  }

  std::int32_t process() const { return process_; }

private:
  pid_t process_ = 0;
  int status_ = 0;
  bool ended_ = false;
};

class LinuxRunningApplicationsTest : public testing::Test {
protected:
  /// Creates a bundle with that identifier. Returns the path of its executable.
  std::string bundle(const std::string& name, const std::string& bundleIdentifier) {
    const std::string contents = name + "/Contents/";
    folder.write(contents + "Info.plist", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                          "<plist version=\"1.0\"><dict>"
                                          "<key>CFBundleIdentifier</key><string>" +
                                              bundleIdentifier + "</string></dict></plist>\n");
    std::string executable = folder.path(contents + "MacOS/Driftmark");
    std::filesystem::create_directories(std::filesystem::path(executable).parent_path());
    std::filesystem::copy_file(childToolPath(), executable);
    return executable;
  }

  static SystemRoot root() {
    TestEnvironment environment;
    return std::get<SystemRoot>(SystemRoot::of(environment));
  }

  TemporaryFolder folder;
  /// Unique, as other tests may run at the same time.
  const std::string identifier = "com.example.copies" + std::to_string(getpid());
  LinuxRunningApplications applications{root()};
};

TEST_F(LinuxRunningApplicationsTest, unknownIdentifierHasNoProcesses) {
  EXPECT_THAT(applications.withBundleIdentifier(identifier), IsEmpty());
}

TEST_F(LinuxRunningApplicationsTest, copiesAreFoundInAnyFolderTheOldestFirst) {
  const Copy older(bundle("here/Driftmark.app", identifier));
  const Copy younger(bundle("elsewhere/Other Name.app", identifier));
  const Copy stranger(bundle("here/Stranger.app", identifier + ".stranger"));
  EXPECT_THAT(applications.withBundleIdentifier(identifier),
              ElementsAre(older.process(), younger.process()));
}

TEST_F(LinuxRunningApplicationsTest, copyWithDeletedBundleIsFound) {
  const Copy older(bundle("here/Driftmark.app", identifier));
  const Copy stranger(bundle("here/Stranger.app", identifier + ".stranger"));
  std::filesystem::remove_all(folder.path("here"));
  EXPECT_THAT(applications.withBundleIdentifier(identifier), ElementsAre(older.process()));
}

TEST_F(LinuxRunningApplicationsTest, copyWithReplacedBundleIsFound) {
  const Copy older(bundle("here/Driftmark.app", identifier));
  std::filesystem::remove_all(folder.path("here"));
  bundle("here/Driftmark.app", identifier);
  EXPECT_THAT(applications.withBundleIdentifier(identifier), ElementsAre(older.process()));
}

TEST_F(LinuxRunningApplicationsTest, copiesWithOtherSystemRootAreLeftOut) {
  TestEnvironment environment;
  environment.set(SystemRoot::variableName, folder.path());
  const LinuxRunningApplications others(std::get<SystemRoot>(SystemRoot::of(environment)));
  const Copy copy(bundle("Driftmark.app", identifier));
  EXPECT_THAT(others.withBundleIdentifier(identifier), IsEmpty());
}

TEST_F(LinuxRunningApplicationsTest, killedProcessIsNotRunning) {
  Copy copy(bundle("Driftmark.app", identifier));
  const std::int32_t process = copy.process();
  EXPECT_TRUE(applications.isRunning(process));
  applications.sendKill(process);
  EXPECT_EQ(copy.end(), SIGKILL);
  EXPECT_FALSE(applications.isRunning(process));
}

TEST_F(LinuxRunningApplicationsTest, identifiersOfSeveralProcessesAreRefused) {
  for (const std::int32_t process : {0, -1, -getpgrp()})
    EXPECT_FALSE(applications.isRunning(process)) << process;
}

TEST_F(LinuxRunningApplicationsTest, terminateSendsSigterm) {
  Copy copy(bundle("Driftmark.app", identifier));
  applications.sendTerminate(copy.process());
  EXPECT_EQ(copy.end(), SIGTERM);
}

} // namespace
} // namespace driftmark::test
