// The menu switches the entry that starts the program with the user's session.

#include "desktop/Session.h"
#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"

#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class LoginItem : public testing::Test {
protected:
  Session session_;
  const fs::path folder_ = session_.home() / ".config/autostart";
  const fs::path entry_ = folder_ / "com.tallowmere.driftmark.desktop";
};

TEST_F(LoginItem, menuSwitchesLoginItem) {
  session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
  RunningProgram program = session_.start();
  icloud::UiDriver driver = session_.awaitDriver();
  program.log.readUntil("brctl monitor -g started");
  const std::string entry = "Launch at Login";
  const auto isChecked = [&] {
    driver.click("MenuBarStrip");
    return driver.awaitMenu().entry(entry).isChecked;
  };
  EXPECT_FALSE(isChecked());
  driver.choose(entry);
  program.log.readUntil("Driftmark: launch at login enabled\n");
  EXPECT_THAT(contentsOf(entry_), HasSubstr("\nExec=\"" + driftmarkProgram() + "\"\n"));

  EXPECT_TRUE(isChecked());
  driver.choose(entry);
  program.log.readUntil("Driftmark: launch at login disabled\n");
  EXPECT_FALSE(fs::exists(entry_));

  fs::remove(folder_);
  std::ofstream(folder_) << "not a folder";
  EXPECT_FALSE(isChecked());
  driver.choose(entry);
  program.log.readUntil("Driftmark: launch-at-login change failed: Not a directory\n");
}

} // namespace
} // namespace driftmark::test
