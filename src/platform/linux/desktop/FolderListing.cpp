#include "platform/linux/desktop/FolderListing.h"

#include <unistd.h>

namespace driftmark {

namespace {

constexpr std::size_t bufferSize = 32768;

} // namespace

const dirent64* FolderListing::next() {
  if (position_ == filled_ && !readAhead())
    return nullptr;
  const auto* const entry = reinterpret_cast<const dirent64*>(&buffer_[position_]);
  position_ += entry->d_reclen;
  offset_ = entry->d_off;
  return entry;
}

FileDescriptor FolderListing::putAside() {
  buffer_.reset();
  filled_ = position_ = 0;
  return std::exchange(folder_, FileDescriptor());
}

void FolderListing::resume(FileDescriptor folder) {
  if (lseek64(folder.number(), offset_, SEEK_SET) == offset_)
    folder_ = std::move(folder);
}

bool FolderListing::readAhead() {
  if (!folder_.isOpen())
    return false;
  if (!buffer_)
    buffer_ = std::make_unique_for_overwrite<std::byte[]>(bufferSize);
  const ssize_t count = getdents64(folder_.number(), buffer_.get(), bufferSize);
  position_ = 0;
  filled_ = count > 0 ? static_cast<std::size_t>(count) : 0;
  return filled_ > 0;
}

} // namespace driftmark
