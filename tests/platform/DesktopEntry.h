#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace driftmark::test {

/// The "[Desktop Entry]" group of a file, as the desktops read it. Throws std::runtime_error for a
/// file that breaks the rules of desktop entries.
class DesktopEntry {
public:
  explicit DesktopEntry(const std::filesystem::path& file);

  /// The value of a key, without resolving escapes. Throws std::runtime_error when it is missing.
  const std::string& raw(const std::string& key) const;

  /// The value of a key that holds a string, its escapes resolved.
  std::string string(const std::string& key) const;

  /// The program and arguments of the Exec key, without field codes.
  std::vector<std::string> command() const;

private:
  std::map<std::string, std::string> values_;
};

} // namespace driftmark::test
