// Which files can be evicted, and their eviction one by one.

#include "evict/Evictor.h"

#include "ports/CloudFiles.h"
#include "support/Log.h"
#include "support/Numbers.h"

namespace driftmark::Evictor {

namespace {

bool isEvictable(const ResourceValues& values) {
  return values.isRegularFile == true && values.isUbiquitousItem == true &&
         values.downloadingStatus == DownloadingStatus::current;
}

} // namespace

Survey survey(const CloudFiles& cloudFiles, const std::string& folder) {
  Survey found;
  cloudFiles.walk(folder, [&](const WalkEntry& entry) {
    if (!entry.path || !entry.values || !isEvictable(*entry.values))
      return;
    found.files.push_back(*entry.path);
    const auto bytes = sum(found.bytes, entry.values->totalFileAllocatedSize.value_or(0));
    if (!bytes)
      fatalError("the sizes of the surveyed files exceed 64 bits");
    found.bytes = *bytes;
  });
  return found;
}

std::vector<std::string> evict(CloudFiles& cloudFiles, SystemLog& systemLog,
                               const std::vector<std::string>& files) {
  std::vector<std::string> failures;
  for (const std::string& file : files) {
    if (const auto error = cloudFiles.evict(file)) {
      log(systemLog, {"evict failed for ", file, ": ", error->description});
      failures.push_back(file);
    }
  }
  return failures;
}

} // namespace driftmark::Evictor
