#pragma once

#include <string>
#include <string_view>

/// A system root is a folder that stands for "/" where this program names parts of the system; ""
/// and "/" stand for none. Only "/Applications", the paths below it, and tools are moved below it.
/// Any thread.
namespace driftmark {

/// The text to put before an absolute path; "" when there is no system root.
std::string systemRootPrefix(std::string_view root);

/// The real path of "/Applications" or of an item below it; other paths stay the same.
std::string belowSystemRoot(const std::string& root, const std::string& path);

/// The path by which this program names the item at the real `path`: the inverse of
/// `belowSystemRoot`.
std::string withoutSystemRoot(const std::string& root, const std::string& path);

} // namespace driftmark
