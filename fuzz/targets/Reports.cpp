// The reports of `brctl status` and `brctl quota`: the monitor against plain loops over their
// lines.
//
// The input is a series of reports, each up to a "|". Each is the answer of both tools.

#include "FedMonitor.h"
#include "Plain.h"
#include "Target.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace driftmark::fuzz {

namespace {

std::optional<StatusActivity> readStatus(const std::string& report) {
  StatusActivity activity;
  std::string directory;
  for (const std::string& piece : plain::split(plain::withoutAnsi(report), '\n')) {
    const std::string line = plain::trimmed(piece);
    const auto mentions = [&](const char* text) { return line.find(text) != std::string::npos; };
    if (line.starts_with("Under /")) {
      directory = line.substr(6);
      continue;
    }
    const bool isDownload = mentions("downloader{") && mentions("downloading:");
    const bool isUpload = !isDownload && mentions("upload{") && mentions(" active");
    if (!line.starts_with("> ") || !(isDownload || isUpload))
      continue;
    ++(isDownload ? activity.downloads : activity.uploads);
    auto& known = activity.directories;
    if (!directory.empty() && std::count(known.begin(), known.end(), directory) == 0)
      known.push_back(directory);
  }
  return activity.downloads + activity.uploads > 0 ? std::optional(activity) : std::nullopt;
}

std::optional<std::int64_t> readQuota(const std::string& report) {
  for (const std::string& word : plain::split(report, ' '))
    if (!word.empty())
      return plain::toInt64(word);
  return std::nullopt;
}

std::string statusLine(const StatusActivity& activity) {
  std::string line = "Driftmark: status confirms " + std::to_string(activity.downloads) +
                     " download(s), " + std::to_string(activity.uploads) + " upload(s) in ";
  for (const std::string& directory : activity.directories)
    line += (&directory == activity.directories.data() ? "" : ", ") + directory;
  return line;
}

OverallState expectedState(const std::optional<StatusActivity>& activity) {
  if (!activity)
    return OverallState::syncing; // by the global feed
  if (activity->uploads == 0)
    return OverallState::downloading;
  return activity->downloads > 0 ? OverallState::both : OverallState::uploading;
}

} // namespace

/// A transfer of the global feed keeps the polls going.
void check(std::string_view input) {
  FedMonitor monitor;
  const auto keepPolling = [&] {
    monitor.feed(monitor.globals(), "Fraction completed: 0.5 / Completed: 1 of 2\n");
  };
  keepPolling();
  monitor.platform.settle();
  monitor.takeLog();

  std::optional<StatusActivity> status;
  std::optional<std::int64_t> quota;
  forEachStep(input, "|", [&](std::string_view text, char /*command*/) {
    const std::string report(text);
    test::Lines log;
    if (const auto answer = plain::isUtf8(report) ? readQuota(report) : std::nullopt;
        answer && answer != quota) {
      quota = answer;
      log.push_back("Driftmark: quota remaining " + std::to_string(*quota) + " bytes");
    }
    const auto answer = plain::isUtf8(report) ? readStatus(report) : std::nullopt;
    if (answer && answer != status)
      log.push_back(statusLine(*answer));
    status = answer;

    monitor.platform.childProcesses.script(test::statusReport, report);
    monitor.platform.childProcesses.script(test::quotaReport, report);
    keepPolling();
    monitor.monitor->refreshQuota();
    monitor.advance(SyncMonitor::statusPollInterval);
    require(monitor.monitor->statusActivity() == status, "the status differs");
    require(monitor.monitor->quotaRemaining() == quota, "the quota differs");
    require(monitor.monitor->overall() == expectedState(status), "the overall state differs");
    require(monitor.takeLog() == log, "the log differs");
  });
}

} // namespace driftmark::fuzz
