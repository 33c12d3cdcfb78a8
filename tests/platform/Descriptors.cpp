// Which descriptors this process has open.

#include "Descriptors.h"

#include <filesystem>
#include <string>

#include <fcntl.h>

namespace driftmark::test {

std::set<int> openDescriptors() {
  std::set<int> numbers;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    numbers.insert(std::stoi(entry.path().filename().string()));
  // The descriptor that listed the folder is closed.
  std::erase_if(numbers, [](int number) { return fcntl(number, F_GETFD) < 0; });
  return numbers;
}

std::size_t openTerminals() {
  std::size_t count = 0;
  for (const int number : openDescriptors()) {
    const std::string link = "/proc/self/fd/" + std::to_string(number);
    count += std::filesystem::read_symlink(link).filename() == "ptmx" ? 1 : 0;
  }
  return count;
}

DescriptorLimit::DescriptorLimit(std::size_t count) {
  getrlimit(RLIMIT_NOFILE, &before_);
  rlimit lowered = before_;
  lowered.rlim_cur = static_cast<rlim_t>(*openDescriptors().rbegin()) + 1 + count;
  setrlimit(RLIMIT_NOFILE, &lowered);
  for (;;) {
    FileDescriptor filler(open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (!filler.isOpen())
      break;
    fillers_.push_back(std::move(filler));
  }
  fillers_.resize(fillers_.size() - count);
}

DescriptorLimit::~DescriptorLimit() {
  setrlimit(RLIMIT_NOFILE, &before_);
}

} // namespace driftmark::test
