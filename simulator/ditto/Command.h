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

/// What `ditto` is asked to do.
struct Command {
  enum class Kind { copy, pack, unpack };

  Kind kind = Kind::copy;
  bool keepParent = false;
  std::string source;
  std::string target;

  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
