#pragma once

#include <string>
#include <vector>

namespace icloud {

/// The command line of `xattr`.
struct Command {
  enum class Kind { list, print, write, remove };

  Kind kind = Kind::list;
  bool recursive = false;
  bool withValues = false; ///< of list
  std::string name;
  std::string value; ///< of write
  std::vector<std::string> paths;

  /// Throws UsageError.
  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
