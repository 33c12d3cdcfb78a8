#pragma once

#include "bird/Cloud.h"

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>

namespace icloud {

/// Produces records for one client, only as fast as the client reads them.
class Feeder {
public:
  virtual ~Feeder() = default;

  /// Appends records to `out` until it holds at least `enough` bytes or none are left for now.
  virtual void fill(std::string& out, std::size_t enough) = 0;

  /// Whether the connection ends once everything is sent.
  virtual bool endsWhenEmpty() const = 0;
};

/// Sends one complete reply.
class ReplyFeeder : public Feeder {
public:
  explicit ReplyFeeder(std::string reply) : reply_(std::move(reply)) {}

  void fill(std::string& out, std::size_t /*enough*/) override {
    out += reply_;
    reply_.clear();
  }
  bool endsWhenEmpty() const override { return true; }

private:
  std::string reply_;
};

/// Lists the whole drive for a per-item monitor, then its changes. A client that falls behind
/// receives only the latest state of an item, once.
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

/// Reports the progress of transfers to a global monitor. A client that falls behind receives only
/// the latest progress of each.
class GlobalFeeder : public Feeder {
public:
  explicit GlobalFeeder(const GlobalTransfers& transfers) : waiting_(transfers.running()) {}

  void changed(std::size_t number, GlobalTransfers::Progress progress) {
    waiting_[number] = progress;
  }
  void print(std::string bytes) { prints_.push_back(std::move(bytes)); }

  void fill(std::string& out, std::size_t enough) override;
  bool endsWhenEmpty() const override { return false; }

private:
  std::map<std::size_t, GlobalTransfers::Progress> waiting_;
  std::deque<std::string> prints_;
};

} // namespace icloud
