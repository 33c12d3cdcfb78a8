#pragma once

#include "ports/UserDefaults.h"

#include <map>
#include <string>
#include <variant>

namespace driftmark::test {

/// Settings in memory.
class TestUserDefaults final : public UserDefaults {
public:
  std::optional<std::string> string(const std::string& key) const override {
    const auto* const value = find<std::string>(key);
    return value ? std::optional(*value) : std::nullopt;
  }

  bool boolean(const std::string& key) const override {
    const auto* const value = find<bool>(key);
    return value && *value;
  }

  void setBoolean(const std::string& key, bool value) override {
    if (!refuses_)
      values_[key] = value;
  }

  /// Makes the program's changes fail.
  void refuseChanges() { refuses_ = true; }

  void setString(const std::string& key, std::string value) { values_[key] = std::move(value); }
  void setNumber(const std::string& key, int value) { values_[key] = value; }

  /// Whether the setting has a value.
  bool has(const std::string& key) const { return values_.contains(key); }

private:
  template <class Value> const Value* find(const std::string& key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? nullptr : std::get_if<Value>(&found->second);
  }

  bool refuses_ = false;
  std::map<std::string, std::variant<bool, int, std::string>> values_;
};

} // namespace driftmark::test
