#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

struct archive;

namespace driftmark::test {

/// Writes a zip archive entry by entry, with any entry names. Throws std::runtime_error.
class ZipArchive {
public:
  explicit ZipArchive(const std::filesystem::path& file);
  ~ZipArchive();
  ZipArchive(const ZipArchive&) = delete;
  ZipArchive& operator=(const ZipArchive&) = delete;

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

/// An entry of an archive: a file, folder or link by its mode. The text of a link is its target.
struct ZipEntry {
  std::string name;
  std::string text;
  unsigned mode = 0100644;
};

/// Writes an archive with these entries. Throws std::runtime_error.
void writeZip(const std::filesystem::path& file, const std::vector<ZipEntry>& entries);

} // namespace driftmark::test
