#include "common/SystemRoot.h"

#include <stdexcept>

namespace icloud {

SystemRoot SystemRoot::ofThisProgram() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  const auto folder = program.parent_path();
  const auto name = folder.filename();
  if (folder.parent_path().filename() != "usr" || (name != "bin" && name != "libexec"))
    throw std::runtime_error(program.string() + " does not lie in usr/bin or usr/libexec");
  return SystemRoot(folder.parent_path().parent_path());
}

} // namespace icloud
