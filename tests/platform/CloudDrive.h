#pragma once

#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark::test {

/// A drive whose files have the states of the simulated iCloud, and a system root whose `brctl` is
/// a script. Throws std::system_error when the file system has no extended attributes.
class CloudDrive {
public:
  /// The size of every file in bytes.
  static constexpr std::size_t fileSize = 5000;

  /// Installs a `brctl` that records its calls and fails for the files of `refuseToEvict`.
  CloudDrive();

  LinuxCloudFiles& files() { return files_; }
  PosixChildProcesses& children() { return children_; }
  std::string path() const { return drive_.path(); }
  std::string path(std::string_view name) const { return drive_.path(name); }

  /// Creates a file of `fileSize` in this state, or without one when it is null. Without contents,
  /// it uses no blocks.
  void addFile(const std::string& name, const char* state, bool hasContents = true) const;
  static void setState(const std::string& path, const char* state);

  /// Replaces `brctl` by these shell commands.
  void setBrctl(const std::string& commands) const { root_.writeScript("usr/bin/brctl", commands); }
  void removeBrctl() const;

  void refuseToEvict(const std::string& path);

  /// The arguments of each call of `brctl`.
  std::vector<std::string> calls() const;

  /// Every entry of a walk, in order.
  std::vector<WalkEntry> walk(const std::string& folder) const;
  std::vector<WalkEntry> walk() const { return walk(path()); }

  /// The paths of all entries below the drive, sorted and relative to it.
  std::vector<std::string> names() const;

  /// The values that a walk reports for one item below the drive; absent without values or item.
  std::optional<ResourceValues> valuesOf(const std::string& name) const;

private:
  TemporaryFolder drive_;
  TemporaryFolder root_;
  LinuxMainQueue mainQueue_;
  PosixChildProcesses children_{mainQueue_, root_.path()};
  LinuxCloudFiles files_{children_};
  std::string failures_;
};

} // namespace driftmark::test
