// How the parts of the interface are wired, started and shut down.

#include "ui/StatusItemController.h"

#include "monitor/SyncMonitor.h"
#include "ports/Application.h"
#include "support/Weakly.h"
#include "update/UpdateChecker.h"

namespace driftmark {

namespace {

SyncMonitor::Ports monitorPorts(const Platform& platform) {
  return {.clock = platform.clock,
          .mainQueue = platform.mainQueue,
          .backgroundQueue = platform.backgroundQueue,
          .childProcesses = platform.childProcesses,
          .systemLog = platform.systemLog,
          .fileSystem = platform.fileSystem,
          .environment = platform.environment,
          .text = platform.text};
}

} // namespace

std::shared_ptr<StatusItemController> StatusItemController::make(const Platform& platform) {
  auto controller = std::make_shared<StatusItemController>(Private{}, platform);
  controller->start();
  return controller;
}

StatusItemController::StatusItemController(Private /*pass*/, const Platform& platform)
    : platform_(platform), statusItem_(platform.statusBar.makeStatusItem()),
      monitor_(SyncMonitor::make(monitorPorts(platform))),
      updateChecker_(UpdateChecker::make(platform)) {}

StatusItemController::~StatusItemController() = default;

void StatusItemController::start() {
  const auto self = shared_from_this();
  if (statusItem_) {
    // This object owns the status item, so these callbacks cannot outlive it.
    statusItem_->setMenu([this] { return menuNeedsUpdate(); }, [this] { menuWillOpen(); });
  }
  monitor_->onChange = weakly(self, std::mem_fn(&StatusItemController::monitorChanged));
  updateIcon();
  monitor_->start();
  updateChecker_->start();
}

void StatusItemController::shutdown() {
  monitor_->stop();
  updateActivity();
}

void StatusItemController::monitorChanged() {
  updateIcon();
  updateActivity();
  if (statusItem_ && quotaItem_)
    statusItem_->retitle(*quotaItem_, storageTitle());
}

/// Each event that can end what the monitor is busy with is a change that it notifies.
void StatusItemController::updateActivity() {
  if (!monitor_->isBusy())
    activity_.reset();
  else if (!activity_)
    activity_ = platform_.application.beginActivity("iCloud Drive is syncing");
}

} // namespace driftmark
