#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace driftmark::test {

/// The "[Desktop Entry]" group of a file, as the desktops read it. Throws std::runtime_error where
/// the file keeps to the rules of such files nowhere near.
class DesktopEntry {
public:
  explicit DesktopEntry(const std::filesystem::path& file);

  /// The value of a key as it stands in the file. Throws std::runtime_error when it is missing.
  const std::string& raw(const std::string& key) const;

  /// The value of a key that holds a string, its escapes resolved.
  std::string string(const std::string& key) const;

  /// The program and arguments of the Exec key, without field codes.
  std::vector<std::string> command() const;

private:
  std::map<std::string, std::string> values_;
};

} // namespace driftmark::test
