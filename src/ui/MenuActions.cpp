// What the items of the menu do.

#include "monitor/SyncMonitor.h"
#include "ports/Application.h"
#include "ports/Dialogs.h"
#include "ports/LoginItem.h"
#include "ports/Workspace.h"
#include "support/Log.h"
#include "ui/StatusItemController.h"
#include "update/UpdateChecker.h"

namespace driftmark {

namespace {

constexpr std::size_t restartSyncButton = 0; ///< an index

constexpr const char* credits = "Menu bar monitor for iCloud Drive sync activity\n"
                                "https://" DRIFTMARK_VENDOR_HOST "/driftmark/";

Alert restartQuestion(std::size_t stalled) {
  const std::string count =
      stalled == 1 ? "1 transfer has made no progress for a while."
                   : std::to_string(stalled) + " transfers have made no progress for a while.";
  return {"Restart iCloud Sync?",
          count + " This restarts the iCloud Drive sync process (bird); it relaunches on its own "
                  "and resumes pending transfers. No files are changed. If the stall is really a "
                  "network problem, restarting will not help.",
          {"Restart Sync", "Cancel"}};
}

} // namespace

void StatusItemController::revealFile(const std::string& path) {
  platform_.workspace.activateFileViewerSelecting(path);
}

void StatusItemController::openICloudDrive() {
  platform_.workspace.open(SyncMonitor::cloudDocsPath(platform_.fileSystem));
}

void StatusItemController::restartSync() {
  platform_.application.activateIgnoringOtherApplications();
  const std::size_t stalled = monitor_->stalledCount();
  if (platform_.dialogs.runModal(restartQuestion(stalled)) == restartSyncButton)
    monitor_->restartSyncDaemon();
}

void StatusItemController::showAbout() {
  platform_.application.activateIgnoringOtherApplications();
  platform_.dialogs.orderFrontAboutPanel(credits);
}

void StatusItemController::checkForUpdates() {
  updateChecker_->check(/*interactive=*/true);
}

void StatusItemController::toggleLaunchAtLogin() {
  LoginItem& loginItem = platform_.loginItem;
  const bool enable = loginItem.status() != LoginItem::Status::enabled;
  if (const auto error = enable ? loginItem.registerItem() : loginItem.unregisterItem())
    log(platform_.systemLog, {"launch-at-login change failed: ", error->description});
  else
    log(platform_.systemLog, {"launch at login ", enable ? "enabled" : "disabled"});
}

} // namespace driftmark
