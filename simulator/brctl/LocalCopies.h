#pragma once

#include "common/SystemRoot.h"

#include <string>
#include <string_view>
#include <vector>

namespace icloud {

/// Asks bird for `request` on each of `paths` in turn, which are absolute or relative to the
/// working folder. Says on standard error, in a line for each, what failed and why; false when
/// anything did.
bool changeLocalCopies(const SystemRoot& root, std::string_view request,
                       const std::vector<std::string>& paths);

} // namespace icloud
