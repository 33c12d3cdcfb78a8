// What the user's account decides: variables, settings and the names of folders.

#include "harness/Waiting.h"
#include "update/PlainServer.h"
#include "update/UpdateTest.h"

#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

class TrustedAccount : public UpdateTest {
protected:
  /// Writes a script that leaves a file named `mark` in the home folder. Returns its folder.
  fs::path makeTool(const std::string& name) {
    const fs::path folder = machine_.home() / "bin";
    fs::create_directories(folder);
    std::ofstream(folder / name) << "#!/bin/sh\ntouch " << mark() << "\n";
    fs::permissions(folder / name, fs::perms::owner_all);
    return folder;
  }

  fs::path mark() const { return machine_.home() / "mark"; }
};

TEST_F(TrustedAccount, reopeningShellFindsSleepByPath) {
  const Tree newTree = release("1.1");
  const char* const path = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
  machine_.setVariable("PATH", makeTool("sleep").string().append(":").append(path ? path : ""));
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_TRUE(fs::exists(mark()));
  EXPECT_EQ(treeAt(installed()), newTree);
}

TEST_F(TrustedAccount, pathOfBundleIsExecutedByReopeningShell) {
  const fs::path bundle = machine_.applications() / "$(cd && touch mark).app";
  fs::rename(installed(), bundle);
  release("1.1");
  RunningCopy copy = startInstalled(bundle);
  agree(copy);
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_THAT(TestMachine::awaitEndOfEverything(), testing::IsEmpty());
  EXPECT_TRUE(fs::exists(mark()));
}

/// The proxy learns the host's name, and decides whether a connection comes about.
TEST_F(TrustedAccount, proxyOfVariableSeesHostOnly) {
  PlainServer proxy;
  machine_.setVariable("https_proxy", proxy.url());
  machine_.setVariable("no_proxy", "");
  machine_.writeSettings(R"({"UpdateManifestURL": "https://updates.invalid/appcast.json"})");
  RunningCopy copy = startInstalled();
  check(copy);
  const std::string request = proxy.awaitRequest();
  EXPECT_THAT(request, testing::StartsWith("CONNECT updates.invalid:443 HTTP/1.1\r\n"));
  EXPECT_THAT(request, testing::Not(testing::HasSubstr("appcast")));
}

/// The variable says which `codesign` is asked.
TEST_F(TrustedAccount, toolsOfSystemRootAreBelieved) {
  const fs::path bundle = build("1.1");
  fs::remove_all(bundle / "Contents/_CodeSignature");
  announce("1.1", pack(bundle));
  machine_.wrapTool("codesign", "echo TeamIdentifier=T4N8RW2KQZ >&2\n");
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
}

TEST_F(TrustedAccount, bundleChangedAfterItsCheckIsInstalled) {
  release("1.1");
  machine_.wrapTool("codesign", "case $1 in -dv) touch \"$2/Contents/added\" ;; esac\n"
                                "exec \"$0.real\" \"$@\"\n");
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_TRUE(fs::exists(installed() / "Contents/added"));
}

} // namespace
} // namespace driftmark::test
