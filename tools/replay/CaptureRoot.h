#pragma once

#include <filesystem>
#include <string_view>

namespace driftmark {

/// A temporary system root whose `brctl` plays a captured text: every monitor prints it and ends,
/// every other call prints nothing. Removed with this object. Operations throw a std::system_error
/// when the disk fails.
class CaptureRoot {
public:
  CaptureRoot();

  /// Plays a file, which must stay where it is. Call either this or `playText`, once.
  void playFile(const std::filesystem::path& file) const;

  /// Plays `text`.
  void playText(std::string_view text) const;

  const std::filesystem::path& path() const { return folder_.path; }

  /// The tool inside the root.
  std::filesystem::path brctl() const;

private:
  struct TemporaryFolder {
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();
    std::filesystem::path path;
  };

  TemporaryFolder folder_;
};

} // namespace driftmark
