#pragma once

#include "platform/linux/SystemRoot.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/files/PosixFileSystem.h"
#include "ports/Bundle.h"
#include "ports/ChildProcesses.h"
#include "ports/CloudFiles.h"
#include "ports/LoginItem.h"
#include "ports/SystemLog.h"
#include "ports/SystemText.h"
#include "ports/UserDefaults.h"
#include "ports/Workspace.h"

#include <atomic>
#include <map>
#include <string>
#include <utility>

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// The adapters to the desktop and its user's folders. Each has a source of its own:
/// LinuxBundle.cpp, LinuxCloudFiles.cpp and so on.
namespace driftmark {

/// The texts of a property list in XML: the keys of its outermost dictionary whose values are
/// strings. Empty when the XML is not well-formed or not a dictionary. Any thread.
std::map<std::string, std::string> propertyListTexts(const QByteArray& xml);

/// The bundle NAME.app whose executable is in `NAME.app/Contents/MacOS/`. Its property list, in
/// XML, is `NAME.app/Contents/Info.plist`; one that cannot be read counts as having no keys.
class LinuxBundle final : public Bundle {
public:
  /// The bundle of this process. The path of a bundle in the applications folder of the system root
  /// is the one inside that root. The property list stays open, so that a new instance recognises
  /// this process by it even when the bundle was deleted.
  static LinuxBundle ofThisProcess(const std::string& systemRoot);

  /// The absolute path of this process's executable.
  static std::string executableOfThisProcess();

  /// The absolute path of a program that comes with that executable: `Contents/Helpers/NAME`.
  static std::string helperOfThisProcess(const std::string& name);

  /// The bundle of the executable at this absolute path.
  LinuxBundle(const std::string& executable, const std::string& systemRoot);

  std::string path() const override { return path_; }
  std::optional<std::string> identifier() const override;
  std::optional<std::string> information(const std::string& key) const override;

private:
  std::string path_;
  std::map<std::string, std::string> information_;
  FileDescriptor propertyList_; ///< open for the bundle of this process only
};

/// The files of the simulated iCloud Drive: an extended attribute of each file holds its state, and
/// `brctl` evicts it.
class LinuxCloudFiles final : public CloudFiles {
public:
  /// The attribute with the state of a file. A file without it does not belong to iCloud.
  static constexpr const char* stateAttribute = "user.icloud.state";

  /// The children outlive this object.
  explicit LinuxCloudFiles(ChildProcesses& childProcesses) : childProcesses_(childProcesses) {}

  void walk(const std::string& folder, const EntryHandler& visit) const override;

  /// The error is the tool's error output.
  std::optional<PlatformError> evict(const std::string& path) override;

  /// Ends a walk with its current item. From now on no eviction is started, and none reports an
  /// error: nobody would read it.
  void shutdown() { closing_ = true; }

private:
  ChildProcesses& childProcesses_;
  std::atomic<bool> closing_ = false;
};

/// The file system with the desktop's trash.
class LinuxFileSystem : public PosixFileSystem {
public:
  using PosixFileSystem::PosixFileSystem;

  /// Moves the item to the trash in the user's data folder (`XDG_DATA_HOME`), from other volumes
  /// too. The desktops share its layout; the note beside the item lets them put it back.
  std::optional<PlatformError> trashItem(const std::string& path) override;
};

/// An entry in the user's autostart folder, as the desktops read it. The file is the only state:
/// other programs may change or remove it.
class LinuxLoginItem final : public LoginItem {
public:
  /// `executable` is the absolute path of the program to start.
  explicit LinuxLoginItem(std::string executable) : executable_(std::move(executable)) {}

  /// Enabled when the entry exists and is neither hidden nor switched off.
  Status status() const override;

  /// Writes the entry, with the path of this program.
  std::optional<PlatformError> registerItem() override;

  /// Removes the entry. A missing entry is no failure.
  std::optional<PlatformError> unregisterItem() override;

  /// The path of the entry.
  static QString entryPath();

private:
  const std::string executable_;
};

/// The processes of this machine, identified by the bundles of their executables. A process with
/// another system root belongs to another system. Every call reads /proc anew.
class LinuxRunningApplications final : public PosixRunningApplications {
public:
  explicit LinuxRunningApplications(const SystemRoot& root) : systemRoot_(root.path()) {}

  /// The oldest first. Leaves out processes whose executable this user may not see.
  std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const override;

  /// In the kernel's ticks since the system started.
  std::optional<StartTime> startTime(std::int32_t process) const override;

private:
  const std::string systemRoot_;
};

/// Writes each line to standard error, without a prefix and in one call, and to syslog under the
/// name "driftmark". Control characters other than the tab are written as "\n", "\r" or, in
/// hexadecimal, like "\x1b", so that a line stays one line. Syslog receives at most the first 8000
/// bytes. What cannot be written is lost. The constructor ignores SIGPIPE: a closed standard error
/// does not end the process.
class LinuxSystemLog final : public SystemLog {
public:
  LinuxSystemLog();
  LinuxSystemLog(const LinuxSystemLog&) = delete;
  LinuxSystemLog& operator=(const LinuxSystemLog&) = delete;
  ~LinuxSystemLog() override;

  void log(std::string_view line) override;
};

/// Texts as macOS words them in English, whatever the locale of this process.
class LinuxSystemText : public SystemText {
public:
  /// In decimal units: "Zero KB" for 0; whole bytes below 1000, as in "1 byte" and "512 bytes";
  /// whole KB; MB with at most one decimal; GB, TB, PB and EB with at most two. Rounded to the
  /// nearest, halves away from zero; 1000 of a unit after rounding is 1 of the next. Trailing zero
  /// decimals are left out. A negative count has "-" in front.
  std::string byteCount(std::int64_t bytes) const override;

  /// Strictly by the grammar of URLs: a text with a space in it is none.
  bool isUrl(const std::string& text) const override;

  /// In the largest unit that fits, rounded down to a whole number: "2 minutes ago", "in 1 week".
  /// Less than a second either way is "in 0 seconds". Days, weeks, months and years are those of
  /// the local calendar. Any thread.
  std::string relativeTime(Date date, Date now) const override;

  /// Where something is cut off, bytes that are not UTF-8 are returned as U+FFFD.
  std::string firstCharacters(const std::string& text, std::size_t count) const override;
};

/// Settings in a file that users can read and edit: one JSON object, read at each access. A file
/// that cannot be read counts as empty; this is logged once for the same contents. When a setting
/// is written, a broken file is kept beside the new one as "settings.json.broken".
class LinuxUserDefaults final : public UserDefaults {
public:
  /// `driftmark/settings.json` in the user's configuration folder (`XDG_CONFIG_HOME`).
  static QString defaultPath();

  /// The log outlives this object.
  explicit LinuxUserDefaults(SystemLog& systemLog, QString path = defaultPath());

  std::optional<std::string> string(const std::string& key) const override;
  bool boolean(const std::string& key) const override;
  void setBoolean(const std::string& key, bool value) override;

private:
  struct Contents {
    QJsonObject settings;
    QString fault; ///< why the file cannot be read; empty when it can
    QByteArray bytes;
  };

  Contents read() const;
  QJsonObject settings() const;
  QString write(const QJsonObject& settings) const;
  QString keepBroken() const;
  void report(const Contents& contents) const;

  SystemLog& systemLog_;
  const QString path_;
  mutable Contents reported_; ///< the broken file that was logged last
};

/// The desktop by its standards: the file manager shows items, asked over the session bus, and
/// `xdg-open` opens them.
class LinuxWorkspace final : public Workspace {
public:
  /// The children outlive this object.
  explicit LinuxWorkspace(ChildProcesses& childProcesses) : childProcesses_(childProcesses) {}

  /// Opens the folder that holds the item when no file manager answers.
  void activateFileViewerSelecting(const std::string& path) override;

  void open(const std::string& path) override;

private:
  ChildProcesses& childProcesses_;
};

} // namespace driftmark
