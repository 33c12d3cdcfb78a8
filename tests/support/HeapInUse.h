#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define DRIFTMARK_SANITIZER_HEAP
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define DRIFTMARK_SANITIZER_HEAP
#endif
#endif

#if defined(DRIFTMARK_SANITIZER_HEAP)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // g++ has no header for it
#elif defined(__APPLE__)
#include <malloc/malloc.h>
#else
#include <malloc.h>
#endif

namespace driftmark::test {

/// The bytes of heap memory that this process has allocated and not freed.
inline std::size_t heapInUse() {
#if defined(DRIFTMARK_SANITIZER_HEAP)
  return __sanitizer_get_current_allocated_bytes();
#elif defined(__APPLE__)
  malloc_statistics_t statistics{};
  malloc_zone_statistics(nullptr, &statistics);
  return statistics.size_in_use;
#else
  const auto information = mallinfo2();
  return information.uordblks + information.hblkhd;
#endif
}

} // namespace driftmark::test
