#pragma once

#include "ports/PlatformError.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace driftmark {

/// How the local copy of a cloud file relates to the file in iCloud.
enum class DownloadingStatus {
  notDownloaded, ///< the contents are only in iCloud
  downloaded,    ///< the local contents are out of date
  current,       ///< the local contents equal those in iCloud, or are newer and not yet uploaded
};

/// The values of an item, read at once. The system may leave out any of them.
struct ResourceValues {
  std::optional<bool> isRegularFile;
  std::optional<bool> isUbiquitousItem; ///< whether it belongs to iCloud Drive
  std::optional<DownloadingStatus> downloadingStatus;
  std::optional<std::int64_t> totalFileAllocatedSize; ///< bytes of the blocks in use
};

/// One item of a walk.
struct WalkEntry {
  std::optional<std::string> path;      ///< absent: it is no item of the file system
  std::optional<ResourceValues> values; ///< absent: they could not be read
};

/// The files of a cloud drive on this machine. Paths are absolute byte strings. Any thread; calls
/// may run at the same time.
class CloudFiles {
public:
  using EntryHandler = std::function<void(const WalkEntry& entry)>;

  virtual ~CloudFiles() = default;

  /// Calls `visit` for every item below `folder`, at any depth, in the order of the file system.
  /// Hidden items and the contents of packages are included. A symbolic link is an item and is not
  /// followed, except `folder` itself. A folder that cannot be entered is skipped; when `folder`
  /// itself cannot be walked, there are no items. The entry is valid during the call only. Blocks;
  /// needs memory for the path of the current item only.
  virtual void walk(const std::string& folder, const EntryHandler& visit) const = 0;

  /// Asks the system to remove the local contents of the file at `path`. Name and size stay, and
  /// the contents are downloaded again when the file is opened. Returns no value on success. A
  /// failure changes nothing; the system refuses a file whose changes are not uploaded. Blocks.
  [[nodiscard]] virtual std::optional<PlatformError> evict(const std::string& path) = 0;
};

} // namespace driftmark
