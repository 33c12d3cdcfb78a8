// How tests run the replay program in a folder of their own.

#include "ReplayRun.h"

#include "harness/BuiltFiles.h"

#include <iterator>

namespace driftmark::test {

namespace fs = std::filesystem;

ReplayRun::ReplayRun() {
  fs::create_directory(folder());
  fs::create_directory(temporaryFolder());
}

Finished ReplayRun::run(const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{"-c", "cd \"$0\" && exec \"$@\"", folder(), replayProgram()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return runToEnd({"/bin/sh", words, {{"TMPDIR", temporaryFolder()}}});
}

std::size_t ReplayRun::temporaryFiles() const {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(temporaryFolder()), fs::directory_iterator()));
}

fs::path fixture(const std::string& name) {
  return sourceFile("tests/replay/" + name);
}

} // namespace driftmark::test
