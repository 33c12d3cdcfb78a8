#include "platform/linux/runloop/Displays.h"

#include "support/TestEnvironment.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using Words = std::vector<std::string>;

/// The arguments of the application of a program with these.
Words argumentsFor(const TestEnvironment& environment, Words words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size());
  for (std::string& word : words)
    arguments.push_back(word.data());
  Displays displays(environment, static_cast<int>(arguments.size()), arguments.data());
  const auto& all = displays.applicationArguments();
  return {all.begin(), all.end() - 1};
}

TEST(DisplaysTest, windowsAreInMemoryWithoutDisplay) {
  EXPECT_THAT(argumentsFor({}, {"driftmark"}), ElementsAre("driftmark", "-platform", "offscreen"));
}

TEST(DisplaysTest, displayArgumentNamesAnXDisplay) {
  TestEnvironment wayland;
  wayland.set("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_THAT(argumentsFor({}, {"driftmark", "-display", ":5"}),
              ElementsAre("driftmark", "-platform", "xcb", "-display", ":5"));
  EXPECT_THAT(argumentsFor(wayland, {"driftmark", "--display", ":5"}),
              ElementsAre("driftmark", "-platform", "xcb;wayland", "--display", ":5"));
}

} // namespace
} // namespace driftmark::test
