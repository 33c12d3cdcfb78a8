#pragma once

#include <filesystem>
#include <memory>
#include <string>

struct archive;

namespace driftmark::test {

/// Writes a zip archive entry by entry, whatever the entries are called. Throws std::runtime_error.
class Archive {
public:
  explicit Archive(const std::filesystem::path& file);
  ~Archive();
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;

  /// Adds a file or folder with all that it holds; it is called `name` in the archive.
  void add(const std::filesystem::path& item, const std::string& name);

  void addFile(const std::string& name, const std::string& bytes, unsigned mode = 0644);
  void addFolder(const std::string& name, unsigned mode = 0755);
  void addLink(const std::string& name, const std::string& target);

  /// Writes the directory of the archive; nothing can be added any more.
  void close();

private:
  struct Entry;
  void write(const Entry& entry);

  archive* archive_;
};

} // namespace driftmark::test
