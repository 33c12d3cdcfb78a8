// Which files a survey finds, and what an eviction logs and returns.

#include "evict/Evictor.h"

#include "support/TestCloudFiles.h"
#include "support/TestSystemLog.h"

#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* folder = "/Drive";

class EvictorTest : public testing::Test {
protected:
  Evictor::Survey survey(std::vector<WalkEntry> entries) {
    cloudFiles.list(folder, std::move(entries));
    return Evictor::survey(cloudFiles, folder);
  }

  /// An evictable file with one of its values changed.
  template <class Value>
  static WalkEntry changed(Value ResourceValues::*member, const Value& value) {
    WalkEntry entry = TestCloudFiles::downloaded("/Drive/changed", 512);
    (*entry.values).*member = value;
    return entry;
  }

  TestCloudFiles cloudFiles;
  TestSystemLog systemLog;
};

TEST_F(EvictorTest, folderThatCannotBeWalkedHasNoFiles) {
  EXPECT_EQ(Evictor::survey(cloudFiles, "/missing"), Evictor::Survey());
  EXPECT_THAT(cloudFiles.takeWalks(), ElementsAre("/missing"));
}

TEST_F(EvictorTest, downloadedFilesAreFoundInWalkOrder) {
  const Evictor::Survey found = survey(
      {TestCloudFiles::downloaded("/Drive/z", 4096), TestCloudFiles::downloaded("/Drive/a/b/c", 1),
       TestCloudFiles::downloaded("/Drive/.hidden", 8192),
       TestCloudFiles::downloaded("/Drive/Notes.app/Contents/Info.plist", 0)});
  EXPECT_THAT(found.files, ElementsAre("/Drive/z", "/Drive/a/b/c", "/Drive/.hidden",
                                       "/Drive/Notes.app/Contents/Info.plist"));
  EXPECT_EQ(found.bytes, 4096 + 1 + 8192);
}

TEST_F(EvictorTest, itemThatIsNotDownloadedCloudFileIsSkipped) {
  using Values = ResourceValues;
  const auto none = [](auto value) { return decltype(value)(); };
  EXPECT_EQ(
      survey({changed(&Values::isRegularFile, std::optional(false)),
              changed(&Values::isRegularFile, none(std::optional<bool>())),
              changed(&Values::isUbiquitousItem, std::optional(false)),
              changed(&Values::isUbiquitousItem, none(std::optional<bool>())),
              changed(&Values::downloadingStatus, std::optional(DownloadingStatus::notDownloaded)),
              changed(&Values::downloadingStatus, std::optional(DownloadingStatus::downloaded)),
              changed(&Values::downloadingStatus, std::optional<DownloadingStatus>())}),
      Evictor::Survey());
}

TEST_F(EvictorTest, unreadableItemIsSkipped) {
  WalkEntry noItem = TestCloudFiles::downloaded("", 1);
  noItem.path.reset();
  EXPECT_THAT(survey({noItem,
                      {.path = "/Drive/unreadable", .values = std::nullopt},
                      TestCloudFiles::downloaded("/Drive/a", 3)}),
              (Evictor::Survey{{"/Drive/a"}, 3}));
}

TEST_F(EvictorTest, fileOfUnknownSizeIsListedAndAddsNothing) {
  WalkEntry unknown = TestCloudFiles::downloaded("/Drive/unknown", 0);
  unknown.values->totalFileAllocatedSize.reset();
  EXPECT_EQ(survey({TestCloudFiles::downloaded("/Drive/a", 3), unknown}),
            (Evictor::Survey{{"/Drive/a", "/Drive/unknown"}, 3}));
}

TEST_F(EvictorTest, largestSumIsExact) {
  const auto most = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(
      survey({TestCloudFiles::downloaded("/a", most - 1), TestCloudFiles::downloaded("/b", 1)})
          .bytes,
      most);
}

using EvictorDeathTest = EvictorTest;

TEST_F(EvictorDeathTest, sumBeyond64BitsEndsProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto most = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(
      survey({TestCloudFiles::downloaded("/a", most), TestCloudFiles::downloaded("/b", 1)}),
      "fatal error");
  EXPECT_DEATH(
      survey({TestCloudFiles::downloaded("/a", -most), TestCloudFiles::downloaded("/b", -2)}),
      "fatal error");
}

TEST_F(EvictorTest, emptyListEvictsNothing) {
  EXPECT_THAT(Evictor::evict(cloudFiles, systemLog, {}), IsEmpty());
  EXPECT_THAT(cloudFiles.takeEvictions(), IsEmpty());
  EXPECT_THAT(systemLog.take(), IsEmpty());
}

TEST_F(EvictorTest, filesAreEvictedInOrderWithoutLogging) {
  EXPECT_THAT(Evictor::evict(cloudFiles, systemLog, {"/b", "/a", "/c"}), IsEmpty());
  EXPECT_THAT(cloudFiles.takeEvictions(), ElementsAre("/b", "/a", "/c"));
  EXPECT_THAT(systemLog.take(), IsEmpty());
}

TEST_F(EvictorTest, failureIsLoggedAndOthersAreStillEvicted) {
  cloudFiles.failEviction("/a b", "it is still uploading");
  EXPECT_THAT(Evictor::evict(cloudFiles, systemLog, {"/1", "/a b", "/3"}), ElementsAre("/a b"));
  EXPECT_THAT(cloudFiles.takeEvictions(), ElementsAre("/1", "/a b", "/3"));
  EXPECT_THAT(systemLog.take(),
              ElementsAre("Driftmark: evict failed for /a b: it is still uploading"));
}

TEST_F(EvictorTest, failuresKeepOrder) {
  for (const char* path : {"/3", "/1", "/2"})
    cloudFiles.failEviction(path, "no");
  EXPECT_THAT(Evictor::evict(cloudFiles, systemLog, {"/2", "/3", "/4", "/1"}),
              ElementsAre("/2", "/3", "/1"));
  EXPECT_EQ(systemLog.take().size(), 3U);
}

} // namespace
} // namespace driftmark::test
