#pragma once

#include "monitor/model/Items.h"
#include "ports/Clock.h"
#include "support/AgedList.h"
#include "support/Strings.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace driftmark {

/// The transfers in flight, by path and in the order of their last updates. Changing one and asking
/// about all takes time that does not grow with their number, as long as the clock runs forwards.
/// One thread.
class Transfers {
public:
  /// What the transfers that are not stalled come to. Percentages are added up as whole millionths,
  /// so that adding and removing the same one leaves no trace; the others are only counted.
  struct Live {
    void add(const ActiveItem& item) { count(item, 1); }
    void remove(const ActiveItem& item) { count(item, -1); }
    void count(const ActiveItem& item, int sign);

    std::int64_t uploads = 0;
    std::int64_t downloads = 0;
    std::int64_t measured = 0;    ///< have a percentage
    std::int64_t uncountable = 0; ///< of those, the ones that are not in the sum
    std::int64_t millionths = 0;
  };

  /// A transfer without an update for more than `stalledAfter` is stalled.
  explicit Transfers(Seconds stalledAfter) : stalledAfter_(stalledAfter) {}
  Transfers(const Transfers&) = delete;
  Transfers& operator=(const Transfers&) = delete;

  std::size_t size() const { return byPath_.size(); }
  bool empty() const { return byPath_.empty(); }

  /// The transfers, the most recently updated first.
  auto begin() const { return items_.entries().rbegin(); }
  auto end() const { return items_.entries().rend(); }

  /// The transfer of a full path; nullptr when there is none.
  const ActiveItem* find(std::string_view path) const;

  /// Adds a transfer, or replaces what is known of the one with its path. True when it is new.
  bool update(std::string_view path, Direction direction, std::optional<double> percent, Date now);

  /// Takes a transfer out; absent when there is none of that path.
  std::optional<ActiveItem> remove(std::string_view path);

  /// Gives every transfer the update time `now`.
  void restartClocks(Date now);

  bool isStalled(const ActiveItem& item, Date now) const;
  std::size_t stalledCount(Date now) const;

  /// Valid until the next call.
  const Live& live(Date now) const;

  /// Mean percentage of the live transfers that have one; absent when none has.
  std::optional<double> progress(Date now) const;

  /// Seconds since the last update of the transfer that has been stalled longest.
  std::optional<double> longestStall(Date now) const;

  /// A sweep visits every transfer that is there when it begins, once; between two visits others
  /// may come, change and go.
  void beginSweep();

  /// The next one to visit; nullptr when all have been visited.
  const ActiveItem* nextInSweep();

private:
  struct Entry : ActiveItem {
    std::uint64_t number = 0; ///< of its arrival
    Date date() const { return lastUpdate; }
  };

  using List = AgedList<Entry, Live>;
  const Seconds stalledAfter_;
  mutable List items_; ///< its border follows the clock at each question
  std::unordered_map<std::string_view, List::Iterator, StringHash> byPath_; ///< keys in the items
  std::map<std::uint64_t, List::Iterator> byArrival_;
  std::uint64_t lastNumber_ = 0;
  std::uint64_t sweptTo_ = 0;
  std::uint64_t sweepEnd_ = 0;
};

} // namespace driftmark
