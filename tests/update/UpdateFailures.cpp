// How an update fails, what the user reads then, and that nothing has changed.

#include "harness/SmallVolume.h"
#include "harness/TemporaryFolder.h"
#include "harness/archive/ZipArchive.h"
#include "update/LocalPort.h"
#include "update/UpdateTest.h"

#include <fstream>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class UpdateFailures : public UpdateTest {
protected:
  /// Checks for updates and expects these reasons for its failure in the log and in the alert.
  void expectCheckFails(RunningCopy& copy, const std::string& logged, const std::string& shown) {
    check(copy);
    expectAlert(copy.driver, "Could not check for updates", shown);
    copy.driver.press("OK");
    copy.log.readUntil("Driftmark: update check failed: " + logged + "\n");
    expectStarted(copy.driver);
    EXPECT_EQ(treeAt(installed()), installedTree_);
  }

  void setManifestUrl(const std::string& url) const {
    machine_.writeSettings(nlohmann::json{{"UpdateManifestURL", url}}.dump());
  }

  /// A script that moves a bundle into the work folder of its own process and becomes the program.
  fs::path makeLauncherFromWorkFolder() const {
    const fs::path bundle =
        machine_.placeBundle(machine_.home() / "kept", "1.0", "Driftmark-old.app");
    const fs::path launcher = machine_.home() / "launcher";
    const fs::path script = launcher / "Contents/MacOS/Driftmark";
    fs::create_directories(script.parent_path());
    const fs::path temporary = machine_.programsTemporaryFolder();
    std::ofstream(script) << "#!/bin/sh\nwork=" << temporary.string() << "/Driftmark-update-$$\n"
                          << "mkdir -m 700 " << temporary << "\nmkdir $work\nmv " << bundle
                          << " $work\nexec $work/Driftmark-old.app/Contents/MacOS/Driftmark\n";
    fs::permissions(script, fs::perms::owner_all);
    machine_.writeSettings(nlohmann::json{
        {"UpdateManifestURL", server_.url(manifestPath)},
        {"skipUserApplicationsInstall",
         true}}.dump());
    return launcher;
  }

  const std::string unreadable = "The update information was unreadable.";
};

TEST_F(UpdateFailures, unreachableServerIsReported) {
  const LocalPort port;
  setManifestUrl("https://localhost:" + std::to_string(port.number) + manifestPath);
  RunningCopy copy = startInstalled();
  expectCheckFails(copy, "Connection refused", "Connection refused");
}

TEST_F(UpdateFailures, unknownCaCertificateIsRefused) {
  release("1.1");
  machine_.setVariable("DRIFTMARK_EXTRA_CA_CERTIFICATES", "");
  RunningCopy copy = startInstalled();
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  EXPECT_THAT(alert.texts.back(), HasSubstr("certificate"));
  copy.driver.press("OK");
  copy.log.readUntil("Driftmark: update check failed: " + alert.texts.back() + "\n");
  EXPECT_THAT(requestedPaths(), testing::IsEmpty());
}

TEST_F(UpdateFailures, certificateOfOtherHostIsRefused) {
  const HttpsServer other({.folder = machine_.home(), .hostName = "elsewhere.test"});
  machine_.setVariable("DRIFTMARK_EXTRA_CA_CERTIFICATES", other.certificateFile());
  setManifestUrl(other.url(manifestPath));
  RunningCopy copy = startInstalled();
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  EXPECT_THAT(alert.texts.back(), HasSubstr("host name"));
  EXPECT_THAT(other.requests(), testing::IsEmpty());
}

TEST_F(UpdateFailures, errorPageIsAnUnreadableManifest) {
  server_.serve(manifestPath,
                {.status = 404, .body = "<html>404: this page has drifted away</html>"});
  RunningCopy copy = startInstalled();
  expectCheckFails(copy, "unreadable manifest", unreadable);
}

TEST_F(UpdateFailures, malformedManifestsAreUnreadable) {
  const std::string url = server_.url(archivePath);
  const std::vector<std::string> manifests{
      "",
      "null",
      "[]",
      R"("text")",
      R"({"version": "1.1", "url": ")" + url + "\"",
      R"({"version": "1.1"})",
      R"({"url": ")" + url + "\"}",
      R"({"version": 1.1, "url": ")" + url + "\"}",
      R"({"version": "1.1", "url": 7})",
      R"({"version": "1.1", "url": ""})",
      R"({"version": "1.1", "url": ")" + url + R"(", "notes": ["a"]})",
      "{\"version\": \"1.1\xff\", \"url\": \"" + url + "\"}",
      std::string(100000, '['),
  };
  RunningCopy copy = startInstalled();
  for (const std::string& manifest : manifests) {
    server_.serve(manifestPath, {.body = manifest});
    SCOPED_TRACE(manifest.substr(0, 80));
    expectCheckFails(copy, "unreadable manifest", unreadable);
  }
  EXPECT_EQ(requestedPaths().size(), manifests.size());
}

TEST_F(UpdateFailures, truncatedManifestIsAConnectionError) {
  release("1.1");
  server_.serve(manifestPath, {.body = std::string(1000, ' '), .cutAfter = 500});
  RunningCopy copy = startInstalled();
  check(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Could not check for updates");
  EXPECT_NE(alert.texts.back(), unreadable);
  copy.driver.press("OK");
  copy.log.readUntil("Driftmark: update check failed: " + alert.texts.back() + "\n");
}

TEST_F(UpdateFailures, truncatedDownloadIsAConnectionError) {
  release("1.1");
  const std::string archive = contentsOf(newArchive());
  server_.serve(archivePath, {.body = archive, .cutAfter = archive.size() / 2});
  RunningCopy copy = startInstalled();
  agree(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Update failed");
  EXPECT_THAT(alert.texts.back(), testing::Not(HasSubstr("unpacked")));
  copy.driver.press("OK");
  expectStarted(copy.driver);
  EXPECT_EQ(treeAt(installed()), installedTree_);
  EXPECT_THAT(treeAt(machine_.programsTemporaryFolder()), testing::SizeIs(testing::Le(1U)));
}

TEST_F(UpdateFailures, fullDiskIsNamed) {
  const SmallVolume volume(266'240);
  if (!volume.exists())
    GTEST_SKIP() << "this user may not mount volumes";
  machine_.moveTemporaryFiles(volume.path());
  release("1.1");
  server_.serve(archivePath, {.zeros = 1'000'000});
  RunningCopy copy = startInstalled();
  expectFailure(copy, "No space left on device");
  EXPECT_THAT(treeAt(machine_.programsTemporaryFolder()), testing::SizeIs(testing::Le(1U)));
}

TEST_F(UpdateFailures, missingArchiveCannotBeUnpacked) {
  release("1.1");
  server_.serve(archivePath, {.status = 410, .body = "<html>gone</html>"});
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive could not be unpacked.");
}

TEST_F(UpdateFailures, truncatedArchiveCannotBeUnpacked) {
  release("1.1");
  const std::string archive = contentsOf(newArchive());
  server_.serve(archivePath, {.body = archive.substr(0, archive.size() / 2)});
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive could not be unpacked.");
}

TEST_F(UpdateFailures, bundleInSubfolderIsNotFound) {
  const fs::path bundle = build("1.1");
  const fs::path file = newArchive();
  ZipArchive archive(file);
  archive.addFolder("Driftmark 1.1");
  archive.add(bundle, "Driftmark 1.1/Driftmark.app");
  archive.close();
  announce("1.1", file);
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update archive did not contain Driftmark.app.");
}

TEST_F(UpdateFailures, changedProgramInvalidatesSignature) {
  const fs::path bundle = build("1.1");
  std::ofstream(bundle / "Contents/MacOS/Driftmark", std::ios::app) << "x";
  announce("1.1", pack(bundle));
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update's code signature is invalid.");
}

TEST_F(UpdateFailures, addedFileInvalidatesSignature) {
  const fs::path bundle = build("1.1");
  std::ofstream(bundle / "Contents/MacOS/helper") << "#!/bin/sh\n";
  announce("1.1", pack(bundle));
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update's code signature is invalid.");
}

TEST_F(UpdateFailures, missingSignatureIsInvalid) {
  const fs::path bundle = build("1.1");
  fs::remove_all(bundle / "Contents/_CodeSignature");
  announce("1.1", pack(bundle));
  RunningCopy copy = startInstalled();
  expectFailure(copy, "The update's code signature is invalid.");
}

TEST_F(UpdateFailures, executableOutsideBundleDownloadsNothing) {
  release("1.1");
  const fs::path downloads = machine_.home() / "Downloads";
  machine_.placeExecutable(downloads);
  const Tree before = treeAt(downloads);
  RunningCopy copy = startInstalled(downloads);
  agree(copy);
  expectAlert(copy.driver, "Update failed", "The file couldn’t be saved.");
  EXPECT_THAT(requestedPaths(), testing::ElementsAre(manifestPath));
  EXPECT_EQ(treeAt(downloads), before);
}

/// A user opens the copy that an interrupted update left, and the process has the identifier of the
/// interrupted one.
TEST_F(UpdateFailures, programThatRunsFromItsWorkFolderIsNotErased) {
  release("1.1");
  RunningCopy copy = machine_.start(makeLauncherFromWorkFolder());
  expectStarted(copy.driver);
  const fs::path kept = machine_.workFolder(copy.process.identifier()) / "Driftmark-old.app";
  const Tree before = treeAt(kept);
  ASSERT_FALSE(before.empty());
  agree(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Update failed");
  EXPECT_THAT(alert.texts.back(), HasSubstr(kept.string()));
  EXPECT_EQ(treeAt(kept), before);
}

TEST_F(UpdateFailures, temporaryFolderThatCannotBePrivateIsNotUsed) {
  release("1.1");
  machine_.useUnprivilegedUser();
  const fs::path shared = machine_.programsTemporaryFolder();
  fs::create_directory(shared);
  fs::permissions(shared, fs::perms::all);
  fs::permissions(shared.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
  RunningCopy copy = startInstalled();
  agree(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Update failed");
  EXPECT_THAT(alert.texts.back(), testing::EndsWith("couldn’t be made: Permission denied"));
  EXPECT_TRUE(fs::is_empty(shared));
  fs::permissions(shared.parent_path(), fs::perms::owner_all);
  EXPECT_THAT(requestedPaths(), testing::ElementsAre(manifestPath));
}

} // namespace
} // namespace driftmark::test
