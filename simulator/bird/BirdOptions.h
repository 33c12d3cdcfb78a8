#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace icloud {

/// The daemon's command line.
struct BirdOptions {
  bool help = false;
  bool check = false;         ///< only read the scenario
  bool resume = false;        ///< continue where an earlier daemon stopped
  std::filesystem::path home; ///< the folder above Library/Mobile Documents
  std::filesystem::path scenario;
  std::set<std::string> beginAfter; ///< requests to be served before the scenario begins

  /// Throws UsageError.
  static BirdOptions from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
