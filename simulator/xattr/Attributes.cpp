// Where the attributes of a Mac are kept here.
#include "xattr/Attributes.h"

#include "common/SystemFailure.h"

#include <sys/xattr.h>

namespace icloud {
namespace {

constexpr std::string_view prefix = "user.";
constexpr std::size_t maxSize = 65536; // of a value and of a list of names

std::string storedName(const std::string& name) {
  return std::string(prefix).append(name);
}

// A file system without attributes counts as one where none are set.
bool meansNone(int number) {
  return number == ENODATA || number == ENOTSUP;
}

} // namespace

std::vector<std::string> Attributes::names() const {
  std::string list(maxSize, '\0');
  const ssize_t size = listxattr(path_.c_str(), list.data(), list.size());
  if (size < 0 && !meansNone(errno))
    throwSystemFailure(path_.string());
  list.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  std::vector<std::string> found;
  for (std::size_t at = 0; at < list.size();) {
    const std::string name = list.c_str() + at;
    if (name.starts_with(prefix))
      found.push_back(name.substr(prefix.size()));
    at += name.size() + 1;
  }
  return found;
}

std::optional<std::string> Attributes::value(const std::string& name) const {
  std::string value(maxSize, '\0');
  const ssize_t size =
      getxattr(path_.c_str(), storedName(name).c_str(), value.data(), value.size());
  if (size < 0 && meansNone(errno))
    return std::nullopt;
  if (size < 0)
    throwSystemFailure(path_.string());
  value.resize(static_cast<std::size_t>(size));
  return value;
}

void Attributes::set(const std::string& name, const std::string& value) const {
  if (setxattr(path_.c_str(), storedName(name).c_str(), value.data(), value.size(), 0) != 0)
    throwSystemFailure(path_.string());
}

bool Attributes::remove(const std::string& name) const {
  if (removexattr(path_.c_str(), storedName(name).c_str()) == 0)
    return true;
  if (!meansNone(errno))
    throwSystemFailure(path_.string());
  return false;
}

} // namespace icloud
