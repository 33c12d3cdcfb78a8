#pragma once

namespace driftmark {

/// Aborts the program because of an error of its own, after writing `what` to standard error.
[[noreturn]] void fatalError(const char* what);

} // namespace driftmark
