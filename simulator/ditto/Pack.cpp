// How an archive is packed.
#include "common/Descriptor.h"
#include "common/SystemFailure.h"
#include "ditto/ArchiveHandle.h"
#include "ditto/Ditto.h"

#include <algorithm>
#include <array>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

/// An archive that gets its name only when it is complete.
class NewArchive {
public:
  explicit NewArchive(fs::path path) : path_(std::move(path)), writer_(archive_write_new()) {
    archive_write_set_format_zip(writer_.get());
    archive_write_set_options(writer_.get(), "hdrcharset=UTF-8");
    if (archive_write_open_filename(writer_.get(), unfinished().c_str()) != ARCHIVE_OK)
      throwArchiveFailure(writer_.get(), path_.string());
  }
  NewArchive(const NewArchive&) = delete;
  NewArchive& operator=(const NewArchive&) = delete;
  ~NewArchive() {
    std::error_code ignored;
    fs::remove(unfinished(), ignored);
  }

  void add(const fs::path& file, const std::string& name) {
    struct stat status {};
    if (lstat(file.c_str(), &status) != 0)
      throwSystemFailure(file.string());
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode) && !S_ISLNK(status.st_mode))
      throw std::runtime_error(file.string() + ": neither a file nor a folder nor a symbolic link");
    const Entry entry(archive_entry_new());
    archive_entry_copy_stat(entry.get(), &status);
    archive_entry_set_pathname(entry.get(), name.c_str());
    if (S_ISLNK(status.st_mode))
      archive_entry_set_symlink(entry.get(), fs::read_symlink(file).c_str());
    if (!S_ISREG(status.st_mode))
      archive_entry_set_size(entry.get(), 0);
    if (archive_write_header(writer_.get(), entry.get()) != ARCHIVE_OK)
      throwArchiveFailure(writer_.get(), file.string());
    if (S_ISREG(status.st_mode))
      addContents(file);
  }

  void finish() {
    if (archive_write_close(writer_.get()) != ARCHIVE_OK)
      throwArchiveFailure(writer_.get(), path_.string());
    fs::rename(unfinished(), path_);
  }

private:
  fs::path unfinished() const { return path_.string() + ".unfinished"; }

  void addContents(const fs::path& file) {
    const Descriptor source(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!source)
      throwSystemFailure(file.string());
    std::array<char, 65536> bytes;
    ssize_t count = 0;
    while ((count = read(source.get(), bytes.data(), bytes.size())) > 0)
      if (archive_write_data(writer_.get(), bytes.data(), static_cast<std::size_t>(count)) < 0)
        throwArchiveFailure(writer_.get(), file.string());
    if (count < 0)
      throwSystemFailure(file.string());
  }

  fs::path path_;
  Writer writer_;
};

std::vector<fs::path> below(const fs::path& folder) {
  std::vector<fs::path> found;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    found.push_back(entry.path());
  std::sort(found.begin(), found.end());
  return found;
}

} // namespace

void pack(const fs::path& source, const fs::path& archive, bool keepParent) {
  if (!fs::exists(fs::symlink_status(source)))
    throw std::runtime_error("Cannot get the real path for source '" + source.string() + "'");
  const bool isFolder = fs::is_directory(fs::symlink_status(source));
  const std::vector<fs::path> contents = isFolder ? below(source) : std::vector<fs::path>{};
  const fs::path parent = source.has_filename() ? source : source.parent_path();
  const std::string prefix = isFolder && keepParent ? parent.filename().string() + "/" : "";

  NewArchive made(archive);
  if (!isFolder)
    made.add(source, source.filename());
  else if (keepParent)
    made.add(source, prefix);
  for (const fs::path& each : contents)
    made.add(each, prefix + each.lexically_relative(source).string());
  made.finish();
}

} // namespace icloud
