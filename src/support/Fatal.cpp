// What the program writes before it aborts.

#include "support/Fatal.h"

#include <cstdio>
#include <cstdlib>

namespace driftmark {

void fatalError(const char* what) {
  std::fputs("Driftmark: fatal error: ", stderr);
  std::fputs(what, stderr);
  std::fputs("\n", stderr);
  std::abort();
}

} // namespace driftmark
