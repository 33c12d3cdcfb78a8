#pragma once

#include <string>

namespace driftmark {

/// The file system as this program needs it. Paths are absolute byte strings. Any thread.
class FileSystem {
public:
  virtual ~FileSystem() = default;

  /// Whether something is at `path`, links followed. What cannot be determined counts as absent.
  virtual bool fileExists(const std::string& path) const = 0;

  /// The user's home folder, without a trailing slash.
  virtual std::string homeDirectory() const = 0;
};

} // namespace driftmark
