#pragma once

#include <optional>
#include <string>

namespace driftmark {

/// The settings of this user, kept between runs. A change that the user makes while the program
/// runs is visible to the next read. No value is converted: the number 1 is neither a text nor
/// true, and the text "YES" is not true. Main thread only.
class UserDefaults {
public:
  virtual ~UserDefaults() = default;

  /// A setting that is a text; absent when it is not set or is something else.
  virtual std::optional<std::string> string(const std::string& key) const = 0;

  /// A setting that is true or false; false when it is not set or is something else.
  virtual bool boolean(const std::string& key) const = 0;

  /// Stores a setting. A failure to store it is logged and otherwise ignored.
  virtual void setBoolean(const std::string& key, bool value) = 0;
};

} // namespace driftmark
