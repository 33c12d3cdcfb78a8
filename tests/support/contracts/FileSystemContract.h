#pragma once

#include "ports/FileSystem.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A file system under test.
class FileSystemSubject {
public:
  virtual ~FileSystemSubject() = default;

  virtual FileSystem& fileSystem() = 0;

  /// An empty folder for this test alone, without a trailing slash.
  virtual std::string folder() = 0;

  virtual void createFile(const std::string& path) = 0;
  virtual void createFolder(const std::string& path) = 0;
  virtual void createLink(const std::string& path, const std::string& target) = 0;
  virtual void remove(const std::string& path) = 0;
};

class FileSystemContract : public testing::TestWithParam<SubjectFactory<FileSystemSubject>> {
protected:
  FileSystem& fileSystem() { return subject_->fileSystem(); }
  std::string inFolder(const std::string& name) { return subject_->folder() + "/" + name; }

  std::unique_ptr<FileSystemSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
