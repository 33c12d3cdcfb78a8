#pragma once

#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxCloudFiles.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark::test {

/// A drive whose files carry the states that the simulated iCloud keeps, and a system root whose
/// `brctl` is a script. Throws std::system_error where files take no attributes.
class CloudDrive {
public:
  /// How many bytes of contents a file has where they are here.
  static constexpr std::size_t fileSize = 5000;

  /// The `brctl` fails for the files that are named in `failures`, a line each, and notes every
  /// call in `calls`.
  CloudDrive();

  LinuxCloudFiles& files() { return files_; }
  PosixChildProcesses& children() { return children_; }
  std::string path() const { return drive_.path(); }
  std::string path(std::string_view name) const { return drive_.path(name); }

  /// Makes a file in this state, or without one when it is null; with its contents or, at its full
  /// size, without.
  void addFile(const std::string& name, const char* state, bool contentsHere = true) const;
  static void note(const std::string& path, const char* state);

  /// Replaces the `brctl` by these shell commands; without any there is none.
  void setBrctl(const std::string& commands) const { root_.writeScript("usr/bin/brctl", commands); }
  void removeBrctl() const;

  void refuseToEvict(const std::string& path);

  /// What `brctl` was called with, a line each.
  std::vector<std::string> calls() const;

  /// Every entry of a walk, in order.
  std::vector<WalkEntry> walk(const std::string& folder) const;
  std::vector<WalkEntry> walk() const { return walk(path()); }

  /// The paths of all entries below the drive, sorted and relative to it.
  std::vector<std::string> names() const;

  /// What a walk tells of one item below the drive; nothing where it tells nothing.
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
