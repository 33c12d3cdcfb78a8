#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace driftmark::test {

/// A folder of a test's own, removed with all that it holds.
class TemporaryFolder {
public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  /// The absolute path of the folder, or of `name` in it.
  std::string path() const { return path_.string(); }
  std::string path(std::string_view name) const { return (path_ / name).string(); }

  /// Writes a file, folders above it included.
  void write(std::string_view name, std::string_view text) const;

  /// The same for a shell script that may be executed.
  void writeScript(std::string_view name, std::string_view commands) const;

  /// Makes a named pipe.
  std::string makeFifo(std::string_view name) const;

private:
  std::filesystem::path path_;
};

} // namespace driftmark::test
