#pragma once

#include "bird/Drive.h"
#include "bird/Feeder.h"

#include <deque>
#include <unordered_set>

namespace icloud {

/// Lists the whole drive for a per-item monitor, then what changes. A client that falls behind is
/// told the latest state of an item, once.
class ItemFeeder : public Feeder {
public:
  explicit ItemFeeder(const Drive& drive);

  void changed(ItemId id);
  void print(std::string bytes) { prints_.push_back(std::move(bytes)); }

  void fill(std::string& out, std::size_t enough) override;
  bool endsWhenEmpty() const override { return false; }

private:
  void appendItem(std::string& out, ItemId id) const;
  void list(std::string& out, std::size_t enough);

  const Drive& drive_;
  ItemId listed_ = 0;
  ItemId listEnd_;
  bool listing_ = true;
  std::deque<ItemId> waiting_;
  std::unordered_set<ItemId> isWaiting_;
  std::deque<std::string> prints_;
};

} // namespace icloud
