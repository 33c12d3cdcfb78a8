#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace icloud {

/// The extended attributes of a file or a folder by their names on a Mac. Here their names begin
/// with "user.". Every operation throws std::system_error.
class Attributes {
public:
  explicit Attributes(std::filesystem::path path) : path_(std::move(path)) {}

  std::vector<std::string> names() const;
  std::optional<std::string> value(const std::string& name) const;
  void set(const std::string& name, const std::string& value) const;

  /// Returns whether there was one.
  bool remove(const std::string& name) const;

private:
  std::filesystem::path path_;
};

} // namespace icloud
