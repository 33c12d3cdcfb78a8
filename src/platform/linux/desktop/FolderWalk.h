#pragma once

#include <functional>
#include <string>

namespace driftmark {

/// An item that a walk has come to.
struct FoundItem {
  int folder;              ///< the descriptor of the folder that holds it
  const char* name;        ///< its name in there
  const std::string& path; ///< its whole path
};

/// What becomes of a walk after an item.
enum class Walk { goOn, end };

using ItemVisitor = std::function<Walk(const FoundItem& item)>;

/// Comes by every item below `folder` in the file system's order, a folder before what it holds.
/// Links are items, and only `folder` itself is followed when it is one. What cannot be entered is
/// passed over. However deep it gets, it takes a bounded number of descriptors and, for each folder
/// above the item, a few words of memory. Any thread.
void walkFolder(const std::string& folder, const ItemVisitor& visit);

} // namespace driftmark
