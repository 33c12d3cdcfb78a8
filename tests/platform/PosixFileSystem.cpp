// Where the home folder is.

#include "ScopedVariable.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

std::string homeWith(const std::optional<std::string>& variable) {
  const ScopedVariable home("HOME", variable);
  return LinuxFileSystem("").homeDirectory();
}

std::string homeInDatabase() {
  const passwd* const entry = getpwuid(getuid()); // NOLINT(concurrency-mt-unsafe)
  return entry ? entry->pw_dir : "";
}

TEST(PosixFileSystem, homeIsTheVariableWithoutTrailingSlashes) {
  EXPECT_EQ(homeWith("/Users/someone"), "/Users/someone");
  EXPECT_EQ(homeWith("/Users/someone/"), "/Users/someone");
  EXPECT_EQ(homeWith("/Users/with space \xc3\xa9//"), "/Users/with space \xc3\xa9");
}

TEST(PosixFileSystem, homeComesFromTheUserDatabaseWithoutUsableVariable) {
  EXPECT_EQ(homeWith(std::nullopt), homeInDatabase());
  EXPECT_EQ(homeWith(""), homeInDatabase());
  EXPECT_EQ(homeWith("relative/folder"), homeInDatabase());
}

TEST(PosixFileSystem, homeAtTheRootIsEmpty) {
  EXPECT_EQ(homeWith("/"), "");
}

TEST(PosixFileSystem, deviceExists) {
  EXPECT_TRUE(LinuxFileSystem("").fileExists("/dev/null"));
}

} // namespace
} // namespace driftmark::test
