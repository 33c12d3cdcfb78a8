// The real adapters keep the contracts of their ports.

#include "EventLoop.h"
#include "ScopedVariable.h"
#include "StandardErrorCapture.h"
#include "TemporaryFolder.h"
#include "platform/linux/LinuxBackgroundQueue.h"
#include "platform/linux/LinuxSystemLog.h"
#include "platform/linux/LinuxText.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/linux/LinuxFileSystem.h"
#include "platform/posix/ProcessEnvironment.h"
#include "platform/posix/SystemClock.h"
#include "support/contracts/BackgroundQueueContract.h"
#include "support/contracts/ChildProcessesContract.h"
#include "support/contracts/ClockContract.h"
#include "support/contracts/EnvironmentContract.h"
#include "support/contracts/FileSystemContract.h"
#include "support/contracts/MainQueueContract.h"
#include "support/contracts/SystemLogContract.h"
#include "support/contracts/TextContract.h"

#include <chrono>
#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <utility>

namespace driftmark::test {
namespace {

using testing::Values;

class RealClock final : public ClockSubject {
public:
  Clock& clock() override { return clock_; }
  void pass(Seconds duration) override { runFor(duration); }

private:
  SystemClock clock_;
};

INSTANTIATE_TEST_SUITE_P(System, ClockContract, Values(subject<ClockSubject, RealClock>("real")),
                         subjectName);

class RealMainQueue final : public MainQueueSubject {
public:
  MainQueue& queue() override { return *queue_; }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  Seconds elapsed() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
  void destroy() override { queue_.reset(); }

private:
  std::optional<QtMainQueue> queue_{std::in_place};
};

INSTANTIATE_TEST_SUITE_P(Qt, MainQueueContract,
                         Values(subject<MainQueueSubject, RealMainQueue>("real")), subjectName);

class RealBackgroundQueue final : public BackgroundQueueSubject {
public:
  BackgroundQueue& queue() override { return *queue_; }
  bool waitUntil(const std::function<bool()>& done) override { return pollUntil(done); }
  void destroy() override { queue_.reset(); }

private:
  std::optional<LinuxBackgroundQueue> queue_{std::in_place};
};

INSTANTIATE_TEST_SUITE_P(Linux, BackgroundQueueContract,
                         Values(subject<BackgroundQueueSubject, RealBackgroundQueue>("real")),
                         subjectName);

class RealChildProcesses final : public ChildProcessesSubject {
public:
  RealChildProcesses() { folder_.write("forbidden", "#!/bin/sh\n"); }

  ChildProcesses& childProcesses() override { return children_; }
  bool runUntil(const std::function<bool()>& done) override { return pollUntil(done); }
  void async(std::function<void()> task) override { mainQueue_.async(std::move(task)); }
  ToolCommand tool(const std::vector<std::string>& steps) override { return {CHILD_TOOL, steps}; }
  ToolCommand missingTool() override { return {folder_.path("missing"), {}}; }
  ToolCommand forbiddenTool() override { return {folder_.path("forbidden"), {}}; }

private:
  TemporaryFolder folder_;
  QtMainQueue mainQueue_;
  PosixChildProcesses children_{mainQueue_, ""};
};

INSTANTIATE_TEST_SUITE_P(Posix, ChildProcessesContract,
                         Values(subject<ChildProcessesSubject, RealChildProcesses>("real")),
                         subjectName);

class RealSystemLog final : public SystemLogSubject {
public:
  SystemLog& systemLog() override { return log_; }
  std::vector<std::string> lines(std::size_t count) override { return capture_.lines(count); }

private:
  StandardErrorCapture capture_;
  LinuxSystemLog log_;
};

INSTANTIATE_TEST_SUITE_P(Linux, SystemLogContract,
                         Values(subject<SystemLogSubject, RealSystemLog>("real")), subjectName);

class RealFileSystem final : public FileSystemSubject {
public:
  FileSystem& fileSystem() override { return fileSystem_; }
  std::string folder() override { return folder_.path(); }
  void createFile(const std::string& path) override { folder_.write(path, ""); }
  void createFolder(const std::string& path) override { std::filesystem::create_directory(path); }
  void createLink(const std::string& path, const std::string& target) override {
    std::filesystem::create_symlink(target, path);
  }
  void remove(const std::string& path) override { std::filesystem::remove(path); }

private:
  TemporaryFolder folder_;
  LinuxFileSystem fileSystem_{""};
};

INSTANTIATE_TEST_SUITE_P(Linux, FileSystemContract,
                         Values(subject<FileSystemSubject, RealFileSystem>("real")), subjectName);

class RealEnvironment final : public EnvironmentSubject {
public:
  Environment& environment() override { return environment_; }
  void set(const std::string& name, const std::string& value) override {
    variables_.emplace_front(name, value);
  }
  void unset(const std::string& name) override { variables_.emplace_front(name, std::nullopt); }

private:
  ProcessEnvironment environment_;
  std::list<ScopedVariable> variables_; ///< the newest first, since each brings back the one before
};

INSTANTIATE_TEST_SUITE_P(Process, EnvironmentContract,
                         Values(subject<EnvironmentSubject, RealEnvironment>("real")), subjectName);

class RealText final : public TextSubject {
public:
  Text& text() override { return text_; }

private:
  LinuxText text_;
};

INSTANTIATE_TEST_SUITE_P(Linux, TextContract, Values(subject<TextSubject, RealText>("real")),
                         subjectName);

} // namespace
} // namespace driftmark::test
