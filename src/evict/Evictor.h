#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace driftmark {

class CloudFiles;
class SystemLog;

/// The files that can be evicted, in the order of the walk, and what they take up here.
struct Survey {
  std::vector<std::string> files; ///< absolute paths
  std::int64_t bytes = 0;         ///< sum of the allocated sizes

  bool operator==(const Survey&) const = default;
};

/// Frees the local space of files that are in iCloud. Both operations block, touch nothing shared
/// and may run on any thread.
class Evictor {
public:
  Evictor() = delete;

  /// The regular cloud files below `folder` whose copy here is current. A file with changes still
  /// to be uploaded is among them. What cannot be read is passed over; a file of unknown size
  /// counts as zero bytes. A sum beyond 64 bits ends the program.
  static Survey survey(const CloudFiles& cloudFiles, const std::string& folder);

  /// Asks for the eviction of each of `files` in turn, so that space is freed as it goes. Logs
  /// every failure and returns the files that failed, in their order.
  static std::vector<std::string> evict(CloudFiles& cloudFiles, SystemLog& systemLog,
                                        const std::vector<std::string>& files);
};

} // namespace driftmark
