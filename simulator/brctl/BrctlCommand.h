#pragma once

#include <string>
#include <vector>

namespace icloud {

/// The command line of `brctl`.
struct Command {
  enum class Kind { help, monitorItems, monitorGlobal, status, quota, evict, download };

  Kind kind = Kind::help;
  std::string container;          ///< of monitorItems
  std::vector<std::string> paths; ///< of evict and download

  /// Throws UsageError.
  static Command from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
