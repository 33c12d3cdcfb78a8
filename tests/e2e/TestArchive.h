#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace icloud::test {

/// A file, a folder or a symbolic link in an archive, by its mode; of a link `text` is the target.
struct TestEntry {
  std::string name;
  std::string text;
  unsigned mode = 0100644;
};

/// Writes a zip archive with these entries, however hostile their names are.
void writeZip(const std::filesystem::path& place, const std::vector<TestEntry>& entries);

} // namespace icloud::test
