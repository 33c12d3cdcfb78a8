#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace icloud {

/// Throws what the last failed system call left in errno; `what` says what was being done.
[[noreturn]] inline void throwSystemFailure(const std::string& what, int number = errno) {
  throw std::system_error(number, std::generic_category(), what);
}

} // namespace icloud
