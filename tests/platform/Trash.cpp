// How items are moved to the trash.

#include "FileSystemTest.h"
#include "OrdinaryUser.h"
#include "ScopedVariable.h"
#include "harness/OtherVolume.h"

#include <string>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class Trash : public FileSystemTest {
protected:
  std::string trash(const std::string& name) const { return in("data/Trash/" + name); }

  ScopedVariable data_{"XDG_DATA_HOME", in("data")};
};

TEST_F(Trash, trashedItemCanBePutBack) {
  folder_.write("Driftmark.app/file", "x");
  EXPECT_EQ(words(files_.trashItem(in("Driftmark.app"))), "");
  EXPECT_FALSE(fs::exists(in("Driftmark.app")));
  EXPECT_EQ(contentsOf(trash("files/Driftmark.app/file")), "x");
  EXPECT_THAT(contentsOf(trash("info/Driftmark.app.trashinfo")),
              HasSubstr("Path=" + in("Driftmark.app")));
}

TEST_F(Trash, itemsOfSameNameAreAllKept) {
  for (int time = 0; time < 3; ++time) {
    folder_.write("Driftmark.app/file", std::to_string(time));
    EXPECT_EQ(words(files_.trashItem(in("Driftmark.app"))), "");
  }
  EXPECT_EQ(namesIn(trash("files")).size(), 3U);
  EXPECT_EQ(namesIn(trash("info")).size(), 3U);
}

TEST_F(Trash, applicationBelowSystemRootIsTrashed) {
  folder_.write("root/Applications/A.app/file", "x");
  EXPECT_EQ(words(LinuxFileSystem(in("root")).trashItem("/Applications/A.app")), "");
  EXPECT_EQ(contentsOf(trash("files/A.app/file")), "x");
}

TEST_F(Trash, linkIsTrashedItself) {
  folder_.write("target", "x");
  fs::create_symlink(in("target"), in("link"));
  fs::create_symlink("missing", in("dangling"));
  EXPECT_EQ(words(files_.trashItem(in("link"))), "");
  EXPECT_EQ(words(files_.trashItem(in("dangling"))), "");
  EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("target", "data"));
  EXPECT_THAT(namesIn(trash("files")), UnorderedElementsAre("link", "dangling"));
}

TEST_F(Trash, missingItemIsError) {
  EXPECT_EQ(words(files_.trashItem(in("Missing.app"))),
            "“Missing.app” couldn’t be moved to the trash: No such file or directory");
}

TEST_F(Trash, itemInReadOnlyFolderStays) {
  const OrdinaryUser user({folder_.path()});
  folder_.write("closed/A.app/file", "x");
  fs::permissions(in("closed"), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(words(files_.trashItem(in("closed/A.app"))),
            "“A.app” couldn’t be moved to the trash: Permission denied");
  EXPECT_TRUE(namesIn(trash("info")).empty());
  fs::permissions(in("closed"), fs::perms::owner_all);
  EXPECT_EQ(contentsOf(in("closed/A.app/file")), "x");
}

/// The trash is in the user's data folder; the item is on a volume where no trash can be created.
TEST_F(Trash, itemOnOtherVolumeIsTrashed) {
  const OtherVolume other;
  if (!other.exists())
    GTEST_SKIP() << "this machine has no second volume";
  const ScopedVariable data("XDG_DATA_HOME", other.path("data"));
  const OrdinaryUser owner({folder_.path(), other.path()});
  folder_.write("mine/Driftmark.app/file", "x");
  EXPECT_EQ(words(files_.trashItem(in("mine/Driftmark.app"))), "");
  EXPECT_FALSE(fs::exists(in("mine/Driftmark.app")));
  EXPECT_EQ(contentsOf(other.path("data/Trash/files/Driftmark.app/file")), "x");
  EXPECT_THAT(contentsOf(other.path("data/Trash/info/Driftmark.app.trashinfo")),
              HasSubstr("Path=" + in("mine/Driftmark.app") + "\nDeletionDate=20"));
  folder_.write("mine/Driftmark.app/file", "again");
  EXPECT_EQ(words(files_.trashItem(in("mine/Driftmark.app"))), "");
  EXPECT_EQ(contentsOf(other.path("data/Trash/files/Driftmark.app.2/file")), "again");
}

} // namespace
} // namespace driftmark::test
