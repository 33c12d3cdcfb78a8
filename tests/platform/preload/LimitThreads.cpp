// Loaded into a program before the C library. The program can start as many threads as MAX_THREADS
// says; the system refuses to start more.

#include <atomic>
#include <cerrno>
#include <cstdlib>

#include <dlfcn.h>
#include <pthread.h>

namespace {

std::atomic<int> started = 0;

int maxThreads() {
  const char* const value = std::getenv("MAX_THREADS");
  return value != nullptr ? std::atoi(value) : 0;
}

} // namespace

/// Replaces the C library's function.
extern "C" int startOrRefuse(pthread_t* thread, const pthread_attr_t* attributes,
                             void* (*run)(void*), void* argument) __asm__("pthread_create");

extern "C" int startOrRefuse(pthread_t* thread, const pthread_attr_t* attributes,
                             void* (*run)(void*), void* argument) {
  using Function = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static auto* const real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "pthread_create"));
  return started++ < maxThreads() ? real(thread, attributes, run, argument) : EAGAIN;
}
