#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace icloud {

/// A command line that makes no sense.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// What `xattr` is asked to do.
struct Command {
  enum class Kind { list, print, write, remove };

  Kind kind = Kind::list;
  bool recursive = false;
  bool withValues = false; ///< of list
  std::string name;
  std::string value; ///< of write
  std::vector<std::string> paths;

  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
