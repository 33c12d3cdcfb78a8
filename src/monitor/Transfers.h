#pragma once

#include "monitor/model/Items.h"
#include "ports/Clock.h"
#include "support/AgedList.h"
#include "support/Paths.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace driftmark {

/// The transfers in flight, by path and in the order of their last updates. Changing one and asking
/// about all takes time that does not grow with their number, as long as the clock runs forwards.
/// One thread.
class Transfers {
public:
  struct Entry;

  /// What the transfers that are not stalled come to. Percentages are added up as whole millionths,
  /// so that adding and removing the same one leaves no trace; the others are only counted.
  struct Live {
    void add(const Entry& entry) { count(entry, 1); }
    void remove(const Entry& entry) { count(entry, -1); }
    void count(const Entry& entry, int sign);

    std::int64_t uploads = 0;
    std::int64_t downloads = 0;
    std::int64_t measured = 0;    ///< have a percentage
    std::int64_t uncountable = 0; ///< of those, the ones that are not in the sum
    std::int64_t millionths = 0;
  };

  /// A transfer without an update for more than `stalledAfter` is stalled.
  explicit Transfers(Seconds stalledAfter, const ItemPathHash& hash = {})
      : stalledAfter_(stalledAfter), byPath_(0, hash) {}
  Transfers(const Transfers&) = delete;
  Transfers& operator=(const Transfers&) = delete;

  std::size_t size() const { return byPath_.size(); }
  bool empty() const { return byPath_.empty(); }

  /// The transfers, the most recently updated first.
  auto begin() const { return items_.entries().rbegin(); }
  auto end() const { return items_.entries().rend(); }

  // A `Path` is an `ItemPath` or a text with the full path.

  /// The transfer of a path; nullptr when there is none.
  template <class Path> const ActiveItem* find(const Path& path) const {
    const auto found = byPath_.find(path);
    return found == byPath_.end() ? nullptr : &*found->second;
  }

  /// Adds a transfer, or replaces what is known of the one with its path. True when it is new.
  template <class Path>
  bool update(const Path& path, Direction direction, std::optional<double> percent, Date now) {
    const auto found = byPath_.find(path);
    if (found == byPath_.end())
      add({std::string(path), direction, percent, now});
    else
      change(found->second, direction, percent, now);
    return found == byPath_.end();
  }

  /// Takes a transfer out; absent when there is none of that path.
  template <class Path> std::optional<ActiveItem> remove(const Path& path) {
    const auto found = byPath_.find(path);
    return found == byPath_.end() ? std::nullopt : std::optional(take(found));
  }

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

  struct Entry : ActiveItem {
    std::optional<std::int64_t> millionths; ///< the percentage, if it can be in the sum
    std::uint64_t number = 0;               ///< of its arrival
    Date date() const { return lastUpdate; }
  };

private:
  using List = AgedList<Entry, Live>;
  using ByPath =
      std::unordered_map<std::string_view, List::Iterator, ItemPathHash, std::equal_to<>>;

  void add(ActiveItem item);
  void change(List::Iterator entry, Direction direction, std::optional<double> percent, Date now);
  ActiveItem take(ByPath::iterator found);

  const Seconds stalledAfter_;
  mutable List items_; ///< its border follows the clock at each question
  ByPath byPath_;      ///< the keys are in the items
  std::map<std::uint64_t, List::Iterator> byArrival_;
  std::uint64_t lastNumber_ = 0;
  std::uint64_t sweptTo_ = 0;
  std::uint64_t sweepEnd_ = 0;
};

} // namespace driftmark
