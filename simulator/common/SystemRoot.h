#pragma once

#include <filesystem>

namespace icloud {

/// The folder that stands for "/" in a simulated system.
class SystemRoot {
public:
  explicit SystemRoot(std::filesystem::path path) : path_(std::move(path)) {}

  /// The root that the running program lies in, at usr/bin or usr/libexec. Throws when it lies
  /// elsewhere.
  static SystemRoot ofThisProgram();

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path brctl() const { return path_ / "usr/bin/brctl"; }
  std::filesystem::path bird() const { return path_ / "usr/libexec/bird"; }

  /// Where the daemon's socket lies.
  std::filesystem::path runFolder() const { return path_ / "var/run"; }

  /// The daemon's socket, as a name inside `runFolder`.
  static constexpr const char* birdSocket = "bird.socket";

private:
  std::filesystem::path path_;
};

} // namespace icloud
