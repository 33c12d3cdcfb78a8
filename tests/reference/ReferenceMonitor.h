#pragma once

#include "monitor/model/Items.h"
#include "ports/Clock.h"
#include "ports/SystemLog.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace driftmark {

/// The per-item monitor in its most straightforward form: regular expressions, hash maps of
/// strings, and a string for every line. It follows the same rules as `SyncMonitor` and shares only
/// the plain values and the ports with it. The tests compare the two models, the benchmark also
/// their speed.
class ReferenceMonitor {
public:
  ReferenceMonitor(const Clock& clock, SystemLog& log, const std::string& home)
      : clock_(clock), log_(log), mobileDocs_(home + "/Library/Mobile Documents") {}

  /// Reads a chunk of output. True when the model changed.
  bool ingest(std::string_view chunk);

  /// Drops the transfers whose file does not exist.
  void sweep(const std::function<bool(const std::string& path)>& fileExists);

  const std::unordered_map<std::string, ActiveItem>& active() const { return active_; }
  const std::unordered_map<std::string, std::string>& issues() const { return issues_; }
  const std::vector<CompletedItem>& recent() const { return recent_; }

  /// The transfer that finished last.
  const std::optional<CompletedItem>& lastFinished() const { return lastFinished_; }

  /// How many transfers have started and finished so far.
  std::size_t started() const { return started_; }
  std::size_t finished() const { return finished_; }

private:
  bool parse(const std::string& line);
  bool progressed(const std::string& path, const std::string& name, const std::string& remainder,
                  Direction direction);
  bool unrecognized(const std::string& path, const std::string& name, const std::string& state);
  bool settled(const std::string& path, const std::string& name, bool evicted);
  void addRecent(const std::string& path, RecentKind kind);

  const Clock& clock_;
  SystemLog& log_;
  std::string mobileDocs_;
  std::string buffer_;
  std::unordered_map<std::string, ActiveItem> active_;
  std::unordered_map<std::string, std::string> issues_;
  std::unordered_map<std::string, bool> isEvicted_; ///< for every path whose state is known
  std::unordered_set<std::string> loggedUnknownStates_;
  std::vector<CompletedItem> recent_;
  std::optional<CompletedItem> lastFinished_;
  std::size_t started_ = 0;
  std::size_t finished_ = 0;
};

} // namespace driftmark
