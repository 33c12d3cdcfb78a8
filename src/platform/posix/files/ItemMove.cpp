// How an item moves between volumes so that both names always stand for a whole item or for
// nothing.

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/files/FileItems.h"
#include "support/Paths.h"
#include "support/Utf8.h"

#include <cerrno>
#include <cstddef>
#include <random>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// Leaves space for the suffix within the 255 bytes that file systems allow for a name.
constexpr std::size_t maxKeptNameBytes = 200;

std::string randomDigits() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::random_device source;
  std::string text;
  for (int i = 0; i < 16; ++i)
    text += digits[source() % digits.size()];
  return text;
}

/// An unused path for a hidden item in the folder of `path`. Some file systems refuse names that
/// are not UTF-8.
std::string hiddenSibling(const std::string& path) {
  const std::string name = std::string(".")
                               .append(wholeCharacters(lastPathComponent(path), maxKeptNameBytes))
                               .append("-")
                               .append(randomDigits());
  return appendingPathComponent(deletingLastPathComponent(path), name);
}

int renameTree(const std::string& from, const std::string& to) {
  return renameExclusively(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str());
}

/// Flushes a new name in a folder to the disk. A folder that cannot be opened does not make the
/// move fail.
void flushFolder(const std::string& path) {
  const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen())
    flushToDisk(folder.number());
}

/// Makes the copy under the name `hidden`, then renames it: `to` appears as a whole.
int placeCopy(const std::string& from, const std::string& to, const std::string& hidden) {
  if (itemExists(to))
    return EEXIST;
  int error = copyTree(from, hidden);
  if (error == 0)
    error = renameTree(hidden, to);
  if (error != 0)
    removeTree(hidden);
  return error;
}

int copyBetweenVolumes(const std::string& from, const std::string& to, std::string& kept) {
  const std::string incoming = hiddenSibling(to);
  if (const int error = placeCopy(from, to, incoming); error != 0)
    return error;
  flushFolder(deletingLastPathComponent(to));

  kept = hiddenSibling(from);
  const int error = renameTree(from, kept);
  if (error == 0)
    return 0;
  kept.clear();
  if (renameTree(to, incoming) == 0)
    removeTree(incoming);
  return error;
}

} // namespace

int moveTree(const std::string& from, const std::string& to) {
  std::string kept;
  const int error = moveTreeKeeping(from, to, kept);
  if (!kept.empty())
    removeTree(kept);
  return error;
}

int moveTreeKeeping(const std::string& from, const std::string& to, std::string& kept) {
  const std::string source(withoutTrailingSlashes(from));
  const std::string target(withoutTrailingSlashes(to));
  kept.clear();
  const int error = renameTree(source, target);
  return error == EXDEV ? copyBetweenVolumes(source, target, kept) : error;
}

int moveTreeBack(const std::string& from, const std::string& to, const std::string& kept) {
  const std::string source(withoutTrailingSlashes(from));
  const std::string target(withoutTrailingSlashes(to));
  if (kept.empty())
    return renameTree(target, source);
  const int error = renameTree(kept, source);
  const std::string outgoing = hiddenSibling(target);
  if (error == 0 && renameTree(target, outgoing) == 0)
    removeTree(outgoing);
  return error;
}

bool areOnTwoVolumes(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return stat(deletingLastPathComponent(one).c_str(), &first) == 0 &&
         stat(deletingLastPathComponent(other).c_str(), &second) == 0 &&
         first.st_dev != second.st_dev;
}

} // namespace driftmark
