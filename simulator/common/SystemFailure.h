#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace icloud {

/// Throws the error of the last system call; `what` names the failed action.
[[noreturn]] inline void throwSystemFailure(const std::string& what, int number = errno) {
  throw std::system_error(number, std::generic_category(), what);
}

} // namespace icloud
