#pragma once

#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {

/// The real file system and a folder to use it in.
class FileSystemTest : public testing::Test {
protected:
  std::string in(const std::string& name) const { return folder_.path(name); }

  static std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename().string());
    return names;
  }

  /// The description of an error; empty when there is none.
  static std::string words(const std::optional<PlatformError>& error) {
    return error ? error->description : "";
  }

  TemporaryFolder folder_;
  LinuxFileSystem files_{""};
};

} // namespace driftmark::test
