#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// The extended attributes of a file or a folder by the names that they have on a Mac. Here they
/// are kept with "user." before the name. Everything throws std::system_error.
class Attributes {
public:
  explicit Attributes(std::filesystem::path path) : path_(std::move(path)) {}

  std::vector<std::string> names() const;
  std::optional<std::string> value(const std::string& name) const;
  void set(const std::string& name, const std::string& value) const;

  /// False when there was none.
  bool remove(const std::string& name) const;

private:
  std::filesystem::path path_;
};

} // namespace icloud
