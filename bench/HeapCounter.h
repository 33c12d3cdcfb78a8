#pragma once

#include <cstdint>
#include <functional>

namespace driftmark::bench {

/// Runs `work` and returns the peak of the bytes that `operator new` has allocated meanwhile,
/// beyond those in use before. Not for two calls at once.
std::int64_t peakHeap(const std::function<void()>& work);

} // namespace driftmark::bench
