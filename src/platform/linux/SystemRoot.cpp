// Which folders can be a system root.

#include "platform/linux/SystemRoot.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace driftmark {

namespace {

/// What is wrong with `path` as a system root; empty when nothing is.
std::string fault(const std::string& path) {
  if (path.empty())
    return "is empty";
  if (!path.starts_with('/'))
    return "is not an absolute path: " + path;
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found)
    return "names a folder that does not exist: " + path;
  if (error)
    return "cannot be used: " + path + ": " + error.message();
  return std::filesystem::is_directory(status) ? "" : "does not name a folder: " + path;
}

} // namespace

std::variant<SystemRoot, SystemRoot::Error> SystemRoot::of(const Environment& environment) {
  std::string path = environment.variable(variableName).value_or(none);
  if (const std::string wrong = fault(path); !wrong.empty())
    return Error{std::string(variableName) + " " + wrong};
  return SystemRoot(std::move(path));
}

} // namespace driftmark
