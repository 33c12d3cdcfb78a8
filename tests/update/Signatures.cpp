// Whose signature makes a bundle the vendor's.

#include "harness/Waiting.h"
#include "update/UpdateTest.h"

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* vendorTeam = "TeamIdentifier=T4N8RW2KQZ";
constexpr const char* adHoc = "-";
constexpr const char* otherTeam = "Developer ID Application: Elsewhere (ABCDE12345)";

class Signatures : public UpdateTest {
protected:
  /// Announces the bundle, signed by `identity`, and expects that it is refused.
  void expectRefused(const fs::path& bundle, const char* identity) {
    machine_.sign(bundle, identity);
    announce("1.1", pack(bundle));
    RunningCopy copy = startInstalled();
    expectFailure(copy, "The update was not signed by Tallowmere.");
    quit(copy.driver);
  }

  /// Names that look like a report of the vendor's team.
  static std::vector<std::string> forgedNames() {
    const std::string team = vendorTeam;
    return {team, "Driftmark\n" + team, "Driftmark\n" + team + "\nSigned", "\n" + team + "\n"};
  }
};

TEST_F(Signatures, signatureOfOtherTeamIsRefused) {
  for (const char* const identity : {otherTeam, adHoc})
    expectRefused(build("1.1"), identity);
}

TEST_F(Signatures, executableNamedLikeTheTeamIsRefused) {
  for (const std::string& name : forgedNames()) {
    SCOPED_TRACE(name);
    const fs::path bundle = build("1.1");
    const fs::path folder = bundle / "Contents/MacOS";
    fs::rename(folder / "Driftmark", folder / name);
    TestMachine::setInformation(bundle, "CFBundleExecutable", name);
    expectRefused(bundle, adHoc);
  }
}

TEST_F(Signatures, identifierNamedLikeTheTeamIsRefused) {
  for (const std::string& name : forgedNames()) {
    SCOPED_TRACE(name);
    const fs::path bundle = build("1.1");
    TestMachine::setInformation(bundle, "CFBundleIdentifier", name);
    expectRefused(bundle, otherTeam);
  }
}

/// The signature says who made the bundle, not which of its programs it is.
TEST_F(Signatures, otherProgramOfVendorIsInstalled) {
  const fs::path bundle = build("1.1");
  TestMachine::setInformation(bundle, "CFBundleIdentifier", "com.tallowmere.other");
  machine_.sign(bundle);
  const Tree newTree = treeAt(bundle);
  announce("1.1", pack(bundle));
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(installed()), newTree);
}

TEST_F(Signatures, olderReleaseUnderNewerVersionIsInstalled) {
  const fs::path bundle = build("0.9");
  announce("1.1", pack(bundle));
  const Tree oldTree = treeAt(bundle);
  RunningCopy copy = startInstalled();
  agree(copy);
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  icloud::UiDriver opened = machine_.awaitOpenedCopy();
  expectStarted(opened);
  EXPECT_EQ(treeAt(installed()), oldTree);
}

} // namespace
} // namespace driftmark::test
