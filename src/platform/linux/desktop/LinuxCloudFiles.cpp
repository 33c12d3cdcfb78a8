// What a file's attribute says about its state, and how a file is evicted.

#include "platform/linux/desktop/FolderWalk.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <variant>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace driftmark {

namespace {

constexpr std::int64_t blockSize = 512;

std::int64_t allocatedSize(const struct stat& information) {
  return static_cast<std::int64_t>(information.st_blocks) * blockSize;
}

/// Contents that are only in iCloud use no blocks; contents being downloaded use some.
bool hasContents(const struct stat& information) {
  return allocatedSize(information) >= static_cast<std::int64_t>(information.st_size);
}

std::optional<DownloadingStatus> downloadingStatus(std::string_view state,
                                                   const struct stat& information) {
  if (state == "current" || state == "uploading")
    return DownloadingStatus::current;
  if (state == "evicted")
    return DownloadingStatus::notDownloaded;
  // A file with contents may be receiving a newer version.
  if (state == "downloading")
    return hasContents(information) ? DownloadingStatus::downloaded
                                    : DownloadingStatus::notDownloaded;
  // Any kind of trouble.
  if (state == "other")
    return hasContents(information) ? DownloadingStatus::current : DownloadingStatus::notDownloaded;
  return std::nullopt;
}

using State = std::array<char, 32>;

/// Returns the length of the state; -1 with the reason in `errno`.
ssize_t readState(const FoundItem& item, State& state) {
  const auto read = [&](const std::string& path) {
    return lgetxattr(path.c_str(), LinuxCloudFiles::stateAttribute, state.data(), state.size());
  };
  const ssize_t size = read(item.path);
  if (size >= 0 || errno != ENAMETOOLONG)
    return size;
  return read("/proc/self/fd/" + std::to_string(item.folder) + "/" + item.name);
}

void setState(const FoundItem& item, const struct stat& information, ResourceValues& values) {
  State state{};
  const ssize_t size = readState(item, state);
  if (size >= 0) {
    values.isUbiquitousItem = true;
    values.downloadingStatus =
        downloadingStatus({state.data(), static_cast<std::size_t>(size)}, information);
  } else if (errno == ENODATA || errno == ENOTSUP) {
    values.isUbiquitousItem = false;
  }
}

/// Only files have a state: whether another item belongs to the drive is unknown.
std::optional<ResourceValues> valuesOf(const FoundItem& item) {
  struct stat information {};
  if (fstatat(item.folder, item.name, &information, AT_SYMLINK_NOFOLLOW) != 0)
    return std::nullopt;
  ResourceValues values{.isRegularFile = S_ISREG(information.st_mode),
                        .isUbiquitousItem = std::nullopt,
                        .downloadingStatus = std::nullopt,
                        .totalFileAllocatedSize = allocatedSize(information)};
  if (S_ISREG(information.st_mode))
    setState(item, information, values);
  return values;
}

/// The error output of a tool, without line ends at its end.
std::string errorText(const ToolResult& result) {
  const std::size_t last = result.output.find_last_not_of("\r\n");
  if (last == std::string::npos)
    return "brctl gave no reason and ended with status " + std::to_string(result.exitStatus);
  return result.output.substr(0, last + 1);
}

} // namespace

void LinuxCloudFiles::walk(const std::string& folder, const EntryHandler& visit) const {
  WalkEntry entry;
  walkFolder(folder, [&](const FoundItem& item) {
    if (closing_)
      return Walk::stop;
    entry.path = item.path;
    entry.values = valuesOf(item);
    visit(entry);
    return Walk::proceed;
  });
}

std::optional<PlatformError> LinuxCloudFiles::evict(const std::string& path) {
  if (closing_)
    return std::nullopt;
  const auto outcome =
      childProcesses_.prepare({"/usr/bin/brctl", {"evict", path}}, ToolOutput::captureError)->run();
  if (closing_)
    return std::nullopt;
  if (const auto* const error = std::get_if<LaunchError>(&outcome))
    return PlatformError{"brctl couldn’t be started: " + error->description};
  const auto& result = std::get<ToolResult>(outcome);
  return result.exitStatus == 0 ? std::nullopt : std::optional(PlatformError{errorText(result)});
}

} // namespace driftmark
