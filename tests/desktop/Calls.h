#pragma once

#include "common/Descriptor.h"

#include <filesystem>
#include <string>
#include <vector>

namespace driftmark::test {

/// The calls of a tool that a script stands for: each comes out with its arguments.
class Calls {
public:
  /// Makes a named pipe at `pipe`. Throws std::system_error.
  explicit Calls(std::filesystem::path pipe);

  /// What the tool's script has to do.
  std::string script() const;

  /// Waits for the next call. Throws std::runtime_error when none comes.
  std::vector<std::string> next();

private:
  std::filesystem::path pipe_;
  icloud::Descriptor reading_;
  std::string text_; ///< read, and not yet taken
};

} // namespace driftmark::test
