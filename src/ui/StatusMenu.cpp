// What the menu shows. It is built anew from the model at each opening.

#include "monitor/SyncMonitor.h"
#include "ports/Application.h"
#include "ports/LoginItem.h"
#include "ports/SystemText.h"
#include "support/Numbers.h"
#include "support/Paths.h"
#include "support/Weakly.h"
#include "ui/StatusItemController.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace driftmark {

namespace {

constexpr MenuItem::Tag storageTag = 1;

const char* headline(OverallState state) {
  switch (state) {
  case OverallState::idle:
    return "iCloud Drive: Up to Date";
  case OverallState::uploading:
    return "iCloud Drive: Uploading…";
  case OverallState::downloading:
    return "iCloud Drive: Downloading…";
  case OverallState::both:
  case OverallState::syncing:
    return "iCloud Drive: Syncing…";
  case OverallState::attention:
    return "iCloud Drive: Attention Needed";
  }
  return "";
}

MenuItem separator() {
  MenuItem item;
  item.kind = MenuItem::Kind::separator;
  return item;
}

MenuItem titled(MenuItem::Kind kind, std::string title) {
  MenuItem item;
  item.kind = kind;
  item.title = std::move(title);
  return item;
}

MenuItem label(std::string title) {
  return titled(MenuItem::Kind::label, std::move(title));
}

MenuItem heading(std::string title) {
  return titled(MenuItem::Kind::heading, std::move(title));
}

/// A name and what is known about it.
MenuItem named(std::string_view name, const std::string& detail) {
  MenuItem item = titled(MenuItem::Kind::command, std::string(name).append("  —  ").append(detail));
  item.nameLength = name.size();
  return item;
}

/// `count`, or the number of `items` when that is smaller.
template <class Items> std::size_t atMost(std::size_t count, const Items& items) {
  return std::min(count, items.size());
}

std::string statusSummary(const StatusActivity& status) {
  std::string summary;
  if (status.downloads > 0)
    summary = std::to_string(status.downloads) + " downloading";
  if (status.uploads > 0)
    summary += (summary.empty() ? "" : " · ") + std::to_string(status.uploads) + " uploading";
  return summary;
}

} // namespace

Menu StatusItemController::menuNeedsUpdate() {
  Menu menu{label(headline(monitor_->overall()))};
  if (monitor_->active().empty())
    addSummary(menu);
  else
    addTransfers(menu);
  addIssues(menu);
  addRecent(menu);
  addFixedItems(menu);
  return menu;
}

void StatusItemController::menuWillOpen() {
  monitor_->refreshQuota();
}

/// Summarises transfers that the per-item monitor does not report.
void StatusItemController::addSummary(Menu& menu) {
  if (const auto& status = monitor_->statusActivity()) {
    menu.push_back(separator());
    menu.push_back(label(statusSummary(*status)));
    for (std::size_t i = 0; i < atMost(maxDirectoryRows, status->directories); ++i)
      menu.push_back(
          fileRow(SyncMonitor::containerPath(platform_.fileSystem, status->directories[i]),
                  "folder", "syncing"));
  } else if (const auto global = monitor_->globalActivity()) {
    const std::string count =
        global->count == 1 ? "1 transfer" : std::to_string(global->count) + " transfers";
    menu.push_back(separator());
    menu.push_back(label(count + " · " + platform_.text.byteCount(global->bytes)));
  }
}

void StatusItemController::addTransfers(Menu& menu) {
  menu.push_back(separator());
  std::size_t rows = 0;
  for (auto item = monitor_->active().begin();
       item != monitor_->active().end() && rows < maxTransferRows; ++item, ++rows)
    menu.push_back(transferRow(*item));
  if (const auto longest = monitor_->longestStall(); longest && monitor_->shouldOfferRestart())
    menu.push_back(restartItem(*longest));
}

MenuItem StatusItemController::transferRow(const ActiveItem& item) {
  const bool isUpload = item.direction == Direction::upload;
  std::string detail = isUpload ? "uploading" : "downloading";
  if (item.percent)
    detail.append(" ").append(wholeNumber(*item.percent)).append("%");
  if (monitor_->isStalled(item))
    return fileRow(item.path, "exclamationmark.circle", "stalled · " + detail);
  return fileRow(item.path, isUpload ? "arrow.up.circle" : "arrow.down.circle", detail);
}

MenuItem StatusItemController::restartItem(double longestStall) {
  const auto minutes = static_cast<std::int64_t>(longestStall / 60.0);
  MenuItem item =
      named("Restart iCloud Sync…", "no progress for " + std::to_string(minutes) + " min");
  item.action = weakly(shared_from_this(), std::mem_fn(&StatusItemController::restartSync));
  item.symbol = {"arrow.clockwise.icloud", "Restart iCloud Sync"};
  return item;
}

void StatusItemController::addIssues(Menu& menu) {
  const auto& issues = monitor_->issues();
  if (issues.empty())
    return;
  menu.push_back(separator());
  menu.push_back(heading("Sync Issues"));
  std::vector<std::pair<std::string, std::string>> first(atMost(maxIssueRows, issues));
  std::partial_sort_copy(
      issues.begin(), issues.end(), first.begin(), first.end(),
      [](const auto& one, const auto& other) { return one.first < other.first; });
  for (const auto& [path, text] : first)
    menu.push_back(fileRow(path, "exclamationmark.triangle",
                           platform_.text.firstCharacters(text, maxIssueCharacters)));
}

void StatusItemController::addRecent(Menu& menu) {
  if (monitor_->recent().empty())
    return;
  menu.push_back(separator());
  menu.push_back(heading("Recent Activity"));
  for (const CompletedItem& item : monitor_->recent())
    menu.push_back(recentRow(item));
}

MenuItem StatusItemController::recentRow(const CompletedItem& item) {
  const std::string time = platform_.text.relativeTime(item.date, platform_.clock.now());
  return item.kind == RecentKind::evicted
             ? fileRow(item.path, "icloud.slash", "removed download " + time)
             : fileRow(item.path, "checkmark.circle", time);
}

void StatusItemController::addFixedItems(Menu& menu) {
  menu.push_back(separator());
  MenuItem storage = label(storageTitle());
  storage.tag = storageTag;
  quotaItem_ = storageTag;
  menu.push_back(std::move(storage));

  menu.push_back(separator());
  menu.push_back(commandItem("Open iCloud Drive", &StatusItemController::openICloudDrive));
  menu.back().keyEquivalent = std::string("o");
  menu.push_back(commandItem("Free Up Space…", &StatusItemController::freeUpSpace));

  menu.push_back(separator());
  menu.push_back(commandItem("About Driftmark", &StatusItemController::showAbout));
  menu.push_back(commandItem("Check for Updates…", &StatusItemController::checkForUpdates));
  menu.push_back(commandItem("Launch at Login", &StatusItemController::toggleLaunchAtLogin));
  menu.back().isChecked = platform_.loginItem.status() == LoginItem::Status::enabled;
  MenuItem quit = titled(MenuItem::Kind::command, "Quit Driftmark");
  quit.keyEquivalent = std::string("q");
  quit.action = [&application = platform_.application] { application.terminate(); };
  menu.push_back(std::move(quit));
}

std::string StatusItemController::storageTitle() const {
  const auto bytes = monitor_->quotaRemaining();
  return bytes ? platform_.text.byteCount(*bytes) + " available in iCloud"
               : "Checking iCloud storage…";
}

/// A row that reveals the file at `path`.
MenuItem StatusItemController::fileRow(const std::string& path, const std::string& symbol,
                                       const std::string& detail) {
  MenuItem item = named(lastPathComponent(path), detail);
  item.symbol = {symbol, detail};
  item.toolTip = path;
  item.action =
      weakly(shared_from_this(), [path](StatusItemController& self) { self.revealFile(path); });
  return item;
}

MenuItem StatusItemController::commandItem(std::string title,
                                           void (StatusItemController::*action)()) {
  MenuItem item = titled(MenuItem::Kind::command, std::move(title));
  item.action = weakly(shared_from_this(), std::mem_fn(action));
  return item;
}

} // namespace driftmark
