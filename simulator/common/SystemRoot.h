#pragma once

#include <filesystem>
#include <string>

namespace icloud {

/// The folder that stands for "/" in a simulated system.
class SystemRoot {
public:
  explicit SystemRoot(std::filesystem::path path) : path_(std::move(path)) {}

  /// The root that the running program lies in, in bin, sbin, usr/bin or usr/libexec. Throws when
  /// it lies elsewhere.
  static SystemRoot ofThisProgram();

  const std::filesystem::path& path() const { return path_; }

  /// What a tool that is given `argument` has to touch: "/Applications" and what is below it lie in
  /// this root, everything else is the machine's own.
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

  /// Where the daemon's socket lies.
  std::filesystem::path runFolder() const { return path_ / "var/run"; }

  /// Where the output of opened applications goes, in a file for each.
  std::filesystem::path logFolder() const { return path_ / "var/log"; }

  /// Where the daemon keeps its place in the scenario for a restart.
  std::filesystem::path birdJournal() const { return path_ / "var/db/bird/journal"; }

  /// The daemon's socket, as a name inside `runFolder`.
  static constexpr const char* birdSocket = "bird.socket";

private:
  std::filesystem::path path_;
};

} // namespace icloud
