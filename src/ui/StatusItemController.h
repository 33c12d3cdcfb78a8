#pragma once

#include "monitor/model/OverallState.h"
#include "ports/Menu.h"
#include "ports/Platform.h"
#include "ports/StatusItem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace driftmark {

class Activity;
class SyncMonitor;
class UpdateChecker;
struct ActiveItem;
struct CompletedItem;
namespace Evictor {
struct Survey;
}

/// The user interface: the status item, its menu and the actions of the menu. Owns the monitor and
/// the update checker. One instance, held by a shared pointer; all of it runs on the main thread.
class StatusItemController : public std::enable_shared_from_this<StatusItemController> {
  struct Private {}; ///< only `make` can pass one

public:
  /// Shows the status item and starts the monitor and the update checker. The ports in `platform`
  /// outlive it.
  static std::shared_ptr<StatusItemController> make(const Platform& platform);
  StatusItemController(Private pass, const Platform& platform);
  StatusItemController(const StatusItemController&) = delete;
  StatusItemController& operator=(const StatusItemController&) = delete;
  ~StatusItemController();

  /// Stops the monitor, which ends every child process, and ends the activity.
  void shutdown();

  /// Builds the menu from the current state of the monitor.
  Menu menuNeedsUpdate();

  /// Requests the quota. The reply retitles the storage line of the open menu.
  void menuWillOpen();

  static constexpr std::size_t maxTransferRows = 15;
  static constexpr std::size_t maxDirectoryRows = 10;
  static constexpr std::size_t maxIssueRows = 10;
  static constexpr std::size_t maxIssueCharacters = 60; ///< grapheme clusters

private:
  // StatusItemController.cpp
  void start();
  void monitorChanged();
  void updateActivity();

  // StatusIcon.cpp
  void updateIcon();
  std::string stateToolTip(OverallState state) const;

  // StatusMenu.cpp
  void addTransfers(Menu& menu);
  void addSummary(Menu& menu);
  void addIssues(Menu& menu);
  void addRecent(Menu& menu);
  void addFixedItems(Menu& menu);
  MenuItem transferRow(const ActiveItem& item);
  MenuItem recentRow(const CompletedItem& item);
  MenuItem restartItem(double longestStall);
  MenuItem fileRow(const std::string& path, const std::string& symbol, const std::string& detail);
  MenuItem commandItem(std::string title, void (StatusItemController::*action)());
  std::string storageTitle() const;

  // MenuActions.cpp
  void revealFile(const std::string& path);
  void openICloudDrive();
  void restartSync();
  void showAbout();
  void checkForUpdates();
  void toggleLaunchAtLogin();

  // FreeUpSpace.cpp
  void freeUpSpace();
  void confirmEviction(Evictor::Survey survey, const std::string& folder);
  template <class Work, class Then> void inBackground(Work work, Then then);

  const Platform platform_;
  std::unique_ptr<StatusItem> statusItem_; ///< null when the system gave none
  const std::shared_ptr<SyncMonitor> monitor_;
  const std::shared_ptr<UpdateChecker> updateChecker_;
  std::optional<MenuItem::Tag> quotaItem_; ///< the storage line of the menu that was built last
  std::optional<OverallState> lastLoggedState_;
  std::unique_ptr<Activity> activity_; ///< while the monitor is busy
};

} // namespace driftmark
