#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark::test {

/// What a run of the replay program left behind.
struct ReplayResult {
  int status = -1; ///< the exit code; -1 when it did not exit by itself
  std::string output;
  std::string errors;
};

/// A folder of a test's own, removed with this object, and the replay program run in it.
class ReplayRun {
public:
  ReplayRun();
  ReplayRun(const ReplayRun&) = delete;
  ReplayRun& operator=(const ReplayRun&) = delete;
  ~ReplayRun();

  /// Writes a file into the folder and returns its path.
  std::filesystem::path write(const std::string& name, std::string_view content) const;

  /// Runs the program in the folder, with another folder of ours for its temporary files.
  ReplayResult run(const std::vector<std::string>& arguments) const;

  const std::filesystem::path& folder() const { return folder_; }

  /// How many temporary files there are.
  std::size_t temporaryFiles() const;

private:
  std::filesystem::path folder_;
  std::filesystem::path base_;
};

/// One of the captures and reports beside the tests.
std::filesystem::path fixture(const std::string& name);

std::string contentOf(const std::filesystem::path& file);

} // namespace driftmark::test
