// How a walk reads folders, and how it returns to one after its subfolders with few descriptors.

#include "platform/linux/desktop/FolderWalk.h"

#include "platform/posix/FileDescriptor.h"
#include "support/Paths.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

constexpr int openFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

/// How many folders are open at once, besides the one that the walk started in.
constexpr std::size_t maxOpen = 32;

constexpr std::size_t bufferSize = 32768;

/// The entries of a folder, read from its descriptor in blocks. A suspended listing holds neither
/// descriptor nor buffer and can be resumed at the same place. One thread at a time.
class FolderListing {
public:
  explicit FolderListing(FileDescriptor folder) : folder_(std::move(folder)) {}

  /// The next entry, valid until the next call; null at the end, after a read error, and while the
  /// listing is suspended.
  const dirent64* next() {
    if (position_ == filled_ && !readAhead())
      return nullptr;
    const auto* const entry = reinterpret_cast<const dirent64*>(&buffer_[position_]);
    position_ += entry->d_reclen;
    offset_ = entry->d_off;
    return entry;
  }

  /// The folder's descriptor; -1 while the listing is suspended.
  int descriptor() const { return folder_.number(); }

  /// Returns the descriptor and drops what was read ahead.
  FileDescriptor suspend() {
    buffer_.reset();
    filled_ = position_ = 0;
    return std::exchange(folder_, FileDescriptor());
  }

  /// Continues in `folder`, which is the same folder opened again.
  void resume(FileDescriptor folder) {
    if (lseek64(folder.number(), offset_, SEEK_SET) == offset_)
      folder_ = std::move(folder);
  }

private:
  bool readAhead() {
    if (!folder_.isOpen())
      return false;
    if (!buffer_)
      buffer_ = std::make_unique_for_overwrite<std::byte[]>(bufferSize);
    const ssize_t count = getdents64(folder_.number(), buffer_.get(), bufferSize);
    position_ = 0;
    filled_ = count > 0 ? static_cast<std::size_t>(count) : 0;
    return filled_ > 0;
  }

  FileDescriptor folder_;
  std::unique_ptr<std::byte[]> buffer_; ///< allocated by the first read
  std::size_t filled_ = 0;
  std::size_t position_ = 0;
  off64_t offset_ = 0; ///< of the folder, behind the last entry
};

struct Identity {
  dev_t device;
  ino_t number;

  bool operator==(const Identity&) const = default;

  /// All zero when `fstat` fails.
  static Identity of(int descriptor) {
    struct stat information {};
    fstat(descriptor, &information);
    return {information.st_dev, information.st_ino};
  }
};

bool isItem(std::string_view name) {
  return name != "." && name != "..";
}

class FolderWalk {
public:
  FolderWalk(const std::string& folder, const OnItem& onItem)
      : path_(withoutTrailingSlashes(folder)), onItem_(onItem) {
    FileDescriptor top(open(path_.c_str(), openFolder));
    if (path_ == "/")
      path_.clear();
    enter(std::move(top));
  }

  void run() {
    while (!levels_.empty()) {
      const dirent64* const entry = levels_.back().listing.next();
      if (!entry)
        leave();
      else if (isItem(entry->d_name) && visit(*entry) == Walk::stop)
        return;
    }
  }

private:
  /// A folder on the path from the first one to the current item.
  struct Level {
    FolderListing listing;
    Identity identity;
    std::size_t pathLength;
  };

  Walk visit(const dirent64& entry) {
    const Level& level = levels_.back();
    const auto* const name = static_cast<const char*>(entry.d_name);
    path_.resize(level.pathLength);
    path_.append("/").append(name);
    if (onItem_({level.listing.descriptor(), name, path_}) == Walk::stop)
      return Walk::stop;
    if (entry.d_type == DT_DIR || entry.d_type == DT_UNKNOWN)
      enter(FileDescriptor(openat(level.listing.descriptor(), name, openFolder | O_NOFOLLOW)));
    return Walk::proceed;
  }

  void enter(FileDescriptor folder) {
    if (!folder.isOpen())
      return;
    const Identity identity = Identity::of(folder.number());
    const auto isSame = [&](const Level& level) { return level.identity == identity; };
    if (std::ranges::any_of(levels_, isSame))
      return; // a file system mounted inside itself
    levels_.push_back({FolderListing(std::move(folder)), identity, path_.size()});
    if (levels_.size() > maxOpen + 1)
      levels_[levels_.size() - maxOpen - 1].listing.suspend();
  }

  void leave() {
    const FileDescriptor left = levels_.back().listing.suspend();
    levels_.pop_back();
    if (levels_.empty() || levels_.back().listing.descriptor() >= 0)
      return;
    if (!resumeAt(FileDescriptor(openat(left.number(), "..", openFolder))))
      resumeAt(openedFromTop());
  }

  /// Returns false when `folder` is not the folder of the last level.
  bool resumeAt(FileDescriptor folder) {
    Level& level = levels_.back();
    if (!folder.isOpen() || Identity::of(folder.number()) != level.identity)
      return false;
    level.listing.resume(std::move(folder));
    return true;
  }

  /// The folder of the last level, opened by its path: its subfolder was moved elsewhere.
  FileDescriptor openedFromTop() const {
    FileDescriptor folder;
    int parent = levels_.front().listing.descriptor();
    for (std::size_t index = 1; index < levels_.size(); ++index) {
      const std::size_t begin = levels_[index - 1].pathLength + 1;
      const std::string name = path_.substr(begin, levels_[index].pathLength - begin);
      folder = FileDescriptor(openat(parent, name.c_str(), openFolder | O_NOFOLLOW));
      parent = folder.number();
    }
    return folder;
  }

  std::string path_; ///< of the current item
  const OnItem& onItem_;
  std::vector<Level> levels_;
};

} // namespace

void walkFolder(const std::string& folder, const OnItem& onItem) {
  FolderWalk(folder, onItem).run();
}

} // namespace driftmark
