#pragma once

#include "harness/ui/ProgramUi.h"
#include "https/HttpsServer.h"
#include "update/Machine.h"
#include "update/Tree.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {

constexpr const char* manifestPath = "/driftmark/appcast.json";
constexpr const char* archivePath = "/driftmark/Driftmark.zip";

/// A machine with version 1.0 in its Applications folder, and a server that may hold a newer one.
class UpdateTest : public testing::Test {
protected:
  UpdateTest();

  /// Announces an archive on the server as the release of that version.
  void announce(const std::string& version, const std::filesystem::path& archive,
                const std::string& notes = {}, const std::string& path = archivePath);

  /// Builds, packs and announces a proper release. Returns what its bundle is made of.
  Tree release(const std::string& version, const std::string& notes = {});

  /// What the server was asked for, in its order.
  std::vector<std::string> requestedPaths() const;

  /// A sealed bundle that lies nowhere in the user's reach.
  std::filesystem::path build(const std::string& version);

  /// A bundle packed as the maker packs it.
  std::filesystem::path pack(const std::filesystem::path& bundle);

  std::filesystem::path newArchive() const { return builds() / "archive.zip"; }

  /// Starts the installed copy and waits until it has come up.
  RunningCopy startInstalled(const std::filesystem::path& bundle);
  RunningCopy startInstalled() { return startInstalled(installed()); }

  static void check(RunningCopy& copy) { chooseInMenu(copy.driver, "Check for Updates…"); }

  /// Checks, awaits the offer and agrees to it.
  static void agree(RunningCopy& copy);

  /// Agrees to what is offered and expects it to fail with these words; afterwards the program is
  /// still there, and its bundle is what it was.
  void expectFailure(RunningCopy& copy, const std::string& informative);

  /// Waits for the end of the old copy and for the new one, which says that it is up to date.
  void expectRelaunch(RunningCopy& copy, const std::filesystem::path& bundle,
                      const std::string& version);

  std::filesystem::path installed() const { return machine_.applications() / "Driftmark.app"; }

  Machine machine_;
  HttpsServer server_{{.folder = machine_.folder()}};
  Tree installedTree_;

private:
  std::filesystem::path builds() const { return machine_.folder() / "builds"; }
};

extern const std::vector<std::string> offerButtons;

} // namespace driftmark::test
