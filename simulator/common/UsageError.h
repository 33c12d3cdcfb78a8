#pragma once

#include <stdexcept>

namespace icloud {

/// An invalid command line; the message says what is wrong with it.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

} // namespace icloud
