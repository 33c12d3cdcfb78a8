#pragma once

#include "monitor/SyncMonitor.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace driftmark::test {

/// The per-item monitor's model once more, in the plainest words and without regard for speed, to
/// compare the real one with. Its default stall threshold is fixed.
class ParserReference {
public:
  explicit ParserReference(Date now) : now_(now) {}

  /// Takes the next bytes of the monitor's output.
  void ingest(const std::string& chunk);

  /// Moves time on; sweeps and redraws happen on the way.
  void advance(Seconds distance);

  /// The file of this full path exists.
  void addFile(const std::string& path) { files_.insert(path); }

  std::map<std::string, ActiveItem> active;
  std::map<std::string, std::string> issues;
  std::vector<CompletedItem> recent;
  std::vector<std::string> log;
  int changes = 0;

private:
  bool parse(std::string line);
  void remember(const std::string& path, RecentKind kind);
  void sweep();

  Date now_;
  std::string buffer_;
  std::map<std::string, std::string> known_;
  std::set<std::string> loggedStates_;
  std::set<std::string> files_;
  std::optional<Date> nextSweep_;
  std::multiset<Date> redraws_;
};

} // namespace driftmark::test
