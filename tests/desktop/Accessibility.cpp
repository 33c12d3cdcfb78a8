// What a screen reader receives.

#include "desktop/BrctlScript.h"
#include "desktop/ScreenReader.h"
#include "desktop/Session.h"
#include "harness/BuiltFiles.h"
#include "harness/Waiting.h"

#include <algorithm>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* strip = "button menu";
constexpr const char* menu = "popup menu";

std::string spoken(const Accessible& entry) {
  std::string text = entry.role;
  if (text == "separator")
    return text;
  text += ": " + entry.name;
  if (!entry.isEnabled)
    text += ", disabled";
  if (entry.isChecked)
    text += ", checked";
  return text;
}

class Accessibility : public testing::Test {
protected:
  Accessibility() {
    session_.openDisplay();
    reader_.emplace(session_.openBus());
  }

  void start() { program_.emplace(session_.start()); }

  /// Waits until the strip has this name.
  Accessible awaitStrip(const std::string& name) {
    const Accessible shown =
        reader_->awaitProgram(program_->process.identifier(), [&name](const Accessible& program) {
          const Accessible* const found = program.first(strip);
          return found != nullptr && found->name == name;
        });
    return *shown.first(strip);
  }

  /// Presses the strip as a screen reader does, and waits for the menu.
  Accessible openMenu(const Accessible& pressed) {
    reader_->perform(pressed, "Press");
    const Accessible shown =
        reader_->awaitProgram(program_->process.identifier(), [](const Accessible& program) {
          const Accessible* const found = program.first(menu);
          return found != nullptr && found->isShowing;
        });
    return *shown.first(menu);
  }

  Session session_;
  std::optional<ScreenReader> reader_;
  std::optional<RunningProgram> program_;
};

TEST_F(Accessibility, stripIsReadWithNameStateAndActions) {
  session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
  start();
  const Accessible item = awaitStrip("iCloud Drive: idle");
  EXPECT_EQ(item.description, "iCloud Drive: idle");
  EXPECT_TRUE(item.isShowing);
  EXPECT_TRUE(item.isEnabled);
  EXPECT_TRUE(item.isFocusable);
  EXPECT_FALSE(item.isExpanded);
  EXPECT_THAT(item.children, IsEmpty());
  EXPECT_THAT(reader_->actions(item), ElementsAre("ShowMenu", "Press"));
  EXPECT_EQ(item.place.top(), 0);
  EXPECT_EQ(item.place.right(), 1023);
}

TEST_F(Accessibility, stripFollowsState) {
  const std::string more = session_.folder() / "more";
  ASSERT_EQ(mkfifo(more.c_str(), S_IRUSR | S_IWUSR), 0);
  session_.writeTool(
      "/usr/bin/brctl",
      brctlUploading("a.txt", "45",
                     "read line < '" + more + "'; exec " + childToolPath() +
                         " print ' o /com~apple~CloudDocs/a.txt \u2191 80%\n' wait"));
  start();
  awaitStrip("iCloud Drive: uploading 45%");
  std::ofstream(more) << "continue\n";
  awaitStrip("iCloud Drive: uploading 80%");
}

TEST_F(Accessibility, menuIsReadEntryByEntry) {
  const std::filesystem::path autostart = session_.home() / ".config/autostart";
  std::filesystem::create_directory(autostart);
  std::ofstream(autostart / "com.tallowmere.driftmark.desktop") << "[Desktop Entry]\n";
  session_.writeTool("/usr/bin/brctl", brctlUploading("Papers/R&D && \u05d0\u05d1.txt", "45"));
  start();
  const Accessible item = awaitStrip("iCloud Drive: uploading 45%");
  const Accessible opened = openMenu(item);

  std::vector<std::string> entries;
  for (const Accessible& child : opened.children) {
    EXPECT_TRUE(child.isShowing) << child.name;
    entries.push_back(spoken(child));
  }
  EXPECT_THAT(entries,
              ElementsAre("menu item: iCloud Drive: Uploading…, disabled", "separator",
                          "menu item: R&D && \u05d0\u05d1.txt  —  uploading 45%", "separator",
                          "menu item: Checking iCloud storage…, disabled", "separator",
                          "menu item: Open iCloud Drive", "menu item: Free Up Space…", "separator",
                          "menu item: About Driftmark", "menu item: Check for Updates…",
                          "menu item: Launch at Login, checked", "menu item: Quit Driftmark"));
  EXPECT_TRUE(awaitStrip("iCloud Drive: uploading 45%").isExpanded);
  for (const Accessible& child : opened.children)
    EXPECT_TRUE(opened.place.contains(child.place)) << child.name;
}

TEST_F(Accessibility, changeInOpenMenuIsAnnounced) {
  const std::string answer = session_.folder() / "answer";
  ASSERT_EQ(mkfifo(answer.c_str(), S_IRUSR | S_IWUSR), 0);
  session_.writeTool("/usr/bin/brctl", "[ \"$1\" = quota ] && exec cat '" + answer + "'\nexec " +
                                           childToolPath() + " wait");
  start();
  const Accessible opened = openMenu(awaitStrip("iCloud Drive: idle"));
  reader_->awaitChange(opened.named("Checking iCloud storage…"), [&answer] {
    std::ofstream(answer) << "5000000 bytes of quota remaining in personal account\n";
  });
  reader_->awaitProgram(program_->process.identifier(), [](const Accessible& program) {
    const auto& entries = program.first(menu)->children;
    return std::ranges::count(entries, "5 MB available in iCloud", &Accessible::name) == 1;
  });
}

TEST_F(Accessibility, elidedNameIsReadWhole) {
  const std::string name = "a " + std::string(200, 'x') + " z.txt";
  session_.writeTool("/usr/bin/brctl", brctlUploading(name, "45"));
  start();
  const Accessible opened = openMenu(awaitStrip("iCloud Drive: uploading 45%"));
  EXPECT_TRUE(opened.named(name + "  —  uploading 45%").isEnabled);
}

TEST_F(Accessibility, pathDescribesRowOfFile) {
  session_.writeTool("/usr/bin/brctl", brctlUploading("Papers/a.txt", "45"));
  start();
  const Accessible opened = openMenu(awaitStrip("iCloud Drive: uploading 45%"));
  EXPECT_EQ(opened.named("a.txt  —  uploading 45%").description,
            session_.home() / "Library/Mobile Documents/com~apple~CloudDocs/Papers/a.txt");
  EXPECT_EQ(opened.named("Open iCloud Drive").description, "");
}

TEST_F(Accessibility, aboutPanelIsRead) {
  session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
  start();
  reader_->perform(openMenu(awaitStrip("iCloud Drive: idle")).named("About Driftmark"), "Press");
  const Accessible shown =
      reader_->awaitProgram(program_->process.identifier(), [](const Accessible& program) {
        const Accessible* const panel = program.first("dialog");
        return panel != nullptr && panel->isShowing && program.first(menu) == nullptr;
      });
  const Accessible& panel = *shown.first("dialog");
  EXPECT_EQ(panel.name, "About Driftmark");
  EXPECT_EQ(panel.named("Driftmark").role, "label");
}

TEST_F(Accessibility, actionOnEntryChoosesIt) {
  session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
  start();
  const Accessible opened = openMenu(awaitStrip("iCloud Drive: idle"));
  reader_->performWithoutReply(opened.named("Quit Driftmark"), "Press");
  EXPECT_EQ(awaitEnd(program_->process), "status 0");
}

} // namespace
} // namespace driftmark::test
