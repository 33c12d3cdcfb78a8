#pragma once

#include "support/KeyedHash.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace driftmark {

/// `path` without the slashes at its end; "/" for a path of slashes alone.
inline std::string_view withoutTrailingSlashes(std::string_view path) {
  const std::size_t last = path.find_last_not_of('/');
  return path.substr(0, last == std::string_view::npos ? 1 : last + 1);
}

/// The last component of a path, trailing slashes not counted; "/" for a path of slashes alone.
inline std::string_view lastPathComponent(std::string_view path) {
  const std::string_view item = withoutTrailingSlashes(path);
  return item == "/" ? item : item.substr(item.rfind('/') + 1);
}

/// The folder that holds the item at `path`: "/" for the root and the items in it, "" for a name
/// alone.
std::string deletingLastPathComponent(std::string_view path);

/// `folder` and `name`, with one "/" between them.
std::string appendingPathComponent(std::string_view folder, std::string_view name);

/// `path` with the folder `home` at its start replaced by "~". A path outside `home` is unchanged.
std::string abbreviatingWithTilde(std::string_view path, std::string_view home);

/// The full path of an item in two parts, with its hash, which is known already. A container with
/// `ItemPathHash` is searched by it without building or hashing the path.
struct ItemPath {
  std::string_view folder;  ///< that all items lie in
  std::string_view printed; ///< by the tool, from its "/" on
  std::uint64_t hash = 0;   ///< the low half of the fingerprint of `printed`

  explicit operator std::string() const { return std::string(folder).append(printed); }
};

inline bool operator==(std::string_view full, const ItemPath& path) {
  return full.size() == path.folder.size() + path.printed.size() && full.ends_with(path.printed) &&
         full.starts_with(path.folder);
}

/// Hashes full paths like `ItemPath`.
struct ItemPathHash {
  using is_transparent = void;
  std::size_t operator()(const ItemPath& path) const { return path.hash; }
  std::size_t operator()(std::string_view full) const {
    return fingerprint(full.substr(std::min(folderLength, full.size()))).low;
  }

  KeyedHash fingerprint; ///< of printed paths
  std::size_t folderLength = 0;
};

} // namespace driftmark
