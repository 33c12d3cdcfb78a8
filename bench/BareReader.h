#pragma once

#include <cstddef>
#include <string>

namespace driftmark::bench {

/// Runs `tool` with the arguments of the per-item monitor on a pseudo-terminal in its default mode,
/// reads until the terminal closes, and returns the number of bytes. Throws a std::system_error.
std::size_t drainTerminal(const std::string& tool);

} // namespace driftmark::bench
