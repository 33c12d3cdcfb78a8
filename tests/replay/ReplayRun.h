#pragma once

#include "harness/RunToEnd.h"
#include "harness/TemporaryFolder.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace driftmark::test {

/// A folder for one test in which it runs the replay program.
class ReplayRun {
public:
  ReplayRun();

  /// Writes a file into the folder. Returns its path.
  std::filesystem::path write(const std::string& name, std::string_view content) const {
    return base_.write("work/" + name, content);
  }

  /// Runs the program in the folder. It keeps its temporary files in another one.
  Finished run(const std::vector<std::string>& arguments) const;

  std::filesystem::path folder() const { return base_.path("work"); }

  /// The number of temporary files that exist.
  std::size_t temporaryFiles() const;

private:
  std::filesystem::path temporaryFolder() const { return base_.path("temporary files"); }

  TemporaryFolder base_;
};

/// The path of a capture or report beside the tests.
std::filesystem::path fixture(const std::string& name);

} // namespace driftmark::test
