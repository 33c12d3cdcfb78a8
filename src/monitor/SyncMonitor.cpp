// How a monitor is made, and where iCloud Drive is in the file system.

#include "monitor/SyncMonitor.h"

#include "ports/FileSystem.h"
#include "support/Log.h"

namespace driftmark {

namespace {

std::string mobileDocs(const FileSystem& fileSystem) {
  return fileSystem.homeDirectory() + "/Library/Mobile Documents";
}

} // namespace

std::shared_ptr<SyncMonitor> SyncMonitor::make(const Ports& ports) {
  return std::make_shared<SyncMonitor>(Private{}, ports);
}

SyncMonitor::SyncMonitor(Private /*pass*/, const Ports& ports)
    : ports_(ports), mobileDocs_(mobileDocs(ports.fileSystem)),
      stalledAfter_(stallThreshold(ports.environment)) {}

SyncMonitor::~SyncMonitor() = default;

std::string SyncMonitor::cloudDocsPath(const FileSystem& fileSystem) {
  return mobileDocs(fileSystem) + "/com~apple~CloudDocs";
}

std::string SyncMonitor::containerPath(const FileSystem& fileSystem, std::string_view path) {
  return cloudDocsPath(fileSystem).append(path);
}

void SyncMonitor::log(std::initializer_list<std::string_view> parts) const {
  driftmark::log(ports_.systemLog, parts);
}

void SyncMonitor::notify() const {
  if (onChange)
    onChange();
}

} // namespace driftmark
