#pragma once

#include "platform/posix/PosixAdapters.h"
#include "ports/BackgroundQueue.h"
#include "ports/Bundle.h"
#include "ports/CloudFiles.h"
#include "ports/Dialogs.h"
#include "ports/FileSystem.h"
#include "ports/LoginItem.h"
#include "ports/MainQueue.h"
#include "ports/Signals.h"
#include "ports/SystemLog.h"
#include "ports/SystemText.h"
#include "ports/UserDefaults.h"
#include "ports/Workspace.h"

#include <atomic>

#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

/// The adapters with little state or none: each call goes to the system. Their source is
/// MacAdapters.mm, except for those with one of their own: MacBackgroundQueue, MacCloudFiles,
/// MacDialogs, MacFileSystem and MacSignals.
namespace driftmark {

/// Background work on the system's global queues. The destructor waits for running tasks and drops
/// those that have not begun. A task that the system has no thread for waits for one.
class MacBackgroundQueue final : public BackgroundQueue {
public:
  ~MacBackgroundQueue() override;

  [[nodiscard]] std::optional<PlatformError> async(QualityOfService quality, Task task) override;

private:
  const dispatch_group_t tasks_ = dispatch_group_create(); ///< running or waiting
  std::atomic<bool> closing_ = false;
};

/// The main bundle. The system reads it at the start and caches it.
class MacBundle final : public Bundle {
public:
  std::string path() const override;
  std::optional<std::string> identifier() const override;

  /// A value that the bundle localizes is in the user's language.
  std::optional<std::string> information(const std::string& key) const override;
};

/// The files of iCloud Drive as the system presents them. An item whose path is not UTF-8 has no
/// path in its entry.
class MacCloudFiles final : public CloudFiles {
public:
  void walk(const std::string& folder, const EntryHandler& visit) const override;

  /// The description is the technical one, for the log.
  std::optional<PlatformError> evict(const std::string& path) override;
};

/// The system's alerts, folder chooser and about panel. While one is open, the system can still end
/// this process, for instance when the user logs out.
class MacDialogs final : public Dialogs {
public:
  std::optional<std::size_t> runModal(const Alert& alert) override;
  std::optional<std::string> chooseFolder(const FolderPanel& panel) override;
  void orderFrontAboutPanel(const std::string& credits) override;
};

/// The file system of this machine, with the Finder's trash.
class MacFileSystem final : public FileSystem {
public:
  bool fileExists(const std::string& path) const override;
  bool itemExists(const std::string& path) const override;
  bool isLink(const std::string& path) const override;
  bool areSameItem(const std::string& one, const std::string& other) const override;
  std::string homeDirectory() const override;
  std::variant<std::string, PlatformError> temporaryDirectory() const override;
  std::optional<PlatformError> createDirectory(const std::string& path) override;
  std::optional<PlatformError> removeItem(const std::string& path) override;

  /// Between volumes, `moveTree` says what an interrupted move leaves.
  std::optional<PlatformError> moveItem(const std::string& from, const std::string& to) override;

  /// Between volumes, see `moveTreeKeeping`.
  std::variant<std::unique_ptr<MovedItem>, PlatformError>
  moveItemReversibly(const std::string& from, const std::string& to) override;

  std::optional<PlatformError> trashItem(const std::string& path) override;
  PlatformError unknownWriteError() const override;
};

/// The main application among the login items in the system's settings.
class MacLoginItem final : public LoginItem {
public:
  Status status() const override;
  std::optional<PlatformError> registerItem() override;
  std::optional<PlatformError> unregisterItem() override;
};

/// The running applications of this user.
class MacRunningApplications final : public PosixRunningApplications {
public:
  std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const override;

  /// In ticks of the system's uptime. Known for this user's processes, also for a program that was
  /// not opened as an application.
  std::optional<StartTime> startTime(std::int32_t process) const override;
};

/// Signals as the system's dispatch sources report them, also when the signal itself is ignored.
class MacSignals final : public Signals {
public:
  /// The main queue outlives this object and its sources.
  explicit MacSignals(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void ignore(QuitSignal signal) override;
  void restoreDefault(QuitSignal signal) override;
  std::unique_ptr<SignalSource> makeSource(QuitSignal signal,
                                           std::function<void()> handler) override;

private:
  MainQueue& mainQueue_;
};

/// Writes each line to the system's log, which keeps about its first thousand bytes, and to
/// standard error where that is read. Control characters are escaped by `oneLine`. The constructor
/// makes this process ignore SIGPIPE, so that it survives the end of a reader of standard error.
class MacSystemLog final : public SystemLog {
public:
  MacSystemLog();

  void log(std::string_view line) override;
};

/// Texts in the user's language. A character is a composed character sequence of the system. Unlike
/// on Linux, a carriage return and the line feed after it are two characters.
class MacSystemText final : public SystemText {
public:
  std::string byteCount(std::int64_t bytes) const override;
  bool isUrl(const std::string& text) const override;
  std::string relativeTime(Date date, Date now) const override;
  std::string firstCharacters(const std::string& text, std::size_t count) const override;
};

/// The user's settings for this program; a command-line argument of the same name overrides one,
/// as a text.
class MacUserDefaults final : public UserDefaults {
public:
  std::optional<std::string> string(const std::string& key) const override;
  bool boolean(const std::string& key) const override;

  /// The system writes the setting later and reports no failure.
  void setBoolean(const std::string& key, bool value) override;
};

/// The Finder, and the user's default applications.
class MacWorkspace final : public Workspace {
public:
  void activateFileViewerSelecting(const std::string& path) override;
  void open(const std::string& path) override;
};

} // namespace driftmark
