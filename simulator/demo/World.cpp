#include "demo/World.h"

#include "common/SystemFailure.h"

#include <cstdlib>

namespace icloud {
namespace fs = std::filesystem;

namespace {

fs::path newFolder() {
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "icloud-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    throwSystemFailure("cannot make " + pattern);
  return pattern;
}

} // namespace

World::World(const fs::path& tools) : folder_(newFolder()) {
  try {
    fs::create_directory(home());
    fs::copy(tools, root().path(), fs::copy_options::recursive);
  } catch (...) {
    fs::remove_all(folder_);
    throw;
  }
}

World::~World() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

} // namespace icloud
