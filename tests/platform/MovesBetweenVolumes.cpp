// What a move between volumes moves, and what it leaves when it fails or is killed.

#include "FileSystemTest.h"
#include "OrdinaryUser.h"
#include "harness/Orphans.h"
#include "harness/OtherVolume.h"
#include "harness/qt/EventLoop.h"
#include "platform/posix/files/FileItems.h"
#include "support/Utf8.h"

#include <array>
#include <csignal>
#include <fstream>
#include <memory>
#include <string>
#include <variant>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::array timedItems{"/Contents/MacOS/tool", "/link", "/Contents/MacOS", ""};
constexpr timespec moment{1'000'000'000, 123'456'789};

using Moved = std::unique_ptr<MovedItem>;

/// As long as this object lives, no file of this process can grow beyond a size: the copy of a
/// larger one fails as on a full volume.
class FileSizeLimit {
public:
  explicit FileSizeLimit(rlim_t bytes) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
    const rlimit limit{bytes, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before_), 0);
    EXPECT_NE(std::signal(SIGXFSZ, handler_), SIG_ERR);
  }

private:
  rlimit before_{};
  void (*const handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

class MovesBetweenVolumes : public FileSystemTest {
protected:
  void SetUp() override {
    if (!other_.exists())
      GTEST_SKIP() << "this machine has no second volume";
  }

  /// Makes a tree with everything that a bundle can contain.
  static void makeTree(const std::string& top) {
    fs::create_directories(top + "/Contents/MacOS");
    std::ofstream(top + "/Contents/MacOS/tool") << std::string(200'000, 'x');
    std::ofstream(top + "/Contents/empty").flush();
    fs::create_symlink("Contents/MacOS/tool", top + "/link");
    fs::create_symlink("missing", top + "/dangling");
    fs::permissions(top + "/Contents/MacOS/tool", static_cast<fs::perms>(0555));
    fs::permissions(top + "/Contents/empty", static_cast<fs::perms>(0640));
    fs::permissions(top + "/Contents/MacOS", static_cast<fs::perms>(0550));
    const std::array<timespec, 2> times{moment, moment};
    for (const char* const name : timedItems)
      EXPECT_EQ(utimensat(AT_FDCWD, (top + name).c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
  }

  static void expectTree(const std::string& top) {
    EXPECT_EQ(contentsOf(top + "/Contents/MacOS/tool"), std::string(200'000, 'x'));
    EXPECT_EQ(contentsOf(top + "/Contents/empty"), "");
    EXPECT_EQ(fs::read_symlink(top + "/link"), "Contents/MacOS/tool");
    EXPECT_EQ(fs::read_symlink(top + "/dangling"), "missing");
    EXPECT_EQ(information(top + "/Contents/MacOS/tool").st_mode & ALLPERMS, 0555U);
    EXPECT_EQ(information(top + "/Contents/empty").st_mode & ALLPERMS, 0640U);
    EXPECT_EQ(information(top + "/Contents/MacOS").st_mode & ALLPERMS, 0550U);
    for (const char* const name : timedItems) {
      EXPECT_EQ(information(top + name).st_mtim.tv_sec, moment.tv_sec) << name;
      EXPECT_EQ(information(top + name).st_mtim.tv_nsec, moment.tv_nsec) << name;
    }
  }

  static struct stat information(const std::string& path) {
    struct stat result {};
    EXPECT_EQ(lstat(path.c_str(), &result), 0) << path;
    return result;
  }

  OtherVolume other_;
};

TEST_F(MovesBetweenVolumes, contentsAndMetadataAreMoved) {
  makeTree(in("A.app"));
  EXPECT_EQ(words(files_.moveItem(in("A.app"), other_.path("B.app"))), "");
  expectTree(other_.path("B.app"));
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
  EXPECT_THAT(namesIn(other_.path()), ElementsAre("B.app"));
  EXPECT_EQ(words(files_.moveItem(other_.path("B.app"), in("A.app"))), "");
  expectTree(in("A.app"));
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("A.app"));
  EXPECT_THAT(namesIn(other_.path()), IsEmpty());
}

TEST_F(MovesBetweenVolumes, itemsOnTwoVolumesAreRecognized) {
  EXPECT_TRUE(areOnTwoVolumes(in("a"), other_.path("b")));
  EXPECT_FALSE(areOnTwoVolumes(in("a"), in("b")));
  EXPECT_FALSE(areOnTwoVolumes(in("missing/a"), other_.path("b")))
      << "the volume of the first is unknown";
}

TEST_F(MovesBetweenVolumes, linkIsMovedAndNotItsTarget) {
  folder_.write("file", "x");
  fs::create_symlink(in("file"), in("link"));
  EXPECT_EQ(words(files_.moveItem(in("link"), other_.path("link"))), "");
  EXPECT_EQ(words(files_.moveItem(in("file"), other_.path("file"))), "");
  EXPECT_EQ(fs::read_symlink(other_.path("link")), in("file"));
  EXPECT_EQ(contentsOf(other_.path("file")), "x");
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(MovesBetweenVolumes, extendedAttributesAreMovedWhereTheVolumeSupportsThem) {
  const auto mark = [](const std::string& path) {
    return setxattr(path.c_str(), "user.origin", "web", 3, 0) == 0;
  };
  folder_.write("file", "x");
  std::ofstream(other_.path("probe")).flush();
  const bool bothTakeThem = mark(in("file")) && mark(other_.path("probe"));
  EXPECT_EQ(words(files_.moveItem(in("file"), other_.path("file"))), "");
  EXPECT_EQ(contentsOf(other_.path("file")), "x");
  std::array<char, 8> value{};
  EXPECT_EQ(getxattr(other_.path("file").c_str(), "user.origin", value.data(), value.size()),
            bothTakeThem ? 3 : -1);
}

TEST_F(MovesBetweenVolumes, existingItemIsNotReplaced) {
  makeTree(in("A.app"));
  fs::create_directory(other_.path("B.app"));
  EXPECT_EQ(words(files_.moveItem(in("A.app"), other_.path("B.app"))),
            "“A.app” couldn’t be moved: File exists");
  expectTree(in("A.app"));
  EXPECT_THAT(namesIn(other_.path("B.app")), IsEmpty());
  EXPECT_THAT(namesIn(other_.path()), ElementsAre("B.app"));
}

TEST_F(MovesBetweenVolumes, itemThatCannotBeCopiedStaysAndLeavesNoCopy) {
  makeTree(in("A.app"));
  folder_.makeFifo("A.app/Contents/pipe");
  EXPECT_EQ(words(files_.moveItem(in("A.app"), other_.path("B.app"))),
            "“A.app” couldn’t be moved: Operation not supported");
  EXPECT_EQ(contentsOf(in("A.app/Contents/MacOS/tool")).size(), 200'000U);
  EXPECT_THAT(namesIn(other_.path()), IsEmpty());
}

TEST_F(MovesBetweenVolumes, itemThatCannotBeRemovedStaysAndLeavesNoCopy) {
  const OrdinaryUser owner({folder_.path(), other_.path()});
  folder_.write("closed/A.app/file", "x");
  fs::permissions(in("closed"), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(words(files_.moveItem(in("closed/A.app"), other_.path("B.app"))),
            "“A.app” couldn’t be moved: Permission denied");
  fs::permissions(in("closed"), fs::perms::owner_all);
  EXPECT_EQ(contentsOf(in("closed/A.app/file")), "x");
  EXPECT_THAT(namesIn(other_.path()), IsEmpty());
}

TEST_F(MovesBetweenVolumes, moveToMissingFolderFails) {
  folder_.write("A.app/file", "x");
  EXPECT_EQ(words(files_.moveItem(in("A.app"), other_.path("missing/B.app"))),
            "“A.app” couldn’t be moved: No such file or directory");
  EXPECT_EQ(contentsOf(in("A.app/file")), "x");
}

TEST_F(MovesBetweenVolumes, originalIsKeptUntilMoveStands) {
  makeTree(in("A.app"));
  {
    const auto moved = files_.moveItemReversibly(in("A.app"), other_.path("B.app"));
    ASSERT_TRUE(std::holds_alternative<Moved>(moved));
    expectTree(other_.path("B.app"));
    EXPECT_FALSE(fs::exists(in("A.app")));
    const auto names = namesIn(folder_.path());
    ASSERT_THAT(names, ElementsAre(testing::StartsWith(".A.app-")));
    expectTree(in(names[0]));
  }
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
  expectTree(other_.path("B.app"));
}

TEST_F(MovesBetweenVolumes, longNameIsCutBetweenCharactersForTheOriginal) {
  std::string name;
  for (int i = 0; i < 80; ++i)
    name += "波";
  makeTree(in(name));
  const auto moved = files_.moveItemReversibly(in(name), other_.path("B.app"));
  ASSERT_TRUE(std::holds_alternative<Moved>(moved));
  const auto names = namesIn(folder_.path());
  ASSERT_THAT(names, testing::SizeIs(1));
  EXPECT_TRUE(isUtf8(names[0])) << testing::PrintToString(names[0]);
}

TEST_F(MovesBetweenVolumes, itemGoesBackWithoutSpaceForIt) {
  makeTree(in("A.app"));
  const auto moved = files_.moveItemReversibly(in("A.app"), other_.path("B.app"));
  ASSERT_TRUE(std::holds_alternative<Moved>(moved));
  {
    makeTree(other_.path("C.app"));
    const FileSizeLimit full(1000);
    EXPECT_EQ(words(files_.moveItem(other_.path("C.app"), in("A.app"))),
              "“C.app” couldn’t be moved: File too large");
    EXPECT_EQ(words(std::get<Moved>(moved)->putBack()), "");
  }
  expectTree(in("A.app"));
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("A.app"));
  EXPECT_THAT(namesIn(other_.path()), ElementsAre("C.app"));
}

TEST_F(MovesBetweenVolumes, itemThatCannotGoBackIsAtBothPlaces) {
  makeTree(in("A.app"));
  {
    const auto moved = files_.moveItemReversibly(in("A.app"), other_.path("B.app"));
    ASSERT_TRUE(std::holds_alternative<Moved>(moved));
    fs::create_directory(in("A.app"));
    EXPECT_EQ(words(std::get<Moved>(moved)->putBack()), "“B.app” couldn’t be moved: File exists");
  }
  expectTree(other_.path("B.app"));
  EXPECT_THAT(namesIn(folder_.path()),
              testing::UnorderedElementsAre("A.app", testing::StartsWith(".A.app-")));
}

TEST_F(MovesBetweenVolumes, killedMoveLeavesWholeItemAtOneOfItsNames) {
  const std::string bytes(20'000'000, 'x');
  for (int round = 0; round < 8; ++round) {
    const std::string from = in("from" + std::to_string(round));
    const std::string to = other_.path("to" + std::to_string(round));
    fs::create_directory(from);
    for (const char* const name : {"/1", "/2", "/3"})
      std::ofstream(from + name) << bytes;
    const int mover = fork();
    if (mover == 0)
      _exit(moveTree(from, to));
    const auto copied = [&](const fs::path& hidden) {
      std::error_code error;
      return fs::exists(hidden / std::to_string(1 + round % 3), error);
    };
    EXPECT_TRUE(pollUntil([&] {
      for (const auto& entry : fs::directory_iterator(other_.path()))
        if (copied(entry.path()))
          return true;
      return false;
    }));
    EXPECT_TRUE(Orphans::end(mover) || fs::exists(to));
    const std::string whole = fs::exists(to) ? to : from;
    for (const char* const name : {"/1", "/2", "/3"})
      EXPECT_EQ(fs::file_size(whole + name), bytes.size()) << whole << name;
    EXPECT_TRUE(!fs::exists(from) || namesIn(from).size() == 3);
    for (const auto& entry : fs::directory_iterator(other_.path()))
      fs::remove_all(entry.path());
  }
}

} // namespace
} // namespace driftmark::test
