#pragma once

#include "ports/Environment.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace driftmark::test {

/// An environment in memory, empty at first.
class TestEnvironment final : public Environment {
public:
  std::optional<std::string> variable(const std::string& name) const override {
    const auto found = variables_.find(name);
    if (found == variables_.end())
      return std::nullopt;
    return found->second;
  }

  void set(const std::string& name, std::string value) { variables_[name] = std::move(value); }
  void unset(const std::string& name) { variables_.erase(name); }

private:
  std::map<std::string, std::string> variables_;
};

} // namespace driftmark::test
