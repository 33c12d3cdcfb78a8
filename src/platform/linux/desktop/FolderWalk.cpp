#include "platform/linux/desktop/FolderWalk.h"

#include "platform/linux/desktop/FolderListing.h"
#include "support/Paths.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace driftmark {

namespace {

constexpr int openFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

/// So many folders are open at once, besides the one that the walk began in.
constexpr std::size_t mostOpen = 32;

struct Identity {
  dev_t device;
  ino_t number;

  bool operator==(const Identity&) const = default;

  /// That of nothing where the descriptor tells none.
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
  FolderWalk(const std::string& folder, const ItemVisitor& visit)
      : path_(withoutTrailingSlashes(folder)), visit_(visit) {
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
      else if (isItem(entry->d_name) && comeBy(*entry) == Walk::end)
        return;
    }
  }

private:
  /// A folder between the first and the item at hand.
  struct Level {
    FolderListing listing;
    Identity identity;
    std::size_t pathLength;
  };

  Walk comeBy(const dirent64& entry) {
    const Level& level = levels_.back();
    const auto* const name = static_cast<const char*>(entry.d_name);
    path_.resize(level.pathLength);
    path_.append("/").append(name);
    if (visit_({level.listing.descriptor(), name, path_}) == Walk::end)
      return Walk::end;
    if (entry.d_type == DT_DIR || entry.d_type == DT_UNKNOWN)
      enter(FileDescriptor(openat(level.listing.descriptor(), name, openFolder | O_NOFOLLOW)));
    return Walk::goOn;
  }

  void enter(FileDescriptor folder) {
    if (!folder.isOpen())
      return;
    const Identity identity = Identity::of(folder.number());
    const auto isSame = [&](const Level& level) { return level.identity == identity; };
    if (std::ranges::any_of(levels_, isSame))
      return; // a file system that holds itself
    levels_.push_back({FolderListing(std::move(folder)), identity, path_.size()});
    if (levels_.size() > mostOpen + 1)
      levels_[levels_.size() - mostOpen - 1].listing.putAside();
  }

  void leave() {
    const FileDescriptor left = levels_.back().listing.putAside();
    levels_.pop_back();
    if (levels_.empty() || levels_.back().listing.descriptor() >= 0)
      return;
    if (!resumeAt(FileDescriptor(openat(left.number(), "..", openFolder))))
      resumeAt(openedFromTop());
  }

  /// Whether `folder` is the one that the walk is in now.
  bool resumeAt(FileDescriptor folder) {
    Level& level = levels_.back();
    if (!folder.isOpen() || Identity::of(folder.number()) != level.identity)
      return false;
    level.listing.resume(std::move(folder));
    return true;
  }

  /// For a folder that was left behind when the one below was moved elsewhere.
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

  std::string path_; ///< of the item at hand
  const ItemVisitor& visit_;
  std::vector<Level> levels_;
};

} // namespace

void walkFolder(const std::string& folder, const ItemVisitor& visit) {
  FolderWalk(folder, visit).run();
}

} // namespace driftmark
