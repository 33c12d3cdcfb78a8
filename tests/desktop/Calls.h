#pragma once

#include "common/Descriptor.h"

#include <filesystem>
#include <string>
#include <vector>

namespace driftmark::test {

/// The calls of a tool that is replaced by a script: their arguments, one call after the other.
class Calls {
public:
  /// Makes a named pipe at `pipe`. Throws std::system_error.
  explicit Calls(std::filesystem::path pipe);

  /// The command with which the script reports its arguments.
  std::string script() const;

  /// Waits for the next call. Returns its arguments. Throws TimedOut.
  std::vector<std::string> next();

private:
  std::filesystem::path pipe_;
  icloud::Descriptor reading_;
  std::string text_; ///< bytes of calls that `next` has not returned yet
};

} // namespace driftmark::test
