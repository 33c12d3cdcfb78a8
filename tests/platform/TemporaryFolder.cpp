#include "TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include <sys/stat.h>

namespace driftmark::test {

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "driftmark-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  path_ = std::filesystem::canonical(name);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void TemporaryFolder::write(std::string_view name, std::string_view text) const {
  std::filesystem::create_directories((path_ / name).parent_path());
  std::ofstream(path_ / name, std::ios::binary) << text;
}

void TemporaryFolder::writeScript(std::string_view name, std::string_view commands) const {
  write(name, std::string("#!/bin/sh\n").append(commands).append("\n"));
  std::filesystem::permissions(path_ / name, std::filesystem::perms::owner_all);
}

std::string TemporaryFolder::makeFifo(std::string_view name) const {
  if (mkfifo(path(name).c_str(), S_IRUSR | S_IWUSR) != 0)
    throw std::system_error(errno, std::generic_category(), "mkfifo");
  return path(name);
}

} // namespace driftmark::test
