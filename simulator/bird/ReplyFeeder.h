#pragma once

#include "bird/Feeder.h"

#include <string>
#include <utility>

namespace icloud {

/// Has one answer, whole.
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

} // namespace icloud
