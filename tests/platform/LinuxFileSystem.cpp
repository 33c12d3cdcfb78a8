// The file system adapter on real files.

#include "FileSystemTest.h"
#include "OrdinaryUser.h"
#include "ScopedVariable.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <string>
#include <variant>

#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

bool hasNoAccessForOthers(const std::string& path) {
  struct stat information {};
  return stat(path.c_str(), &information) == 0 &&
         (information.st_mode & (S_IRWXG | S_IRWXO)) == 0 && information.st_uid == geteuid();
}

// The system root

class SystemRootFiles : public FileSystemTest {};

TEST_F(SystemRootFiles, applicationsAreBelowSystemRoot) {
  LinuxFileSystem files(folder_.path());
  EXPECT_EQ(words(files.createDirectory("/Applications/A.app/Contents")), "");
  EXPECT_TRUE(fs::is_directory(in("Applications/A.app/Contents")));
  EXPECT_TRUE(files.fileExists("/Applications"));
  EXPECT_TRUE(files.fileExists("/Applications/A.app"));
  EXPECT_EQ(words(files.moveItem("/Applications/A.app", in("elsewhere"))), "");
  EXPECT_TRUE(fs::is_directory(in("elsewhere/Contents")));
  EXPECT_EQ(words(files.moveItem(in("elsewhere"), "/Applications/B.app")), "");
  EXPECT_TRUE(fs::is_directory(in("Applications/B.app")));
  EXPECT_EQ(words(files.removeItem("/Applications/B.app")), "");
  EXPECT_THAT(namesIn(in("Applications")), IsEmpty());
}

TEST_F(SystemRootFiles, otherPathsAreUnchanged) {
  const LinuxFileSystem files(folder_.path().string() + "/");
  fs::create_directories(in("Applications2"));
  fs::create_directories(in("usr"));
  EXPECT_FALSE(files.fileExists("/Applications2"));
  EXPECT_TRUE(files.fileExists("/usr/bin"));
  EXPECT_TRUE(files.fileExists(folder_.path()));
}

TEST_F(SystemRootFiles, slashMeansNoSystemRoot) {
  for (const char* const root : {"", "/"})
    EXPECT_EQ(LinuxFileSystem(root).fileExists("/Applications"), fs::exists("/Applications"));
}

// Temporary files

class TemporaryFiles : public FileSystemTest {
protected:
  static std::string folderOf(const LinuxFileSystem& files) {
    return std::get<std::string>(files.temporaryDirectory());
  }

  ScopedVariable variable_{"TMPDIR", folder_.path().string() + "/"};
  std::string usual_ = in("driftmark-" + std::to_string(geteuid()));
};

TEST_F(TemporaryFiles, folderIsPrivateAndKept) {
  const LinuxFileSystem files("");
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty()) << "the folder is created on demand";
  const std::string path = folderOf(files);
  EXPECT_EQ(path, usual_ + "/");
  EXPECT_TRUE(hasNoAccessForOthers(path));
  EXPECT_EQ(folderOf(files), path);
  EXPECT_EQ(folderOf(LinuxFileSystem("")), path) << "all runs share it";
}

TEST_F(TemporaryFiles, removedFolderIsCreatedAgain) {
  const LinuxFileSystem files("");
  const std::string path = folderOf(files);
  fs::remove(usual_);
  EXPECT_EQ(folderOf(files), path);
  EXPECT_TRUE(hasNoAccessForOthers(path));
}

TEST_F(TemporaryFiles, folderThatOthersCanEnterIsNotUsed) {
  fs::create_directory(usual_);
  fs::permissions(usual_, fs::perms::all);
  const LinuxFileSystem files("");
  const std::string path = folderOf(files);
  EXPECT_TRUE(path.starts_with(usual_ + "-")) << path;
  EXPECT_TRUE(hasNoAccessForOthers(path));
  EXPECT_EQ(folderOf(files), path);
}

TEST_F(TemporaryFiles, linkIsNotUsed) {
  fs::create_directory(in("target"));
  fs::permissions(in("target"), fs::perms::owner_all);
  fs::create_symlink(in("target"), usual_);
  EXPECT_TRUE(folderOf(LinuxFileSystem("")).starts_with(usual_ + "-"));
}

TEST_F(TemporaryFiles, folderThatCannotBePrivateIsNotUsed) {
  fs::create_directory(usual_);
  fs::permissions(usual_, fs::perms::all);
  fs::permissions(folder_.path(), fs::perms::owner_read | fs::perms::owner_exec);
  {
    const OrdinaryUser user({folder_.path()});
    const LinuxFileSystem files("");
    const auto folder = files.temporaryDirectory();
    ASSERT_TRUE(std::holds_alternative<PlatformError>(folder)) << std::get<std::string>(folder);
    EXPECT_THAT(std::get<PlatformError>(folder).description,
                testing::EndsWith("couldn’t be made: Permission denied"));
    fs::permissions(folder_.path(), fs::perms::owner_all);
    EXPECT_TRUE(hasNoAccessForOthers(folderOf(files))) << "it is tried again";
  }
}

TEST_F(TemporaryFiles, missingParentIsAnError) {
  const ScopedVariable variable("TMPDIR", in("missing"));
  EXPECT_TRUE(std::holds_alternative<PlatformError>(LinuxFileSystem("").temporaryDirectory()));
}

TEST_F(TemporaryFiles, relativeFolderIsNotUsed) {
  const ScopedVariable variable("TMPDIR", "relative");
  EXPECT_TRUE(folderOf(LinuxFileSystem("")).starts_with("/tmp/driftmark-"));
}

// Folders and removal

class Items : public FileSystemTest {};

TEST_F(Items, errorNamesItemAndReason) {
  folder_.write("file", "");
  EXPECT_EQ(words(files_.createDirectory(in("file/below"))),
            "“below” couldn’t be made: Not a directory");
  EXPECT_EQ(words(files_.createDirectory(in("file"))), "“file” couldn’t be made: File exists");
  EXPECT_EQ(words(files_.removeItem(in("x/Missing.app/"))),
            "“Missing.app” couldn’t be removed: No such file or directory");
  EXPECT_EQ(words(files_.moveItem(in("Missing.app"), in("to"))),
            "“Missing.app” couldn’t be moved: No such file or directory");
  EXPECT_EQ(words(files_.removeItem("")), "“” couldn’t be removed: Invalid argument");
  EXPECT_EQ(files_.unknownWriteError().description, "The file couldn’t be saved.");
}

TEST_F(Items, linkToFolderCountsAsFolder) {
  fs::create_directory(in("target"));
  fs::create_symlink(in("target"), in("link"));
  EXPECT_EQ(words(files_.createDirectory(in("link"))), "");
  EXPECT_EQ(words(files_.createDirectory(in("link/below"))), "");
  EXPECT_TRUE(fs::is_directory(in("target/below")));
}

TEST_F(Items, removalDoesNotGoThroughLinks) {
  folder_.write("kept/file", "kept");
  folder_.write("tree/file", "x");
  fs::create_directory_symlink(in("kept"), in("tree/link"));
  fs::create_symlink("missing", in("tree/dangling"));
  fs::create_directory_symlink(in("kept"), in("link"));
  EXPECT_EQ(words(files_.removeItem(in("tree"))), "");
  EXPECT_EQ(words(files_.removeItem(in("link"))), "");
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("kept"));
  EXPECT_EQ(contentsOf(in("kept/file")), "kept");
}

/// Creates nested folders, deeper than the longest path.
void makeDeepFolders(const std::string& top, int depth) {
  fs::create_directory(top);
  const fs::path before = fs::current_path();
  fs::current_path(top);
  for (int level = 0; level < depth; ++level) {
    fs::create_directory("folder");
    fs::create_symlink("folder", "link");
    fs::current_path("folder");
  }
  fs::current_path(before);
}

TEST_F(Items, folderOfAnyDepthIsRemoved) {
  makeDeepFolders(in("top"), 1200);
  EXPECT_EQ(words(files_.removeItem(in("top"))), "");
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(Items, namesLikeThoseOfRemovalAreHandled) {
  for (const char* const name :
       {"top/lifted-0/lifted-0/lifted-1", "top/lifted-1/lifted-0/x", "top/a/b/lifted-2/lifted-0"})
    fs::create_directories(in(name));
  folder_.write("top/lifted-0/lifted-0/lifted-1/file", "x");
  EXPECT_EQ(words(files_.removeItem(in("top"))), "");
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(Items, ownersReadOnlyFoldersAreRemoved) {
  const OrdinaryUser user({folder_.path()});
  folder_.write("top/a/b/file", "x");
  folder_.write("top/closed/file", "x");
  fs::permissions(in("top/a/b"), fs::perms::owner_read | fs::perms::owner_exec);
  fs::permissions(in("top/a"), fs::perms::owner_read | fs::perms::owner_exec);
  fs::permissions(in("top/closed"), fs::perms::none);
  fs::permissions(in("top"), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(words(files_.removeItem(in("top"))), "");
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(Items, itemInReadOnlyFolderStaysComplete) {
  const OrdinaryUser user({folder_.path()});
  folder_.write("closed/top/file", "x");
  fs::permissions(in("closed"), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(words(files_.removeItem(in("closed/top"))),
            "“top” couldn’t be removed: Permission denied");
  EXPECT_EQ(words(files_.moveItem(in("closed/top"), in("top"))),
            "“top” couldn’t be moved: Permission denied");
  EXPECT_EQ(words(files_.createDirectory(in("closed/new"))),
            "“new” couldn’t be made: Permission denied");
  fs::permissions(in("closed"), fs::perms::owner_all);
  EXPECT_EQ(contentsOf(in("closed/top/file")), "x");
}

TEST_F(Items, moveReplacesNothing) {
  folder_.write("from/file", "new");
  fs::create_directory(in("empty"));
  folder_.write("file", "old");
  fs::create_symlink("missing", in("dangling"));
  for (const char* const name : {"empty", "file", "dangling"})
    EXPECT_EQ(words(files_.moveItem(in("from"), in(name))), "“from” couldn’t be moved: File exists")
        << name;
  EXPECT_EQ(contentsOf(in("from/file")), "new");
  EXPECT_EQ(contentsOf(in("file")), "old");
}

TEST_F(Items, moveIntoItselfFails) {
  folder_.write("from/file", "x");
  EXPECT_EQ(words(files_.moveItem(in("from"), in("from/below"))),
            "“from” couldn’t be moved: Invalid argument");
  EXPECT_EQ(contentsOf(in("from/file")), "x");
}

} // namespace
} // namespace driftmark::test
