// How the folders for the survey are made.

#include "SurveyTree.h"

#include "common/Descriptor.h"
#include "common/SystemFailure.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace driftmark::bench {
namespace fs = std::filesystem;

namespace {

constexpr std::size_t foldersInFolder = 100;
constexpr std::size_t filesWithContents = 1'000;
constexpr std::string_view state = "current";

void makeFile(const fs::path& path, bool hasContents) {
  const icloud::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  if (!file || (hasContents && write(file.get(), state.data(), state.size()) < 0) ||
      fsetxattr(file.get(), LinuxCloudFiles::stateAttribute, state.data(), state.size(), 0) != 0)
    icloud::throwSystemFailure("cannot make " + path.string());
}

} // namespace

SurveyTree::SurveyTree() {
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "survey-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    icloud::throwSystemFailure("cannot make " + pattern);
  path_ = pattern;
  try {
    fill();
  } catch (...) {
    fs::remove_all(path_);
    throw;
  }
}

SurveyTree::~SurveyTree() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void SurveyTree::fill() const {
  for (std::size_t number = 0; number < folders; ++number) {
    const fs::path folder = path_ / ("Projects " + std::to_string(number / foldersInFolder)) /
                            ("Papers " + std::to_string(number));
    fs::create_directories(folder);
    for (std::size_t file = 0; file < filesInFolder; ++file)
      makeFile(folder / ("Letter " + std::to_string(file) + ".pages"),
               number < filesWithContents && file == 0);
  }
}

} // namespace driftmark::bench
