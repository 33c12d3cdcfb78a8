#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace driftmark::test {

/// A folder for one test, removed with its contents when this object is destroyed.
class TemporaryFolder {
public:
  /// Throws std::system_error.
  explicit TemporaryFolder(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path());
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  /// Absolute, without symbolic links.
  const std::filesystem::path& path() const { return path_; }

  /// The path of `name` in the folder, as ports take it.
  std::string path(std::string_view name) const { return (path_ / name).string(); }

  /// Writes a file and the folders above it. Returns its path.
  std::filesystem::path write(std::string_view name, std::string_view text) const;

  /// Writes an executable shell script. Returns its path.
  std::filesystem::path writeScript(std::string_view name, std::string_view commands) const;

  /// Makes a named pipe. Returns its path. Throws std::system_error.
  std::string makeFifo(std::string_view name) const;

private:
  std::filesystem::path path_;
};

/// The bytes of a file; empty when it cannot be read.
std::string contentsOf(const std::filesystem::path& file);

} // namespace driftmark::test
