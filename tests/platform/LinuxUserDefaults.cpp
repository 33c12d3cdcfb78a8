// How the settings file is read, written and kept.

#include "ScopedVariable.h"
#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "support/TestSystemLog.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class LinuxUserDefaultsTest : public testing::Test {
protected:
  void write(const std::string& text) { folder_.write("driftmark/settings.json", text); }

  std::string contents(const std::string& name = "settings.json") const {
    std::ifstream file(folder_.path("driftmark/" + name));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::string complaint(const std::string& why) const {
    return "Driftmark: the settings in " + path_ + " cannot be read: " + why + "; using none";
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.path("driftmark/settings.json");
  TestSystemLog log_;
  LinuxUserDefaults settings_{log_, QString::fromStdString(path_)};
};

TEST_F(LinuxUserDefaultsTest, fileIsInUsersConfigurationFolder) {
  const ScopedVariable home("HOME", "/home/ada");
  const ScopedVariable unset("XDG_CONFIG_HOME", std::nullopt);
  EXPECT_EQ(LinuxUserDefaults::defaultPath(), "/home/ada/.config/driftmark/settings.json");
  const ScopedVariable set("XDG_CONFIG_HOME", "/etc/ada");
  EXPECT_EQ(LinuxUserDefaults::defaultPath(), "/etc/ada/driftmark/settings.json");
}

TEST_F(LinuxUserDefaultsTest, missingFileIsNoError) {
  EXPECT_FALSE(settings_.boolean("Key"));
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_FALSE(fs::exists(path_)) << "reading makes nothing";
}

TEST_F(LinuxUserDefaultsTest, settingIsWrittenReadably) {
  settings_.setBoolean("DeclinedMove", true);
  EXPECT_EQ(contents(), "{\n    \"DeclinedMove\": true\n}\n");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LinuxUserDefaultsTest, otherContentsOfFileAreKept) {
  write(R"({"Zoo": [1, {"deep": null}], "Big": 9007199254740993, "Text": "caf\u00e9"})");
  settings_.setBoolean("Key", true);
  const std::string text = contents();
  EXPECT_THAT(text, HasSubstr("9007199254740993"));
  EXPECT_THAT(text, HasSubstr("\"deep\": null"));
  EXPECT_EQ(settings_.string("Text"), "caf\xc3\xa9");
  EXPECT_TRUE(settings_.boolean("Key"));
}

TEST_F(LinuxUserDefaultsTest, onlyStringsAndBooleansAreRead) {
  write(R"({"one": 1, "yes": "true", "list": [true], "none": null})");
  for (const char* const key : {"one", "yes", "list", "none"})
    EXPECT_FALSE(settings_.boolean(key)) << key;
  EXPECT_EQ(settings_.string("one"), std::nullopt);
  EXPECT_EQ(settings_.string("list"), std::nullopt);
}

TEST_F(LinuxUserDefaultsTest, brokenFileIsLoggedOnceAndCountsAsEmpty) {
  write("{\"Key\": true,");
  EXPECT_FALSE(settings_.boolean("Key"));
  EXPECT_EQ(settings_.string("Key"), std::nullopt);
  ASSERT_EQ(log_.lines().size(), 1U);
  EXPECT_THAT(log_.lines()[0], HasSubstr("Driftmark: the settings in " + path_));
  EXPECT_THAT(log_.lines()[0], HasSubstr("at byte 13; using none"));
}

TEST_F(LinuxUserDefaultsTest, differentlyBrokenFileIsLoggedAgain) {
  write("[1]");
  settings_.boolean("Key");
  write("[2]");
  settings_.boolean("Key");
  write("{}");
  settings_.boolean("Key");
  write("[2]");
  settings_.boolean("Key");
  settings_.boolean("Key");
  const std::string line = complaint("it is not an object");
  EXPECT_THAT(log_.lines(), ElementsAre(line, line, line));
}

TEST_F(LinuxUserDefaultsTest, brokenFileIsKeptWhenSettingIsWritten) {
  write("[\"mine\"]");
  settings_.setBoolean("Key", true);
  EXPECT_TRUE(settings_.boolean("Key"));
  EXPECT_EQ(contents("settings.json.broken"), "[\"mine\"]");
  write("[\"again\"]");
  settings_.setBoolean("Key", false);
  EXPECT_EQ(contents("settings.json.broken"), "[\"mine\"]");
  EXPECT_EQ(contents("settings.json.broken-2"), "[\"again\"]");
  EXPECT_EQ(log_.lines().size(), 2U);
}

TEST_F(LinuxUserDefaultsTest, emptyFileIsBroken) {
  write("");
  EXPECT_FALSE(settings_.boolean("Key"));
  EXPECT_EQ(log_.lines().size(), 1U);
}

TEST_F(LinuxUserDefaultsTest, pipeIsNotReadAndIsKept) {
  write("{}");
  fs::remove(path_);
  folder_.makeFifo("driftmark/settings.json");
  EXPECT_FALSE(settings_.boolean("Key"));
  EXPECT_THAT(log_.lines(), ElementsAre(complaint("it is not a file")));
  settings_.setBoolean("Key", true);
  EXPECT_TRUE(settings_.boolean("Key"));
  EXPECT_TRUE(fs::is_fifo(path_ + ".broken"));
}

TEST_F(LinuxUserDefaultsTest, linkedFileStaysLinked) {
  folder_.write("dotfiles/driftmark.json", "{\"Address\": \"x\"}");
  fs::create_directory(folder_.path("driftmark"));
  fs::create_symlink(folder_.path("dotfiles/driftmark.json"), path_);
  settings_.setBoolean("Key", true);
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(settings_.string("Address"), "x");
  EXPECT_TRUE(settings_.boolean("Key"));
}

TEST_F(LinuxUserDefaultsTest, failureToWriteSettingIsLogged) {
  folder_.write("driftmark", "not a folder");
  settings_.setBoolean("Key", true);
  ASSERT_EQ(log_.lines().size(), 1U);
  EXPECT_EQ(log_.lines()[0], "Driftmark: the setting Key cannot be kept in " + path_ +
                                 ": the folder cannot be made");
}

} // namespace
} // namespace driftmark::test
