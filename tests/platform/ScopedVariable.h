#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace driftmark::test {

/// Sets or unsets an environment variable of this process as long as this object lives. Main thread
/// only.
class ScopedVariable {
public:
  ScopedVariable(std::string name, const std::optional<std::string>& value)
      : name_(std::move(name)) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    if (const char* const before = std::getenv(name_.c_str()))
      before_ = before;
    set(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { set(before_); }

private:
  // NOLINTBEGIN(concurrency-mt-unsafe)
  void set(const std::optional<std::string>& value) {
    if (value)
      setenv(name_.c_str(), value->c_str(), 1);
    else
      unsetenv(name_.c_str());
  }
  // NOLINTEND(concurrency-mt-unsafe)

  const std::string name_;
  std::optional<std::string> before_;
};

} // namespace driftmark::test
