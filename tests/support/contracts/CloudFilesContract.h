#pragma once

#include "ports/CloudFiles.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Cloud files under test, with a folder whose contents the test makes. CloudFilesContract makes no
/// file in the cloud and evicts none.
class CloudFilesSubject {
public:
  virtual ~CloudFilesSubject() = default;

  virtual CloudFiles& cloudFiles() = 0;

  /// An empty folder for this test alone, without a trailing slash.
  virtual std::string folder() = 0;

  /// Make an item below the folder, named by its whole path: a folder, or a file of some bytes. A
  /// file without a status is not in the cloud.
  virtual void addFolder(const std::string& path) = 0;
  virtual void addFile(const std::string& path, std::optional<DownloadingStatus> status) = 0;

  /// Makes the eviction of a file fail.
  virtual void refuseToEvict(const std::string& path) = 0;
};

class CloudFilesContract : public testing::TestWithParam<SubjectFactory<CloudFilesSubject>> {
protected:
  CloudFiles& cloudFiles() { return subject_->cloudFiles(); }
  std::string inFolder(const std::string& name) { return subject_->folder() + "/" + name; }

  void addFile(const std::string& name) { subject_->addFile(inFolder(name), std::nullopt); }

  std::unique_ptr<CloudFilesSubject> subject_ = GetParam().make();
};

/// What holds for files in the cloud.
class CloudStatusContract : public CloudFilesContract {
protected:
  void addCurrent(const std::string& name) {
    subject_->addFile(inFolder(name), DownloadingStatus::current);
  }
};

} // namespace driftmark::test
