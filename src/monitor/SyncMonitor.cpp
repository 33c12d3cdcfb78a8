#include "monitor/SyncMonitor.h"

#include "monitor/Numbers.h"
#include "platform/Environment.h"
#include "platform/FileSystem.h"
#include "platform/SystemLog.h"

namespace driftmark {

namespace {

constexpr double defaultStalledAfter = 300.0;

std::string mobileDocs(const FileSystem& fileSystem) {
  return fileSystem.homeDirectory() + "/Library/Mobile Documents";
}

double stallThreshold(const Environment& environment) {
  const auto text = environment.variable("DRIFTMARK_STALL_SECS");
  const auto seconds = text ? toDouble(*text) : std::nullopt;
  return seconds && *seconds > 0 ? *seconds : defaultStalledAfter;
}

} // namespace

std::shared_ptr<SyncMonitor> SyncMonitor::make(const Platform& platform) {
  return std::make_shared<SyncMonitor>(Private{}, platform);
}

SyncMonitor::SyncMonitor(Private /*pass*/, const Platform& platform)
    : platform_(platform), mobileDocs_(mobileDocs(platform.fileSystem)),
      stalledAfter_(stallThreshold(platform.environment)), fullPath_(mobileDocs_) {}

SyncMonitor::~SyncMonitor() = default;

std::string SyncMonitor::cloudDocsPath(const FileSystem& fileSystem) {
  return mobileDocs(fileSystem) + "/com~apple~CloudDocs";
}

std::string SyncMonitor::containerPath(const FileSystem& fileSystem, std::string_view path) {
  return cloudDocsPath(fileSystem).append(path);
}

/// Logs the parts, joined, behind the program's prefix.
void SyncMonitor::log(std::initializer_list<std::string_view> parts) const {
  std::string line = "Driftmark: ";
  for (const std::string_view part : parts)
    line += part;
  platform_.systemLog.log(line);
}

void SyncMonitor::notify() const {
  if (onChange)
    onChange();
}

} // namespace driftmark
