// Bundles on disk.

#include "harness/TemporaryFolder.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* list = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
  <key>CFBundleIdentifier</key> <string>com.example.program</string>
  <key>LSUIElement</key> <true/>
  <key>NSHumanReadableCopyright</key> <string>Copyright © 2026 A &amp; B</string>
  <key>Nested</key> <dict><key>CFBundleName</key><string>Inner</string></dict>
  <key>List</key> <array><string>x</string></array>
  <key>Empty</key> <string/>
</dict>
</plist>
)";

TEST(PropertyList, textsOfTheOutermostDictionaryAreRead) {
  EXPECT_THAT(propertyListTexts(list),
              ElementsAre(Pair("CFBundleIdentifier", "com.example.program"), Pair("Empty", ""),
                          Pair("NSHumanReadableCopyright", "Copyright © 2026 A & B")));
}

TEST(PropertyList, malformedPropertyListHasNoTexts) {
  const std::string whole = list;
  for (const std::string& text :
       {std::string(), std::string("bplist00"), whole.substr(0, whole.size() / 2),
        whole + "<more/>", std::string("<plist><array><string>x</string></array></plist>"),
        std::string("<other><dict><key>a</key><string>b</string></dict></other>"),
        std::string("<plist><dict><key>a</key><string><b/></string></dict></plist>"),
        std::string("<plist><dict><key>a</key><string>b</key></dict></plist>")})
    EXPECT_THAT(propertyListTexts(QByteArray::fromStdString(text)), IsEmpty()) << text;
}

TEST(PropertyList, textWithoutKeyIsIgnored) {
  EXPECT_THAT(
      propertyListTexts("<plist><dict><key>a</key><true/><string>x</string></dict></plist>"),
      IsEmpty());
}

class LinuxBundleTest : public testing::Test {
protected:
  LinuxBundle bundle(const std::string& executable, const std::string& root = "") const {
    return {folder_.path(executable), root};
  }

  TemporaryFolder folder_;
};

TEST_F(LinuxBundleTest, bundleHoldsItsExecutable) {
  folder_.write("My Apps/A.app/Contents/Info.plist", list);
  const LinuxBundle found = bundle("My Apps/A.app/Contents/MacOS/A");
  EXPECT_EQ(found.path(), folder_.path("My Apps/A.app"));
  EXPECT_EQ(found.identifier(), "com.example.program");
  EXPECT_EQ(found.information("CFBundleName"), std::nullopt);
}

TEST_F(LinuxBundleTest, executableOutsideBundleHasItsFolder) {
  for (const std::string name :
       {"bin/A", "A.app/Contents/MacOS/A", "A.app/Contents/Other/A", "A/Contents/MacOS/A"}) {
    if (name.find("Other") != std::string::npos || name.starts_with("A/"))
      folder_.write(name.substr(0, name.find("Contents")) + "Contents/Info.plist", list);
    const LinuxBundle found = bundle(name);
    EXPECT_EQ(found.path(), std::filesystem::path(folder_.path(name)).parent_path().string());
    EXPECT_EQ(found.identifier(), std::nullopt);
    EXPECT_EQ(found.information("CFBundleIdentifier"), std::nullopt);
  }
}

TEST_F(LinuxBundleTest, brokenPropertyListHasNoKeys) {
  folder_.write("A.app/Contents/Info.plist", "<plist><dict><key>CFBundleIdentifier</key>");
  const LinuxBundle found = bundle("A.app/Contents/MacOS/A");
  EXPECT_EQ(found.path(), folder_.path("A.app"));
  EXPECT_EQ(found.identifier(), std::nullopt);
}

TEST_F(LinuxBundleTest, applicationBelowSystemRootHasPathInsideRoot) {
  folder_.write("root/Applications/A.app/Contents/Info.plist", list);
  folder_.write("root/home/A.app/Contents/Info.plist", list);
  std::filesystem::create_directory_symlink(folder_.path("root"), folder_.path("link"));
  for (const char* const root : {"root", "root/", "link"}) {
    EXPECT_EQ(bundle("root/Applications/A.app/Contents/MacOS/A", folder_.path(root)).path(),
              "/Applications/A.app");
    EXPECT_EQ(bundle("root/home/A.app/Contents/MacOS/A", folder_.path(root)).path(),
              folder_.path("root/home/A.app"));
  }
}

TEST_F(LinuxBundleTest, executableOfThisProcessIsFound) {
  const std::string executable = LinuxBundle::executableOfThisProcess();
  EXPECT_TRUE(executable.ends_with("/platform_tests")) << executable;
  EXPECT_EQ(LinuxBundle::ofThisProcess("").path() + "/platform_tests", executable);
}

} // namespace
} // namespace driftmark::test
