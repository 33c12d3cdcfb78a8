#pragma once

#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace icloud {

/// An invalid command line; the message says what is wrong with it.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Prints the usage when the command line is `--help` alone. Returns whether it is.
inline bool answersHelp(int argc, char** argv, const char* usage) {
  const bool asks = argc == 2 && std::string_view(argv[1]) == "--help";
  if (asks)
    std::fputs(usage, stdout);
  return asks;
}

} // namespace icloud
