// The adapters that answer at once keep the contracts of their ports.

#include "harness/TemporaryFolder.h"
#include "macos/RunLoop.h"
#include "macos/StandardErrorTerminal.h"
#include "platform/ScopedVariable.h"
#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"
#include "platform/posix/PosixAdapters.h"
#include "support/contracts/BundleContract.h"
#include "support/contracts/ClockContract.h"
#include "support/contracts/CloudFilesContract.h"
#include "support/contracts/EnvironmentContract.h"
#include "support/contracts/FileSystemContract.h"
#include "support/contracts/LoginItemContract.h"
#include "support/contracts/SystemLogContract.h"
#include "support/contracts/SystemTextContract.h"
#include "support/contracts/UserDefaultsContract.h"

#include <filesystem>
#include <list>
#include <optional>
#include <stdexcept>
#include <string>

#import <Foundation/Foundation.h>

namespace driftmark::test {
namespace {

using testing::Values;

class RealClock final : public ClockSubject {
public:
  Clock& clock() override { return clock_; }
  void pass(Seconds duration) override { runFor(duration); }

private:
  PosixClock clock_;
};

INSTANTIATE_TEST_SUITE_P(Mac, ClockContract, Values(subject<ClockSubject, RealClock>("real")),
                         subjectName);

class RealEnvironment final : public EnvironmentSubject {
public:
  Environment& environment() override { return environment_; }
  void set(const std::string& name, const std::string& value) override {
    variables_.emplace_front(name, value);
  }
  void unset(const std::string& name) override { variables_.emplace_front(name, std::nullopt); }

private:
  PosixEnvironment environment_;
  std::list<ScopedVariable> variables_; ///< the newest first, as each restores the one before
};

INSTANTIATE_TEST_SUITE_P(Mac, EnvironmentContract,
                         Values(subject<EnvironmentSubject, RealEnvironment>("real")), subjectName);

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
  MacFileSystem fileSystem_;
};

INSTANTIATE_TEST_SUITE_P(Mac, FileSystemContract,
                         Values(subject<FileSystemSubject, RealFileSystem>("real")), subjectName);

class RealCloudFiles final : public CloudFilesSubject {
public:
  CloudFiles& cloudFiles() override { return files_; }
  std::string folder() override { return folder_.path(); }
  void addFolder(const std::string& path) override { std::filesystem::create_directory(path); }
  void addFile(const std::string& path, std::optional<DownloadingStatus> status) override {
    if (status)
      throw std::logic_error("a test makes no file in the user's cloud");
    folder_.write(path, "text");
  }
  void refuseToEvict(const std::string& /*path*/) override {}

private:
  TemporaryFolder folder_;
  MacCloudFiles files_;
};

INSTANTIATE_TEST_SUITE_P(Mac, CloudFilesContract,
                         Values(subject<CloudFilesSubject, RealCloudFiles>("real")), subjectName);

class RealSystemLog final : public SystemLogSubject {
public:
  SystemLog& systemLog() override { return log_; }

  /// Without the time and the process, which the system writes before each line.
  std::vector<std::string> lines(std::size_t count) override {
    std::vector<std::string> lines = terminal_.lines(count);
    for (std::string& line : lines)
      line.erase(0, line.find("] ") + 2);
    return lines;
  }

private:
  StandardErrorTerminal terminal_;
  MacSystemLog log_;
};

INSTANTIATE_TEST_SUITE_P(Mac, SystemLogContract,
                         Values(subject<SystemLogSubject, RealSystemLog>("real")), subjectName);

class RealText final : public SystemTextSubject {
public:
  SystemText& text() override { return text_; }

private:
  MacSystemText text_;
};

INSTANTIATE_TEST_SUITE_P(Mac, SystemTextContract,
                         Values(subject<SystemTextSubject, RealText>("real")), subjectName);

/// The settings of this test program. Test programs that run at the same time share them.
class RealUserDefaults final : public UserDefaultsSubject {
public:
  RealUserDefaults() { removeAll(); }
  RealUserDefaults(const RealUserDefaults&) = delete;
  RealUserDefaults& operator=(const RealUserDefaults&) = delete;
  ~RealUserDefaults() override { removeAll(); }

  UserDefaults& userDefaults() override { return userDefaults_; }
  void setString(const std::string& key, const std::string& value) override {
    [NSUserDefaults.standardUserDefaults setObject:nsString(value) forKey:nsString(key)];
  }
  void setNumber(const std::string& key, int value) override {
    [NSUserDefaults.standardUserDefaults setObject:@(value) forKey:nsString(key)];
  }

private:
  static void removeAll() {
    [NSUserDefaults.standardUserDefaults removePersistentDomainForName:@"com.example.program"];
  }

  MacUserDefaults userDefaults_;
};

INSTANTIATE_TEST_SUITE_P(Mac, UserDefaultsContract,
                         Values(subject<UserDefaultsSubject, RealUserDefaults>("real")),
                         subjectName);

/// The bundle of this test program.
class RealBundle final : public BundleSubject {
public:
  Bundle& bundle() override { return bundle_; }

private:
  MacBundle bundle_;
};

INSTANTIATE_TEST_SUITE_P(Mac, BundleContract, Values(subject<BundleSubject, RealBundle>("real")),
                         subjectName);

class RealLoginItem final : public LoginItemSubject {
public:
  LoginItem& loginItem() override { return item_; }

private:
  MacLoginItem item_;
};

INSTANTIATE_TEST_SUITE_P(Mac, LoginItemContract,
                         Values(subject<LoginItemSubject, RealLoginItem>("real")), subjectName);

} // namespace
} // namespace driftmark::test
