// How a captured text takes the place of `brctl`.

#include "replay/CaptureRoot.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string>
#include <system_error>

namespace driftmark {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view captureName = "capture";

constexpr std::string_view script = R"(#!/bin/sh
if [ "$1" = monitor ]; then
  exec /bin/cat "${0%/usr/bin/brctl}/capture"
fi
)";

void writeFile(const fs::path& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file)
    throw std::system_error(std::make_error_code(std::errc::io_error), path.string());
}

} // namespace

CaptureRoot::TemporaryFolder::TemporaryFolder() {
  std::string name = fs::temp_directory_path() / "driftmark-capture-XXXXXX";
  if (!::mkdtemp(name.data()))
    throw std::system_error(errno, std::generic_category(), name);
  path = name;
}

CaptureRoot::TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

CaptureRoot::CaptureRoot() {
  fs::create_directories(brctl().parent_path());
  writeFile(brctl(), script);
  fs::permissions(brctl(), fs::perms::owner_all);
}

void CaptureRoot::playFile(const fs::path& file) const {
  fs::create_symlink(fs::canonical(file), path() / captureName);
}

void CaptureRoot::playText(std::string_view text) const {
  writeFile(path() / captureName, text);
}

fs::path CaptureRoot::brctl() const {
  return path() / "usr/bin/brctl";
}

} // namespace driftmark
