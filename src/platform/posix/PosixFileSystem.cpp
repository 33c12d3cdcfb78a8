#include "platform/posix/PosixFileSystem.h"

#include "platform/posix/ProcessEnvironment.h"

#include <cerrno>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// The home folder in the user database; empty when the user has no entry.
std::string homeByDatabase() {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
    buffer.resize(buffer.size() * 2);
  return found ? found->pw_dir : "";
}

std::string home() {
  std::string path = ProcessEnvironment().variable("HOME").value_or("");
  if (!path.starts_with('/'))
    path = homeByDatabase();
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

} // namespace

PosixFileSystem::PosixFileSystem() : homeDirectory_(home()) {}

bool PosixFileSystem::fileExists(const std::string& path) const {
  struct stat information {};
  return path.find('\0') == std::string::npos && stat(path.c_str(), &information) == 0;
}

} // namespace driftmark
