#pragma once

#include <functional>
#include <string>

namespace driftmark {

/// An item below the folder of a walk.
struct FoundItem {
  int folder;              ///< the descriptor of the folder that holds it
  const char* name;        ///< its name in that folder
  const std::string& path; ///< its whole path
};

/// What a walk does after an item.
enum class Walk { proceed, stop };

using OnItem = std::function<Walk(const FoundItem& item)>;

/// Calls `onItem` for every item below `folder` in the file system's order, a folder before its
/// contents. A symbolic link is an item; only `folder` itself is followed when it is a link. A
/// folder that cannot be opened is skipped. At any depth the walk holds a bounded number of
/// descriptors and a few words of memory for each folder above the item. Any thread.
void walkFolder(const std::string& folder, const OnItem& onItem);

} // namespace driftmark
