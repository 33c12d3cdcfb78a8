#pragma once

#include "ports/Clock.h"

#include <cstddef>
#include <iterator>
#include <list>
#include <utility>

namespace driftmark {

/// Entries in the order of their dates, divided into old ones and recent ones by a border that
/// follows the clock, forwards and backwards. An `Entry` has a member `date()`. `Totals` sums up
/// the recent entries: it has `add(entry)` and `remove(entry)`. While the clock runs forwards each
/// operation takes constant time. One thread.
template <class Entry, class Totals> class AgedList {
public:
  using Entries = std::list<Entry>;
  using Iterator = typename Entries::iterator;

  /// Oldest first.
  const Entries& entries() const { return entries_; }

  /// Valid until the next change, for the border of the last call of `moveBorder`.
  const Totals& recent() const { return totals_; }
  typename Entries::const_iterator firstRecent() const { return border_; }
  std::size_t recentCount() const { return recentCount_; }
  std::size_t oldCount() const { return entries_.size() - recentCount_; }

  /// Adds an entry behind all that are not younger.
  Iterator insert(Entry entry) {
    Entries added;
    added.push_back(std::move(entry));
    return place(added);
  }

  /// Lets `change` rewrite an entry, date included, and moves it to its new place.
  template <class Change> void update(Iterator entry, Change change) {
    Entries taken = take(entry);
    change(*entry);
    place(taken);
  }

  void erase(Iterator entry) { take(entry); }

  /// Moves the border to the first entry that is not old. Of two entries the older one is old if
  /// the younger one is.
  template <class IsOld> void moveBorder(IsOld isOld) {
    while (border_ != entries_.end() && isOld(*border_)) {
      totals_.remove(*border_);
      --recentCount_;
      ++border_;
    }
    while (border_ != entries_.begin() && !isOld(*std::prev(border_))) {
      --border_;
      totals_.add(*border_);
      ++recentCount_;
    }
  }

private:
  /// Right between two moves of the border, too: what is put before it counts as old until then.
  bool isRecent(Iterator entry) const {
    return border_ != entries_.end() && !(entry->date() < border_->date());
  }

  /// The list that holds nothing but the entry; its iterator stays valid.
  Entries take(Iterator entry) {
    if (isRecent(entry)) {
      totals_.remove(*entry);
      --recentCount_;
    }
    if (border_ == entry)
      ++border_;
    if (lastPlaced_ == entry)
      ++lastPlaced_;
    Entries taken;
    taken.splice(taken.end(), entries_, entry);
    return taken;
  }

  Iterator place(Entries& taken) {
    const auto entry = taken.begin();
    const bool isYoungest = entries_.empty() || !(entry->date() < entries_.back().date());
    entries_.splice(isYoungest ? entries_.end() : search(entry->date()), taken);
    lastPlaced_ = entry;
    if (isRecent(entry)) {
      totals_.add(*entry);
      ++recentCount_;
    }
    return entry;
  }

  /// Starts from the place found last: after the clock was set back, the places lie close to each
  /// other but not at the end.
  Iterator search(Date date) {
    auto at = lastPlaced_;
    while (at != entries_.end() && !(date < at->date()))
      ++at;
    while (at != entries_.begin() && date < std::prev(at)->date())
      --at;
    return at;
  }

  Entries entries_;
  Iterator border_ = entries_.end();
  Iterator lastPlaced_ = entries_.end();
  std::size_t recentCount_ = 0;
  Totals totals_;
};

} // namespace driftmark
