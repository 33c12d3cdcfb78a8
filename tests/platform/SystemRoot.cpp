#include "platform/linux/SystemRoot.h"

#include "harness/TemporaryFolder.h"
#include "support/TestEnvironment.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

/// The path of the system root, or the error's message.
std::string root(const std::optional<std::string>& value) {
  TestEnvironment environment;
  if (value)
    environment.set("DRIFTMARK_SYSTEM_ROOT", *value);
  const auto result = SystemRoot::of(environment);
  if (const auto* const error = std::get_if<SystemRoot::Error>(&result))
    return error->message;
  return std::get<SystemRoot>(result).path();
}

TEST(SystemRoot, unsetVariableGivesSlash) {
  EXPECT_EQ(root(std::nullopt), "/");
}

TEST(SystemRoot, namedFolderIsUsed) {
  const TemporaryFolder folder;
  EXPECT_EQ(root(folder.path()), folder.path());
  EXPECT_EQ(root("/"), "/");
}

TEST(SystemRoot, linkToFolderIsAccepted) {
  const TemporaryFolder folder;
  std::filesystem::create_directory_symlink(folder.path(), folder.path("link"));
  EXPECT_EQ(root(folder.path("link")), folder.path("link"));
}

TEST(SystemRoot, emptyPathIsRefused) {
  EXPECT_EQ(root(""), "DRIFTMARK_SYSTEM_ROOT is empty");
}

TEST(SystemRoot, relativePathIsRefused) {
  EXPECT_EQ(root("some/folder"), "DRIFTMARK_SYSTEM_ROOT is not an absolute path: some/folder");
}

TEST(SystemRoot, missingFolderIsRefused) {
  EXPECT_EQ(root("/missing/folder"),
            "DRIFTMARK_SYSTEM_ROOT names a folder that does not exist: /missing/folder");
}

TEST(SystemRoot, fileIsRefused) {
  const TemporaryFolder folder;
  folder.write("file", "");
  EXPECT_EQ(root(folder.path("file")),
            "DRIFTMARK_SYSTEM_ROOT does not name a folder: " + folder.path("file"));
}

} // namespace
} // namespace driftmark::test
