// How an archive is unpacked, and what of it is refused.
#include "common/SystemFailure.h"
#include "ditto/ArchiveHandle.h"
#include "ditto/Ditto.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr std::size_t blockSize = 65536;
constexpr mode_t permissionBits = 0777;

// A zip archive is read from the directory at its end; without one it is no archive.
Reader openZip(const fs::path& path) {
  Reader reader(archive_read_new());
  archive_read_support_format_zip_seekable(reader.get());
  archive_read_set_options(reader.get(), "hdrcharset=UTF-8");
  if (access(path.c_str(), R_OK) != 0)
    throwSystemFailure(path.string());
  if (archive_read_open_filename(reader.get(), path.c_str(), blockSize) != ARCHIVE_OK)
    throw std::runtime_error("Couldn't read PKZip signature");
  return reader;
}

Writer newDisk() {
  Writer disk(archive_write_disk_new());
  archive_write_disk_set_options(
      disk.get(), ARCHIVE_EXTRACT_TIME | ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_SECURE_NODOTDOT |
                      ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NOABSOLUTEPATHS);
  return disk;
}

void enter(const fs::path& folder) {
  fs::create_directories(folder);
  if (chdir(folder.c_str()) != 0)
    throwSystemFailure(folder.string());
}

void copyContents(archive* reader, archive* disk, const std::string& name) {
  while (true) {
    const void* bytes = nullptr;
    std::size_t count = 0;
    la_int64_t offset = 0;
    const int result = archive_read_data_block(reader, &bytes, &count, &offset);
    if (result == ARCHIVE_EOF)
      return;
    if (result != ARCHIVE_OK)
      throwArchiveFailure(reader, name);
    if (archive_write_data_block(disk, bytes, count, offset) < ARCHIVE_OK)
      throwArchiveFailure(disk, name);
  }
}

void unpackEntry(archive* reader, archive* disk, archive_entry* entry) {
  const char* path = archive_entry_pathname(entry);
  if (path == nullptr)
    throw std::runtime_error("an entry has no name that can be read");
  const std::string name = path;
  const auto type = archive_entry_filetype(entry);
  if (type != AE_IFREG && type != AE_IFDIR && type != AE_IFLNK)
    throw std::runtime_error(name + ": neither a file nor a folder nor a symbolic link");
  archive_entry_set_perm(entry, archive_entry_perm(entry) & permissionBits);
  if (archive_write_header(disk, entry) != ARCHIVE_OK)
    throwArchiveFailure(disk, name);
  if (type == AE_IFREG)
    copyContents(reader, disk, name);
  if (archive_write_finish_entry(disk) != ARCHIVE_OK)
    throwArchiveFailure(disk, name);
}

} // namespace

void unpack(const fs::path& archive, const fs::path& folder) {
  const Reader reader = openZip(archive);
  archive_entry* entry = nullptr;
  int result = archive_read_next_header(reader.get(), &entry);
  if (result != ARCHIVE_OK && result != ARCHIVE_EOF)
    throw std::runtime_error("Couldn't read PKZip signature");
  enter(folder);
  const Writer disk = newDisk();
  for (; result == ARCHIVE_OK; result = archive_read_next_header(reader.get(), &entry))
    unpackEntry(reader.get(), disk.get(), entry);
  if (result != ARCHIVE_EOF)
    throwArchiveFailure(reader.get(), archive.string());
  if (archive_write_close(disk.get()) != ARCHIVE_OK)
    throwArchiveFailure(disk.get(), folder.string());
}

} // namespace icloud
