// Which item of the drive a client means by a path.
#include "bird/Drive.h"
#include "common/SystemFailure.h"

#include <sys/stat.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

bool isMissing(const std::error_code& problem) {
  return problem == std::errc::no_such_file_or_directory || problem == std::errc::not_a_directory;
}

fs::path realPath(const fs::path& path) {
  std::error_code problem;
  fs::path real = fs::canonical(path, problem);
  if (isMissing(problem))
    throw Refusal(Refusal::noSuchFile);
  if (problem)
    throw std::system_error(problem, "cannot follow " + path.string());
  return real;
}

fs::path withoutLinks(std::string path) {
  while (path.size() > 1 && path.ends_with('/'))
    path.pop_back();
  const fs::path given(path);
  const fs::path name = given.filename();
  if (!given.is_absolute() || path == "/")
    throw Refusal(Refusal::notInDrive);
  if (name == "." || name == "..")
    return realPath(given);
  return realPath(given.parent_path()) / name;
}

mode_t modeOf(const fs::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) == 0)
    return status.st_mode;
  if (errno == ENOENT || errno == ENOTDIR)
    throw Refusal(Refusal::noSuchFile);
  throwSystemFailure("cannot examine " + path.string());
}

} // namespace

std::optional<ItemId> lookUp(const Drive& drive, const std::string& path) {
  const std::string real = withoutLinks(path);
  const std::string folder = realPath(drive.folder());
  if (real == folder)
    throw Refusal(Refusal::isFolder);
  if (!real.starts_with(folder + "/"))
    throw Refusal(Refusal::notInDrive);
  const mode_t mode = modeOf(real);
  if (S_ISDIR(mode))
    throw Refusal(Refusal::isFolder);
  return S_ISREG(mode) ? drive.find(std::string_view(real).substr(folder.size() + 1))
                       : std::nullopt;
}

} // namespace icloud
