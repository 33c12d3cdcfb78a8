// Asks `brctl status` for the pending transfers while there is reason to believe in some.

#include "monitor/Brctl.h"
#include "monitor/Patterns.h"
#include "monitor/SyncMonitor.h"
#include "ports/BackgroundQueue.h"
#include "support/TextCuts.h"
#include "support/Weakly.h"

#include <algorithm>
#include <utility>

namespace driftmark {

/// Begins a chain of polls, unless one is going on.
void SyncMonitor::startPolling() {
  if (statusPolling_ || stopping_)
    return;
  statusPolling_ = true;
  pollStatus();
}

void SyncMonitor::pollStatus() {
  if (stopping_) {
    statusPolling_ = false;
    return;
  }
  statusProcess_ = platform_.childProcesses.prepare(brctl({"status"}), ToolOutput::capture);
  platform_.backgroundQueue.async(
      QualityOfService::utility,
      [platform = platform_, process = statusProcess_,
       deliver =
           weakly(shared_from_this(), [](SyncMonitor& self, std::optional<StatusActivity> result) {
             self.statusArrived(std::move(result));
           })] {
        const auto text = runReport(*process, "status", platform.systemLog);
        platform.mainQueue.async(
            [deliver, result = text ? parseStatus(*text) : std::nullopt] { deliver(result); });
      });
}

void SyncMonitor::statusArrived(std::optional<StatusActivity> result) {
  statusProcess_.reset();
  if (result != statusActivity_) {
    statusActivity_ = std::move(result);
    if (statusActivity_) {
      std::string directories;
      for (const std::string& directory : statusActivity_->directories)
        directories += (directories.empty() ? "" : ", ") + directory;
      log({"status confirms ", std::to_string(statusActivity_->downloads), " download(s), ",
           std::to_string(statusActivity_->uploads), " upload(s) in ", directories});
    }
    notify();
  }

  const bool quiet = !statusActivity_ && !globalActivity();
  if (quiet || stopping_) {
    statusPolling_ = false;
    return;
  }
  platform_.mainQueue.after(statusPollInterval,
                            [self = shared_from_this()] { self->pollStatus(); });
}

std::optional<StatusActivity> SyncMonitor::parseStatus(std::string_view text) {
  const auto contains = [](std::string_view line, std::string_view part) {
    return line.find(part) != std::string_view::npos;
  };

  std::string storage;
  std::string_view rest = withoutAnsi(text, storage);
  std::string_view directory;
  StatusActivity activity;
  while (!rest.empty()) {
    const std::string_view piece = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    const std::string_view line = trimmed(piece);

    constexpr std::string_view header = "Under ";
    if (line.starts_with(header) && line.substr(header.size()).starts_with('/')) {
      directory = line.substr(header.size());
      continue;
    }
    if (!line.starts_with("> "))
      continue;
    if (contains(line, "downloader{") && contains(line, "downloading:"))
      ++activity.downloads;
    else if (contains(line, "upload{") && contains(line, " active"))
      ++activity.uploads;
    else
      continue;
    auto& directories = activity.directories;
    if (!directory.empty() &&
        std::find(directories.begin(), directories.end(), directory) == directories.end())
      directories.emplace_back(directory);
  }
  if (activity.downloads + activity.uploads < 1)
    return std::nullopt;
  return activity;
}

} // namespace driftmark
