#include "CloudDrive.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <sys/xattr.h>

namespace driftmark::test {

CloudDrive::CloudDrive() {
  root_.write("failures", "");
  const std::string calls = root_.path("calls");
  const std::string failures = root_.path("failures");
  setBrctl("echo \"$@\" >> '" + calls + "'\nif grep -Fxq -- \"$2\" '" + failures +
           "'; then echo \"brctl: $2: still uploading\" >&2; exit 1; fi");
}

void CloudDrive::addFile(const std::string& name, const char* state, bool hasContents) const {
  drive_.write(name, hasContents ? std::string(fileSize, 'x') : "");
  std::filesystem::resize_file(path(name), fileSize);
  if (state)
    setState(path(name), state);
}

void CloudDrive::setState(const std::string& path, const char* state) {
  if (setxattr(path.c_str(), LinuxCloudFiles::stateAttribute, state, std::strlen(state), 0) != 0)
    throw std::system_error(errno, std::generic_category(), path);
}

void CloudDrive::removeBrctl() const {
  std::filesystem::remove(root_.path("usr/bin/brctl"));
}

void CloudDrive::refuseToEvict(const std::string& path) {
  failures_ += path + "\n";
  root_.write("failures", failures_);
}

std::vector<std::string> CloudDrive::calls() const {
  std::ifstream file(root_.path("calls"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

std::vector<WalkEntry> CloudDrive::walk(const std::string& folder) const {
  std::vector<WalkEntry> entries;
  files_.walk(folder, [&](const WalkEntry& entry) { entries.push_back(entry); });
  return entries;
}

std::vector<std::string> CloudDrive::names() const {
  std::vector<std::string> names;
  for (const WalkEntry& entry : walk())
    names.push_back(entry.path.value_or("").substr(path().size() + 1));
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<ResourceValues> CloudDrive::valuesOf(const std::string& name) const {
  for (const WalkEntry& entry : walk())
    if (entry.path == path(name))
      return entry.values;
  return std::nullopt;
}

} // namespace driftmark::test
