// How tests write zip archives that no tool would write.

#include "harness/archive/ZipArchive.h"

#include "harness/TemporaryFolder.h"

#include <stdexcept>
#include <utility>

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

namespace driftmark::test {
namespace fs = std::filesystem;

struct ZipArchive::Entry {
  std::string name;
  unsigned type = AE_IFREG;
  unsigned mode = 0644;
  std::string bytes;
  std::string target;
};

ZipArchive::ZipArchive(const fs::path& file) : archive_(archive_write_new()) {
  archive_write_set_format_zip(archive_);
  if (archive_write_open_filename(archive_, file.c_str()) != ARCHIVE_OK)
    throw std::runtime_error(archive_error_string(archive_));
}

ZipArchive::~ZipArchive() {
  archive_write_free(archive_);
}

void ZipArchive::add(const fs::path& item, const std::string& name) {
  const fs::file_status status = fs::symlink_status(item);
  const auto mode = static_cast<unsigned>(status.permissions());
  if (fs::is_symlink(status)) {
    addLink(name, fs::read_symlink(item));
  } else if (fs::is_directory(status)) {
    addFolder(name, mode);
    for (const auto& entry : fs::directory_iterator(item))
      add(entry.path(), name + "/" + entry.path().filename().string());
  } else {
    addFile(name, contentsOf(item), mode);
  }
}

void ZipArchive::addFile(const std::string& name, const std::string& bytes, unsigned mode) {
  write({.name = name, .type = AE_IFREG, .mode = mode, .bytes = bytes, .target = {}});
}

void ZipArchive::addFolder(const std::string& name, unsigned mode) {
  write({.name = name + "/", .type = AE_IFDIR, .mode = mode, .bytes = {}, .target = {}});
}

void ZipArchive::addLink(const std::string& name, const std::string& target) {
  write({.name = name, .type = AE_IFLNK, .mode = 0777, .bytes = {}, .target = target});
}

void ZipArchive::close() {
  if (archive_write_close(archive_) != ARCHIVE_OK)
    throw std::runtime_error(archive_error_string(archive_));
}

void ZipArchive::write(const Entry& entry) {
  const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> header(archive_entry_new(),
                                                                             archive_entry_free);
  archive_entry_set_pathname_utf8(header.get(), entry.name.c_str());
  archive_entry_set_filetype(header.get(), entry.type);
  archive_entry_set_perm(header.get(), entry.mode);
  archive_entry_set_mtime(header.get(), 1'700'000'000, 0);
  archive_entry_set_size(header.get(), static_cast<la_int64_t>(entry.bytes.size()));
  if (!entry.target.empty())
    archive_entry_set_symlink_utf8(header.get(), entry.target.c_str());
  const auto written = [&] {
    return archive_write_data(archive_, entry.bytes.data(), entry.bytes.size());
  };
  if (archive_write_header(archive_, header.get()) != ARCHIVE_OK ||
      (!entry.bytes.empty() && !std::in_range<std::size_t>(written())))
    throw std::runtime_error(archive_error_string(archive_));
}

void writeZip(const fs::path& file, const std::vector<ZipEntry>& entries) {
  ZipArchive archive(file);
  for (const ZipEntry& entry : entries) {
    if (S_ISLNK(entry.mode))
      archive.addLink(entry.name, entry.text);
    else if (S_ISDIR(entry.mode))
      archive.addFolder(entry.name.substr(0, entry.name.find_last_not_of('/') + 1),
                        entry.mode & 07777);
    else
      archive.addFile(entry.name, entry.text, entry.mode & 07777);
  }
  archive.close();
}

} // namespace driftmark::test
