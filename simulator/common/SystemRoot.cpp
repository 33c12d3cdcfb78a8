// Which folder stands for "/".
#include "common/SystemRoot.h"

#include <array>
#include <stdexcept>

namespace icloud {
namespace {

constexpr std::array places{"usr/bin", "usr/libexec", "bin", "sbin"};
constexpr std::string_view applicationsName = "/Applications";

} // namespace

SystemRoot SystemRoot::ofThisProgram() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  const std::string folder = program.parent_path();
  for (const std::string place : places)
    if (folder.ends_with("/" + place))
      return SystemRoot(folder.substr(0, folder.size() - place.size() - 1));
  throw std::runtime_error(program.string() + " is not in the tools folder of a system");
}

std::filesystem::path SystemRoot::resolve(const std::string& argument) const {
  const bool inApplications =
      argument == applicationsName || argument.starts_with(std::string(applicationsName) + "/");
  return inApplications ? path_.string() + argument : argument;
}

} // namespace icloud
