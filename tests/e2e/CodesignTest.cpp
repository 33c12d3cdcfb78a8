#include "SimulatedSystem.h"
#include "TestBundle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace icloud::test {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;

const std::string vendor = "Developer ID Application: Tallowmere (T4N8RW2KQZ)";

class Codesign : public testing::Test {
protected:
  Codesign() { makeBundle(bundle_); }

  Finished codesign(std::vector<std::string> arguments) const {
    return runToEnd({system_.sandbox().root().codesign(), std::move(arguments), {}});
  }

  Finished verify(const fs::path& path) const {
    return codesign({"--verify", "--deep", "--strict", path});
  }

  void sign(const std::string& identity = vendor) const {
    const Finished signing = codesign({"-s", identity, bundle_});
    ASSERT_EQ(signing.exitStatus, 0) << signing.error;
    ASSERT_EQ(signing.error, "");
  }

  void expectInvalid(const std::string& words, const fs::path& path) const {
    const Finished verified = verify(path);
    EXPECT_EQ(verified.exitStatus, 1);
    EXPECT_EQ(verified.output, "");
    EXPECT_EQ(verified.error, path.string() + ": " + words + "\n");
  }

  fs::path in(const std::string& name) const { return bundle_ / "Contents" / name; }

  void expectBroken(const std::string& what, const std::string& name) const {
    expectInvalid("a sealed resource is missing or invalid\n" + what + ": " + in(name).string(),
                  bundle_);
  }

  TemporaryFolder folder_;
  SimulatedSystem system_;
  fs::path bundle_ = folder_.path() / "A Greeter.app";
};

TEST_F(Codesign, validSignatureIsSilent) {
  sign();
  const Finished verified = verify(bundle_);
  EXPECT_EQ(verified.exitStatus, 0);
  EXPECT_EQ(verified.output + verified.error, "");
  EXPECT_EQ(codesign({"-vv", bundle_}).error, bundle_.string() + ": valid on disk\n" +
                                                  bundle_.string() +
                                                  ": satisfies its Designated Requirement\n");
}

TEST_F(Codesign, signatureSurvivesMovingBundle) {
  sign();
  const fs::path installed = system_.sandbox().root().applications() / "Greeter.app";
  fs::copy(bundle_, installed, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  EXPECT_EQ(verify("/Applications/Greeter.app").exitStatus, 0);
}

TEST_F(Codesign, changedFileIsFound) {
  sign();
  writeFile(in("Resources/Été.txt"), "winter\n");
  expectBroken("file modified", "Resources/Été.txt");
}

TEST_F(Codesign, changedExecutableIsFound) {
  sign();
  writeFile(in("MacOS/Greeter"), "#!/bin/sh\nexit 1\n");
  expectBroken("file modified", "MacOS/Greeter");
}

TEST_F(Codesign, addedFileIsFound) {
  sign();
  writeFile(in("_CodeSignature/more"), "");
  expectBroken("file added", "_CodeSignature/more");
}

TEST_F(Codesign, missingFileIsFound) {
  sign();
  fs::remove(in("Resources/current"));
  expectBroken("file missing", "Resources/current");
}

TEST_F(Codesign, lostExecutePermissionIsFound) {
  sign();
  fs::permissions(in("MacOS/Greeter"), fs::perms(0644));
  expectBroken("file modified", "MacOS/Greeter");
}

TEST_F(Codesign, changedLinkTargetIsFound) {
  sign();
  fs::remove(in("Resources/current"));
  fs::create_symlink("../Info.plist", in("Resources/current"));
  expectBroken("file modified", "Resources/current");
}

TEST_F(Codesign, fileReplacedByPipeIsFound) {
  sign();
  fs::remove(in("Resources/Été.txt"));
  ASSERT_EQ(mkfifo(in("Resources/Été.txt").c_str(), 0600), 0);
  expectBroken("file modified", "Resources/Été.txt");
}

TEST_F(Codesign, fileBesideContentsIsFound) {
  sign();
  writeFile(bundle_ / "more", "");
  expectInvalid("unsealed contents present in the bundle root", bundle_);
}

TEST_F(Codesign, tamperedSignatureIsFound) {
  sign();
  const std::string signature = contentsOf(in("_CodeSignature/CodeResources"));
  std::string other = signature;
  other.replace(other.find("T4N8RW2KQZ"), 10, "AAAAAAAAAA");
  for (const std::string& text :
       {other, signature.substr(0, signature.size() / 2), std::string()}) {
    writeFile(in("_CodeSignature/CodeResources"), text);
    expectInvalid("invalid signature (code or signature have been modified)", bundle_);
  }
}

TEST_F(Codesign, unsignedPathIsReported) {
  expectInvalid("code object is not signed at all", bundle_);
  expectInvalid("code object is not signed at all", folder_.write("file", ""));
}

TEST_F(Codesign, missingPathAndNonBundleAreReported) {
  expectInvalid("No such file or directory", folder_.path() / "None.app");
  expectInvalid("bundle format unrecognized, invalid, or unsuitable", folder_.path());
}

TEST_F(Codesign, strictVerificationRefusesLinkedBundle) {
  sign();
  const fs::path link = folder_.path() / "Link.app";
  fs::create_directory_symlink(bundle_, link);
  expectInvalid("invalid destination for symbolic link in bundle", link);
  EXPECT_EQ(verify(link / "").exitStatus, 1);
  EXPECT_EQ(codesign({"--verify", link}).exitStatus, 0);
}

TEST_F(Codesign, strictVerificationRefusesLinksLeadingOutside) {
  fs::create_symlink("../..", in("Resources/inside"));
  for (const std::string target :
       {"/etc/hosts", "../../../file", "../Resources/../../..", "inside/..", "current"}) {
    fs::remove(in("Resources/current"));
    fs::create_symlink(target, in("Resources/current"));
    EXPECT_EQ(codesign({"-f", "-s", vendor, bundle_}).exitStatus, 0);
    expectInvalid("invalid destination for symbolic link in bundle", bundle_);
    EXPECT_EQ(codesign({"--verify", bundle_}).exitStatus, 0) << target;
  }
}

TEST_F(Codesign, displayShowsSignature) {
  sign();
  const Finished shown = codesign({"-dv", bundle_});
  EXPECT_EQ(shown.exitStatus, 0);
  EXPECT_EQ(shown.output, "");
  EXPECT_THAT(shown.error, testing::StartsWith("Executable=" + in("MacOS/Greeter").string() +
                                               "\nIdentifier=test.greeter\nFormat=app bundle"));
  EXPECT_THAT(shown.error, HasSubstr("\nTeamIdentifier=T4N8RW2KQZ\n"));
  EXPECT_EQ(codesign({"--display", "--verbose", bundle_}).error, shown.error);
  EXPECT_THAT(codesign({"-dvv", bundle_}).error, HasSubstr("\nAuthority=" + vendor + "\n"));
}

TEST_F(Codesign, displayShowsAdHocSignature) {
  sign("-");
  EXPECT_EQ(verify(bundle_).exitStatus, 0);
  EXPECT_THAT(codesign({"-dv", bundle_}).error,
              HasSubstr("\nSignature=adhoc\nTeamIdentifier=not set\n"));
}

TEST_F(Codesign, displayRefusesUnsignedBundle) {
  const Finished shown = codesign({"-dv", bundle_});
  EXPECT_EQ(shown.exitStatus, 1);
  EXPECT_EQ(shown.error, bundle_.string() + ": code object is not signed at all\n");
}

TEST_F(Codesign, resigningNeedsForce) {
  sign();
  const Finished again = codesign({"--sign", "-", bundle_});
  EXPECT_EQ(again.exitStatus, 1);
  EXPECT_THAT(again.error, EndsWith(": is already signed\n"));
  writeFile(in("Resources/Été.txt"), "winter\n");
  const Finished forced = codesign({"-f", "-s", "-", bundle_});
  EXPECT_EQ(forced.exitStatus, 0);
  EXPECT_THAT(forced.error, EndsWith(": replacing existing signature\n"));
  EXPECT_EQ(verify(bundle_).exitStatus, 0);
}

TEST_F(Codesign, unknownIdentityIsRefused) {
  for (const std::string identity : {"Somebody", "Somebody (SHORT)", "Somebody (lower45678)"}) {
    const Finished signing = codesign({"-s", identity, bundle_});
    EXPECT_EQ(signing.exitStatus, 1);
    EXPECT_EQ(signing.error, identity + ": no identity found\n");
  }
}

TEST_F(Codesign, unwritableSignatureIsReported) {
  writeFile(in("_CodeSignature"), "in the way");
  const Finished signing = codesign({"-s", vendor, bundle_});
  EXPECT_EQ(signing.exitStatus, 1);
  EXPECT_THAT(signing.error, testing::StartsWith(bundle_.string() + ": "));
}

TEST_F(Codesign, invalidCommandLineShowsUsage) {
  const std::vector<std::vector<std::string>> commands{
      {}, {"--verify"}, {"x"}, {"-s"}, {"-z", "x"}, {"--dance", "x"}, {"--verify", "-d", "x"}};
  for (const auto& command : commands) {
    const Finished ran = codesign(command);
    EXPECT_EQ(ran.exitStatus, 2);
    EXPECT_THAT(ran.error, HasSubstr("usage: codesign"));
  }
}

} // namespace
} // namespace icloud::test
