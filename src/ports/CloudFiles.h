#pragma once

#include "ports/PlatformError.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace driftmark {

/// How the copy of a cloud file on this machine stands to the one in iCloud.
enum class DownloadingStatus {
  notDownloaded, ///< its contents are only in iCloud
  downloaded,    ///< they are here, and out of date
  current,       ///< they are here as they are in iCloud, or newer
};

/// What the system tells of an item in one reading. It may leave out any of these.
struct ResourceValues {
  std::optional<bool> isRegularFile;
  std::optional<bool> isUbiquitousItem; ///< whether it belongs to iCloud Drive
  std::optional<DownloadingStatus> downloadingStatus;
  std::optional<std::int64_t> totalFileAllocatedSize; ///< bytes of the blocks in use
};

/// What a walk comes by.
struct WalkEntry {
  std::optional<std::string> path;      ///< none: not an item of the file system
  std::optional<ResourceValues> values; ///< none: they could not be read
};

/// The files of a cloud drive as they are on this machine. Paths are absolute byte strings. Any
/// thread; calls may run at the same time.
class CloudFiles {
public:
  using EntryHandler = std::function<void(const WalkEntry& entry)>;

  virtual ~CloudFiles() = default;

  /// Calls `visit` for every item below `folder`, however deep, in the file system's order: hidden
  /// ones and the contents of packages too. A symbolic link is an item and is not followed, except
  /// `folder` itself. What cannot be entered is passed over, and a folder that cannot be walked at
  /// all has no items. The entry lives for the one call. Blocks; holds no more than the path to the
  /// item at hand needs.
  virtual void walk(const std::string& folder, const EntryHandler& visit) const = 0;

  /// Asks the system to give up the contents of the file at `path` on this machine; name and size
  /// stay, and the contents come back when it is opened. Returns no value when that was done. A
  /// failure changes nothing. Blocks.
  [[nodiscard]] virtual std::optional<PlatformError> evict(const std::string& path) = 0;
};

} // namespace driftmark
