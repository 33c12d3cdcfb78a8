// Servers, archives and folders that mean harm.

#include "update/Archive.h"
#include "update/PlainServer.h"
#include "update/UpdateTest.h"

#include <csignal>
#include <fstream>
#include <functional>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// What a program may grow by while it takes something without an end. A sanitizer keeps freed
/// memory.
#ifdef DRIFTMARK_SANITIZED
constexpr std::size_t allowance = 640 * mebibyte;
#else
constexpr std::size_t allowance = 48 * mebibyte;
#endif

/// The most memory that a process has ever had resident, in bytes.
std::size_t peakMemory(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  std::string word;
  while (status >> word && word != "VmHWM:")
    continue;
  std::size_t kibibytes = 0;
  status >> kibibytes;
  EXPECT_GT(kibibytes, 0U);
  return kibibytes * 1024;
}

class HostileInput : public UpdateTest {
protected:
  /// An archive of a proper bundle and whatever `spoil` adds.
  void announceSpoilt(const std::function<void(Archive&)>& spoil) {
    const fs::path bundle = build("1.1");
    Archive archive(newArchive());
    spoil(archive);
    archive.add(bundle, "Driftmark.app");
    archive.close();
    announce("1.1", newArchive());
  }

  /// Something in the user's home that nobody may touch.
  fs::path makePrecious() {
    const fs::path precious = machine_.home() / "Documents";
    fs::create_directories(precious);
    std::ofstream(precious / "thesis.txt") << "ten years";
    return precious;
  }
};

TEST_F(HostileInput, entriesThatClimbOutOfTheArchive) {
  announceSpoilt([](Archive& archive) {
    archive.addFile("../../../home/climbed", "x");
    archive.addFile("../climbed", "x");
  });
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive could not be unpacked.");
  EXPECT_FALSE(fs::exists(machine_.home() / "climbed"));
  EXPECT_FALSE(fs::exists(machine_.programsTemporaryFolder() / "climbed"));
}

TEST_F(HostileInput, entriesWithAbsolutePaths) {
  const fs::path target = machine_.home() / "climbed";
  announceSpoilt([&](Archive& archive) { archive.addFile(target, "x"); });
  RunningCopy copy = startInstalled();
  agree(copy);
  awaitAlert(copy.driver, "Update failed");
  EXPECT_FALSE(fs::exists(target));
}

TEST_F(HostileInput, entriesBehindALinkOfTheArchive) {
  const fs::path precious = makePrecious();
  const Tree before = treeAt(precious);
  announceSpoilt([&](Archive& archive) {
    archive.addLink("way", precious);
    archive.addFile("way/thesis.txt", "mine");
  });
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive could not be unpacked.");
  EXPECT_EQ(treeAt(precious), before);
}

TEST_F(HostileInput, aBundleThatIsALink) {
  const fs::path bundle = build("1.1");
  for (const std::string& target : {bundle.string(), std::string("real/Driftmark.app")}) {
    SCOPED_TRACE(target);
    fs::remove(newArchive());
    Archive archive(newArchive());
    archive.addFolder("real");
    archive.add(bundle, "real/Driftmark.app");
    archive.addLink("Driftmark.app", target);
    archive.close();
    announce("1.1", newArchive());
    RunningCopy copy = startInstalled();
    expectFailure(copy, "The update's code signature is invalid.");
    quit(copy.driver);
  }
}

TEST_F(HostileInput, aLinkInTheBundleThatLeadsOutOfIt) {
  const fs::path bundle = build("1.1");
  fs::create_symlink(machine_.home(), bundle / "Contents/Home");
  machine_.seal(bundle);
  announce("1.1", pack(bundle));
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update's code signature is invalid.");
}

TEST_F(HostileInput, aWorkFolderThatIsALinkToSomethingPrecious) {
  const fs::path precious = makePrecious();
  const Tree before = treeAt(precious);
  const Tree newTree = release("1.1");
  RunningCopy copy = startInstalled();
  const fs::path work = machine_.workFolder(copy.process.identifier());
  fs::create_directories(work.parent_path());
  fs::permissions(work.parent_path(), fs::perms::owner_all);
  fs::create_directory_symlink(precious, work);
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(precious), before);
  EXPECT_EQ(treeAt(installed()), newTree);
  EXPECT_FALSE(fs::is_symlink(work));
}

TEST_F(HostileInput, aTemporaryFolderThatIsALinkToSomethingPrecious) {
  const fs::path precious = makePrecious();
  const Tree before = treeAt(precious);
  const Tree newTree = release("1.1");
  fs::create_directory_symlink(precious, machine_.programsTemporaryFolder());
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(precious), before);
  EXPECT_EQ(treeAt(installed()), newTree);
}

TEST_F(HostileInput, aRedirectionOfTheManifestToAnUnprotectedServer) {
  const PlainServer plain;
  release("1.1");
  server_.serve(manifestPath, HttpsReply::redirect(plain.url()));
  RunningCopy copy = startInstalled();
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  copy.driver.press("OK");
  copy.log.readUntil("Driftmark: update check failed: " + alert.texts.back() + "\n");
  EXPECT_FALSE(plain.wasCalled());
}

TEST_F(HostileInput, aRedirectionOfTheArchiveToAnUnprotectedServer) {
  const PlainServer plain;
  release("1.1");
  server_.serve(archivePath, HttpsReply::redirect(plain.url()));
  RunningCopy copy = startInstalled();
  agree(copy);
  awaitAlert(copy.driver, "Update failed");
  EXPECT_FALSE(plain.wasCalled());
  EXPECT_EQ(treeAt(installed()), installedTree_);
}

TEST_F(HostileInput, aManifestThatNeverEnds) {
  server_.serve(manifestPath, {.isEndless = true});
  RunningCopy copy = startInstalled();
  const std::size_t before = peakMemory(copy.process.identifier());
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  EXPECT_LT(peakMemory(copy.process.identifier()), before + allowance);
  copy.driver.press("OK");
  expectStarted(copy.driver);
}

TEST_F(HostileInput, aManifestOfAGigabyte) {
  server_.serve(manifestPath, {.zeros = 1024 * mebibyte});
  RunningCopy copy = startInstalled();
  const std::size_t before = peakMemory(copy.process.identifier());
  check(copy);
  EXPECT_EQ(copy.driver.awaitAlert().texts.front(), "Could not check for updates");
  EXPECT_LT(peakMemory(copy.process.identifier()), before + allowance);
}

TEST_F(HostileInput, aDownloadThatNeverEndsLeavesTheProgramResponsive) {
  release("1.1");
  server_.serve(archivePath, {.isEndless = true});
  RunningCopy copy = startInstalled();
  agree(copy);
  ASSERT_TRUE(server_.awaitRequests(archivePath, 1));
  const std::size_t before = peakMemory(copy.process.identifier());
  ASSERT_TRUE(server_.awaitSent(archivePath, 64 * mebibyte));
  chooseInMenu(copy.driver, "About Driftmark");
  EXPECT_LT(peakMemory(copy.process.identifier()), before + allowance);
  quit(copy.driver);
  EXPECT_EQ(copy.process.wait(), 0);
  EXPECT_THAT(Machine::endOfEverything(), IsEmpty());
  EXPECT_THAT(treeAt(machine_.programsTemporaryFolder()), testing::SizeIs(testing::Le(1U)));
  EXPECT_EQ(treeAt(installed()), installedTree_);
}

TEST_F(HostileInput, aDownloadOfWhichNothingComes) {
  release("1.1");
  server_.hold(archivePath);
  RunningCopy copy = startInstalled();
  agree(copy);
  ASSERT_TRUE(server_.awaitRequests(archivePath, 1));
  copy.process.signal(SIGTERM);
  copy.driver.awaitEnd();
  EXPECT_EQ(copy.process.wait(), 0);
  EXPECT_THAT(treeAt(machine_.programsTemporaryFolder()), testing::SizeIs(testing::Le(1U)));
}

} // namespace
} // namespace driftmark::test
