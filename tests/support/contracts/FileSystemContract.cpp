#include "support/contracts/FileSystemContract.h"

#include <memory>
#include <variant>

namespace driftmark::test {

using namespace std::string_literals;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FileSystemContract);

TEST_P(FileSystemContract, fileExistsFromCreationToRemoval) {
  const std::string path = inFolder("report.pdf");
  EXPECT_FALSE(fileSystem().fileExists(path));
  subject_->createFile(path);
  EXPECT_TRUE(fileSystem().fileExists(path));
  subject_->remove(path);
  EXPECT_FALSE(fileSystem().fileExists(path));
}

TEST_P(FileSystemContract, folderExists) {
  EXPECT_TRUE(fileSystem().fileExists(subject_->folder()));
  subject_->createFolder(inFolder("nested"));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("nested")));
}

TEST_P(FileSystemContract, linkExistsWhenTargetExists) {
  subject_->createLink(inFolder("link"), inFolder("target"));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("link")));
  subject_->createFile(inFolder("target"));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("link")));
}

TEST_P(FileSystemContract, linkToNothingIsItem) {
  EXPECT_FALSE(fileSystem().itemExists(inFolder("link")));
  subject_->createLink(inFolder("link"), inFolder("target"));
  EXPECT_TRUE(fileSystem().itemExists(inFolder("link")));
  subject_->createFile(inFolder("target"));
  EXPECT_TRUE(fileSystem().itemExists(inFolder("target")));
  EXPECT_TRUE(fileSystem().itemExists(inFolder("link")));
  EXPECT_FALSE(fileSystem().itemExists(""));
  EXPECT_FALSE(fileSystem().itemExists(inFolder("link\0more"s)));
}

TEST_P(FileSystemContract, onlyLinkItselfIsALink) {
  subject_->createFile(inFolder("file"));
  subject_->createLink(inFolder("link"), inFolder("file"));
  subject_->createLink(inFolder("broken"), inFolder("missing"));
  EXPECT_TRUE(fileSystem().isLink(inFolder("link")));
  EXPECT_TRUE(fileSystem().isLink(inFolder("broken")));
  EXPECT_FALSE(fileSystem().isLink(inFolder("file")));
  EXPECT_FALSE(fileSystem().isLink(inFolder("missing")));
  EXPECT_FALSE(fileSystem().isLink(""));
  EXPECT_FALSE(fileSystem().isLink(inFolder("link\0more"s)));
}

TEST_P(FileSystemContract, pathsOfOneItemAreRecognized) {
  subject_->createFile(inFolder("one"));
  subject_->createFile(inFolder("other"));
  subject_->createLink(inFolder("link"), inFolder("one"));
  EXPECT_TRUE(fileSystem().areSameItem(inFolder("one"), inFolder("one")));
  EXPECT_TRUE(fileSystem().areSameItem(inFolder("link"), inFolder("one")));
  EXPECT_TRUE(fileSystem().areSameItem(inFolder("one"), inFolder("link")));
  EXPECT_FALSE(fileSystem().areSameItem(inFolder("one"), inFolder("other")));
  EXPECT_FALSE(fileSystem().areSameItem(inFolder("link"), inFolder("other")));
}

TEST_P(FileSystemContract, itemsThatDoNotExistAreNotTheSame) {
  subject_->createFile(inFolder("file"));
  subject_->createLink(inFolder("dangling"), inFolder("missing"));
  for (const std::string& path : {inFolder("missing"), inFolder("dangling"), ""s}) {
    EXPECT_FALSE(fileSystem().areSameItem(path, path)) << path;
    EXPECT_FALSE(fileSystem().areSameItem(path, inFolder("file"))) << path;
  }
  EXPECT_FALSE(fileSystem().areSameItem(inFolder("file"), inFolder("file\0more"s)));
}

TEST_P(FileSystemContract, namesInAnyScriptAreFound) {
  for (const std::string name :
       {"caf\u00e9", "cafe\u0301s", "\u2601 \U0001f4c4", "line\nend", " o "}) {
    EXPECT_FALSE(fileSystem().fileExists(inFolder(name))) << name;
    subject_->createFile(inFolder(name));
    EXPECT_TRUE(fileSystem().fileExists(inFolder(name))) << name;
  }
}

TEST_P(FileSystemContract, pathThatCannotBeCheckedIsAbsent) {
  subject_->createFile(inFolder("file"));
  EXPECT_FALSE(fileSystem().fileExists(""));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("file/below")));
  EXPECT_FALSE(fileSystem().fileExists(inFolder(std::string(5000, 'x'))));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("missing/below")));
}

TEST_P(FileSystemContract, pathWithNulIsNotTruncated) {
  subject_->createFile(inFolder("file"));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("file\0more"s)));
}

TEST_P(FileSystemContract, homeIsAbsoluteWithoutTrailingSlash) {
  const std::string home = fileSystem().homeDirectory();
  ASSERT_FALSE(home.empty());
  EXPECT_EQ(home.front(), '/');
  EXPECT_NE(home.back(), '/');
}

TEST_P(FileSystemContract, folderMayBeMadeTwice) {
  const std::string path = inFolder("above/folder");
  EXPECT_FALSE(fileSystem().createDirectory(path).has_value());
  EXPECT_TRUE(fileSystem().fileExists(path));
  subject_->createFile(path + "/file");
  EXPECT_FALSE(fileSystem().createDirectory(path).has_value());
  EXPECT_TRUE(fileSystem().fileExists(path + "/file"));
}

TEST_P(FileSystemContract, folderIsRemovedWithContents) {
  subject_->createFolder(inFolder("folder"));
  subject_->createFile(inFolder("folder/file"));
  subject_->createFile(inFolder("folder2"));
  EXPECT_FALSE(fileSystem().removeItem(inFolder("folder")).has_value());
  EXPECT_FALSE(fileSystem().fileExists(inFolder("folder/file")));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("folder")));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("folder2")));
}

TEST_P(FileSystemContract, removedLinkKeepsTarget) {
  subject_->createFile(inFolder("target"));
  subject_->createLink(inFolder("link"), inFolder("target"));
  EXPECT_FALSE(fileSystem().removeItem(inFolder("link")).has_value());
  EXPECT_FALSE(fileSystem().fileExists(inFolder("link")));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("target")));
}

TEST_P(FileSystemContract, movedFolderIsOnlyAtNewPath) {
  subject_->createFolder(inFolder("from"));
  subject_->createFile(inFolder("from/file"));
  EXPECT_FALSE(fileSystem().moveItem(inFolder("from"), inFolder("to")).has_value());
  EXPECT_TRUE(fileSystem().fileExists(inFolder("to/file")));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("from")));
}

TEST_P(FileSystemContract, moveToExistingPathIsErrorAndMovesNothing) {
  subject_->createFile(inFolder("from"));
  subject_->createFolder(inFolder("to"));
  const auto error = fileSystem().moveItem(inFolder("from"), inFolder("to"));
  ASSERT_TRUE(error.has_value());
  EXPECT_FALSE(error->description.empty());
  EXPECT_TRUE(fileSystem().fileExists(inFolder("from")));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("to")));
}

TEST_P(FileSystemContract, movedItemGoesBack) {
  subject_->createFolder(inFolder("from"));
  subject_->createFile(inFolder("from/file"));
  const auto moved = fileSystem().moveItemReversibly(inFolder("from"), inFolder("to"));
  ASSERT_TRUE(std::holds_alternative<std::unique_ptr<MovedItem>>(moved));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("to/file")));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("from")));
  EXPECT_FALSE(std::get<std::unique_ptr<MovedItem>>(moved)->putBack().has_value());
  EXPECT_TRUE(fileSystem().fileExists(inFolder("from/file")));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("to")));
}

TEST_P(FileSystemContract, movedItemStaysWhenItsOldPathIsTaken) {
  subject_->createFolder(inFolder("from"));
  subject_->createFile(inFolder("from/file"));
  {
    const auto moved = fileSystem().moveItemReversibly(inFolder("from"), inFolder("to"));
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<MovedItem>>(moved));
    subject_->createFile(inFolder("from"));
    const auto error = std::get<std::unique_ptr<MovedItem>>(moved)->putBack();
    ASSERT_TRUE(error.has_value());
    EXPECT_FALSE(error->description.empty());
  }
  EXPECT_TRUE(fileSystem().fileExists(inFolder("to/file")));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("from")));
}

TEST_P(FileSystemContract, trashedItemIsGone) {
  subject_->createFolder(inFolder("item"));
  subject_->createFile(inFolder("item/file"));
  EXPECT_FALSE(fileSystem().trashItem(inFolder("item")).has_value());
  EXPECT_FALSE(fileSystem().fileExists(inFolder("item")));
}

TEST_P(FileSystemContract, missingItemIsDescribedError) {
  const std::string path = inFolder("missing");
  for (const auto& error : {fileSystem().removeItem(path), fileSystem().trashItem(path),
                            fileSystem().moveItem(path, inFolder("to"))}) {
    ASSERT_TRUE(error.has_value());
    EXPECT_FALSE(error->description.empty());
  }
  const auto moved = fileSystem().moveItemReversibly(path, inFolder("to"));
  ASSERT_TRUE(std::holds_alternative<PlatformError>(moved));
  EXPECT_FALSE(std::get<PlatformError>(moved).description.empty());
  EXPECT_FALSE(fileSystem().fileExists(inFolder("to")));
}

TEST_P(FileSystemContract, temporaryFolderIsConstantWithTrailingSlash) {
  const std::string path = std::get<std::string>(fileSystem().temporaryDirectory());
  EXPECT_TRUE(path.starts_with('/')) << path;
  EXPECT_TRUE(path.ends_with('/')) << path;
  EXPECT_EQ(std::get<std::string>(fileSystem().temporaryDirectory()), path);
}

TEST_P(FileSystemContract, unknownWriteErrorIsDescribed) {
  EXPECT_FALSE(fileSystem().unknownWriteError().description.empty());
}

} // namespace driftmark::test
