#pragma once

#include <string_view>

namespace driftmark::fuzz {

/// Checks what the program makes of one input. Each target defines it.
void check(std::string_view input);

/// Ends the program when `holds` is false, so that the fuzzer keeps the input as a finding. `what`
/// is what went wrong.
void require(bool holds, std::string_view what);

/// Calls `step(text, command)` for each piece of `input` up to a character of `commands`, which
/// follows as `command`. The last piece has the command 0.
template <class Step>
void forEachStep(std::string_view input, std::string_view commands, Step step) {
  for (;;) {
    const std::size_t end = input.find_first_of(commands);
    if (end == std::string_view::npos)
      break;
    step(input.substr(0, end), input[end]);
    input.remove_prefix(end + 1);
  }
  step(input, '\0');
}

} // namespace driftmark::fuzz
