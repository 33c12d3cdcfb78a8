#pragma once

#include "harness/Tree.h"
#include "harness/ui/ProgramUi.h"
#include "https/HttpsServer.h"
#include "update/TestMachine.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {

constexpr const char* manifestPath = "/driftmark/appcast.json";
constexpr const char* archivePath = "/driftmark/Driftmark.zip";

/// A machine with version 1.0 in its Applications folder, and a server for newer versions.
class UpdateTest : public testing::Test {
protected:
  UpdateTest();

  /// Serves an archive and a manifest that announces it as this version.
  void announce(const std::string& version, const std::filesystem::path& archive,
                const std::string& notes = {}, const std::string& path = archivePath);

  /// Builds, packs and announces a proper release. Returns the tree of its bundle.
  Tree release(const std::string& version, const std::string& notes = {});

  /// The paths that clients requested, in order.
  std::vector<std::string> requestedPaths() const;

  /// Makes a signed bundle outside the user's folders. Returns its path.
  std::filesystem::path build(const std::string& version);

  /// Packs a bundle as the vendor does. Returns the path of the archive.
  std::filesystem::path pack(const std::filesystem::path& bundle);

  std::filesystem::path newArchive() const { return builds() / "archive.zip"; }

  /// Starts the installed copy and waits until it has started up.
  RunningCopy startInstalled(const std::filesystem::path& bundle);
  RunningCopy startInstalled() { return startInstalled(installed()); }

  static void check(RunningCopy& copy) { chooseInMenu(copy.driver, "Check for Updates…"); }

  /// Checks for updates, waits for the offer and agrees to it.
  static void agree(RunningCopy& copy);

  /// Agrees to the offer and expects a failure with this text. Checks that the program continues
  /// and that its bundle is unchanged.
  void expectFailure(RunningCopy& copy, const std::string& informative);

  /// Waits for the end of the old copy and for the new one, and checks that the new one is up to
  /// date.
  void expectRelaunch(RunningCopy& copy, const std::filesystem::path& bundle,
                      const std::string& version);

  std::filesystem::path installed() const { return machine_.applications() / "Driftmark.app"; }

  TestMachine machine_;
  HttpsServer server_{{.folder = machine_.folder()}};
  Tree installedTree_;

private:
  std::filesystem::path builds() const { return machine_.folder() / "builds"; }
};

extern const std::vector<std::string> offerButtons;

} // namespace driftmark::test
