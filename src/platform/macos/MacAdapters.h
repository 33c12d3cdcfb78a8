#pragma once

#include "platform/posix/PosixAdapters.h"
#include "ports/Bundle.h"
#include "ports/CloudFiles.h"
#include "ports/Dialogs.h"
#include "ports/FileSystem.h"
#include "ports/LoginItem.h"
#include "ports/SystemLog.h"
#include "ports/Text.h"
#include "ports/UserDefaults.h"
#include "ports/Workspace.h"

/// The adapters that keep nothing: each call goes to the system. Each has a source of its own.
namespace driftmark {

/// The main bundle. The system keeps what it has read of it at the start.
class MacBundle final : public Bundle {
public:
  std::string path() const override;
  std::optional<std::string> identifier() const override;

  /// Values that the bundle translates come in the user's language.
  std::optional<std::string> information(const std::string& key) const override;
};

/// The files of iCloud Drive as the system shows them. An item without a path in UTF-8 counts as
/// none.
class MacCloudFiles final : public CloudFiles {
public:
  void walk(const std::string& folder, const PluginConnection& visit) const override;

  /// The description is the error's technical one.
  std::optional<PlatformError> evict(const std::string& path) override;
};

/// The system's alerts, folder chooser and about panel. While one is open, the system can still end
/// this process, when the user logs out for instance.
class MacDialogs final : public Dialogs {
public:
  std::size_t runModal(const Alert& alert) override;
  std::optional<std::string> chooseFolder(const FolderPanel& panel) override;
  void orderFrontAboutPanel(const std::string& credits) override;
};

/// The file system of this machine, with the Finder's trash.
class MacFileSystem final : public FileSystem {
public:
  bool fileExists(const std::string& path) const override;
  std::string homeDirectory() const override;
  std::string temporaryDirectory() const override;
  std::optional<PlatformError> createDirectory(const std::string& path) override;
  std::optional<PlatformError> removeItem(const std::string& path) override;

  /// Between volumes, see `moveTree` for what lies where when a move is interrupted.
  std::optional<PlatformError> moveItem(const std::string& from, const std::string& to) override;

  std::optional<PlatformError> trashItem(const std::string& path) override;
  PlatformError unknownWriteError() const override;
};

/// The main application among the login items that the user sees in the system's settings.
class MacLoginItem final : public LoginItem {
public:
  Status status() const override;
  std::optional<PlatformError> registerItem() override;
  std::optional<PlatformError> unregisterItem() override;
};

/// The applications of this user as the system knows them.
class MacRunningApplications final : public PosixRunningApplications {
public:
  std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) const override;
};

/// Writes each line to the system's log, which keeps about its first thousand bytes, and to
/// standard error where somebody reads that. Control characters are escaped as by `oneLine`. Making
/// this object keeps a vanished reader of standard error from ending the process.
class MacSystemLog final : public SystemLog {
public:
  MacSystemLog();

  void log(std::string_view line) override;
};

/// Texts in the user's language. A character is what the system takes for one composed character
/// sequence; unlike elsewhere, a carriage return and the line feed after it are two.
class MacText final : public Text {
public:
  std::string byteCount(std::int64_t bytes) const override;
  bool isUrl(const std::string& text) const override;
  std::string relativeTime(Date date, Date now) const override;
  std::string firstCharacters(const std::string& text, std::size_t count) const override;
};

/// The system's settings of this user for this program; an argument of the same name goes before
/// them. The system reads them generously: a number is also a text, and the text "YES" is also
/// true.
class MacUserDefaults final : public UserDefaults {
public:
  std::optional<std::string> string(const std::string& key) const override;
  bool boolean(const std::string& key) const override;

  /// The system writes the setting in its own time, and tells nothing of a failure.
  void setBoolean(const std::string& key, bool value) override;
};

/// The Finder, and the applications that the user has chosen.
class MacWorkspace final : public Workspace {
public:
  void activateFileViewerSelecting(const std::string& path) override;
  void open(const std::string& path) override;
};

} // namespace driftmark
