// The adapters keep the contracts of their ports.

#include "CloudDrive.h"
#include "ScopedVariable.h"
#include "StandardErrorCapture.h"
#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/runloop/LinuxApplication.h"
#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/children/LaunchTool.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "support/TestEnvironment.h"
#include "support/contracts/ApplicationContract.h"
#include "support/contracts/BackgroundQueueContract.h"
#include "support/contracts/BundleContract.h"
#include "support/contracts/ChildProcessesContract.h"
#include "support/contracts/ClockContract.h"
#include "support/contracts/CloudFilesContract.h"
#include "support/contracts/DialogsContract.h"
#include "support/contracts/EnvironmentContract.h"
#include "support/contracts/FileSystemContract.h"
#include "support/contracts/LoginItemContract.h"
#include "support/contracts/MainQueueContract.h"
#include "support/contracts/RunningApplicationsContract.h"
#include "support/contracts/SystemLogContract.h"
#include "support/contracts/SystemTextContract.h"
#include "support/contracts/UserDefaultsContract.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <utility>

#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <sys/wait.h>
#include <unistd.h>

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

INSTANTIATE_TEST_SUITE_P(Posix, ClockContract, Values(subject<ClockSubject, RealClock>("real")),
                         subjectName);

class RealMainQueue final : public MainQueueSubject {
public:
  MainQueue& queue() override { return *queue_; }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  Seconds elapsed() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
  void destroy() override { queue_.reset(); }

private:
  std::optional<LinuxMainQueue> queue_{std::in_place};
};

INSTANTIATE_TEST_SUITE_P(Linux, MainQueueContract,
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
  ToolCommand tool(const std::vector<std::string>& steps) override {
    return {childToolPath(), steps};
  }
  ToolCommand missingTool() override { return {folder_.path("missing"), {}}; }
  ToolCommand forbiddenTool() override { return {folder_.path("forbidden"), {}}; }

private:
  TemporaryFolder folder_;
  LinuxMainQueue mainQueue_;
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
  TemporaryFolder userFolder_;
  ScopedVariable data_{"XDG_DATA_HOME", userFolder_.path("data")};
  ScopedVariable temporary_{"TMPDIR", userFolder_.path()};
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
  PosixEnvironment environment_;
  std::list<ScopedVariable> variables_; ///< the newest first, as each restores the one before
};

INSTANTIATE_TEST_SUITE_P(Posix, EnvironmentContract,
                         Values(subject<EnvironmentSubject, RealEnvironment>("real")), subjectName);

class RealText final : public SystemTextSubject {
public:
  SystemText& text() override { return text_; }

private:
  LinuxSystemText text_;
};

INSTANTIATE_TEST_SUITE_P(Linux, SystemTextContract,
                         Values(subject<SystemTextSubject, RealText>("real")), subjectName);

class RealApplication final : public ApplicationSubject {
public:
  Application& application() override { return application_; }

private:
  LinuxApplication application_;
};

INSTANTIATE_TEST_SUITE_P(Linux, ApplicationContract,
                         Values(subject<ApplicationSubject, RealApplication>("real")), subjectName);

class RealRunningApplications final : public RunningApplicationsSubject {
public:
  RunningApplications& applications() override { return applications_; }
  std::int32_t start() override {
    return std::get<pid_t>(launchTool(childToolPath(), {"wait"}, {}));
  }
  void end(std::int32_t process) override {
    applications_.sendKill(process);
    waitpid(process, nullptr, 0);
  }
  std::int32_t oldest() override { return getpid(); }

private:
  LinuxRunningApplications applications_{std::get<SystemRoot>(SystemRoot::of(TestEnvironment()))};
};

INSTANTIATE_TEST_SUITE_P(
    Linux, RunningApplicationsContract,
    Values(subject<RunningApplicationsSubject, RealRunningApplications>("real")), subjectName);

class RealUserDefaults final : public UserDefaultsSubject {
public:
  UserDefaults& userDefaults() override { return userDefaults_; }
  void setString(const std::string& key, const std::string& value) override {
    set(key, QString::fromStdString(value));
  }
  void setNumber(const std::string& key, int value) override { set(key, value); }

private:
  void set(const std::string& key, const QJsonValue& value) {
    QJsonObject settings;
    QFile file(path_);
    if (file.open(QIODevice::ReadOnly))
      settings = QJsonDocument::fromJson(file.readAll()).object();
    settings[QString::fromStdString(key)] = value;
    folder_.write("settings.json", QJsonDocument(settings).toJson().toStdString());
  }

  TemporaryFolder folder_;
  LinuxSystemLog log_;
  QString path_ = QString::fromStdString(folder_.path("settings.json"));
  LinuxUserDefaults userDefaults_{log_, path_};
};

INSTANTIATE_TEST_SUITE_P(Linux, UserDefaultsContract,
                         Values(subject<UserDefaultsSubject, RealUserDefaults>("real")),
                         subjectName);

class RealLoginItem final : public LoginItemSubject {
public:
  LoginItem& loginItem() override { return item_; }

private:
  TemporaryFolder folder_;
  ScopedVariable configuration_{"XDG_CONFIG_HOME", folder_.path()};
  LinuxLoginItem item_{"/opt/driftmark"};
};

INSTANTIATE_TEST_SUITE_P(Linux, LoginItemContract,
                         Values(subject<LoginItemSubject, RealLoginItem>("real")), subjectName);

class RealBundle final : public BundleSubject {
public:
  RealBundle() {
    folder_.write("Program.app/Contents/Info.plist",
                  "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key>"
                  "<string>com.example.program</string><key>CFBundleShortVersionString</key>"
                  "<string>1.2</string></dict></plist>");
    bundle_.emplace(folder_.path("Program.app/Contents/MacOS/program"), "");
  }

  Bundle& bundle() override { return *bundle_; }

private:
  TemporaryFolder folder_;
  std::optional<LinuxBundle> bundle_;
};

INSTANTIATE_TEST_SUITE_P(Linux, BundleContract, Values(subject<BundleSubject, RealBundle>("real")),
                         subjectName);

class RealDialogs final : public DialogsSubject {
public:
  RealDialogs() { std::filesystem::create_directory(folderInside()); }

  Dialogs& dialogs() override { return dialogs_; }
  void willPress(std::size_t button) override {
    whenOpen([button](QWidget& alert) {
      if (auto* const found = alert.findChild<QPushButton*>(QString("button%1").arg(button)))
        found->click();
    });
  }
  void willClose() override {
    whenOpen([](QWidget& alert) { alert.close(); });
  }
  std::string folder() override { return folder_.path(); }
  std::string folderInside() override { return folder_.path("inside"); }
  void willChoose(const std::string& folder) override {
    whenOpen([folder](QWidget& panel) {
      panel.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(folder));
      confirm(panel);
    });
  }
  void willConfirm() override { whenOpen(confirm); }
  void willCancel() override { willClose(); }

private:
  static void confirm(QWidget& panel) {
    for (auto* const button : panel.findChildren<QPushButton*>())
      if (button->isDefault())
        button->click();
  }

  void whenOpen(const std::function<void(QWidget&)>& action) {
    QTimer::singleShot(0, &context_, [action] {
      if (QWidget* const alert = QApplication::activeModalWidget())
        action(*alert);
    });
  }

  TemporaryFolder folder_;
  QObject context_;
  LinuxBundle bundle_{"/nowhere/program", ""};
  LinuxDialogs dialogs_{bundle_};
};

INSTANTIATE_TEST_SUITE_P(Linux, DialogsContract,
                         Values(subject<DialogsSubject, RealDialogs>("real")), subjectName);

class RealCloudFiles final : public CloudFilesSubject {
public:
  CloudFiles& cloudFiles() override { return drive_.files(); }
  std::string folder() override { return drive_.path(); }
  void addFolder(const std::string& path) override { std::filesystem::create_directory(path); }
  void addFile(const std::string& path, std::optional<DownloadingStatus> status) override {
    drive_.addFile(path.substr(folder().size() + 1), stateOf(status),
                   status != DownloadingStatus::notDownloaded);
  }
  void refuseToEvict(const std::string& path) override { drive_.refuseToEvict(path); }

private:
  /// Null for a file outside iCloud.
  static const char* stateOf(std::optional<DownloadingStatus> status) {
    if (!status)
      return nullptr;
    switch (*status) {
    case DownloadingStatus::notDownloaded:
      return "evicted";
    case DownloadingStatus::downloaded:
      return "downloading";
    case DownloadingStatus::current:
      break;
    }
    return "current";
  }

  CloudDrive drive_;
};

INSTANTIATE_TEST_SUITE_P(Linux, CloudFilesContract,
                         Values(subject<CloudFilesSubject, RealCloudFiles>("real")), subjectName);
INSTANTIATE_TEST_SUITE_P(Linux, CloudStatusContract,
                         Values(subject<CloudFilesSubject, RealCloudFiles>("real")), subjectName);

} // namespace
} // namespace driftmark::test
