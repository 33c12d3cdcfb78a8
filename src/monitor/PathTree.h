#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace driftmark {

/// A map from paths to small values that stays small with millions of paths: what the paths of one
/// folder share is kept once, and a path costs little more than its last component.
///
/// A path is any byte string that begins with "/"; two paths are the same when their bytes are.
/// Paths are never removed. Looking up paths folder by folder, or again in the order in which they
/// were added, costs least; no lookup depends on how many paths there are.
class PathTree {
public:
  /// What a path maps to: 1 to 7. No value is 0.
  using Value = std::uint8_t;

  /// A folder of the tree, good for as long as the tree.
  using FolderIndex = std::uint32_t;

  PathTree();

  /// Maps `path` to `value` together with those bits of its former value that are in `kept`, and
  /// returns the former value, 0 when there was none.
  Value exchange(std::string_view path, Value value, Value kept = 0);

  /// The same for the path that is `name`, without any "/", in `folder`.
  Value exchange(FolderIndex folder, std::string_view name, Value value, Value kept = 0);

  /// The folder with this path, for paths that continue with "/" and a name. It is created when it
  /// does not exist, without a mapping.
  FolderIndex enter(std::string_view folder) { return enter(folder, true); }

  /// What `path` is mapped to, 0 when it is not.
  Value find(std::string_view path);

  /// How many paths are mapped.
  std::size_t size() const { return size_; }

private:
  /// Where an entry begins: its block in the upper bits, its byte there in the lower.
  using Reference = std::uint32_t;

  struct Slot {
    Reference reference; ///< `noReference` in a free slot
    std::uint32_t hash;  ///< of the name; spares most looks at entries that are not meant
  };

  /// An open-addressing table of the entries of one folder.
  struct Folder {
    std::unique_ptr<Slot[]> slots;
    std::uint32_t capacity = 0; ///< a power of two
    std::uint32_t count = 0;
  };

  /// One step of the cursor, which is the chain of folders entered last.
  struct Step {
    std::size_t end; ///< where the step's component ends in the folder's text
    FolderIndex folder;
  };

  /// An entry taken apart.
  struct Entry {
    std::string_view name;
    Value value;
    std::size_t size;
  };

  static constexpr FolderIndex noFolder = 0xffffffff;
  static constexpr Reference noReference = 0xffffffff;

  FolderIndex enter(std::string_view folder, bool create);
  FolderIndex subfolder(FolderIndex parent, std::string_view name, bool create);
  Reference lookUp(FolderIndex index, std::string_view name, Value kind, std::uint32_t hash) const;
  Reference successor(FolderIndex folder, std::string_view name) const;
  Reference append(FolderIndex folder, std::string_view name, Value value);
  void link(FolderIndex index, Slot entry);
  static void grow(Folder& folder);
  static void place(const Folder& folder, Slot entry);

  char* at(Reference reference) const;
  Entry read(Reference reference) const;
  void remember(FolderIndex folder, Reference found);
  static std::uint32_t hashOf(std::string_view name, Value value);

  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t blockUsed_ = 0;     ///< bytes used of the last block
  std::size_t blockCapacity_ = 0; ///< bytes of the last block
  std::vector<Folder> folders_;
  std::size_t size_ = 0;

  std::string cursorPath_;   ///< the folder entered last
  std::vector<Step> cursor_; ///< the folders on the path to it, from the root
  Reference lastFound_ = noReference;
  FolderIndex lastFoundFolder_ = noFolder;
  FolderIndex lastAppendedFolder_ = noFolder;
};

} // namespace driftmark
