// How tests release, offer and install an update.

#include "update/UpdateTest.h"

#include "harness/TemporaryFolder.h"
#include "harness/Waiting.h"

#include <nlohmann/json.hpp>

namespace driftmark::test {
namespace fs = std::filesystem;

const std::vector<std::string> offerButtons{"Install and Relaunch", "Later"};

UpdateTest::UpdateTest() {
  machine_.setVariable("DRIFTMARK_EXTRA_CA_CERTIFICATES", server_.certificateFile());
  machine_.writeSettings(nlohmann::json{{"UpdateManifestURL", server_.url(manifestPath)}}.dump());
  machine_.placeBundle(machine_.applications(), "1.0");
  installedTree_ = treeAt(installed());
}

void UpdateTest::announce(const std::string& version, const fs::path& archive,
                          const std::string& notes, const std::string& path) {
  nlohmann::json manifest{{"version", version}, {"url", server_.url(path)}};
  if (!notes.empty())
    manifest["notes"] = notes;
  server_.serve(manifestPath, {.body = manifest.dump()});
  server_.serve(path, {.body = contentsOf(archive)});
}

Tree UpdateTest::release(const std::string& version, const std::string& notes) {
  const fs::path bundle = build(version);
  announce(version, pack(bundle), notes);
  return treeAt(bundle);
}

std::vector<std::string> UpdateTest::requestedPaths() const {
  std::vector<std::string> paths;
  for (const HttpsRequest& request : server_.requests())
    paths.push_back(request.path);
  return paths;
}

fs::path UpdateTest::build(const std::string& version) {
  fs::remove_all(builds());
  return machine_.placeBundle(builds(), version);
}

fs::path UpdateTest::pack(const fs::path& bundle) {
  fs::remove(newArchive());
  const Finished end =
      machine_.run(machine_.tool("ditto"), {"-c", "-k", "--keepParent", bundle, newArchive()});
  if (end.exitStatus != 0)
    throw std::runtime_error("cannot pack: " + end.error);
  return newArchive();
}

RunningCopy UpdateTest::startInstalled(const fs::path& bundle) {
  RunningCopy copy = machine_.start(bundle);
  expectStarted(copy.driver);
  return copy;
}

void UpdateTest::agree(RunningCopy& copy) {
  check(copy);
  copy.driver.awaitAlert();
  copy.driver.press("Install and Relaunch");
}

void UpdateTest::expectFailure(RunningCopy& copy, const std::string& informative) {
  agree(copy);
  expectAlert(copy.driver, "Update failed", informative);
  copy.driver.press("OK");
  expectStarted(copy.driver);
  EXPECT_EQ(treeAt(installed()), installedTree_);
  EXPECT_THAT(copy.log.readSoFar(), testing::Not(testing::HasSubstr("updated bundle")));
}

void UpdateTest::expectRelaunch(RunningCopy& copy, const fs::path& bundle,
                                const std::string& version) {
  copy.log.readUntil("Driftmark: updated bundle at /Applications/" + bundle.filename().string() +
                     ", relaunching\n");
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);

  icloud::UiDriver opened = machine_.awaitOpenedCopy();
  EXPECT_EQ(opened.program(), bundle / "Contents/MacOS/Driftmark");
  expectStarted(opened);
  chooseInMenu(opened, "Check for Updates…");
  expectAlert(opened, "Driftmark is up to date", "Version " + version + " is the latest.");
  opened.press("OK");
  EXPECT_THAT(contentsOf(machine_.logOfOpened(bundle)),
              testing::HasSubstr("Driftmark: up to date (" + version + ")\n"));
  quit(opened);
  EXPECT_EQ(TestMachine::awaitEndOf(opened.process()), 0);
  EXPECT_THAT(TestMachine::awaitEndOfEverything(), testing::IsEmpty());
}

} // namespace driftmark::test
