#pragma once

#include <filesystem>
#include <string>

namespace icloud {

/// The folder that stands for "/" in a simulated system.
class SystemRoot {
public:
  explicit SystemRoot(std::filesystem::path path) : path_(std::move(path)) {}

  /// The root of the running program, which is in its bin, sbin, usr/bin or usr/libexec. Throws
  /// when it is elsewhere.
  static SystemRoot ofThisProgram();

  const std::filesystem::path& path() const { return path_; }

  /// The path that a tool uses for `argument`: "/Applications" and everything in it is inside this
  /// root, every other path is the machine's own.
  std::filesystem::path resolve(const std::string& argument) const;

  std::filesystem::path applications() const { return path_ / "Applications"; }
  std::filesystem::path brctl() const { return path_ / "usr/bin/brctl"; }
  std::filesystem::path codesign() const { return path_ / "usr/bin/codesign"; }
  std::filesystem::path ditto() const { return path_ / "usr/bin/ditto"; }
  std::filesystem::path killall() const { return path_ / "usr/bin/killall"; }
  std::filesystem::path open() const { return path_ / "usr/bin/open"; }
  std::filesystem::path xattr() const { return path_ / "usr/bin/xattr"; }
  std::filesystem::path shell() const { return path_ / "bin/sh"; }
  std::filesystem::path launchd() const { return path_ / "sbin/launchd"; }
  std::filesystem::path bird() const { return path_ / "usr/libexec/bird"; }

  /// The folder of the daemon's socket.
  std::filesystem::path runFolder() const { return path_ / "var/run"; }

  /// The output of opened applications, in one file for each.
  std::filesystem::path logFolder() const { return path_ / "var/log"; }

  /// Where the daemon keeps its place in the scenario for a restart.
  std::filesystem::path birdJournal() const { return path_ / "var/db/bird/journal"; }

  /// The name of the daemon's socket in `runFolder`.
  static constexpr const char* birdSocket = "bird.socket";

private:
  std::filesystem::path path_;
};

} // namespace icloud
