#include "support/TestPlatform.h"
#include "support/contracts/ApplicationContract.h"
#include "support/contracts/BackgroundQueueContract.h"
#include "support/contracts/BundleContract.h"
#include "support/contracts/ClockContract.h"
#include "support/contracts/CloudFilesContract.h"
#include "support/contracts/DialogsContract.h"
#include "support/contracts/EnvironmentContract.h"
#include "support/contracts/FileSystemContract.h"
#include "support/contracts/LoginItemContract.h"
#include "support/contracts/MainQueueContract.h"
#include "support/contracts/RunningApplicationsContract.h"
#include "support/contracts/SignalsContract.h"
#include "support/contracts/SystemLogContract.h"
#include "support/contracts/SystemTextContract.h"
#include "support/contracts/UserDefaultsContract.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

class FakeMainQueue final : public MainQueueSubject {
public:
  FakeMainQueue() : queue_(std::make_unique<TestMainQueue>(clock_)) {}

  MainQueue& queue() override { return *queue_; }

  bool runUntil(const std::function<bool()>& done) override {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline)
        return false;
      if (!queue_->advanceToNext())
        std::this_thread::yield();
    }
    return true;
  }

  Seconds elapsed() const override { return clock_.now() - start_; }
  void destroy() override { queue_.reset(); }

private:
  TestClock clock_;
  Date start_ = clock_.now();
  std::unique_ptr<TestMainQueue> queue_;
};

class FakeBackgroundQueue final : public BackgroundQueueSubject {
public:
  FakeBackgroundQueue() { queue_->setMode(TestBackgroundQueue::Mode::thread); }

  BackgroundQueue& queue() override { return *queue_; }

  bool waitUntil(const std::function<bool()>& done) override {
    queue_->join();
    queue_->join();
    return done();
  }

  void destroy() override { queue_.reset(); }

private:
  std::unique_ptr<TestBackgroundQueue> queue_ = std::make_unique<TestBackgroundQueue>();
};

class FakeClock final : public ClockSubject {
public:
  Clock& clock() override { return clock_; }
  void pass(Seconds duration) override { queue_.advance(duration); }

private:
  TestClock clock_;
  TestMainQueue queue_{clock_};
};

class FakeEnvironment final : public EnvironmentSubject {
public:
  Environment& environment() override { return environment_; }
  void set(const std::string& name, const std::string& value) override {
    environment_.set(name, value);
  }
  void unset(const std::string& name) override { environment_.unset(name); }

private:
  TestEnvironment environment_;
};

class FakeFileSystem final : public FileSystemSubject {
public:
  FakeFileSystem() { fileSystem_.add(folder()); }

  FileSystem& fileSystem() override { return fileSystem_; }
  std::string folder() override { return fileSystem_.homeDirectory() + "/folder"; }
  void createFile(const std::string& path) override { fileSystem_.add(path); }
  void createFolder(const std::string& path) override { fileSystem_.add(path); }
  void createLink(const std::string& path, const std::string& target) override {
    fileSystem_.addLink(path, target);
  }
  void remove(const std::string& path) override { fileSystem_.remove(path); }

private:
  TestFileSystem fileSystem_;
};

class FakeSystemLog final : public SystemLogSubject {
public:
  SystemLog& systemLog() override { return log_; }
  std::vector<std::string> lines(std::size_t count) override {
    std::vector<std::string> lines = log_.lines();
    lines.resize(std::min(count, lines.size()));
    return lines;
  }

private:
  TestSystemLog log_;
};

class FakeSystemText final : public SystemTextSubject {
public:
  SystemText& text() override { return text_; }

private:
  TestSystemText text_;
};

class FakeApplication final : public ApplicationSubject {
public:
  Application& application() override { return application_; }

private:
  TestApplication application_;
};

class FakeRunningApplications final : public RunningApplicationsSubject {
public:
  FakeRunningApplications() { start(); }

  RunningApplications& applications() override { return applications_; }
  std::int32_t start() override {
    const std::int32_t process = ++lastProcess_;
    applications_.add("com.example.program", process, std::nullopt);
    applications_.setStartTime(process, static_cast<RunningApplications::StartTime>(process));
    return process;
  }
  void end(std::int32_t process) override { applications_.remove(process); }
  std::int32_t oldest() override { return 1; }

private:
  TestClock clock_;
  TestRunningApplications applications_{clock_};
  std::int32_t lastProcess_ = 0;
};

class FakeUserDefaults final : public UserDefaultsSubject {
public:
  UserDefaults& userDefaults() override { return userDefaults_; }
  void setString(const std::string& key, const std::string& value) override {
    userDefaults_.setString(key, value);
  }
  void setNumber(const std::string& key, int value) override {
    userDefaults_.setNumber(key, value);
  }

private:
  TestUserDefaults userDefaults_;
};

class FakeLoginItem final : public LoginItemSubject {
public:
  LoginItem& loginItem() override { return item_; }

private:
  TestLoginItem item_;
};

class FakeBundle final : public BundleSubject {
public:
  FakeBundle() {
    bundle_.setIdentifier("com.example.program");
    bundle_.setVersion("1.2");
  }

  Bundle& bundle() override { return bundle_; }

private:
  TestBundle bundle_;
};

class FakeDialogs final : public DialogsSubject {
public:
  Dialogs& dialogs() override { return dialogs_; }
  void willPress(std::size_t button) override { dialogs_.answer(button); }
  void willClose() override {}
  std::string folder() override { return "/Drive"; }
  std::string folderInside() override { return "/Drive/Folder"; }
  void willChoose(const std::string& folder) override { dialogs_.choose(folder); }
  void willConfirm() override { dialogs_.choose(folder()); }
  void willCancel() override {}

private:
  TestDialogs dialogs_;
};

class FakeCloudFiles final : public CloudFilesSubject {
public:
  CloudFiles& cloudFiles() override { return files_; }
  std::string folder() override { return "/Drive"; }
  void addFolder(const std::string& path) override {
    ResourceValues values;
    values.isRegularFile = false;
    add({.path = path, .values = values});
  }
  void addFile(const std::string& path, std::optional<DownloadingStatus> status) override {
    const bool isHere = status != DownloadingStatus::notDownloaded;
    add({.path = path,
         .values = ResourceValues{.isRegularFile = true,
                                  .isUbiquitousItem = status.has_value(),
                                  .downloadingStatus = status,
                                  .totalFileAllocatedSize = isHere ? 4096 : 0}});
  }
  void refuseToEvict(const std::string& path) override { files_.failEviction(path, "refused"); }

private:
  /// A walk of any folder above the item visits it.
  void add(const WalkEntry& entry) {
    for (std::size_t slash = entry.path->rfind('/'); slash != 0;
         slash = entry.path->rfind('/', slash - 1)) {
      const std::string above = entry.path->substr(0, slash);
      entries_[above].push_back(entry);
      files_.list(above, entries_[above]);
    }
  }

  TestCloudFiles files_;
  std::map<std::string, std::vector<WalkEntry>> entries_;
};

using testing::Values;

class FakeSignals final : public SignalsSubject {
public:
  Signals& signals() override { return platform_.signals; }
  void send(QuitSignal signal) override { platform_.signals.send(signal); }
  bool hasDefaultAction(QuitSignal signal) override { return !platform_.signals.isIgnored(signal); }
  bool runUntil(const std::function<bool()>& done) override { return platform_.runUntil(done); }

private:
  TestPlatform platform_;
};

INSTANTIATE_TEST_SUITE_P(Fake, MainQueueContract,
                         Values(subject<MainQueueSubject, FakeMainQueue>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, BackgroundQueueContract,
                         Values(subject<BackgroundQueueSubject, FakeBackgroundQueue>("fake")),
                         subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, ClockContract, Values(subject<ClockSubject, FakeClock>("fake")),
                         subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, EnvironmentContract,
                         Values(subject<EnvironmentSubject, FakeEnvironment>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, FileSystemContract,
                         Values(subject<FileSystemSubject, FakeFileSystem>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, SignalsContract,
                         Values(subject<SignalsSubject, FakeSignals>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, SystemLogContract,
                         Values(subject<SystemLogSubject, FakeSystemLog>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, SystemTextContract,
                         Values(subject<SystemTextSubject, FakeSystemText>("fake")), subjectName);

INSTANTIATE_TEST_SUITE_P(Fake, ApplicationContract,
                         Values(subject<ApplicationSubject, FakeApplication>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(
    Fake, RunningApplicationsContract,
    Values(subject<RunningApplicationsSubject, FakeRunningApplications>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, UserDefaultsContract,
                         Values(subject<UserDefaultsSubject, FakeUserDefaults>("fake")),
                         subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, LoginItemContract,
                         Values(subject<LoginItemSubject, FakeLoginItem>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, BundleContract, Values(subject<BundleSubject, FakeBundle>("fake")),
                         subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, DialogsContract,
                         Values(subject<DialogsSubject, FakeDialogs>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, CloudFilesContract,
                         Values(subject<CloudFilesSubject, FakeCloudFiles>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, CloudStatusContract,
                         Values(subject<CloudFilesSubject, FakeCloudFiles>("fake")), subjectName);

} // namespace
} // namespace driftmark::test
