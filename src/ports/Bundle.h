#pragma once

#include <optional>
#include <string>

namespace driftmark {

/// The application bundle that this process was started from, as it was at the start. Any thread.
class Bundle {
public:
  virtual ~Bundle() = default;

  /// The absolute path of the bundle, without a trailing slash. For an executable outside a bundle:
  /// the folder that holds it.
  virtual std::string path() const = 0;

  /// The bundle identifier; absent outside a bundle, so that `path` is no application then.
  virtual std::optional<std::string> identifier() const = 0;

  /// A text of the bundle's property list; absent when the key is missing or is no text.
  virtual std::optional<std::string> information(const std::string& key) const = 0;
};

} // namespace driftmark
