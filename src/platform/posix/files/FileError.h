#pragma once

#include "ports/PlatformError.h"

#include <string>
#include <string_view>

namespace driftmark {

/// What the system said, by its error number, when the item at `path` was to be `done`: "“NAME”
/// couldn’t be moved: Permission denied". Any thread.
PlatformError fileError(const std::string& path, std::string_view done, int code);

} // namespace driftmark
