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

/// What `brctl` is asked to do.
struct Command {
  enum class Kind { help, monitorItems, monitorGlobal, status, quota, evict, download };

  Kind kind = Kind::help;
  std::string container;          ///< of monitorItems
  std::vector<std::string> paths; ///< of evict and download

  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
