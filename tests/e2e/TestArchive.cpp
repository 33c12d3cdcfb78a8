#include "TestArchive.h"

#include <stdexcept>

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

namespace icloud::test {
namespace {

void require(bool good, archive* writer) {
  if (!good)
    throw std::runtime_error(archive_error_string(writer));
}

} // namespace

void writeZip(const std::filesystem::path& place, const std::vector<TestEntry>& entries) {
  archive* writer = archive_write_new();
  archive_write_set_format_zip(writer);
  require(archive_write_open_filename(writer, place.c_str()) == ARCHIVE_OK, writer);
  for (const TestEntry& each : entries) {
    const bool isFile = S_ISREG(each.mode);
    archive_entry* entry = archive_entry_new();
    archive_entry_set_pathname(entry, each.name.c_str());
    archive_entry_set_mode(entry, each.mode);
    archive_entry_set_mtime(entry, 1'700'000'000, 0);
    archive_entry_set_size(entry, isFile ? static_cast<la_int64_t>(each.text.size()) : 0);
    if (S_ISLNK(each.mode))
      archive_entry_set_symlink(entry, each.text.c_str());
    require(archive_write_header(writer, entry) == ARCHIVE_OK, writer);
    if (isFile)
      require(archive_write_data(writer, each.text.data(), each.text.size()) >= 0, writer);
    archive_entry_free(entry);
  }
  require(archive_write_close(writer) == ARCHIVE_OK, writer);
  archive_write_free(writer);
}

} // namespace icloud::test
