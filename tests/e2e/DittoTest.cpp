#include "SimulatedSystem.h"
#include "TestBundle.h"
#include "harness/Tree.h"
#include "harness/archive/ZipArchive.h"

#include <array>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace icloud::test {
namespace {

using driftmark::test::treeAt;
using driftmark::test::writeZip;
namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

class Ditto : public testing::Test {
protected:
  Finished ditto(std::vector<std::string> arguments) const {
    return runToEnd({root().ditto(), std::move(arguments), {}});
  }

  void expectSuccess(std::vector<std::string> arguments) const {
    const Finished ran = ditto(std::move(arguments));
    EXPECT_EQ(ran.exitStatus, 0);
    EXPECT_EQ(ran.output + ran.error, "");
  }

  void expectFailure(std::vector<std::string> arguments, const std::string& words) const {
    const Finished ran = ditto(std::move(arguments));
    EXPECT_EQ(ran.exitStatus, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.error, StartsWith("ditto: "));
    EXPECT_THAT(ran.error, HasSubstr(words));
  }

  SystemRoot root() const { return system_.sandbox().root(); }
  fs::path in(const std::string& name) const { return folder_.path() / name; }

  TemporaryFolder folder_;
  SimulatedSystem system_;
};

TEST_F(Ditto, packedBundleUnpacksUnchanged) {
  makeBundle(in("Greeter.app"));
  fs::create_directory(in("Greeter.app/Contents/Empty"));
  expectSuccess({"-c", "-k", "--keepParent", in("Greeter.app"), in("Greeter.zip")});
  expectSuccess({"-xk", in("Greeter.zip"), in("a/new folder")});
  EXPECT_EQ(treeAt(in("a/new folder/Greeter.app")), treeAt(in("Greeter.app")));
}

TEST_F(Ditto, folderIsPackedWithoutItsName) {
  makeBundle(in("Greeter.app"));
  expectSuccess({"-ck", in("Greeter.app"), in("Greeter.zip")});
  expectSuccess({"-x", "-k", in("Greeter.zip"), in("out")});
  EXPECT_EQ(treeAt(in("out/Contents")), treeAt(in("Greeter.app/Contents")));
}

TEST_F(Ditto, unpackingMergesIntoExistingFolder) {
  writeZip(in("a.zip"), {{"new", "new"}, {"old", "changed"}});
  fs::create_directory(in("out"));
  folder_.write("out/old", "old");
  folder_.write("out/kept", "kept");
  expectSuccess({"-xk", in("a.zip"), in("out")});
  EXPECT_EQ(contentsOf(in("out/new")) + contentsOf(in("out/old")) + contentsOf(in("out/kept")),
            "newchangedkept");
}

TEST_F(Ditto, unpackingKeepsTimesAndModesButDropsSetuid) {
  writeZip(in("a.zip"), {{"folder/", "", 040750}, {"folder/tool", "x", 0106755}});
  expectSuccess({"-xk", in("a.zip"), in("out")});
  struct stat status {};
  ASSERT_EQ(stat(in("out/folder/tool").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0755u);
  EXPECT_EQ(status.st_mtime, 1'700'000'000);
  EXPECT_EQ(fs::status(in("out/folder")).permissions(), fs::perms(0750));
}

TEST_F(Ditto, unpackingStaysInsideFolder) {
  const std::string outside = in("outside");
  const std::vector<std::vector<driftmark::test::ZipEntry>> archives{
      {{"../outside", "evil"}},
      {{"a/../../outside", "evil"}},
      {{outside, "evil"}},
      {{"link", folder_.path(), 0120777}, {"link/outside", "evil"}},
      {{"link", "..", 0120777}, {"link/outside", "evil"}},
      {{"a/", "", 040755}, {"a/link", "../..", 0120777}, {"a/link/outside/", "", 040755}}};
  for (const auto& entries : archives) {
    writeZip(in("evil.zip"), entries);
    fs::remove_all(in("out"));
    expectFailure({"-xk", in("evil.zip"), in("out")}, entries.back().name);
    EXPECT_FALSE(fs::exists(outside)) << entries.back().name;
  }
}

TEST_F(Ditto, unpackingReplacesLinkOfArchive) {
  folder_.write("outside", "mine");
  writeZip(in("evil.zip"), {{"link", in("outside"), 0120777}, {"link", "evil"}});
  ditto({"-xk", in("evil.zip"), in("out")});
  EXPECT_EQ(contentsOf(in("outside")), "mine");
}

TEST_F(Ditto, fileThatIsNoArchiveIsRefused) {
  makeBundle(in("Greeter.app"));
  expectSuccess({"-ck", in("Greeter.app"), in("whole.zip")});
  const std::string whole = contentsOf(in("whole.zip"));
  const std::vector<std::string> texts{"", "<html>Not found</html>",
                                       whole.substr(0, whole.size() / 2),
                                       whole.substr(0, whole.size() - 30)};
  for (const std::string& text : texts) {
    const auto archive = folder_.write("a.zip", text);
    expectFailure({"-xk", archive, in("out")}, "Couldn't read PKZip signature\n");
    EXPECT_FALSE(fs::exists(in("out")));
  }
}

TEST_F(Ditto, damagedArchiveIsRefused) {
  writeZip(in("a.zip"), {{"text", std::string(1000, 'x') + "secret"}});
  std::string bytes = contentsOf(in("a.zip"));
  const auto contents = bytes.find("text") + 40;
  bytes[contents] = static_cast<char>(bytes[contents] ^ 0x55);
  const auto archive = folder_.write("a.zip", bytes);
  expectFailure({"-xk", archive, in("out")}, "text: ");
}

TEST_F(Ditto, missingArchiveIsReported) {
  expectFailure({"-xk", in("none.zip"), in("out")}, "none.zip: No such file or directory\n");
}

TEST_F(Ditto, failedPackingLeavesNoArchive) {
  fs::create_directory(in("source"));
  ASSERT_EQ(mkfifo(in("source/pipe").c_str(), 0600), 0);
  expectFailure({"-ck", in("source"), in("a.zip")}, "source/pipe: neither a file");
  expectFailure({"-ck", in("none"), in("a.zip")}, "Cannot get the real path for source");
  expectFailure({"-ck", in("source"), in("no folder/a.zip")}, "no folder/a.zip");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 1);
}

TEST_F(Ditto, copyKeepsMetadata) {
  makeBundle(in("Greeter.app"));
  const std::vector<std::string> timed{"Contents/Resources/Été.txt", "Contents/Resources/current",
                                       "Contents"};
  fs::permissions(in("Greeter.app/Contents/Resources/Été.txt"), fs::perms(0440));
  fs::permissions(in("Greeter.app/Contents/Resources"), fs::perms(0555));
  const std::array<timespec, 2> times{timespec{1'600'000'000, 5}, timespec{1'600'000'001, 7}};
  for (const auto& name : timed)
    ASSERT_EQ(
        utimensat(AT_FDCWD, in("Greeter.app/" + name).c_str(), times.data(), AT_SYMLINK_NOFOLLOW),
        0);
  const bool keepsAttributes = setxattr(in("Greeter.app").c_str(), "user.a", "1", 1, 0) == 0;

  expectSuccess({in("Greeter.app"), "/Applications/Copy.app"});
  const fs::path copy = root().applications() / "Copy.app";
  EXPECT_EQ(treeAt(copy), treeAt(in("Greeter.app")));
  for (const auto& name : timed) {
    struct stat status {};
    ASSERT_EQ(lstat((copy / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'600'000'001) << name;
    EXPECT_EQ(status.st_mtim.tv_nsec, 7) << name;
  }
  char value = 0;
  EXPECT_TRUE(!keepsAttributes || getxattr(copy.c_str(), "user.a", &value, 1) == 1);
}

TEST_F(Ditto, copyMergesIntoExistingFolder) {
  for (const char* const name : {"from", "from/sub", "to", "to/sub"})
    fs::create_directory(in(name));
  folder_.write("from/sub/new", "new");
  folder_.write("from/both", "changed");
  folder_.write("to/both", "old");
  folder_.write("to/sub/kept", "kept");
  expectSuccess({in("from"), in("to")});
  EXPECT_EQ(contentsOf(in("to/sub/new")) + contentsOf(in("to/both")) +
                contentsOf(in("to/sub/kept")),
            "newchangedkept");
}

TEST_F(Ditto, fileIsCopiedToNameOrIntoFolder) {
  folder_.write("file", "text");
  fs::create_directory(in("folder"));
  expectSuccess({in("file"), in("copy")});
  expectSuccess({in("file"), in("folder")});
  EXPECT_EQ(contentsOf(in("copy")) + contentsOf(in("folder/file")), "texttext");
}

TEST_F(Ditto, copyReplacesExistingLink) {
  folder_.write("outside", "mine");
  fs::create_directory(in("from"));
  folder_.write("from/name", "theirs");
  fs::create_directory(in("to"));
  fs::create_symlink(in("outside"), in("to/name"));
  expectSuccess({in("from"), in("to")});
  EXPECT_EQ(contentsOf(in("outside")) + contentsOf(in("to/name")), "minetheirs");
}

TEST_F(Ditto, failedCopyIsReported) {
  fs::create_directories(in("from/name"));
  folder_.write("file", "text");
  expectFailure({in("none"), in("to")},
                "Cannot get the real path for source '" + in("none").string() + "'\n");
  expectFailure({in("from"), in("file")}, "file: Not a directory\n");
  expectFailure({in("from"), in("from/name/again")}, "lies in the folder");
  fs::create_directory(in("to"));
  folder_.write("to/name", "a file");
  expectFailure({in("from"), in("to")}, "to/name: Not a directory\n");
}

TEST_F(Ditto, unwritableTargetIsReported) {
  makeBundle(in("Greeter.app"));
  fs::permissions(root().applications(), fs::perms(0555));
  const Finished ran =
      runWithoutPrivileges(root().ditto(), {in("Greeter.app"), "/Applications/Greeter.app"});
  EXPECT_EQ(ran.exitStatus, 1);
  EXPECT_THAT(ran.error, testing::EndsWith("/Applications/Greeter.app: Permission denied\n"));
  EXPECT_TRUE(fs::is_empty(root().applications()));
}

TEST_F(Ditto, invalidCommandLineShowsUsage) {
  const std::vector<std::vector<std::string>> commands{
      {}, {"a"}, {"a", "b", "c"}, {"-x", "a", "b"}, {"-xck", "a", "b"}, {"-z", "a", "b"}};
  for (const auto& command : commands)
    expectFailure(command, "usage: ditto");
}

} // namespace
} // namespace icloud::test
