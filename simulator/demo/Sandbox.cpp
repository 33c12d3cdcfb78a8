#include "demo/Sandbox.h"

#include "common/SystemFailure.h"
#include "process/Launch.h"

#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr const char* maker = "Developer ID Application: Tallowmere (T4N8RW2KQZ)";

fs::path newFolder() {
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "icloud-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    throwSystemFailure("cannot make " + pattern);
  return pattern;
}

} // namespace

Sandbox::Sandbox(const fs::path& tools) : folder_(newFolder()) {
  try {
    fs::create_directory(home());
    fs::create_directory(temporary());
    fs::copy(tools, root().path(), fs::copy_options::recursive);
    fs::create_directories(root().applications());
  } catch (...) {
    fs::remove_all(folder_);
    throw;
  }
}

fs::path Sandbox::install(const fs::path& bundle) const {
  const fs::path place = root().applications() / bundle.filename();
  fs::copy(bundle, place, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  ChildProcess codesign({root().codesign(), {"--force", "--sign", maker, place}, {}});
  if (const int status = codesign.wait(); status != 0)
    throw std::runtime_error("cannot sign " + place.string() + ": codesign ended with " +
                             describeEnd(status));
  return place;
}

// What appends to the log of xdg-open writes into this pipe. It is also open for writing here, so
// that it has no end.
Descriptor Sandbox::openedFiles() const {
  const fs::path pipe = root().logFolder() / "xdg-open.log";
  fs::create_directories(pipe.parent_path());
  if (mkfifo(pipe.c_str(), 0600) != 0)
    throwSystemFailure("cannot make " + pipe.string());
  Descriptor lines(open(pipe.c_str(), O_RDWR | O_CLOEXEC));
  if (!lines)
    throwSystemFailure("cannot open " + pipe.string());
  return lines;
}

Sandbox::~Sandbox() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

} // namespace icloud
