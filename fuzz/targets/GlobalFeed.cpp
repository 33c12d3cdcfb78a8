// The global feed: the monitor against a regular expression and a map of the transfers.
//
// The input is what `brctl` prints, with commands in between: "|" ends a chunk, "^" and "&" let one
// and forty seconds pass, "<" sets the clock back.

#include "FedMonitor.h"
#include "Plain.h"
#include "Target.h"
#include "monitor/Patterns.h"
#include "support/Regex.h"

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace driftmark::fuzz {

namespace {

class GlobalReference {
public:
  explicit GlobalReference(Date now) : now_(now) {}

  void ingest(std::string_view chunk) {
    buffer_ += chunk;
    bool changed = false;
    for (std::size_t end = buffer_.find('\n'); end != std::string::npos; end = buffer_.find('\n')) {
      const bool before = activity().has_value();
      parse(buffer_.substr(0, end));
      changed |= activity().has_value() != before;
      buffer_.erase(0, end + 1);
    }
    changes_ += changed ? 1 : 0;
  }

  void advance(Seconds distance) {
    const Date target = later(now_, distance);
    while (nextExpiry_ && *nextExpiry_ <= target) {
      now_ = *std::exchange(nextExpiry_, std::nullopt);
      prune();
      ++changes_;
      if (!transfers_.empty())
        scheduleExpiry();
    }
    now_ = target;
  }

  void jump(Seconds distance) {
    now_ = later(now_, distance);
    if (nextExpiry_)
      nextExpiry_ = later(*nextExpiry_, distance);
  }

  std::optional<GlobalActivity> activity() const {
    GlobalActivity activity;
    for (const auto& [total, date] : transfers_) {
      if (date <= cutoff())
        continue;
      ++activity.count;
      activity.bytes += total;
    }
    return activity.count > 0 ? std::optional(activity) : std::nullopt;
  }

  /// Whether the sizes once exceeded 64 bits, which ends the program.
  bool isOutOfRange() const { return outOfRange_; }

  int changes() const { return changes_; }
  test::Lines takeLog() { return std::exchange(log_, {}); }

private:
  void parse(const std::string& line) {
    static const std::regex pattern(globalPattern);
    if (!plain::isUtf8(line))
      return;
    const std::string text = plain::withoutAnsi(line);
    std::smatch match;
    if (!std::regex_search(text, match, pattern))
      return;
    const auto fraction = plain::toDouble(match.str(1));
    const auto total = plain::toInt64(match.str(3));
    if (!fraction || !total || *total < 1)
      return;
    prune();
    if (*fraction >= 1)
      transfers_.erase(*total);
    else
      report(*total);
  }

  void report(std::int64_t total) {
    std::int64_t others = 0;
    for (const auto& [other, date] : transfers_)
      others += other == total ? 0 : other;
    outOfRange_ |= others > std::numeric_limits<std::int64_t>::max() - total;
    if (outOfRange_)
      return;
    if (transfers_.insert_or_assign(total, now_).second)
      log_.push_back("Driftmark: global transfer started (" + std::to_string(total) + " bytes)");
    scheduleExpiry();
  }

  void prune() {
    std::erase_if(transfers_, [this](const auto& transfer) { return transfer.second <= cutoff(); });
  }

  void scheduleExpiry() {
    if (!nextExpiry_)
      nextExpiry_ = later(now_, SyncMonitor::globalExpiryDelay);
  }

  Date cutoff() const { return earlier(now_, SyncMonitor::globalWindow); }

  Date now_;
  std::string buffer_;
  std::map<std::int64_t, Date> transfers_; ///< by size: the last report
  std::optional<Date> nextExpiry_;
  bool outOfRange_ = false;
  test::Lines log_;
  int changes_ = 0;
};

} // namespace

void check(std::string_view input) {
  FedMonitor monitor;
  GlobalReference reference(monitor.now());
  const auto compare = [&] {
    require(monitor.takeLog() == reference.takeLog(), "the log differs");
    require(monitor.monitor->globalActivity() == reference.activity(), "the activity differs");
    require(monitor.monitor->overall() ==
                (reference.activity() ? OverallState::syncing : OverallState::idle),
            "the overall state differs");
    require(monitor.changes == reference.changes(), "the number of changes differs");
  };
  forEachStep(input, "|^&<", [&](std::string_view text, char command) {
    reference.ingest(text);
    if (reference.isOutOfRange())
      return;
    monitor.feed(monitor.globals(), text);
    compare();
    if (command == '^' || command == '&') {
      const Seconds distance(command == '^' ? 1 : 40);
      monitor.advance(distance);
      reference.advance(distance);
    } else if (command == '<') {
      monitor.jump(Seconds(-25));
      reference.jump(Seconds(-25));
    }
    compare();
  });
}

} // namespace driftmark::fuzz
