#pragma once

namespace driftmark {

/// Ends the program because of an error in the program itself, naming it on standard error.
[[noreturn]] void fatalError(const char* what);

} // namespace driftmark
