// What the status item shows: symbol, title and tooltip.

#include "monitor/SyncMonitor.h"
#include "ports/SystemText.h"
#include "support/Log.h"
#include "support/Numbers.h"
#include "ui/StatusItemController.h"

namespace driftmark {

namespace {

constexpr const char* fallbackSymbol = "icloud";

const char* symbolName(OverallState state) {
  switch (state) {
  case OverallState::idle:
    return "icloud";
  case OverallState::uploading:
    return "icloud.and.arrow.up";
  case OverallState::downloading:
    return "icloud.and.arrow.down";
  case OverallState::both:
    return "arrow.triangle.2.circlepath.icloud";
  case OverallState::syncing:
    return "arrow.clockwise.icloud";
  case OverallState::attention:
    return "exclamationmark.icloud";
  }
  return fallbackSymbol;
}

} // namespace

void StatusItemController::updateIcon() {
  const OverallState state = monitor_->overall();
  if (lastLoggedState_ != state) {
    lastLoggedState_ = state;
    log(platform_.systemLog, {"state -> ", name(state)});
  }
  if (!statusItem_)
    return;

  std::string toolTip = stateToolTip(state);
  std::string title;
  if (const auto progress = monitor_->progress()) {
    title = wholeNumber(*progress) + "%";
    toolTip += " " + title;
  }
  statusItem_->setTitle(title);
  statusItem_->setSymbol({symbolName(state), toolTip}, fallbackSymbol);
  statusItem_->setToolTip(toolTip);
}

/// The tooltip without the progress. In lower case after the colon, unlike the menu's headlines.
std::string StatusItemController::stateToolTip(OverallState state) const {
  switch (state) {
  case OverallState::idle:
    return "iCloud Drive: idle";
  case OverallState::uploading:
    return "iCloud Drive: uploading";
  case OverallState::downloading:
    return "iCloud Drive: downloading";
  case OverallState::attention:
    return "iCloud Drive: attention needed";
  case OverallState::both:
    return "iCloud Drive: syncing";
  case OverallState::syncing:
    break;
  }
  const auto activity = monitor_->globalActivity();
  if (!activity)
    return "iCloud Drive: syncing";
  const std::string count =
      activity->count == 1 ? "" : std::to_string(activity->count) + " transfers, ";
  return "iCloud Drive: syncing " + count + platform_.text.byteCount(activity->bytes);
}

} // namespace driftmark
