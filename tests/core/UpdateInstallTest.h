#pragma once

#include "UpdateTest.h"

#include <string>

#include <gmock/gmock.h>

namespace driftmark::test {

/// A user who agrees to version 1.5. The tools succeed unless a test makes them fail.
class UpdateInstallTest : public UpdateTest {
protected:
  UpdateInstallTest() {
    platform.bundle.setPath(running);
    platform.fileSystem.add(running);
    platform.fileSystem.add(running + "/Contents/Info.plist");
    platform.childProcesses.script({"-dv", newBundle},
                                   "Identifier=x\nTeamIdentifier=T4N8RW2KQZ\nSealed Resources\n");
    platform.childProcesses.onRun([this](const ToolCommand& command) {
      std::string words = "run " + command.executable;
      for (const std::string& argument : command.arguments)
        words += " " + argument;
      platform.fileSystem.note(words);
      if (command.executable == "/usr/bin/ditto" && !unpacked.empty()) {
        platform.fileSystem.add(unpacked);
        platform.fileSystem.add(unpacked + "/Contents/Info.plist");
      }
    });
  }

  void agree() {
    platform.dialogs.answer(0);
    checker->check(false);
    reply(manifest("1.5"));
    platform.dialogs.take();
    takeLog();
  }

  /// Agrees and completes the download.
  void install() {
    agree();
    platform.fileSystem.add(downloaded);
    platform.httpClient.replyFile(downloaded);
    platform.settle();
  }

  /// The alerts after a failure.
  static auto failed(const std::string& details) {
    return testing::ElementsAre(Alert{"Update failed", details, {}});
  }

  /// Checks that the running copy exists, nothing was logged, and the program continues.
  void expectUntouched() {
    EXPECT_TRUE(platform.fileSystem.fileExists(running));
    EXPECT_THAT(takeLog(), testing::IsEmpty());
    EXPECT_EQ(platform.application.terminateRequests(), 0);
    EXPECT_THAT(platform.childProcesses.detached(), testing::IsEmpty());
  }

  Lines operations() { return platform.fileSystem.takeOperations(); }

  const std::string running = "/Applications/Driftmark.app";
  const std::string downloaded = "/private/var/download.tmp";
  const std::string zip = "/private/tmp/ada/Driftmark-update.zip";
  const std::string work = "/private/tmp/ada/Driftmark-update-4711";
  const std::string newBundle = work + "/Driftmark.app";
  const std::string oldCopy = work + "/Driftmark-old.app";

  /// The path that unpacking creates.
  std::string unpacked = newBundle;

  const Arguments unpack{"-xk", zip, work};
  const Arguments checkSignature{"--verify", "--deep", "--strict", newBundle};
  const Arguments describe{"-dv", newBundle};
};

} // namespace driftmark::test
