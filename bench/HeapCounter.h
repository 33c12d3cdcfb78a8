#pragma once

#include <cstdint>
#include <functional>

namespace driftmark::bench {

/// Runs `work` and returns the most bytes that `operator new` had handed out at once meanwhile,
/// beyond those in use before. One at a time.
std::int64_t peakHeap(const std::function<void()>& work);

} // namespace driftmark::bench
