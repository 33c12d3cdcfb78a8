#include "SimulatedSystem.h"
#include "TestBundle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <sysexits.h>

namespace icloud::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const std::string quarantine = "com.apple.quarantine";

class Xattr : public testing::Test {
protected:
  void SetUp() override {
    makeBundle(bundle_);
    if (setxattr(bundle_.c_str(), "user.probe", "", 0, 0) != 0)
      GTEST_SKIP() << "the file system keeps no attributes";
    removexattr(bundle_.c_str(), "user.probe");
  }

  Finished xattr(std::vector<std::string> arguments) const {
    return runToEnd({system_.sandbox().root().xattr(), std::move(arguments), {}});
  }

  void expectSuccess(std::vector<std::string> arguments, const std::string& output = "") const {
    const Finished ran = xattr(std::move(arguments));
    EXPECT_EQ(ran.exitStatus, 0);
    EXPECT_EQ(ran.error, "");
    EXPECT_EQ(ran.output, output);
  }

  void expectFailure(std::vector<std::string> arguments, const std::string& error) const {
    const Finished ran = xattr(std::move(arguments));
    EXPECT_EQ(ran.exitStatus, 1);
    EXPECT_EQ(ran.error, error);
  }

  SimulatedSystem system_;
  fs::path bundle_ = system_.sandbox().root().applications() / "Greeter.app";
  std::string shown_ = "/Applications/Greeter.app";
  std::string file_ = shown_ + "/Contents/Info.plist";
};

TEST_F(Xattr, attributeIsSetPrintedListedAndRemoved) {
  expectSuccess({"-w", quarantine, "0081;x", file_});
  EXPECT_EQ(
      getxattr((bundle_ / "Contents/Info.plist").c_str(), "user.com.apple.quarantine", nullptr, 0),
      6);
  expectSuccess({"-p", quarantine, file_}, "0081;x\n");
  expectSuccess({file_}, quarantine + "\n");
  expectSuccess({"-l", file_}, quarantine + ": 0081;x\n");
  expectSuccess({"-d", quarantine, file_});
  expectSuccess({"-l", file_});
}

TEST_F(Xattr, recursiveRemovalCoversTree) {
  expectSuccess({"-rw", quarantine, "1", shown_});
  expectSuccess({"-p", quarantine, shown_ + "/Contents/Resources/Été.txt"}, "1\n");
  expectSuccess({"-d", quarantine, file_});
  expectSuccess({"-dr", quarantine, shown_});
  expectSuccess({"-lr", shown_});
}

TEST_F(Xattr, recursionFollowsNoLink) {
  const TemporaryFolder folder;
  const std::string outside = folder.write("outside", "");
  expectSuccess({"-w", quarantine, "1", outside});
  fs::create_symlink(outside, bundle_ / "Contents/link");
  expectSuccess({"-dr", quarantine, shown_});
  expectSuccess({"-p", quarantine, outside}, "1\n");
}

TEST_F(Xattr, missingAttributeAndPathAreReported) {
  expectFailure({"-d", quarantine, file_},
                "xattr: " + file_ + ": No such xattr: " + quarantine + "\n");
  expectFailure({"-p", quarantine, file_},
                "xattr: " + file_ + ": No such xattr: " + quarantine + "\n");
  const std::string none = "xattr: [Errno 2] No such file or directory: '/Applications/none'\n";
  expectFailure({"-dr", quarantine, "/Applications/none"}, none);
  expectFailure({"-w", "a", "b", "/Applications/none"}, none);
}

TEST_F(Xattr, failedPathDoesNotStopOthers) {
  expectSuccess({"-w", quarantine, "1", file_});
  EXPECT_EQ(xattr({"-d", quarantine, "/Applications/none", file_}).exitStatus, 1);
  expectSuccess({file_});
}

TEST_F(Xattr, invalidCommandLineShowsUsage) {
  const std::vector<std::vector<std::string>> commands{
      {}, {"-d", "a"}, {"-w", "a", "b"}, {"-z", "a", "b"}, {"-pd", "a", "b"}, {"-l"}};
  for (const auto& command : commands) {
    const Finished ran = xattr(command);
    EXPECT_EQ(ran.exitStatus, EX_USAGE);
    EXPECT_THAT(ran.error, HasSubstr("usage: xattr"));
  }
}

} // namespace
} // namespace icloud::test
