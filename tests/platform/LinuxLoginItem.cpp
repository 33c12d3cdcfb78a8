// How the autostart entry is written, and what counts as enabled.

#include "DesktopEntry.h"
#include "OrdinaryUser.h"
#include "ScopedVariable.h"
#include "harness/BuiltFiles.h"
#include "harness/RunningProgram.h"
#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

/// Why an operation failed; empty when it succeeded.
std::string fault(const std::optional<PlatformError>& error) {
  return error ? error->description : "";
}

class LinuxLoginItemTest : public testing::Test {
protected:
  static std::string registerItem(const std::string& executable = "/opt/driftmark") {
    return fault(LinuxLoginItem(executable).registerItem());
  }
  static std::string unregisterItem() {
    return fault(LinuxLoginItem("/opt/driftmark").unregisterItem());
  }
  static bool isEnabled() {
    return LinuxLoginItem("/opt/driftmark").status() == LoginItem::Status::enabled;
  }

  void add(const std::string& line) const { std::ofstream(entry_, std::ios::app) << line << '\n'; }

  TemporaryFolder folder_;
  ScopedVariable home_{"HOME", folder_.path()};
  ScopedVariable configuration_{"XDG_CONFIG_HOME", std::nullopt};
  const fs::path autostart_ = folder_.path(".config/autostart");
  const fs::path entry_ = autostart_ / "com.tallowmere.driftmark.desktop";
};

TEST_F(LinuxLoginItemTest, itemIsNotRegisteredAtFirst) {
  EXPECT_FALSE(isEnabled());
  EXPECT_FALSE(fs::exists(autostart_));
}

TEST_F(LinuxLoginItemTest, entryNamesProgram) {
  EXPECT_EQ(registerItem("/opt/driftmark"), "");
  EXPECT_TRUE(isEnabled());
  const DesktopEntry entry(entry_);
  EXPECT_EQ(entry.raw("Type"), "Application");
  EXPECT_EQ(entry.string("Name"), "Driftmark");
  EXPECT_EQ(entry.raw("Terminal"), "false");
  EXPECT_THAT(entry.command(), ElementsAre("/opt/driftmark"));
}

TEST_F(LinuxLoginItemTest, entryIsInConfigurationFolderOfUser) {
  const fs::path chosen = folder_.path("my settings");
  const ScopedVariable configuration("XDG_CONFIG_HOME", chosen);
  EXPECT_EQ(registerItem(), "");
  EXPECT_TRUE(fs::exists(chosen / "autostart" / entry_.filename()));
  EXPECT_FALSE(fs::exists(entry_));
}

class LinuxLoginItemPaths : public LinuxLoginItemTest,
                            public testing::WithParamInterface<const char*> {};

TEST_P(LinuxLoginItemPaths, commandStartsProgram) {
  const fs::path program = folder_.path(GetParam());
  fs::create_directories(program.parent_path());
  fs::copy_file(childToolPath(), program);
  EXPECT_EQ(registerItem(program), "");
  EXPECT_TRUE(isEnabled());
  const std::vector<std::string> command = DesktopEntry(entry_).command();
  ASSERT_THAT(command, ElementsAre(program.string()));
  EXPECT_EQ(RunningProgram(command.front()).exitStatus(), 0);
}

INSTANTIATE_TEST_SUITE_P(Paths, LinuxLoginItemPaths,
                         testing::Values("Driftmark", "My Programs/Drift mark ", "100% sure/50%f",
                                         "\"quoted\" and 'quoted'", "$HOME/${x}/$(y)", "`x`",
                                         "back\\slash/\\\\two\\", "end\\n", "tab\tand\nline", "%%c",
                                         "Grüße/日本", "a=b;c|d&e>f<g*h?i#j~k(l)",
                                         "[Desktop Entry]", "\\\"$`%"));

TEST_F(LinuxLoginItemTest, unregisteringRemovesEntry) {
  registerItem();
  EXPECT_EQ(unregisterItem(), "");
  EXPECT_FALSE(fs::exists(entry_));
  EXPECT_FALSE(isEnabled());
  EXPECT_EQ(unregisterItem(), "");
}

TEST_F(LinuxLoginItemTest, statusFollowsChangesOfEntry) {
  registerItem();
  fs::remove(entry_);
  EXPECT_FALSE(isEnabled());
  for (const char* const line : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
    registerItem();
    add(line);
    EXPECT_FALSE(isEnabled()) << line;
  }
  for (const char* const line :
       {"Hidden=false", "X-GNOME-Autostart-enabled=true", "[Desktop Action x]\nHidden=true"}) {
    registerItem();
    add(line);
    EXPECT_TRUE(isEnabled()) << line;
  }
  std::ofstream(entry_) << "[Desktop Entry]\r\nType=Application\r\n Hidden = true \r\n";
  EXPECT_FALSE(isEnabled());
}

TEST_F(LinuxLoginItemTest, registeringEnablesHiddenEntry) {
  registerItem();
  add("Hidden=true");
  EXPECT_EQ(registerItem(), "");
  EXPECT_TRUE(isEnabled());
}

TEST_F(LinuxLoginItemTest, entryNamesProgramThatRegisteredLast) {
  registerItem("/Downloads/Driftmark.app/Contents/MacOS/Driftmark");
  registerItem("/Applications/Driftmark.app/Contents/MacOS/Driftmark");
  EXPECT_THAT(DesktopEntry(entry_).command(),
              ElementsAre("/Applications/Driftmark.app/Contents/MacOS/Driftmark"));
  EXPECT_EQ(std::distance(fs::directory_iterator(autostart_), fs::directory_iterator()), 1);
}

TEST_F(LinuxLoginItemTest, failureToRegisterHasReason) {
  folder_.write(".config/autostart", "not a folder");
  EXPECT_THAT(registerItem(), HasSubstr("Not a directory"));
  EXPECT_FALSE(isEnabled());
}

TEST_F(LinuxLoginItemTest, entryInReadOnlyFolderIsKept) {
  registerItem("/first");
  {
    const OrdinaryUser user({folder_.path(), autostart_, entry_});
    fs::permissions(autostart_, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_THAT(registerItem("/second"), HasSubstr("Permission denied"));
    EXPECT_THAT(unregisterItem(), HasSubstr("Permission denied"));
    fs::permissions(autostart_, fs::perms::owner_all);
  }
  EXPECT_THAT(DesktopEntry(entry_).command(), ElementsAre("/first"));
}

} // namespace
} // namespace driftmark::test
