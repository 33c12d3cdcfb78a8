#pragma once

#include "monitor/model/Activity.h"
#include "ports/Clock.h"
#include "support/AgedList.h"

#include <cstdint>
#include <optional>
#include <unordered_map>

namespace driftmark {

/// The transfers that the global feed reported within the last `window`, each known by its size
/// alone. A report and a question take constant time, however many there are. One thread.
class GlobalTransfers {
public:
  /// `window` is how long a transfer counts after its last report.
  explicit GlobalTransfers(Seconds window) : window_(window) {}

  /// A transfer of `total` bytes continues. True when it is new.
  bool report(std::int64_t total, Date now);

  /// The transfer of `total` bytes, if there is one, has finished.
  void finish(std::int64_t total);

  /// Forgets the transfers that have left the window.
  void prune(Date now);

  bool empty() const { return transfers_.entries().empty(); }

  /// The transfers within the window; absent when there are none. Ends the program when their sizes
  /// together exceed 64 bits.
  std::optional<GlobalActivity> activity(Date now) const;

private:
  __extension__ using WideInteger = __int128;

  struct Transfer {
    std::int64_t total; ///< bytes
    Date lastReport;
    Date date() const { return lastReport; }
  };

  struct Totals {
    void add(const Transfer& transfer) { bytes += transfer.total; }
    void remove(const Transfer& transfer) { bytes -= transfer.total; }
    WideInteger bytes = 0;
  };

  bool counts(const Transfer& transfer, Date now) const {
    return transfer.lastReport > earlier(now, window_);
  }

  using List = AgedList<Transfer, Totals>;
  const Seconds window_;
  mutable List transfers_; ///< its border follows the clock at each question
  std::unordered_map<std::int64_t, List::Iterator> byTotal_;
};

} // namespace driftmark
