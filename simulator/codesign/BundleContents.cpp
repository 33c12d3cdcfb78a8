// What a signature covers of a bundle.
#include "codesign/BundleContents.h"

#include "common/SystemFailure.h"

#include <QCryptographicHash>
#include <QFile>

#include <sys/stat.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr mode_t executableBits = 0111;

std::string digestOf(const fs::path& path) {
  QFile file(QString::fromStdString(path.string()));
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
    throw std::runtime_error(path.string() + ": " + file.errorString().toStdString());
  return hash.result().toHex().toStdString();
}

std::string described(const fs::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0)
    throwSystemFailure(path.string());
  if (S_ISLNK(status.st_mode))
    return "link to " + fs::read_symlink(path).string();
  if (!S_ISREG(status.st_mode))
    return "neither a file nor a link";
  return ((status.st_mode & executableBits) != 0 ? "executable " : "file ") + digestOf(path);
}

bool isIn(const fs::path& path, const fs::path& folder) {
  return path == folder || path.string().starts_with(folder.string() + "/");
}

bool leadsOutside(const fs::path& link, const fs::path& bundle) {
  const fs::path target = fs::read_symlink(link);
  if (target.is_absolute())
    return true;
  std::error_code problem;
  const fs::path place = fs::weakly_canonical(link.parent_path() / target, problem);
  return problem || !isIn(place, bundle);
}

} // namespace

BundleContents contentsOf(const fs::path& bundle) {
  for (const auto& entry : fs::directory_iterator(bundle))
    if (entry.path().filename() != "Contents")
      throw SigningFailure("unsealed contents present in the bundle root");
  BundleContents contents;
  for (const auto& entry : fs::recursive_directory_iterator(bundle)) {
    const std::string name = entry.path().lexically_relative(bundle);
    if (name != signaturePath && (entry.is_symlink() || !entry.is_directory()))
      contents[name] = described(entry.path());
  }
  return contents;
}

void requireLinksInside(const fs::path& bundle) {
  const char* const reason = "invalid destination for symbolic link in bundle";
  if (fs::is_symlink(bundle))
    throw SigningFailure(reason);
  const fs::path real = fs::canonical(bundle);
  for (const auto& entry : fs::recursive_directory_iterator(real))
    if (entry.is_symlink() && leadsOutside(entry.path(), real))
      throw SigningFailure(reason);
}

} // namespace icloud
