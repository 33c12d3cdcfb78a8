// When the move to Applications is offered, and its steps.

#include "install/UserInstall.h"

#include "install/Relaunch.h"
#include "ports/Application.h"
#include "ports/Bundle.h"
#include "ports/ChildProcesses.h"
#include "ports/Dialogs.h"
#include "ports/FileSystem.h"
#include "ports/PlatformError.h"
#include "ports/UserDefaults.h"
#include "support/Paths.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace driftmark::UserInstall {

namespace {

constexpr const char* skipKey = "skipUserApplicationsInstall";
constexpr std::size_t moveAndReopen = 0; ///< the index of the button

/// The path of the new copy, or why there is none.
using Installed = std::variant<std::string, PlatformError>;

/// The folders for applications, the preferred one first.
std::array<std::string, 2> applicationsFolders(const FileSystem& fileSystem) {
  return {"/Applications", appendingPathComponent(fileSystem.homeDirectory(), "Applications")};
}

bool isInApplicationsFolder(const FileSystem& fileSystem, const std::string& parent) {
  return std::ranges::count(applicationsFolders(fileSystem), parent) > 0;
}

/// Whether the system runs the bundle from a random read-only folder instead of its own.
bool isTranslocated(const std::string& bundle) {
  return bundle.find("/AppTranslocation/") != std::string::npos;
}

std::string location(const std::string& bundle, const std::string& parent,
                     const std::string& home) {
  return isTranslocated(bundle) ? "a temporary location" : abbreviatingWithTilde(parent, home);
}

Alert offer(const std::string& location) {
  return {"Move Driftmark to your Applications folder?",
          "Driftmark is running from " + location +
              ". It will move itself to your Applications folder and reopen. That needs no "
              "administrator password, and the copy you downloaded goes to the Trash.",
          {"Move and Reopen", "Not Now"}};
}

Alert failure(const PlatformError& error) {
  return {"Could not move Driftmark",
          "Drag Driftmark.app into your Applications folder in Finder, then open it again.\n\n(" +
              error.description + ")",
          {}};
}

/// Whether the bundle is the item at `path` or within it, however the paths are spelled.
bool isAtOrIn(const FileSystem& fileSystem, const std::string& path, std::string bundle) {
  while (!fileSystem.areSameItem(bundle, path)) {
    std::string above = deletingLastPathComponent(bundle);
    if (above.size() >= bundle.size())
      return false;
    bundle = std::move(above);
  }
  return true;
}

/// Removes an older copy, unless it holds the one to install.
std::optional<PlatformError> removeOlderCopy(const Platform& platform, const std::string& target) {
  FileSystem& fileSystem = platform.fileSystem;
  if (!fileSystem.itemExists(target))
    return std::nullopt;
  if (isAtOrIn(fileSystem, target, platform.bundle.path()))
    return fileSystem.unknownWriteError();
  return fileSystem.removeItem(target);
}

/// Copies the bundle into `folder`, replacing an older copy there.
Installed installIn(const Platform& platform, const std::string& folder) {
  FileSystem& fileSystem = platform.fileSystem;
  const std::string bundle = platform.bundle.path();
  // Its folder alone, emptied since the start, is no copy that could replace another one.
  if (!fileSystem.fileExists(bundle + "/Contents/Info.plist"))
    return fileSystem.unknownWriteError();
  const std::string target = appendingPathComponent(folder, "Driftmark.app");
  static_cast<void>(fileSystem.createDirectory(folder));
  if (auto error = removeOlderCopy(platform, target))
    return *std::move(error);

  ChildProcesses& tools = platform.childProcesses;
  const auto copied =
      tools.prepare({"/usr/bin/ditto", {bundle, target}}, ToolOutput::discard)->run();
  if (const auto* const error = std::get_if<LaunchError>(&copied))
    return PlatformError{error->description};
  if (std::get<ToolResult>(copied).exitStatus != 0)
    return fileSystem.unknownWriteError();

  // The user decided to install this copy, so the system need not ask about its origin again.
  tools.prepare({"/usr/bin/xattr", {"-dr", "com.apple.quarantine", target}}, ToolOutput::discard)
      ->run();
  return target;
}

/// Copies the bundle into the first Applications folder where that succeeds.
Installed install(const Platform& platform) {
  Installed last = platform.fileSystem.unknownWriteError();
  for (const std::string& folder : applicationsFolders(platform.fileSystem)) {
    last = installIn(platform, folder);
    if (std::holds_alternative<std::string>(last))
      return last;
  }
  return last;
}

} // namespace

bool offerIfNeeded(const Platform& platform) {
  // Outside a bundle the path is that of a folder, with whatever else is in it.
  if (!platform.bundle.identifier())
    return false;
  const std::string bundle = platform.bundle.path();
  const std::string parent = deletingLastPathComponent(bundle);
  if (isInApplicationsFolder(platform.fileSystem, parent) || platform.userDefaults.boolean(skipKey))
    return false;

  platform.application.activateIgnoringOtherApplications();
  const std::string home = platform.fileSystem.homeDirectory();
  const auto answer = platform.dialogs.runModal(offer(location(bundle, parent, home)));
  if (answer != moveAndReopen) {
    if (answer)
      platform.userDefaults.setBoolean(skipKey, true);
    return false;
  }

  const Installed installed = install(platform);
  if (const auto* const error = std::get_if<PlatformError>(&installed)) {
    platform.dialogs.runModal(failure(*error));
    return false;
  }
  if (!isTranslocated(bundle))
    static_cast<void>(platform.fileSystem.trashItem(bundle));
  relaunch(platform.childProcesses, std::get<std::string>(installed));
  platform.application.terminate();
  return true;
}

} // namespace driftmark::UserInstall
