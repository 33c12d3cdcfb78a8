// How tests capture standard error.

#include "StandardErrorCapture.h"

#include <sstream>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driftmark::test {

FileDescriptor replaceStandardError(int descriptor) {
  FileDescriptor before(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0));
  dup2(descriptor, STDERR_FILENO);
  return before;
}

StandardErrorCapture::StandardErrorCapture() : file_(memfd_create("standard-error", MFD_CLOEXEC)) {
  fcntl(file_.number(), F_SETFL, O_APPEND);
  before_ = replaceStandardError(file_.number());
}

StandardErrorCapture::~StandardErrorCapture() {
  dup2(before_.number(), STDERR_FILENO);
}

std::string StandardErrorCapture::text() const {
  struct stat information {};
  fstat(file_.number(), &information);
  std::string text(static_cast<std::size_t>(information.st_size), '\0');
  const ssize_t count = pread(file_.number(), text.data(), text.size(), 0);
  text.resize(static_cast<std::size_t>(count));
  return text;
}

std::vector<std::string> StandardErrorCapture::lines(std::size_t count) const {
  std::istringstream stream(text());
  std::vector<std::string> lines;
  for (std::string line; lines.size() < count && std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

} // namespace driftmark::test
