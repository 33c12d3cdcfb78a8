#include "evict/Evictor.h"

#include "ports/CloudFiles.h"
#include "support/Fatal.h"
#include "support/Log.h"
#include "support/Numbers.h"

namespace driftmark {

namespace {

bool isEvictable(const ResourceValues& values) {
  return values.isRegularFile == true && values.isUbiquitousItem == true &&
         values.downloadingStatus == DownloadingStatus::current;
}

} // namespace

Survey Evictor::survey(const CloudFiles& cloudFiles, const std::string& folder) {
  Survey survey;
  cloudFiles.walk(folder, [&](const WalkEntry& entry) {
    if (!entry.path || !entry.values || !isEvictable(*entry.values))
      return;
    survey.files.push_back(*entry.path);
    const auto bytes = sum(survey.bytes, entry.values->totalFileAllocatedSize.value_or(0));
    if (!bytes)
      fatalError("the sizes of the surveyed files exceed 64 bits");
    survey.bytes = *bytes;
  });
  return survey;
}

std::vector<std::string> Evictor::evict(CloudFiles& cloudFiles, SystemLog& systemLog,
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

} // namespace driftmark
