// How tests make folders and files of their own.

#include "harness/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder(const fs::path& parent) {
  std::string name = fs::canonical(parent) / "driftmark-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), name);
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  // Tests take rights away, and without them a folder cannot be emptied.
  std::error_code ignored;
  for (auto entry = fs::recursive_directory_iterator(path_, ignored);
       entry != fs::recursive_directory_iterator(); entry.increment(ignored))
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
  fs::remove_all(path_, ignored);
}

fs::path TemporaryFolder::write(std::string_view name, std::string_view text) const {
  fs::path file = path_ / name;
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
  return file;
}

fs::path TemporaryFolder::writeScript(std::string_view name, std::string_view commands) const {
  fs::path file = write(name, std::string("#!/bin/sh\n").append(commands).append("\n"));
  fs::permissions(file, fs::perms::owner_all);
  return file;
}

std::string TemporaryFolder::makeFifo(std::string_view name) const {
  if (mkfifo(path(name).c_str(), S_IRUSR | S_IWUSR) != 0)
    throw std::system_error(errno, std::generic_category(), "mkfifo");
  return path(name);
}

std::string contentsOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace driftmark::test
