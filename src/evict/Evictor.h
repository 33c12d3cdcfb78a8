#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace driftmark {

class CloudFiles;
class SystemLog;

/// Frees the local space of files that are in iCloud. Both operations block, share no state and may
/// run on any thread.
namespace Evictor {

/// The files that can be evicted, in the order of the walk.
struct Survey {
  std::vector<std::string> files; ///< absolute paths
  std::int64_t bytes = 0;         ///< the sum of their allocated sizes

  bool operator==(const Survey&) const = default;
};

/// Finds the regular cloud files below `folder` whose local copy is current. Files with changes
/// that are not uploaded count as current, too: the survey includes them, and the system refuses to
/// evict them. An item that cannot be read is skipped; a file of unknown size counts as zero bytes.
/// A sum beyond 64 bits ends the program.
Survey survey(const CloudFiles& cloudFiles, const std::string& folder);

/// Asks for the eviction of each of `files` in turn, so that space is freed early. Logs every
/// failure and returns the files that failed, in their order.
std::vector<std::string> evict(CloudFiles& cloudFiles, SystemLog& systemLog,
                               const std::vector<std::string>& files);

} // namespace Evictor

} // namespace driftmark
