// Hostile servers, archives and folders.

#include "harness/Waiting.h"
#include "harness/archive/ZipArchive.h"
#include "update/PlainServer.h"
#include "update/UpdateTest.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// How much a program may grow while it receives endless data. A sanitizer keeps freed memory.
#ifdef DRIFTMARK_SANITIZED
constexpr std::size_t maxGrowth = 640 * mebibyte;
#else
constexpr std::size_t maxGrowth = 48 * mebibyte;
#endif

/// The highest resident memory of a process so far, in bytes.
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
  /// Announces an archive with a proper bundle and the entries that `addEntries` adds.
  void announceWith(const std::function<void(ZipArchive&)>& addEntries) {
    const fs::path bundle = build("1.1");
    ZipArchive archive(newArchive());
    addEntries(archive);
    archive.add(bundle, "Driftmark.app");
    archive.close();
    announce("1.1", newArchive());
  }

  /// A folder of the user's that must not change.
  fs::path makeDocuments() {
    fs::path documents = machine_.home() / "Documents";
    fs::create_directories(documents);
    std::ofstream(documents / "thesis.txt") << "ten years";
    return documents;
  }
};

TEST_F(HostileInput, entriesAboveTargetFolderAreRefused) {
  announceWith([](ZipArchive& archive) {
    archive.addFile("../../../home/climbed", "x");
    archive.addFile("../climbed", "x");
  });
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive could not be unpacked.");
  EXPECT_FALSE(fs::exists(machine_.home() / "climbed"));
  EXPECT_FALSE(fs::exists(machine_.programsTemporaryFolder() / "climbed"));
}

TEST_F(HostileInput, entriesWithAbsolutePathsAreRefused) {
  const fs::path target = machine_.home() / "climbed";
  announceWith([&](ZipArchive& archive) { archive.addFile(target, "x"); });
  RunningCopy copy = startInstalled();
  agree(copy);
  awaitAlert(copy.driver, "Update failed");
  EXPECT_FALSE(fs::exists(target));
}

TEST_F(HostileInput, entriesBehindLinkAreRefused) {
  const fs::path documents = makeDocuments();
  const Tree before = treeAt(documents);
  announceWith([&](ZipArchive& archive) {
    archive.addLink("link", documents);
    archive.addFile("link/thesis.txt", "mine");
  });
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive could not be unpacked.");
  EXPECT_EQ(treeAt(documents), before);
}

TEST_F(HostileInput, bundleThatIsALinkIsRefused) {
  const fs::path bundle = build("1.1");
  for (const std::string& target : {bundle.string(), std::string("real/Driftmark.app")}) {
    SCOPED_TRACE(target);
    fs::remove(newArchive());
    ZipArchive archive(newArchive());
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

TEST_F(HostileInput, linkOutOfBundleIsRefused) {
  const fs::path bundle = build("1.1");
  fs::create_symlink(machine_.home(), bundle / "Contents/Home");
  machine_.sign(bundle);
  announce("1.1", pack(bundle));
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update's code signature is invalid.");
}

TEST_F(HostileInput, linkInPlaceOfWorkFolderIsNotFollowed) {
  const fs::path documents = makeDocuments();
  const Tree before = treeAt(documents);
  const Tree newTree = release("1.1");
  RunningCopy copy = startInstalled();
  const fs::path work = machine_.workFolder(copy.process.identifier());
  fs::create_directories(work.parent_path());
  fs::permissions(work.parent_path(), fs::perms::owner_all);
  fs::create_directory_symlink(documents, work);
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(documents), before);
  EXPECT_EQ(treeAt(installed()), newTree);
  EXPECT_FALSE(fs::is_symlink(work));
}

TEST_F(HostileInput, linkInPlaceOfTemporaryFolderIsNotFollowed) {
  const fs::path documents = makeDocuments();
  const Tree before = treeAt(documents);
  const Tree newTree = release("1.1");
  fs::create_directory_symlink(documents, machine_.programsTemporaryFolder());
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(documents), before);
  EXPECT_EQ(treeAt(installed()), newTree);
}

TEST_F(HostileInput, manifestRedirectToHttpIsRefused) {
  const PlainServer plain;
  release("1.1");
  server_.serve(manifestPath, HttpsReply::redirect(plain.url()));
  RunningCopy copy = startInstalled();
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  copy.driver.press("OK");
  copy.log.readUntil("Driftmark: update check failed: " + alert.texts.back() + "\n");
  EXPECT_FALSE(plain.hasClient());
}

TEST_F(HostileInput, archiveRedirectToHttpIsRefused) {
  const PlainServer plain;
  release("1.1");
  server_.serve(archivePath, HttpsReply::redirect(plain.url()));
  RunningCopy copy = startInstalled();
  agree(copy);
  awaitAlert(copy.driver, "Update failed");
  EXPECT_FALSE(plain.hasClient());
  EXPECT_EQ(treeAt(installed()), installedTree_);
}

TEST_F(HostileInput, endlessManifestIsBounded) {
  server_.serve(manifestPath, {.isEndless = true});
  RunningCopy copy = startInstalled();
  const std::size_t before = peakMemory(copy.process.identifier());
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  EXPECT_LT(peakMemory(copy.process.identifier()), before + maxGrowth);
  copy.driver.press("OK");
  expectStarted(copy.driver);
}

TEST_F(HostileInput, manifestOfOneGigabyteIsBounded) {
  server_.serve(manifestPath, {.zeros = 1024 * mebibyte});
  RunningCopy copy = startInstalled();
  const std::size_t before = peakMemory(copy.process.identifier());
  check(copy);
  EXPECT_EQ(copy.driver.awaitAlert().texts.front(), "Could not check for updates");
  EXPECT_LT(peakMemory(copy.process.identifier()), before + maxGrowth);
}

TEST_F(HostileInput, longVersionAndNotesAreDisplayedInPart) {
  const std::string version = "2." + std::string(400'000, '1');
  announce(version, {}, std::string(500'000, 'x'));
  RunningCopy copy = startInstalled();
  check(copy);
  const icloud::Window alert =
      awaitAlert(copy.driver, "Driftmark " + version.substr(0, 64) + " is available");
  EXPECT_THAT(alert.texts.back(), testing::SizeIs(testing::Le(20'100U)));
  EXPECT_LT(alert.geometry.height, 800) << "the height of the screen";
  const auto start = std::chrono::steady_clock::now();
  copy.process.signal(SIGTERM);
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

TEST_F(HostileInput, controlsInVersionAndNotesAreNeutralized) {
  announce("2.0\u202e\u202c\n\x1b[1m", {}, "Fewer\u2066 wake-ups.\u2069\u0007");
  RunningCopy copy = startInstalled();
  check(copy);
  expectAlert(copy.driver, "Driftmark 2.0 \ufffd[1m is available",
              "You have 1.0.\n\nFewer wake-ups.\ufffd", offerButtons);
}

TEST_F(HostileInput, endlessDownloadLeavesProgramResponsive) {
  release("1.1");
  server_.serve(archivePath, {.isEndless = true});
  RunningCopy copy = startInstalled();
  agree(copy);
  ASSERT_TRUE(server_.awaitRequests(archivePath, 1));
  const std::size_t before = peakMemory(copy.process.identifier());
  ASSERT_TRUE(server_.awaitSent(archivePath, 64 * mebibyte));
  chooseInMenu(copy.driver, "About Driftmark");
  EXPECT_LT(peakMemory(copy.process.identifier()), before + maxGrowth);
  quit(copy.driver);
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_THAT(TestMachine::awaitEndOfEverything(), IsEmpty());
  EXPECT_THAT(treeAt(machine_.programsTemporaryFolder()), testing::SizeIs(testing::Le(1U)));
  EXPECT_EQ(treeAt(installed()), installedTree_);
}

TEST_F(HostileInput, endlessHeadersLeaveProgramResponsive) {
  release("1.1");
  server_.serve(archivePath, {.hasEndlessHeaders = true});
  RunningCopy copy = startInstalled();
  agree(copy);
  ASSERT_TRUE(server_.awaitSent(archivePath, 8 * mebibyte));
  chooseInMenu(copy.driver, "About Driftmark");
  quit(copy.driver);
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_EQ(treeAt(installed()), installedTree_);
}

TEST_F(HostileInput, stalledDownloadDoesNotDelayQuit) {
  release("1.1");
  server_.hold(archivePath);
  RunningCopy copy = startInstalled();
  agree(copy);
  ASSERT_TRUE(server_.awaitRequests(archivePath, 1));
  copy.process.signal(SIGTERM);
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_THAT(treeAt(machine_.programsTemporaryFolder()), testing::SizeIs(testing::Le(1U)));
}

} // namespace
} // namespace driftmark::test
