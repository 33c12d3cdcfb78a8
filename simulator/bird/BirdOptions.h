#pragma once

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace icloud {

/// A command line that makes no sense.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// What the daemon is told when it is started.
struct BirdOptions {
  bool help = false;
  bool check = false;         ///< only read the scenario
  bool resume = false;        ///< go on where the daemon before came to
  std::filesystem::path home; ///< the folder above Library/Mobile Documents
  std::filesystem::path scenario;
  std::set<std::string> beginAfter; ///< requests that have to be served before the story begins

  static BirdOptions from(const std::vector<std::string>& arguments);
  static const char* usage();
};

} // namespace icloud
