// Which items a walk visits.

#include "CloudDrive.h"
#include "Descriptors.h"
#include "OrdinaryUser.h"

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A chain of folders `levels` deep, each called "d" and with files beside it. Its whole path is
/// longer than the system accepts. The destructor removes it, as no library function can.
class DeepChain {
public:
  /// Half of them are created before the folder, as file systems differ in their order.
  static constexpr std::size_t filesBeside = 4;

  DeepChain(const std::string& top, std::size_t levels) : top_(top) {
    FileDescriptor folder = open(AT_FDCWD, top.c_str());
    for (std::size_t level = 0; level < levels; ++level) {
      addFiles(folder, 0, filesBeside / 2);
      if (mkdirat(folder.number(), "d", S_IRWXU) != 0)
        throw std::system_error(errno, std::generic_category(), "mkdirat");
      addFiles(folder, filesBeside / 2, filesBeside);
      folder = open(folder.number(), "d");
    }
    bottom_ = std::move(folder);
  }
  DeepChain(const DeepChain&) = delete;
  DeepChain& operator=(const DeepChain&) = delete;
  ~DeepChain() {
    struct stat top {};
    struct stat here {};
    stat(top_.c_str(), &top);
    unlinkat(bottom_.number(), "last", 0);
    for (FileDescriptor folder = open(bottom_.number(), "..");
         folder.isOpen() && here.st_ino != top.st_ino; folder = open(folder.number(), "..")) {
      for (std::size_t number = 0; number < filesBeside; ++number)
        unlinkat(folder.number(), fileName(number).c_str(), 0);
      unlinkat(folder.number(), "d", AT_REMOVEDIR);
      fstat(folder.number(), &here);
    }
  }

  /// Creates a file in the last folder, in sync with iCloud.
  void addFileAtEnd() const {
    const FileDescriptor file(create(bottom_, "last"));
    CloudDrive::setState("/proc/self/fd/" + std::to_string(file.number()), "current");
  }

  /// The path of the folder at this level.
  std::string path(std::size_t level) const {
    std::string path = top_;
    for (std::size_t above = 0; above < level; ++above)
      path += "/d";
    return path;
  }

private:
  static FileDescriptor open(int parent, const char* name) {
    return FileDescriptor(openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }

  static FileDescriptor create(const FileDescriptor& folder, const std::string& name) {
    return FileDescriptor(
        openat(folder.number(), name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, S_IRUSR));
  }

  static std::string fileName(std::size_t number) {
    return std::string("beside ").append(std::to_string(number));
  }

  static void addFiles(const FileDescriptor& folder, std::size_t from, std::size_t to) {
    for (std::size_t number = from; number < to; ++number)
      create(folder, fileName(number));
  }

  std::string top_;
  FileDescriptor bottom_;
};

class FolderWalks : public testing::Test {
protected:
  void makeFolder(const std::string& name) const { fs::create_directories(drive_.path(name)); }
  void makeFile(const std::string& name) const {
    fs::create_directories(fs::path(drive_.path(name)).parent_path());
    std::ofstream(drive_.path(name)) << "x";
  }

  CloudDrive drive_;
};

TEST_F(FolderWalks, folderIsVisitedBeforeItsContents) {
  makeFile("a/b/c");
  std::vector<std::string> order;
  for (const WalkEntry& entry : drive_.walk())
    order.push_back(entry.path.value_or(""));
  EXPECT_THAT(order, ElementsAre(drive_.path("a"), drive_.path("a/b"), drive_.path("a/b/c")));
}

TEST_F(FolderWalks, folderOfThousandsIsReadCompletely) {
  std::set<std::string> made;
  for (int number = 0; number < 3000; ++number) {
    const std::string name = "a name that takes some space in a buffer " + std::to_string(number);
    makeFile("folder/" + name);
    made.insert("folder/" + name);
  }
  made.insert("folder");
  const auto names = drive_.names();
  EXPECT_EQ(names.size(), made.size());
  EXPECT_EQ(std::set(names.begin(), names.end()), made);
}

TEST_F(FolderWalks, pathThatIsNoFolderHasNoItems) {
  makeFile("file");
  ASSERT_EQ(mkfifo(drive_.path("pipe").c_str(), S_IRUSR), 0);
  for (const std::string& path : {drive_.path("missing"), drive_.path("file"), drive_.path("pipe"),
                                  drive_.path("file/below"), std::string()})
    EXPECT_THAT(drive_.walk(path), IsEmpty()) << path;
}

TEST_F(FolderWalks, trailingSlashesOfFolderAreIgnored) {
  makeFile("folder/file");
  const auto entries = drive_.walk(drive_.path("folder") + "//");
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_EQ(entries.front().path, drive_.path("folder/file"));
}

TEST_F(FolderWalks, linksAreNotFollowed) {
  makeFile("folder/file");
  fs::create_directory_symlink("folder", drive_.path("to folder"));
  fs::create_directory_symlink(".", drive_.path("folder/loop"));
  fs::create_symlink("folder/file", drive_.path("to file"));
  fs::create_symlink("nowhere", drive_.path("to nothing"));
  EXPECT_THAT(drive_.names(), ElementsAre("folder", "folder/file", "folder/loop", "to file",
                                          "to folder", "to nothing"));
}

TEST_F(FolderWalks, folderThatIsLinkIsFollowed) {
  makeFile("folder/file");
  fs::create_directory_symlink("folder", drive_.path("link"));
  const auto entries = drive_.walk(drive_.path("link"));
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_EQ(entries.front().path, drive_.path("link/file"));
}

TEST_F(FolderWalks, linkToItselfHasNoItems) {
  fs::create_directory_symlink("link", drive_.path("link"));
  EXPECT_THAT(drive_.walk(drive_.path("link")), IsEmpty());
}

TEST_F(FolderWalks, namesAreBytes) {
  const std::vector<std::string> names{"\xff\xfe", "caf\xe9", "line\nend", "\xe2\x98\x81 ☁", "..."};
  for (const std::string& name : names) {
    makeFolder(name);
    drive_.addFile(std::string(name).append("/").append(name), "current");
  }
  for (const std::string& name : names) {
    const auto values = drive_.valuesOf(std::string(name).append("/").append(name));
    ASSERT_TRUE(values.has_value()) << name;
    EXPECT_EQ(values->downloadingStatus, DownloadingStatus::current) << name;
  }
  EXPECT_THAT(drive_.walk(drive_.path("\xff\xfe")), SizeIs(1));
}

TEST_F(FolderWalks, unreadableFolderIsSkipped) {
  makeFile("closed/file");
  makeFile("open/file");
  const OrdinaryUser user{drive_.path(), drive_.path("closed")};
  fs::permissions(drive_.path("closed"), fs::perms::none);
  EXPECT_THAT(drive_.names(), ElementsAre("closed", "open", "open/file"));
  EXPECT_THAT(drive_.walk(drive_.path("closed")), IsEmpty());
  fs::permissions(drive_.path("closed"), fs::perms::owner_all);
}

TEST_F(FolderWalks, itemsRemovedDuringWalkHaveNoValues) {
  for (int number = 0; number < 10; ++number)
    makeFile("file " + std::to_string(number));
  int items = 0;
  int withValues = 0;
  drive_.files().walk(drive_.path(), [&](const WalkEntry& entry) {
    if (++items == 1)
      for (const auto& each : fs::directory_iterator(drive_.path()))
        fs::remove(each);
    withValues += entry.values.has_value() ? 1 : 0;
  });
  EXPECT_GE(items, 1);
  EXPECT_EQ(withValues, 1);
}

TEST_F(FolderWalks, foldersRemovedDuringWalkAreSkipped) {
  makeFile("folder/deeper/file");
  makeFile("other/deeper/file");
  int items = 0;
  drive_.files().walk(drive_.path(), [&](const WalkEntry& entry) {
    ++items;
    fs::remove_all(*entry.path);
  });
  EXPECT_EQ(items, 2);
}

TEST_F(FolderWalks, folderOfAnyDepthIsWalkedWithFewDescriptors) {
  constexpr std::size_t levels = 2500;
  const DeepChain chain(drive_.path(), levels);
  chain.addFileAtEnd();
  const auto before = openDescriptors();
  std::set<std::size_t> hashes; // the paths are too long to keep
  int currentFiles = 0;
  {
    const DescriptorLimit limit(50);
    drive_.files().walk(drive_.path(), [&](const WalkEntry& entry) {
      hashes.insert(std::hash<std::string>()(*entry.path));
      currentFiles += entry.values->downloadingStatus == DownloadingStatus::current ? 1 : 0;
    });
  }
  EXPECT_EQ(hashes.size(), levels * (1 + DeepChain::filesBeside) + 1);
  EXPECT_EQ(currentFiles, 1) << "its path is longer than the system takes";
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FolderWalks, walkContinuesAfterFolderFarAboveWasMoved) {
  constexpr std::size_t levels = 100;
  const TemporaryFolder elsewhere;
  const DeepChain chain(drive_.path(), levels);
  std::set<std::string> paths;
  drive_.files().walk(drive_.path(), [&](const WalkEntry& entry) {
    paths.insert(*entry.path);
    if (entry.path == chain.path(levels))
      fs::rename(chain.path(20), elsewhere.path("moved"));
  });
  EXPECT_EQ(paths.size(), levels * (1 + DeepChain::filesBeside));
  fs::rename(elsewhere.path("moved"), chain.path(20));
}

TEST_F(FolderWalks, walkEndsAfterAllFoldersWereRemoved) {
  constexpr std::size_t levels = 100;
  auto chain = std::make_unique<DeepChain>(drive_.path(), levels);
  const std::string bottom = chain->path(levels);
  std::set<std::string> paths;
  drive_.files().walk(drive_.path(), [&](const WalkEntry& entry) {
    paths.insert(*entry.path);
    if (entry.path == bottom)
      chain.reset();
  });
  EXPECT_GE(paths.size(), levels);
  EXPECT_FALSE(fs::exists(drive_.path("d")));
}

} // namespace
} // namespace driftmark::test
