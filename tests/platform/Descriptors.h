#pragma once

#include "platform/posix/FileDescriptor.h"

#include <cstddef>
#include <set>
#include <vector>

#include <sys/resource.h>

namespace driftmark::test {

/// The numbers of this process's open descriptors.
std::set<int> openDescriptors();

/// How many of them are masters of a pseudo-terminal.
std::size_t openTerminals();

/// As long as this object lives, this process can open `count` more descriptors and no more.
class DescriptorLimit {
public:
  explicit DescriptorLimit(std::size_t count);
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;
  ~DescriptorLimit();

private:
  rlimit before_{};
  std::vector<FileDescriptor> fillers_;
};

} // namespace driftmark::test
