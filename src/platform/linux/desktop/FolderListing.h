#pragma once

#include "platform/posix/FileDescriptor.h"

#include <cstddef>
#include <memory>
#include <utility>

#include <dirent.h>
#include <sys/types.h>

namespace driftmark {

/// The entries of a folder, read from its descriptor piece by piece. It can be put aside, which
/// costs no descriptor and no buffer, and goes on where it was. One thread at a time.
class FolderListing {
public:
  explicit FolderListing(FileDescriptor folder) : folder_(std::move(folder)) {}

  /// The next entry, valid until the call after; null at the end, where the rest cannot be read,
  /// and while the listing is put aside.
  const dirent64* next();

  /// The folder's descriptor; -1 while the listing is put aside.
  int descriptor() const { return folder_.number(); }

  /// Gives the descriptor up, and with it what was read ahead.
  FileDescriptor putAside();

  /// Goes on in `folder`, the same folder opened anew.
  void resume(FileDescriptor folder);

private:
  bool readAhead();

  FileDescriptor folder_;
  std::unique_ptr<std::byte[]> buffer_; ///< made with the first reading
  std::size_t filled_ = 0;
  std::size_t position_ = 0;
  off64_t offset_ = 0; ///< where the folder goes on after the last entry
};

} // namespace driftmark
