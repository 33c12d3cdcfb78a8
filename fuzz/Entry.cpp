// Where the fuzzer hands an input to a target, and what is random for a target.

#include "Target.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace driftmark::fuzz {

namespace {

std::uint32_t randomNumbers = 0; ///< that the input at hand has drawn

} // namespace

void require(bool holds, std::string_view what) {
  if (holds)
    return;
  std::fprintf(stderr, "FINDING: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

} // namespace driftmark::fuzz

/// In place of the library's: the same numbers for each input, so that a finding can be repeated,
/// and without the system's cost, which would be most of a run.
std::random_device::result_type std::random_device::_M_getval() {
  constexpr std::uint32_t spread = 0x9e3779b9;
  return ++driftmark::fuzz::randomNumbers * spread;
}

// NOLINTNEXTLINE(readability-identifier-naming): the fuzzer's name
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  driftmark::fuzz::randomNumbers = 0;
  driftmark::fuzz::check({reinterpret_cast<const char*>(data), size});
  return 0;
}
