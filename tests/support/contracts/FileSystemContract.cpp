#include "support/contracts/FileSystemContract.h"

namespace driftmark::test {

using namespace std::string_literals;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FileSystemContract);

TEST_P(FileSystemContract, fileExistsFromItsCreationToItsRemoval) {
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

TEST_P(FileSystemContract, linkExistsWhenItsTargetDoes) {
  subject_->createLink(inFolder("link"), inFolder("target"));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("link")));
  subject_->createFile(inFolder("target"));
  EXPECT_TRUE(fileSystem().fileExists(inFolder("link")));
}

TEST_P(FileSystemContract, namesInAnyScriptAreFound) {
  for (const std::string name :
       {"caf\u00e9", "cafe\u0301s", "\u2601 \U0001f4c4", "line\nend", " o "}) {
    EXPECT_FALSE(fileSystem().fileExists(inFolder(name))) << name;
    subject_->createFile(inFolder(name));
    EXPECT_TRUE(fileSystem().fileExists(inFolder(name))) << name;
  }
}

TEST_P(FileSystemContract, whatCannotBeDeterminedIsAbsent) {
  subject_->createFile(inFolder("file"));
  EXPECT_FALSE(fileSystem().fileExists(""));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("file/below")));
  EXPECT_FALSE(fileSystem().fileExists(inFolder(std::string(5000, 'x'))));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("missing/below")));
}

TEST_P(FileSystemContract, pathWithANulIsNotThePathBeforeIt) {
  subject_->createFile(inFolder("file"));
  EXPECT_FALSE(fileSystem().fileExists(inFolder("file\0more"s)));
}

TEST_P(FileSystemContract, homeIsAnAbsolutePathWithoutTrailingSlash) {
  const std::string home = fileSystem().homeDirectory();
  ASSERT_FALSE(home.empty());
  EXPECT_EQ(home.front(), '/');
  EXPECT_NE(home.back(), '/');
}

} // namespace driftmark::test
