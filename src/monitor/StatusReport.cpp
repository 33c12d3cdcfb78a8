// Which lines of a `brctl status` report count as pending transfers.

#include "monitor/StatusReport.h"

#include "monitor/KnownItems.h"
#include "support/Strings.h"

#include <algorithm>
#include <cstddef>

namespace driftmark {

namespace {

constexpr std::size_t linesBetweenChecks = 4096; ///< for a cancellation

bool contains(std::string_view line, std::string_view part) {
  return line.find(part) != std::string_view::npos;
}

} // namespace

std::optional<StatusActivity> parseStatus(std::string_view text,
                                          const std::atomic<bool>* isCancelled) {
  std::string storage;
  std::string_view remaining = withoutAnsi(text, storage);
  std::string_view directory;
  const KeyedHash fingerprint;
  KnownItems listed;
  StatusActivity activity;
  for (std::size_t number = 1; !remaining.empty(); ++number) {
    if (number % linesBetweenChecks == 0 && isCancelled && *isCancelled)
      return std::nullopt;
    const std::string_view piece = remaining.substr(0, remaining.find('\n'));
    remaining.remove_prefix(std::min(piece.size() + 1, remaining.size()));
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
    if (!directory.empty() && listed.exchange(fingerprint(directory), 1) == 0)
      activity.directories.emplace_back(directory);
  }
  if (activity.downloads + activity.uploads < 1)
    return std::nullopt;
  return activity;
}

} // namespace driftmark
