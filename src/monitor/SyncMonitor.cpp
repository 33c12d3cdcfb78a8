#include "monitor/SyncMonitor.h"

#include "ports/Environment.h"
#include "ports/FileSystem.h"
#include "support/Log.h"
#include "support/Numbers.h"

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
  return make(Ports{.clock = platform.clock,
                    .mainQueue = platform.mainQueue,
                    .backgroundQueue = platform.backgroundQueue,
                    .childProcesses = platform.childProcesses,
                    .systemLog = platform.systemLog,
                    .fileSystem = platform.fileSystem,
                    .environment = platform.environment,
                    .text = platform.text});
}

std::shared_ptr<SyncMonitor> SyncMonitor::make(const Ports& ports) {
  return std::make_shared<SyncMonitor>(Private{}, ports);
}

SyncMonitor::SyncMonitor(Private /*pass*/, const Ports& ports)
    : platform_(ports), mobileDocs_(mobileDocs(ports.fileSystem)),
      stalledAfter_(stallThreshold(ports.environment)), fullPath_(mobileDocs_) {}

SyncMonitor::~SyncMonitor() = default;

std::string SyncMonitor::cloudDocsPath(const FileSystem& fileSystem) {
  return mobileDocs(fileSystem) + "/com~apple~CloudDocs";
}

std::string SyncMonitor::containerPath(const FileSystem& fileSystem, std::string_view path) {
  return cloudDocsPath(fileSystem).append(path);
}

void SyncMonitor::log(std::initializer_list<std::string_view> parts) const {
  driftmark::log(platform_.systemLog, parts);
}

void SyncMonitor::notify() const {
  if (onChange)
    onChange();
}

} // namespace driftmark
