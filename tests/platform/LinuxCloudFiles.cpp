// Which values the adapter reports for the files of the drive, and how it evicts them.

#include "CloudDrive.h"
#include "OrdinaryUser.h"
#include "harness/BuiltFiles.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

class LinuxCloudFilesTest : public testing::Test {
protected:
  /// The values that a walk reports for a file in this state.
  ResourceValues valuesIn(const char* state, bool hasContents = true) {
    drive_.addFile("file", state, hasContents);
    return drive_.valuesOf("file").value_or(ResourceValues{});
  }

  /// Why the eviction of a file fails; empty when it succeeds.
  std::string failure(const std::string& path) {
    const auto error = drive_.files().evict(path);
    return error ? error->description : "";
  }

  CloudDrive drive_;
};

// Values

TEST_F(LinuxCloudFilesTest, syncedOrUploadingFileIsCurrent) {
  for (const char* const state : {"current", "uploading"})
    EXPECT_EQ(valuesIn(state).downloadingStatus, DownloadingStatus::current) << state;
}

TEST_F(LinuxCloudFilesTest, evictedFileIsNotDownloaded) {
  EXPECT_EQ(valuesIn("evicted", false).downloadingStatus, DownloadingStatus::notDownloaded);
}

TEST_F(LinuxCloudFilesTest, downloadingFileIsDownloadedIfItHasContents) {
  EXPECT_EQ(valuesIn("downloading", false).downloadingStatus, DownloadingStatus::notDownloaded);
  EXPECT_EQ(valuesIn("downloading", true).downloadingStatus, DownloadingStatus::downloaded);
}

TEST_F(LinuxCloudFilesTest, fileInOtherStateIsCurrentIfItHasContents) {
  EXPECT_EQ(valuesIn("other", false).downloadingStatus, DownloadingStatus::notDownloaded);
  EXPECT_EQ(valuesIn("other", true).downloadingStatus, DownloadingStatus::current);
}

TEST_F(LinuxCloudFilesTest, unknownStateHasNoDownloadingStatus) {
  for (const char* const state : {"", "curren", "current ", "elsewhere"}) {
    const ResourceValues values = valuesIn(state);
    EXPECT_EQ(values.isUbiquitousItem, true) << state;
    EXPECT_EQ(values.downloadingStatus, std::nullopt) << state;
  }
}

TEST_F(LinuxCloudFilesTest, sizeIsThatOfAllocatedBlocks) {
  drive_.addFile("here", "current");
  drive_.addFile("there", "evicted", false);
  struct stat information {};
  ASSERT_EQ(stat(drive_.path("here").c_str(), &information), 0);
  const std::int64_t size = drive_.valuesOf("here")->totalFileAllocatedSize.value_or(0);
  EXPECT_EQ(size, information.st_blocks * 512);
  EXPECT_GT(size, static_cast<std::int64_t>(CloudDrive::fileSize));
  EXPECT_EQ(fs::file_size(drive_.path("there")), CloudDrive::fileSize);
  EXPECT_EQ(drive_.valuesOf("there")->totalFileAllocatedSize, 0);
}

TEST_F(LinuxCloudFilesTest, onlyFilesAreRegular) {
  fs::create_directory(drive_.path("folder"));
  ASSERT_EQ(mkfifo(drive_.path("pipe").c_str(), S_IRUSR), 0);
  drive_.addFile("file", "current");
  fs::create_symlink(drive_.path("file"), drive_.path("link"));
  for (const char* const name : {"folder", "pipe", "link"}) {
    EXPECT_EQ(drive_.valuesOf(name)->isRegularFile, false) << name;
    EXPECT_EQ(drive_.valuesOf(name)->downloadingStatus, std::nullopt) << name;
  }
  EXPECT_EQ(drive_.valuesOf("file")->isRegularFile, true);
}

TEST_F(LinuxCloudFilesTest, unreadableFileHasNoState) {
  drive_.addFile("private", "current");
  const OrdinaryUser user{drive_.path(), drive_.path("private")};
  fs::permissions(drive_.path("private"), fs::perms::none);
  const auto values = drive_.valuesOf("private");
  ASSERT_TRUE(values.has_value());
  EXPECT_EQ(values->isRegularFile, true);
  EXPECT_EQ(values->isUbiquitousItem, std::nullopt);
  EXPECT_GT(values->totalFileAllocatedSize, 0);
}

TEST_F(LinuxCloudFilesTest, itemsOfFolderWithoutSearchPermissionHaveNoValues) {
  drive_.addFile("folder/file", "current");
  const OrdinaryUser user{drive_.path(), drive_.path("folder")};
  fs::permissions(drive_.path("folder"), fs::perms::owner_read);
  bool found = false;
  for (const WalkEntry& entry : drive_.walk()) {
    if (entry.path != drive_.path("folder/file"))
      continue;
    found = true;
    EXPECT_FALSE(entry.values.has_value());
  }
  EXPECT_TRUE(found);
  fs::permissions(drive_.path("folder"), fs::perms::owner_all);
}

// Eviction

TEST_F(LinuxCloudFilesTest, brctlReceivesPathUnchanged) {
  EXPECT_EQ(failure("/drive/a  b 'c' \"d\" $e *"), "");
  EXPECT_EQ(drive_.calls(), std::vector<std::string>{"evict /drive/a  b 'c' \"d\" $e *"});
}

TEST_F(LinuxCloudFilesTest, errorIsErrorOutputOfTool) {
  drive_.refuseToEvict("/drive/busy");
  EXPECT_EQ(failure("/drive/busy"), "brctl: /drive/busy: still uploading");
  drive_.setBrctl("echo said; printf 'one\\ntwo\\r\\n\\n' >&2; exit 3");
  EXPECT_EQ(failure("/drive/file"), "one\ntwo");
}

TEST_F(LinuxCloudFilesTest, warningOfSuccessfulToolIsNoError) {
  drive_.setBrctl("echo careful >&2");
  EXPECT_EQ(failure("/drive/file"), "");
}

TEST_F(LinuxCloudFilesTest, failureWithoutOutputHasDescription) {
  drive_.setBrctl("exit 3");
  EXPECT_EQ(failure("/drive/file"), "brctl gave no reason and ended with status 3");
  drive_.setBrctl("echo >&2; kill -9 $$");
  EXPECT_EQ(failure("/drive/file"), "brctl gave no reason and ended with status 9");
}

TEST_F(LinuxCloudFilesTest, missingToolIsError) {
  drive_.removeBrctl();
  EXPECT_EQ(failure("/drive/file"), "brctl couldn’t be started: No such file or directory");
}

// Shutdown

TEST_F(LinuxCloudFilesTest, shutdownEndsWalkWithCurrentItem) {
  for (int number = 0; number < 10; ++number)
    drive_.addFile("file " + std::to_string(number), "current");
  int items = 0;
  drive_.files().walk(drive_.path(), [&](const WalkEntry& /*entry*/) {
    if (++items == 3)
      drive_.files().shutdown();
  });
  EXPECT_EQ(items, 3);
  EXPECT_TRUE(drive_.walk().empty());
}

TEST_F(LinuxCloudFilesTest, noEvictionStartsAfterShutdown) {
  drive_.files().shutdown();
  drive_.refuseToEvict("/drive/busy");
  EXPECT_EQ(failure("/drive/busy"), "");
  EXPECT_TRUE(drive_.calls().empty());
}

TEST_F(LinuxCloudFilesTest, shutdownEndsRunningEvictionWithoutError) {
  const std::string started = drive_.path("started");
  drive_.setBrctl(": > '" + started + "'; exec " + childToolPath() + " wait");
  std::string why = "still running";
  std::thread thread([&] { why = failure("/drive/file"); });
  EXPECT_TRUE(pollUntil([&] { return fs::exists(started); }));
  drive_.files().shutdown();
  drive_.children().shutdown();
  thread.join();
  EXPECT_EQ(why, "");
}

} // namespace
} // namespace driftmark::test
