#pragma once

#include <filesystem>
#include <string_view>

namespace driftmark {

/// A temporary system root whose `brctl` plays a captured text: every monitor prints it and ends,
/// every other call prints nothing. Removed with this object. Operations throw a
/// `std::system_error` where the disk does not do its part.
class CaptureRoot {
public:
  CaptureRoot();

  /// Has a file played, which stays where it is. Either this or `playText`, once.
  void playFile(const std::filesystem::path& file) const;

  /// Has `text` played.
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
