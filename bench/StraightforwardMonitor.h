#pragma once

#include "monitor/model/Items.h"
#include "ports/Clock.h"
#include "ports/SystemLog.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace driftmark::bench {

/// The per-item monitor as one writes it first: regular expressions, hash maps of strings, and a
/// string for every line. By the same rules as the program, to compare speed and outcome with.
class StraightforwardMonitor {
public:
  StraightforwardMonitor(const Clock& clock, SystemLog& log, const std::string& home)
      : clock_(clock), log_(log), mobileDocs_(home + "/Library/Mobile Documents") {}

  /// Reads a chunk of output; true when the model changed.
  bool ingest(std::string_view chunk);

  const std::unordered_map<std::string, ActiveItem>& active() const { return active_; }
  const std::unordered_map<std::string, std::string>& issues() const { return issues_; }
  const std::vector<CompletedItem>& recent() const { return recent_; }

private:
  enum class KnownState : std::uint8_t { current, evicted };

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
  std::unordered_map<std::string, KnownState> knownState_;
  std::unordered_set<std::string> loggedUnknownStates_;
  std::vector<CompletedItem> recent_;
};

} // namespace driftmark::bench
