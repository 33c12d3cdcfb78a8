// The program starts with the user's session.

#include "desktop/DesktopEntry.h"
#include "desktop/Session.h"
#include "harness/BuiltFiles.h"

#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

/// How an operation of the login item ended, and what it said.
struct Outcome {
  int status = -1;
  std::string text;
};

class LoginItem : public testing::Test {
protected:
  Outcome run(const std::string& operation, const std::string& executable = "/opt/driftmark",
              std::optional<uid_t> user = std::nullopt) {
    Program subject = session_.start(desktopSubject(), {"login-" + operation, executable}, user);
    Outcome outcome;
    outcome.text = subject.log.readToEnd();
    outcome.status = WEXITSTATUS(subject.process.wait());
    return outcome;
  }

  void add(const std::string& line) const { std::ofstream(entry_, std::ios::app) << line << '\n'; }
  std::string status() { return run("status").text; }

  Session session_;
  const fs::path folder_ = session_.home() / ".config/autostart";
  const fs::path entry_ = folder_ / "com.tallowmere.driftmark.desktop";
};

TEST_F(LoginItem, isNotRegisteredAtFirst) {
  EXPECT_EQ(status(), "not registered");
  EXPECT_FALSE(fs::exists(folder_));
}

TEST_F(LoginItem, isAnEntryThatNamesTheProgram) {
  const Outcome registered = run("register", "/opt/driftmark");
  EXPECT_EQ(registered.status, 0) << registered.text;
  EXPECT_EQ(status(), "enabled");
  const DesktopEntry entry(entry_);
  EXPECT_EQ(entry.raw("Type"), "Application");
  EXPECT_EQ(entry.string("Name"), "Driftmark");
  EXPECT_EQ(entry.raw("Terminal"), "false");
  EXPECT_THAT(entry.command(), ElementsAre("/opt/driftmark"));
}

TEST_F(LoginItem, liesInTheFolderOfTheUsersChoice) {
  const fs::path chosen = session_.home() / "my settings";
  session_.setVariable("XDG_CONFIG_HOME", chosen);
  EXPECT_EQ(run("register").status, 0);
  EXPECT_TRUE(fs::exists(chosen / "autostart" / entry_.filename()));
  EXPECT_FALSE(fs::exists(entry_));
}

class LoginItemPaths : public LoginItem, public testing::WithParamInterface<const char*> {};

/// The program is a tool that ends with a status of its own when it has found its arguments.
TEST_P(LoginItemPaths, startTheProgram) {
  const fs::path program = session_.folder() / GetParam();
  fs::create_directories(program.parent_path());
  fs::copy_file(childToolPath(), program);
  EXPECT_EQ(run("register", program).status, 0);
  EXPECT_EQ(status(), "enabled");
  const std::vector<std::string> command = DesktopEntry(entry_).command();
  ASSERT_THAT(command, ElementsAre(program.string()));
  Program started = session_.start(command.front());
  EXPECT_EQ(icloud::describeEnd(started.process.wait()), "status 0");
}

INSTANTIATE_TEST_SUITE_P(Paths, LoginItemPaths,
                         testing::Values("Driftmark", "My Programs/Drift mark ", "100% sure/50%f",
                                         "\"quoted\" and 'quoted'", "$HOME/${x}/$(y)", "`x`",
                                         "back\\slash/\\\\two\\", "end\\n", "tab\tand\nline", "%%c",
                                         "Grüße/日本", "a=b;c|d&e>f<g*h?i#j~k(l)",
                                         "[Desktop Entry]", "\\\"$`%"));

TEST_F(LoginItem, goesWhenItIsUnregistered) {
  run("register");
  EXPECT_EQ(run("unregister").status, 0);
  EXPECT_FALSE(fs::exists(entry_));
  EXPECT_EQ(status(), "not registered");
  EXPECT_EQ(run("unregister").status, 0);
}

TEST_F(LoginItem, followsWhatOthersDoToTheEntry) {
  run("register");
  fs::remove(entry_);
  EXPECT_EQ(status(), "not registered");
  for (const char* const line : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
    run("register");
    add(line);
    EXPECT_EQ(status(), "not registered") << line;
  }
  for (const char* const line :
       {"Hidden=false", "X-GNOME-Autostart-enabled=true", "[Desktop Action x]\nHidden=true"}) {
    run("register");
    add(line);
    EXPECT_EQ(status(), "enabled") << line;
  }
  std::ofstream(entry_) << "[Desktop Entry]\r\nType=Application\r\n Hidden = true \r\n";
  EXPECT_EQ(status(), "not registered");
}

TEST_F(LoginItem, isSwitchedOnAgainByRegisteringIt) {
  run("register");
  add("Hidden=true");
  EXPECT_EQ(run("register").status, 0);
  EXPECT_EQ(status(), "enabled");
}

TEST_F(LoginItem, belongsToTheProgramThatRegisteredLast) {
  run("register", "/Downloads/Driftmark.app/Contents/MacOS/Driftmark");
  run("register", "/Applications/Driftmark.app/Contents/MacOS/Driftmark");
  EXPECT_THAT(DesktopEntry(entry_).command(),
              ElementsAre("/Applications/Driftmark.app/Contents/MacOS/Driftmark"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
}

TEST_F(LoginItem, saysWhyItCannotBeRegistered) {
  std::ofstream(folder_) << "a file is in the way";
  const Outcome outcome = run("register");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.text, HasSubstr("Not a directory"));
  EXPECT_EQ(status(), "not registered");
}

TEST_F(LoginItem, saysWhenItsFolderIsClosedAndKeepsTheEntry) {
  run("register", "/first");
  fs::permissions(folder_, fs::perms(0555));
  std::optional<uid_t> user;
  if (getuid() == 0) { // for whom modes do not count
    session_.giveTo(somebodyElse);
    user = somebodyElse;
  }
  for (const char* const operation : {"register", "unregister"}) {
    const Outcome outcome = run(operation, "/second", user);
    EXPECT_EQ(outcome.status, 1) << operation;
    EXPECT_THAT(outcome.text, HasSubstr("Permission denied")) << operation;
    EXPECT_THAT(DesktopEntry(entry_).command(), ElementsAre("/first"));
  }
  fs::permissions(folder_, fs::perms(0755));
}

/// The program itself, by its menu.
TEST_F(LoginItem, isSwitchedByTheMenu) {
  session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
  Program program = session_.start();
  icloud::UiDriver driver = session_.attend();
  program.log.readUntil("brctl monitor -g started");
  const std::string entry = "Launch at Login";
  const auto isChecked = [&] {
    driver.click("MenuBarStrip");
    return driver.awaitMenu().entry(entry).isChecked;
  };
  EXPECT_FALSE(isChecked());
  driver.choose(entry);
  program.log.readUntil("Driftmark: launch at login enabled\n");
  EXPECT_THAT(DesktopEntry(entry_).command(), ElementsAre(driftmarkProgram()));

  EXPECT_TRUE(isChecked());
  driver.choose(entry);
  program.log.readUntil("Driftmark: launch at login disabled\n");
  EXPECT_FALSE(fs::exists(entry_));

  fs::remove(folder_);
  std::ofstream(folder_) << "a file is in the way";
  EXPECT_FALSE(isChecked());
  driver.choose(entry);
  program.log.readUntil("Driftmark: launch-at-login change failed: Not a directory\n");
}

} // namespace
} // namespace driftmark::test
