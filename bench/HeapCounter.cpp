// How heap memory is counted: by replacing `operator new` and `operator delete`.

#include "HeapCounter.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::atomic<bool> counting = false;
std::atomic<std::int64_t> inUse = 0;
std::atomic<std::int64_t> peakInUse = 0;

void add(std::int64_t bytes) {
  const std::int64_t now = inUse.fetch_add(bytes, std::memory_order_relaxed) + bytes;
  if (now > peakInUse.load(std::memory_order_relaxed))
    peakInUse.store(now, std::memory_order_relaxed);
}

void* taken(void* block) {
  if (!block)
    throw std::bad_alloc();
  if (counting.load(std::memory_order_relaxed))
    add(static_cast<std::int64_t>(malloc_usable_size(block)));
  return block;
}

void release(void* block) {
  if (block && counting.load(std::memory_order_relaxed))
    add(-static_cast<std::int64_t>(malloc_usable_size(block)));
  std::free(block);
}

} // namespace

void* operator new(std::size_t size) {
  return taken(std::malloc(size > 0 ? size : 1));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  return taken(std::aligned_alloc(step, (size + step - 1) / step * step));
}

void operator delete(void* block) noexcept {
  release(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
  release(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
  release(block);
}

void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  release(block);
}

namespace driftmark::bench {

std::int64_t peakHeap(const std::function<void()>& work) {
  inUse = 0;
  peakInUse = 0;
  counting = true;
  work();
  counting = false;
  return peakInUse;
}

} // namespace driftmark::bench
