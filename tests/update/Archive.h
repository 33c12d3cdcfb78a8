#pragma once

#include <filesystem>
#include <memory>
#include <string>

struct archive;

namespace driftmark::test {

/// Writes a zip archive entry by entry, with any entry names. Throws std::runtime_error.
class Archive {
public:
  explicit Archive(const std::filesystem::path& file);
  ~Archive();
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;

  /// Adds a file or a folder with its contents, under `name` in the archive.
  void add(const std::filesystem::path& item, const std::string& name);

  void addFile(const std::string& name, const std::string& bytes, unsigned mode = 0644);
  void addFolder(const std::string& name, unsigned mode = 0755);
  void addLink(const std::string& name, const std::string& target);

  /// Completes the archive. Nothing can be added afterwards.
  void close();

private:
  struct Entry;
  void write(const Entry& entry);

  archive* archive_;
};

} // namespace driftmark::test
