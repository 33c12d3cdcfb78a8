#pragma once

#include "bird/Feeder.h"
#include "bird/GlobalTransfers.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace icloud {

/// Tells a global monitor how far the transfers are. A client that falls behind is told only the
/// latest of each.
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
