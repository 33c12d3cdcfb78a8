#include "support/contracts/CloudFilesContract.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <thread>
#include <vector>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CloudFilesContract);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CloudStatusContract);

namespace {

std::vector<std::string> paths(const CloudFiles& files, const std::string& folder) {
  std::vector<std::string> result;
  files.walk(folder, [&](const WalkEntry& entry) { result.push_back(entry.path.value_or("")); });
  return result;
}

std::vector<std::string> sorted(std::vector<std::string> texts) {
  std::sort(texts.begin(), texts.end());
  return texts;
}

std::map<std::string, ResourceValues> values(const CloudFiles& files, const std::string& folder) {
  std::map<std::string, ResourceValues> result;
  files.walk(folder, [&](const WalkEntry& entry) {
    result[entry.path.value_or("")] = entry.values.value_or(ResourceValues{});
  });
  return result;
}

} // namespace

TEST_P(CloudFilesContract, emptyAndMissingFoldersHaveNoItems) {
  EXPECT_TRUE(paths(cloudFiles(), subject_->folder()).empty());
  EXPECT_TRUE(paths(cloudFiles(), inFolder("missing")).empty());
}

TEST_P(CloudFilesContract, everyItemBelowFolderIsVisitedOnce) {
  for (const char* const folder : {"folder", "folder/deeper", "folder/Some.app", "empty"})
    subject_->addFolder(inFolder(folder));
  for (const char* const file :
       {"a", ".hidden", "folder/b", "folder/deeper/three down", "folder/Some.app/inside"})
    addFile(file);
  EXPECT_EQ(sorted(paths(cloudFiles(), subject_->folder())),
            sorted({inFolder("folder"), inFolder("folder/deeper"), inFolder("folder/Some.app"),
                    inFolder("empty"), inFolder("a"), inFolder(".hidden"), inFolder("folder/b"),
                    inFolder("folder/deeper/three down"), inFolder("folder/Some.app/inside")}));
}

TEST_P(CloudFilesContract, onlyItemsBelowFolderAreVisited) {
  subject_->addFolder(inFolder("one"));
  subject_->addFolder(inFolder("one more"));
  addFile("one/in");
  addFile("one more/out");
  EXPECT_EQ(paths(cloudFiles(), inFolder("one")), std::vector{inFolder("one/in")});
}

TEST_P(CloudStatusContract, cloudFileReportsDownloadingStatus) {
  for (const auto status : {DownloadingStatus::notDownloaded, DownloadingStatus::downloaded,
                            DownloadingStatus::current}) {
    const std::string path = inFolder("file " + std::to_string(static_cast<int>(status)));
    subject_->addFile(path, status);
    const ResourceValues found = values(cloudFiles(), subject_->folder())[path];
    EXPECT_EQ(found.isRegularFile, true);
    EXPECT_EQ(found.isUbiquitousItem, true);
    EXPECT_EQ(found.downloadingStatus, status);
  }
}

TEST_P(CloudFilesContract, fileOutsideCloudHasNoStatus) {
  subject_->addFile(inFolder("file"), std::nullopt);
  const ResourceValues found = values(cloudFiles(), subject_->folder())[inFolder("file")];
  EXPECT_EQ(found.isRegularFile, true);
  EXPECT_EQ(found.isUbiquitousItem, false);
  EXPECT_EQ(found.downloadingStatus, std::nullopt);
}

TEST_P(CloudStatusContract, onlyLocalContentsTakeSpace) {
  subject_->addFile(inFolder("here"), DownloadingStatus::current);
  subject_->addFile(inFolder("there"), DownloadingStatus::notDownloaded);
  auto found = values(cloudFiles(), subject_->folder());
  EXPECT_GT(found[inFolder("here")].totalFileAllocatedSize, 0);
  EXPECT_EQ(found[inFolder("there")].totalFileAllocatedSize, 0);
}

TEST_P(CloudFilesContract, folderIsNotRegularFile) {
  subject_->addFolder(inFolder("folder"));
  EXPECT_EQ(values(cloudFiles(), subject_->folder())[inFolder("folder")].isRegularFile, false);
}

TEST_P(CloudFilesContract, parallelWalksVisitOnTheirOwnThreads) {
  for (const char* const file : {"a", "b", "c"})
    addFile(file);
  std::array<std::vector<std::thread::id>, 4> visitors;
  std::vector<std::thread> threads;
  std::vector<std::thread::id> walkers;
  for (auto& each : visitors) {
    threads.emplace_back([&] {
      cloudFiles().walk(subject_->folder(), [&](const WalkEntry& /*entry*/) {
        each.push_back(std::this_thread::get_id());
      });
    });
    walkers.push_back(threads.back().get_id());
  }
  for (std::thread& thread : threads)
    thread.join();
  for (std::size_t index = 0; index < visitors.size(); ++index)
    EXPECT_EQ(visitors.at(index), std::vector(3, walkers.at(index)));
}

TEST_P(CloudStatusContract, evictionSucceedsOrReturnsError) {
  addCurrent("file");
  addCurrent("busy");
  subject_->refuseToEvict(inFolder("busy"));
  EXPECT_FALSE(cloudFiles().evict(inFolder("file")).has_value());
  const auto error = cloudFiles().evict(inFolder("busy"));
  ASSERT_TRUE(error.has_value());
  EXPECT_FALSE(error->description.empty());
  EXPECT_NE(error->description.back(), '\n');
}

} // namespace driftmark::test
